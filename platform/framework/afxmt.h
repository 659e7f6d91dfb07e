// SPDX-License-Identifier: MIT
// Threads and events in the framework's shape, over the C++ library.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/framework/wintypes.h"

using LPVOID = void*;
using AFX_THREADPROC = UINT (*)(LPVOID);

class CWinThread;

// What WaitForSingleObject takes: a thread's end. Not owned by the caller.
using HANDLE = CWinThread*;

inline constexpr int THREAD_PRIORITY_NORMAL = 0;
inline constexpr DWORD CREATE_SUSPENDED = 0x00000004U;
inline constexpr DWORD kThreadNotStarted = 0xFFFFFFFFU;
inline constexpr DWORD WAIT_OBJECT_0 = 0;

// A worker thread. With m_bAutoDelete (the default) it deletes itself when its procedure has returned;
// whoever wants to wait for its end creates it suspended, clears m_bAutoDelete, resumes it, waits on
// m_hThread and deletes it. Deleting a thread that does not delete itself waits for its end.
class CWinThread {
public:
    virtual ~CWinThread();
    CWinThread(const CWinThread&) = delete;
    CWinThread& operator=(const CWinThread&) = delete;

    // Starts a thread that was created suspended, once; kThreadNotStarted when the system has no thread left,
    // and it then counts as ended.
    DWORD ResumeThread();

    HANDLE m_hThread = this;
    BOOL m_bAutoDelete = TRUE;

private:
    friend CWinThread* AfxBeginThread(AFX_THREADPROC, LPVOID, int, UINT, DWORD);
    friend DWORD WaitForSingleObject(HANDLE, DWORD);
    CWinThread(AFX_THREADPROC proc, LPVOID param) : m_proc(proc), m_param(param) {}
    AFX_THREADPROC m_proc;
    LPVOID m_param;
    std::thread m_thread;
};

// Starts a worker thread. Difference from the framework: any other priority or stack size than the defaults
// (normal, 0) ends the program with a message. Null when the system has no thread left.
CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID param, int priority = THREAD_PRIORITY_NORMAL,
                           UINT stackSize = 0, DWORD createFlags = 0);

// Waits for the end of a thread that does not delete itself; INFINITE is the only time. One waiter at a time,
// any thread but itself.
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

// An auto-reset event: a signal lets one wait through. Any thread.
class CEvent {
public:
    BOOL SetEvent();
    BOOL ResetEvent();
    // Lets one thread through that is waiting now, and leaves nothing behind when none is. Unlike the
    // framework's, it cannot miss a thread that is inside Lock.
    BOOL PulseEvent();
    // INFINITE is the only time.
    BOOL Lock(DWORD timeout = INFINITE);

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_signalled = false;
    unsigned m_waiting = 0;
};

// A lock for short sections.
class CCriticalSection {
public:
    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

// Holds a CCriticalSection for a scope.
class CSingleLock {
public:
    explicit CSingleLock(CCriticalSection* section) : m_section(section) { m_section->Lock(); }
    ~CSingleLock() { m_section->Unlock(); }
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

private:
    CCriticalSection* m_section;
};
