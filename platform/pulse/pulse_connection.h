// The program's one connection to the sound server, made again when it is lost and somebody needs it.
#pragma once

#include <pulse/context.h>

#include <chrono>
#include <mutex>
#include <vector>

#include "platform/pulse/pulse_loop.h"

// Learns when the connection comes and goes. Called on the loop's thread with the lock held.
class ConnectionWatcher {
public:
    virtual ~ConnectionWatcher() = default;
    virtual void OnConnected() = 0;
    virtual void OnLost() = 0;
};

class PulseConnection {
public:
    // Starts connecting, on the loop's thread.
    PulseConnection();
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    PulseLoop& Loop() { return m_loop; }

    // Starts connecting unless that is under way or done. Lock held.
    void Connect();

    // Connects if need be and waits for the outcome, until the deadline at most. Lock held; released while
    // waiting. False when there is no server or it does not answer.
    bool WaitReady(std::unique_lock<std::mutex>& lock, PulseLoop::Clock::time_point deadline);

    // The connected context, or null. Lock held.
    pa_context* Ready() const { return m_state == State::kReady ? m_context : nullptr; }

    // Gives the server up; the next Connect starts anew. Lock held, not in a callback of libpulse's.
    void Drop();

    // Lock held.
    void Watch(ConnectionWatcher& watcher) { m_watchers.push_back(&watcher); }
    void Unwatch(ConnectionWatcher& watcher) { std::erase(m_watchers, &watcher); }

private:
    enum class State { kNone, kWanted, kConnecting, kReady };

    // Makes the context when one is wanted. On the loop's thread, lock not held: reading the configuration
    // takes time, and a client configuration that starts a server of its own waits for it.
    bool MakeContext();
    void OnState();
    void SetLost();
    void Release();

    PulseLoop m_loop;
    pa_context* m_context = nullptr;
    State m_state = State::kNone;
    std::vector<ConnectionWatcher*> m_watchers;
};
