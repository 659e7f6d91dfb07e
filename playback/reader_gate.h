// SPDX-License-Identifier: MIT
// Where the panel and a message's reader thread meet: whether the reader runs, from which place, and when it
// may touch what is not its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/framework/wintypes.h"
#include "playback/seek_plan.h"

// The reader reads and decodes outside, into buffers of its own; it hands over inside, under the gate's lock,
// and only while it runs. So Hold, Run and Move never wait for a read or for decoding: once one of them has
// returned, nothing is being handed over any more (Hold), and nothing that belongs to an earlier Move ever
// will be (Move). What was read before a Hold is kept and handed over after Run.
//
// A reader that reads may take for ever. It is let go by End: from then on it touches nothing but its own.
// Only decoding and drawing, a few milliseconds, are waited for there.
//
// One gate serves one reader thread.
class CReaderGate {
public:
    // What the reader is to do next.
    enum class Turn {
        GoOn,
        Move,  // take the new plan, drop what was read for the old one
        End,
    };
    // The room that what is in hand takes in the queues.
    struct Need {
        int nBlocks = 0;
        int nPictures = 0;
    };

    // Reader's thread. Each call ends what the one before it began.

    // Waits until the reader runs.
    Turn AwaitRun();
    // The plan of the latest Move, and its number; what the reader does from now on belongs to it.
    SeekPlan TakeMove(unsigned& nMove);
    // Before what may take for ever and uses the message's stream alone.
    Turn BeginReading();
    // Before decoding and drawing.
    Turn BeginWork();
    // Waits for so long, or until there is something else to do than to go on.
    Turn Rest(std::chrono::milliseconds time);
    // Waits until the reader runs and hasRoom(need) holds, and calls handOver, both under the lock: they must
    // neither block nor come back here. bPolls: room may come by time alone, which nobody tells.
    template <class HasRoom, class HandOver>
    Turn Pass(Need need, BOOL bPolls, HasRoom hasRoom, HandOver handOver) {
        std::unique_lock lock(m_mutex);
        SetActivity(Activity::Waiting);
        m_need = need;
        const auto bReady = [&] { return TurnNow() != Turn::GoOn || (m_bRunning && hasRoom(need)); };
        while (!bReady()) {
            if (bPolls && m_bRunning) {
                m_readerWakes.wait_for(lock, kPollTime);
            } else {
                m_readerWakes.wait(lock);
            }
        }
        if (TurnNow() == Turn::GoOn) handOver();
        return TurnNow();
    }
    // Within handOver: the reader has nothing more to do until the next Run or Move.
    void StopRunning() { m_bRunning = FALSE; }

    // UI thread.

    // The reader hands over nothing until Run or Move.
    void Hold();
    void Run();
    // The reader goes to another place, and runs from there or waits for Run.
    void Move(const SeekPlan& plan, BOOL bRun);
    // The number of the latest Move; no other Move of any gate has it.
    unsigned GetMove();
    // The thread's next call here returns End.
    void End();
    // How long the read in hand has taken so far; 0 when none is.
    std::chrono::milliseconds ReadingFor();

    // Any thread.

    // Looks at what is handed over under the lock.
    template <class Look>
    void Locked(Look look) {
        const std::scoped_lock lock(m_mutex);
        look();
    }
    // To be called when a queue has become shorter.
    template <class HasRoom>
    void OnShorterQueue(HasRoom hasRoom) {
        // Two queues may grow shorter at once on two threads. Asking under the lock makes sure that the later
        // one sees both. Waking the reader without it spares the reader another wait.
        std::unique_lock lock(m_mutex);
        const bool wakes = m_bRunning && m_activity == Activity::Waiting && hasRoom(m_need);
        lock.unlock();
        if (wakes) m_readerWakes.notify_one();
    }

private:
    using Clock = std::chrono::steady_clock;
    enum class Activity { Waiting, Reading, Working };
    static constexpr std::chrono::milliseconds kPollTime{100};

    Turn TurnNow() const {
        if (m_bEnding) return Turn::End;
        return m_nMoveTaken == m_nMove ? Turn::GoOn : Turn::Move;
    }
    void SetActivity(Activity activity);
    Turn Begin(Activity activity);

    std::mutex m_mutex;
    std::condition_variable m_readerWakes;
    std::condition_variable m_workDone;
    BOOL m_bRunning = FALSE;
    BOOL m_bEnding = FALSE;
    Activity m_activity = Activity::Waiting;
    Clock::time_point m_readSince;
    Need m_need;
    SeekPlan m_plan;
    unsigned m_nMove = 0;
    unsigned m_nMoveTaken = 0;
};
