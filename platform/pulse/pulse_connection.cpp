#include "platform/pulse/pulse_connection.h"

#include <pulse/proplist.h>

#include <utility>

#include "platform/pulse/identity.h"

namespace {

pa_context* NewContext(pa_mainloop_api* api) {
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, kApplicationName);
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, kApplicationId);
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, kApplicationIcon);
    pa_context* context = pa_context_new_with_proplist(api, kApplicationName, properties);
    pa_proplist_free(properties);
    return context;
}

}  // namespace

PulseConnection::PulseConnection() : m_loop([this] { return MakeContext(); }) {
    m_state = State::kWanted;
    m_loop.Start();
}

PulseConnection::~PulseConnection() {
    m_loop.Stop();
    Release();
}

void PulseConnection::Connect() {
    if (m_state != State::kNone) return;
    m_state = State::kWanted;
    m_loop.Wake();
}

bool PulseConnection::WaitReady(std::unique_lock<std::mutex>& lock, PulseLoop::Clock::time_point deadline) {
    Connect();
    m_loop.WaitUntil(lock, deadline, [this] { return m_state == State::kReady || m_state == State::kNone; });
    return m_state == State::kReady;
}

bool PulseConnection::MakeContext() {
    {
        const auto lock = m_loop.Lock();
        if (m_state != State::kWanted) return false;
        m_state = State::kConnecting;
    }
    // While the state says connecting nobody else touches anything of libpulse's.
    pa_context* context = NewContext(m_loop.Api());
    if (context != nullptr) pa_context_connect(context, nullptr, PA_CONTEXT_NOFLAGS, nullptr);

    const auto lock = m_loop.Lock();
    m_context = context;
    if (context != nullptr) {
        pa_context_set_state_callback(
            context, [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->OnState(); }, this);
    }
    OnState();
    return true;
}

void PulseConnection::OnState() {
    const pa_context_state_t state =
        m_context != nullptr ? pa_context_get_state(m_context) : PA_CONTEXT_FAILED;
    if (state == PA_CONTEXT_READY) {
        m_state = State::kReady;
        for (ConnectionWatcher* watcher : m_watchers) watcher->OnConnected();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        SetLost();
    }
    m_loop.Signal();
}

void PulseConnection::Drop() {
    if (m_context == nullptr) return;
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    SetLost();
    m_loop.Signal();
}

void PulseConnection::SetLost() {
    // The watchers let go of what they have of the context while it is still there.
    if (std::exchange(m_state, State::kNone) == State::kReady)
        for (ConnectionWatcher* watcher : m_watchers) watcher->OnLost();
    Release();
}

void PulseConnection::Release() {
    if (m_context == nullptr) return;
    pa_context* context = std::exchange(m_context, nullptr);
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}
