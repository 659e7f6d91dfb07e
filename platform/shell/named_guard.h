// SPDX-License-Identifier: MIT
// A named guard that keeps one instance of a program on each display: the newest closes the one before it.
//
// The guard is a local socket in the user's runtime folder (XDG_RUNTIME_DIR, else a private folder in /tmp)
// that the instance listens on for as long as it lives, and a lock file beside it that lets one newcomer at
// a time take over. The lock file also holds a counter from which each newcomer draws a number: a newcomer
// that finds a higher number drawn gives up at once, so of any number started together exactly the one with
// the highest number stays.
//
// Differs from a named mutex, which only tells that an instance exists: the older
// instance is found by its socket instead of by its window's title, so no other program's window is closed.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

// The display that this process would open its windows on, the same text for each of its screens; empty when
// the environment names none.
std::string DisplayName();

// One thread: the one that calls Acquire, normally the UI thread.
class NamedGuard {
public:
    enum class Result {
        First,       // no other instance ran (a crashed one's socket counts as none)
        TookOver,    // an older one was asked to close, and has gone unless it took longer than the patience
        Superseded,  // a still newer instance was started meanwhile: end without showing a window
        Unguarded,   // no folder or socket of our own could be had: nothing guards, run all the same
    };

    // How long an older instance is given to go.
    static constexpr std::chrono::milliseconds patience{2000};

    NamedGuard(std::string_view name, std::string_view display);
    // Gives the name up and lets a newcomer that waits go on; so the guard lives as long as what it guards.
    ~NamedGuard();
    NamedGuard(const NamedGuard&) = delete;
    NamedGuard& operator=(const NamedGuard&) = delete;

    // Takes the name over; once per guard. Returns within the patience where the older instance goes or a
    // newer one comes, and within that and a few seconds whatever the others do.
    Result Acquire();

    // Becomes readable when a newer instance asks this one to close; -1 unless Acquire returned First or
    // TookOver. Owned by the guard.
    int WatchFd() const { return m_nWatch; }

    // Reads what has come in, without blocking: whether a newer instance of the same user has asked this one
    // to close since the last call. To be asked once before the window is made too, since a request may have
    // come in by then.
    bool TakeCloseRequest();

private:
    bool OpenLockFile();
    bool IsSuperseded() const;
    bool Lock();
    Result AskOlderToClose();
    bool Listen();
    bool TakeNewcomer();
    bool ReadRequest(int newcomer);
    void CloseSockets();

    std::string m_strLock;  // file names in the folder
    std::string m_strSocket;
    int m_nFolder = -1;
    int m_nLock = -1;
    void* m_pCounter = nullptr;  // the lock file's counter, mapped
    unsigned long long m_nNumber = 0;
    bool m_bLocked = false;
    int m_nListen = -1;
    int m_nWatch = -1;
    std::vector<int> m_waiting;  // newcomers' connections; their end tells that this instance has gone
};
