// SPDX-License-Identifier: MIT
// The program's one connection to the sound server, made again when it is lost and somebody needs it.
//
// Everything with the loop's lock held, but for construction and destruction.
#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/subscribe.h>

#include <cstdint>
#include <vector>

#include "platform/pulse/pulse_loop.h"

// Learns when the connection comes and goes, and what changes at the server. Called on the loop's thread.
class ConnectionWatcher {
public:
    virtual ~ConnectionWatcher() = default;
    virtual void OnConnected() {}
    virtual void OnLost() {}
    // Of a sink, a playback stream (whoever's) or the server, as `facility` says.
    virtual void OnChange(pa_subscription_event_type_t /*facility*/, pa_subscription_event_type_t /*type*/,
                          std::uint32_t /*index*/) {}
};

class PulseConnection {
public:
    // Starts connecting, on the loop's thread.
    PulseConnection();
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    PulseLoop& Loop() { return m_loop; }

    // Starts connecting unless that is under way or done, on the loop's thread: reading the client's
    // configuration takes a millisecond. Where that configuration asks for it, a server is started if one
    // `maySpawn`.
    void Connect(bool maySpawn = false);

    // Connects if need be and waits for the outcome, until the deadline at most, with the lock released.
    // False when there is no server or it does not answer.
    bool WaitReady(PulseLoop::Clock::time_point deadline);

    // The connected context, or null.
    pa_context* Ready() const { return m_state == State::kReady ? m_context : nullptr; }

    // Whether the server is PulseAudio's own, not PipeWire's.
    bool IsPulseAudio() const { return m_isPulseAudio; }

    // Gives the server up; the next Connect starts anew. Not in a callback of libpulse's.
    void Drop() { SetLost(); }

    // Tells the watchers, also what somebody else has learnt: PipeWire's server does not announce each move
    // of a stream.
    void Announce(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                  std::uint32_t index);

    void Watch(ConnectionWatcher& watcher) { m_watchers.push_back(&watcher); }
    void Unwatch(ConnectionWatcher& watcher) { std::erase(m_watchers, &watcher); }

private:
    enum class State { kNone, kConnecting, kReady };

    void MakeContext();
    void OnState();
    void OnEvent(pa_subscription_event_type_t event, std::uint32_t index);
    void OnServer(const pa_server_info* info);
    void SetLost();
    void Release();

    PulseLoop m_loop;
    pa_context* m_context = nullptr;
    State m_state = State::kNone;
    bool m_maySpawn = false;
    bool m_isPulseAudio = false;
    std::vector<ConnectionWatcher*> m_watchers;
};
