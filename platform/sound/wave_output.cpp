#include "platform/sound/wave_output.h"

#include "platform/framework/message_queue.h"

MMRESULT WaveOutput::Open(WaveDriver& driver, const WAVEFORMATEX& format) {
    const std::scoped_lock control(m_control);
    return driver.Open(format, shared_from_this(), m_stream);
}

MMRESULT WaveOutput::Close() {
    const std::scoped_lock control(m_control);
    if (!m_stream) return MMSYSERR_INVALHANDLE;
    {
        const std::scoped_lock lock(m_lock);
        if (m_queue.Pending() != 0) return WAVERR_STILLPLAYING;
    }
    m_stream.reset();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Pause() {
    const std::scoped_lock control(m_control);
    if (!m_stream) return MMSYSERR_INVALHANDLE;
    m_stream->Pause();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Restart() {
    const std::scoped_lock control(m_control);
    if (!m_stream) return MMSYSERR_INVALHANDLE;
    m_stream->Restart();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Reset() {
    {
        const std::scoped_lock control(m_control);
        if (!m_stream) return MMSYSERR_INVALHANDLE;
        m_stream->Reset();
        const std::scoped_lock lock(m_lock);
        m_queue.MarkAll();
    }
    Deliver();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Prepare(WAVEHDR& header) {
    if (header.lpData == nullptr || header.dwBufferLength == 0 || header.dwBufferLength % 2 != 0)
        return MMSYSERR_INVALPARAM;
    const std::scoped_lock lock(m_lock);
    if (IsPrepared(header)) return MMSYSERR_NOERROR;
    if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header.dwFlags = WHDR_PREPARED;
    header.reserved = Number();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Unprepare(WAVEHDR& header) {
    const std::scoped_lock lock(m_lock);
    if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header.dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Write(WAVEHDR& header) {
    const std::scoped_lock control(m_control);
    if (!m_stream) return MMSYSERR_INVALHANDLE;
    {
        const std::scoped_lock lock(m_lock);
        if (!IsPrepared(header)) return WAVERR_UNPREPARED;
        if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
        if (!m_queue.Push(&header)) return MMSYSERR_NOMEM;
    }
    m_stream->Write(header.lpData, header.dwBufferLength);
    return MMSYSERR_NOERROR;
}

void WaveOutput::Abandon() {
    const std::scoped_lock control(m_control);
    m_stream.reset();
}

void WaveOutput::OnHeard(std::uint64_t position) {
    {
        const std::scoped_lock lock(m_lock);
        m_queue.MarkHeard(position);
    }
    Deliver();
}

void WaveOutput::Deliver() {
    std::unique_lock lock(m_lock);
    if (m_delivering) return;
    m_delivering = true;
    while (WAVEHDR* block = m_queue.TakeDone()) {
        lock.unlock();
        if (m_window != nullptr)
            PostMessage(m_window, MM_WOM_DONE, Number(), reinterpret_cast<LPARAM>(block));
        lock.lock();
    }
    m_delivering = false;
}
