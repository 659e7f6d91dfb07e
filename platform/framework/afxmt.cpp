#include "platform/framework/afxmt.h"

#include <chrono>
#include <system_error>
#include <thread>

#include "platform/framework/unsupported.h"

struct CWinThread::State {
    AFX_THREADPROC proc = nullptr;
    LPVOID param = nullptr;
    std::thread thread;
    std::mutex mutex;
    std::condition_variable condition;
    bool ended = false;
};

CWinThread::CWinThread() : m_state(new State) {}

CWinThread::~CWinThread() {
    if (m_state->thread.joinable()) {
        if (m_state->thread.get_id() == std::this_thread::get_id())
            m_state->thread.detach();
        else
            m_state->thread.join();
    }
    delete m_state;
}

DWORD CWinThread::ResumeThread() {
    // Decided now: whoever waits for the end must have said so before the thread runs.
    const bool deletesItself = m_bAutoDelete != FALSE;
    try {
        std::thread thread([this, deletesItself] {
            m_state->proc(m_state->param);
            if (deletesItself) {
                delete this;
                return;
            }
            const std::scoped_lock lock(m_state->mutex);
            m_state->ended = true;
            m_state->condition.notify_all();
        });
        if (deletesItself)
            thread.detach();
        else
            m_state->thread = std::move(thread);
    } catch (const std::system_error&) {
        m_state->ended = true;  // nobody is to wait for it
        return kThreadNotStarted;
    }
    return 1;
}

CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID param, int priority, UINT stackSize,
                           DWORD createFlags) {
    if (priority != THREAD_PRIORITY_NORMAL)
        Unsupported("priority of a thread", static_cast<unsigned long>(priority));
    if (stackSize != 0) Unsupported("stack size of a thread", stackSize);
    auto* thread = new CWinThread;
    thread->m_state->proc = proc;
    thread->m_state->param = param;
    if ((createFlags & CREATE_SUSPENDED) != 0) return thread;
    if (thread->ResumeThread() != kThreadNotStarted) return thread;
    delete thread;
    return nullptr;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    CWinThread::State& state = *handle->m_state;
    std::unique_lock lock(state.mutex);
    const auto ended = [&] { return state.ended; };
    if (milliseconds == INFINITE)
        state.condition.wait(lock, ended);
    else if (!state.condition.wait_for(lock, std::chrono::milliseconds(milliseconds), ended))
        return WAIT_TIMEOUT;
    return WAIT_OBJECT_0;
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

CEvent::CEvent(BOOL initiallyOwn, BOOL manualReset)
    : m_signalled(initiallyOwn != FALSE), m_manualReset(manualReset != FALSE) {}

BOOL CEvent::SetEvent() {
    const std::scoped_lock lock(m_mutex);
    m_signalled = true;
    if (m_manualReset)
        m_condition.notify_all();
    else
        m_condition.notify_one();
    return TRUE;
}

BOOL CEvent::ResetEvent() {
    const std::scoped_lock lock(m_mutex);
    m_signalled = false;
    return TRUE;
}

BOOL CEvent::PulseEvent() {
    const std::scoped_lock lock(m_mutex);
    m_signalled = false;
    if (m_waiting > m_released) {
        m_released = m_manualReset ? m_waiting : m_released + 1;
        m_condition.notify_all();
    }
    return TRUE;
}

BOOL CEvent::Lock(DWORD timeout) {
    std::unique_lock lock(m_mutex);
    const auto open = [&] { return m_signalled || m_released > 0; };
    // Only those that were waiting at the pulse are let through by it.
    if (!m_signalled) {
        ++m_waiting;
        bool opened = true;
        if (timeout == INFINITE)
            m_condition.wait(lock, open);
        else
            opened = m_condition.wait_for(lock, std::chrono::milliseconds(timeout), open);
        --m_waiting;
        if (m_released > 0) {
            --m_released;
            return TRUE;
        }
        if (!opened) return FALSE;
    }
    if (!m_manualReset) m_signalled = false;
    return TRUE;
}
