// Threads and events in the framework's shape, over the C++ library.
#pragma once

#include <condition_variable>
#include <mutex>

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
inline constexpr DWORD WAIT_TIMEOUT = 258;

// A worker thread. With m_bAutoDelete (the default) it deletes itself when its procedure has returned;
// whoever wants to wait for its end creates it suspended, clears m_bAutoDelete, resumes it, waits on
// m_hThread and deletes it. Deleting a thread that was told not to delete itself waits for its end.
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

protected:
    CWinThread();

private:
    friend CWinThread* AfxBeginThread(AFX_THREADPROC, LPVOID, int, UINT, DWORD);
    friend DWORD WaitForSingleObject(HANDLE, DWORD);
    struct State;
    State* m_state;
};

// Starts a worker thread. Difference from the original: any other priority or stack size than the defaults
// (normal, 0) ends the program with a message. Null when the system has no thread left.
CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID param, int priority = THREAD_PRIORITY_NORMAL,
                           UINT stackSize = 0, DWORD createFlags = 0);

// Waits for a thread's end: WAIT_OBJECT_0, or WAIT_TIMEOUT after so many milliseconds. Any thread but itself.
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

void Sleep(DWORD milliseconds);

// Base of the objects that a thread can wait for.
class CSyncObject {
public:
    virtual ~CSyncObject() = default;
    // Waits until the object is signalled: TRUE, or FALSE after so many milliseconds. Any thread.
    virtual BOOL Lock(DWORD timeout = INFINITE) = 0;
};

// An event, auto-reset (one wait is let through per signal) or manual-reset. Any thread.
class CEvent : public CSyncObject {
public:
    explicit CEvent(BOOL initiallyOwn = FALSE, BOOL manualReset = FALSE);
    BOOL SetEvent();
    BOOL ResetEvent();
    // Lets through who is waiting now (auto-reset: one of them) and leaves the event unsignalled. Unlike the
    // original's, it cannot miss a thread that is inside Lock.
    BOOL PulseEvent();
    BOOL Lock(DWORD timeout = INFINITE) override;

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_signalled;
    const bool m_manualReset;
    unsigned m_waiting = 0;
    unsigned m_released = 0;  // waiters that a pulse has let through and that have not left yet
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
