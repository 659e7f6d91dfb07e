// Where the panel and the reader thread meet: the run flag, and who may touch the message.
#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/framework/wintypes.h"

// The reader passes the gate before each record and comes back to it afterwards; between EnterRecord and
// LeaveRecord the message's stream, its decoders and the writing ends of the queues are the reader's, at any
// other time the UI thread's. Waiting costs nothing: the reader sleeps until something that it waits for
// changes.
//
// hasRoom is asked under the gate's lock on whichever thread calls; it says whether the queues take another
// record, and must neither block nor come back here. A gate serves one reader thread after the other.
class CReaderGate {
public:
    // Reader's thread.

    // Waits until a record may be read (TRUE) or the thread is to end (FALSE).
    template <class HasRoom>
    BOOL EnterRecord(HasRoom hasRoom) {
        std::unique_lock lock(m_mutex);
        m_readerWakes.wait(lock, [&] { return m_bEnding || (m_bRunning && hasRoom()); });
        m_bInRecord = !m_bEnding;
        return m_bInRecord;
    }
    // bEnd: there was no record left. The run flag is cleared then.
    void LeaveRecord(BOOL bEnd);

    // UI thread.

    // For a new reader thread, before it starts: not running.
    void Reset();
    BOOL IsRunning();
    // Sets the run flag.
    void Run();
    // Clears the run flag and returns when the reader is out of its record: after one record's work at most.
    void Halt();
    // Halt, and the reader's next EnterRecord ends it.
    void End();

    // Any thread.

    // To be called when a queue has become shorter.
    template <class HasRoom>
    void OnShorterQueue(HasRoom hasRoom) {
        // Two queues may grow shorter at once on two threads. Asking under the lock makes sure that the later
        // one sees both.
        const std::scoped_lock lock(m_mutex);
        if (m_bRunning && hasRoom()) m_readerWakes.notify_one();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_readerWakes;
    std::condition_variable m_recordDone;
    BOOL m_bRunning = FALSE;
    BOOL m_bEnding = FALSE;
    BOOL m_bInRecord = FALSE;
};
