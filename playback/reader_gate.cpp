// SPDX-License-Identifier: MIT
#include "playback/reader_gate.h"

#include <atomic>

namespace {

std::atomic<unsigned> g_nLastMove = 0;

}  // namespace

CReaderGate::Turn CReaderGate::AwaitRun() {
    std::unique_lock lock(m_mutex);
    SetActivity(Activity::Waiting);
    m_readerWakes.wait(lock, [this] { return m_bRunning || TurnNow() != Turn::GoOn; });
    return TurnNow();
}

SeekPlan CReaderGate::TakeMove(unsigned& nMove) {
    const std::scoped_lock lock(m_mutex);
    m_nMoveTaken = m_nMove;
    nMove = m_nMove;
    return m_plan;
}

CReaderGate::Turn CReaderGate::BeginReading() {
    return Begin(Activity::Reading);
}

CReaderGate::Turn CReaderGate::BeginWork() {
    return Begin(Activity::Working);
}

CReaderGate::Turn CReaderGate::Begin(Activity activity) {
    const std::scoped_lock lock(m_mutex);
    SetActivity(TurnNow() == Turn::GoOn ? activity : Activity::Waiting);
    return TurnNow();
}

CReaderGate::Turn CReaderGate::Rest(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    SetActivity(Activity::Waiting);
    m_readerWakes.wait_for(lock, time, [this] { return TurnNow() != Turn::GoOn; });
    return TurnNow();
}

void CReaderGate::SetActivity(Activity activity) {
    if (m_activity == Activity::Working) m_workDone.notify_one();
    m_activity = activity;
    if (activity == Activity::Reading) m_readSince = Clock::now();
}

void CReaderGate::Hold() {
    const std::scoped_lock lock(m_mutex);
    m_bRunning = FALSE;
}

void CReaderGate::Run() {
    {
        const std::scoped_lock lock(m_mutex);
        m_bRunning = TRUE;
    }
    m_readerWakes.notify_one();
}

void CReaderGate::Move(const SeekPlan& plan, BOOL bRun) {
    {
        const std::scoped_lock lock(m_mutex);
        m_plan = plan;
        m_nMove = ++g_nLastMove;
        m_bRunning = bRun;
    }
    m_readerWakes.notify_one();
}

unsigned CReaderGate::GetMove() {
    const std::scoped_lock lock(m_mutex);
    return m_nMove;
}

void CReaderGate::End() {
    std::unique_lock lock(m_mutex);
    m_bEnding = TRUE;
    m_readerWakes.notify_one();
    m_workDone.wait(lock, [this] { return m_activity != Activity::Working; });
}

std::chrono::milliseconds CReaderGate::ReadingFor() {
    const std::scoped_lock lock(m_mutex);
    if (m_activity != Activity::Reading) return std::chrono::milliseconds(0);
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_readSince);
}
