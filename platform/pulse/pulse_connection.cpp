// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_connection.h"

#include <pulse/mainloop-api.h>
#include <pulse/proplist.h>

#include <string_view>
#include <utility>

#include "platform/pulse/identity.h"
#include "platform/pulse/pulse_question.h"

PulseConnection::PulseConnection() {
    const std::scoped_lock lock(m_loop);
    Connect(true);
}

PulseConnection::~PulseConnection() {
    m_loop.Stop();
    Release();
}

void PulseConnection::Connect(bool maySpawn) {
    if (m_state != State::kNone) return;
    m_state = State::kConnecting;
    m_maySpawn = maySpawn;
    pa_mainloop_api_once(m_loop.Api(), PulseCallback<&PulseConnection::MakeContext>{}, this);
}

bool PulseConnection::WaitReady(PulseLoop::Clock::time_point deadline) {
    Connect(true);
    m_loop.WaitUntil(deadline, [this] { return m_state != State::kConnecting; });
    return m_state == State::kReady;
}

void PulseConnection::MakeContext() {
    if (m_state != State::kConnecting || m_context != nullptr) return;
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, kApplicationName);
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, kApplicationId);
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, kApplicationIcon);
    m_context = pa_context_new_with_proplist(m_loop.Api(), kApplicationName, properties);
    pa_proplist_free(properties);
    if (m_context != nullptr) {
        pa_context_set_state_callback(m_context, PulseCallback<&PulseConnection::OnState>{}, this);
        pa_context_connect(m_context, nullptr, m_maySpawn ? PA_CONTEXT_NOFLAGS : PA_CONTEXT_NOAUTOSPAWN,
                           nullptr);
    }
    OnState();
}

void PulseConnection::OnState() {
    const pa_context_state_t state =
        m_context != nullptr ? pa_context_get_state(m_context) : PA_CONTEXT_FAILED;
    if (!PA_CONTEXT_IS_GOOD(state)) return SetLost();
    if (state != PA_CONTEXT_READY || m_state == State::kReady) return;
    m_state = State::kReady;
    pa_context_set_subscribe_callback(m_context, PulseCallback<&PulseConnection::OnEvent>{}, this);
    constexpr auto mask = static_cast<pa_subscription_mask_t>(
        PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SINK_INPUT | PA_SUBSCRIPTION_MASK_SERVER);
    Forget(pa_context_subscribe(m_context, mask, nullptr, nullptr));
    Forget(pa_context_get_server_info(m_context, PulseCallback<&PulseConnection::OnServer>{}, this));
    for (ConnectionWatcher* watcher : m_watchers) watcher->OnConnected();
    m_loop.Signal();
}

void PulseConnection::OnEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    const auto facility =
        static_cast<pa_subscription_event_type_t>(event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK);
    const auto type = static_cast<pa_subscription_event_type_t>(event & PA_SUBSCRIPTION_EVENT_TYPE_MASK);
    Announce(facility, type, index);
}

void PulseConnection::Announce(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                               std::uint32_t index) {
    for (ConnectionWatcher* watcher : m_watchers) watcher->OnChange(facility, type, index);
}

void PulseConnection::OnServer(const pa_server_info* info) {
    m_isPulseAudio =
        info != nullptr && std::string_view(info->server_name).find("PipeWire") == std::string_view::npos;
}

void PulseConnection::SetLost() {
    m_isPulseAudio = false;
    // The watchers let go of what they have of the context while it is still there.
    if (std::exchange(m_state, State::kNone) == State::kReady)
        for (ConnectionWatcher* watcher : m_watchers) watcher->OnLost();
    Release();
    m_loop.Signal();
}

void PulseConnection::Release() {
    if (m_context == nullptr) return;
    pa_context* context = std::exchange(m_context, nullptr);
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}
