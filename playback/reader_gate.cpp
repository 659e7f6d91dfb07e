#include "playback/reader_gate.h"

void CReaderGate::LeaveRecord(BOOL bEnd) {
    {
        const std::scoped_lock lock(m_mutex);
        m_bInRecord = FALSE;
        if (bEnd) m_bRunning = FALSE;
    }
    m_recordDone.notify_one();
}

void CReaderGate::Reset() {
    const std::scoped_lock lock(m_mutex);
    m_bRunning = FALSE;
    m_bEnding = FALSE;
}

BOOL CReaderGate::IsRunning() {
    const std::scoped_lock lock(m_mutex);
    return m_bRunning;
}

void CReaderGate::Run() {
    {
        const std::scoped_lock lock(m_mutex);
        m_bRunning = TRUE;
    }
    m_readerWakes.notify_one();
}

void CReaderGate::Halt() {
    std::unique_lock lock(m_mutex);
    m_bRunning = FALSE;
    m_recordDone.wait(lock, [this] { return !m_bInRecord; });
}

void CReaderGate::End() {
    Halt();
    {
        const std::scoped_lock lock(m_mutex);
        m_bEnding = TRUE;
    }
    m_readerWakes.notify_one();
}
