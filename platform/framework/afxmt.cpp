// SPDX-License-Identifier: MIT
#include "platform/framework/afxmt.h"

#include <system_error>

#include "platform/framework/unsupported.h"

CWinThread::~CWinThread() {
    if (m_thread.joinable()) m_thread.join();
}

DWORD CWinThread::ResumeThread() {
    try {
        // Decided now: whoever waits for the end must have said so before the thread runs.
        if (m_bAutoDelete == FALSE) {
            m_thread = std::thread([this] { m_proc(m_param); });
        } else {
            std::thread([this] {
                m_proc(m_param);
                delete this;
            }).detach();
        }
    } catch (const std::system_error&) {
        return kThreadNotStarted;
    }
    return 1;
}

CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID param, int priority, UINT stackSize,
                           DWORD createFlags) {
    if (priority != THREAD_PRIORITY_NORMAL)
        Unsupported("priority of a thread", static_cast<unsigned long>(priority));
    if (stackSize != 0) Unsupported("stack size of a thread", stackSize);
    auto* thread = new CWinThread(proc, param);
    if ((createFlags & CREATE_SUSPENDED) != 0 || thread->ResumeThread() != kThreadNotStarted) return thread;
    delete thread;
    return nullptr;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    if (milliseconds != INFINITE) Unsupported("time to wait for a thread", milliseconds);
    if (handle->m_thread.joinable()) handle->m_thread.join();
    return WAIT_OBJECT_0;
}

BOOL CEvent::SetEvent() {
    const std::scoped_lock lock(m_mutex);
    m_signalled = true;
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
    m_signalled = m_waiting > 0;
    m_condition.notify_one();
    return TRUE;
}

BOOL CEvent::Lock(DWORD timeout) {
    if (timeout != INFINITE) Unsupported("time to wait for an event", timeout);
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    m_condition.wait(lock, [this] { return m_signalled; });
    --m_waiting;
    m_signalled = false;
    return TRUE;
}
