// SPDX-License-Identifier: MIT
// What counts as unplugged, on sinks whose ports the test says.
#include "platform/pulse/pulse_output_watch.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <vector>

namespace {

struct Port {
    pa_device_port_type_t type;
    bool plugged = true;
};
constexpr Port kSpeakers{PA_DEVICE_PORT_TYPE_SPEAKER};
constexpr Port kHeadphones{PA_DEVICE_PORT_TYPE_HEADPHONES};
constexpr Port kUnplugged{PA_DEVICE_PORT_TYPE_HEADPHONES, false};
constexpr Port kNone{PA_DEVICE_PORT_TYPE_UNKNOWN};

std::map<std::uint32_t, Port> g_sinks;

}  // namespace

extern "C" {
pa_operation* __wrap_pa_context_get_sink_info_by_index(pa_context*, std::uint32_t, pa_sink_info_cb_t, void*);
void __wrap_pa_operation_unref(pa_operation*) {}
void __wrap_pa_operation_cancel(pa_operation*) {}

// Answers at once.
pa_operation* __wrap_pa_context_get_sink_info_by_index(pa_context* context, std::uint32_t index,
                                                       pa_sink_info_cb_t answer, void* asker) {
    const auto sink = g_sinks.find(index);
    if (sink == g_sinks.end()) {
        answer(context, nullptr, -1, asker);
        return nullptr;
    }
    pa_sink_port_info port{};
    port.type = sink->second.type;
    port.available = sink->second.plugged ? PA_PORT_AVAILABLE_YES : PA_PORT_AVAILABLE_NO;
    pa_sink_info info{};
    info.index = index;
    info.active_port = port.type == kNone.type ? nullptr : &port;
    answer(context, &info, 0, asker);
    answer(context, nullptr, 1, asker);
    return nullptr;
}
}

namespace {

TEST(PulseOutputWatch, HeadphonesAndSinksThatGoCountAsUnplugged) {
    using Sinks = std::map<std::uint32_t, Port>;
    struct Step {
        Sinks sinks;                       // as they are now
        std::optional<std::uint32_t> now;  // the one that the stream is on; none: it is gone
    };
    const struct {
        const char* what;
        std::vector<Step> steps;
        bool unplugged;  // by the last step, and by no other
    } cases[] = {
        {"headphones to speakers", {{{{1, kHeadphones}}, 1}, {{{1, kSpeakers}}, 1}}, true},
        {"speakers to headphones", {{{{1, kSpeakers}}, 1}, {{{1, kHeadphones}}, 1}}, false},
        {"no ports", {{{{1, kNone}}, 1}, {{{1, kNone}}, 1}}, false},
        {"the sink goes, its stream moves on", {{{{1, kNone}, {2, kNone}}, 1}, {{{2, kNone}}, 2}}, true},
        {"the sink goes with its stream", {{{{1, kSpeakers}}, 1}, {{}, {}}}, true},
        {"the stream alone goes", {{{{1, kSpeakers}}, 1}, {{{1, kSpeakers}}, {}}}, false},
        {"moved by a person",
         {{{{1, kHeadphones}, {2, kSpeakers}}, 1}, {{{1, kHeadphones}, {2, kSpeakers}}, 2}},
         false},
        {"headphones with a sink of their own",
         {{{{1, kHeadphones}, {2, kSpeakers}}, 1}, {{{1, kUnplugged}, {2, kSpeakers}}, 2}},
         true},
        {"a sink that was left before",
         {{{{1, kNone}, {2, kNone}}, 1}, {{{1, kNone}, {2, kNone}}, 2}, {{{2, kNone}}, 2}},
         false},
        {"back and gone",
         {{{{1, kNone}, {2, kNone}}, 1}, {{{1, kNone}, {2, kNone}}, 2}, {{{1, kNone}}, 1}},
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        int unplugged = 0;
        PulseOutputWatch watch([&] { ++unplugged; });
        for (const Step& step : c.steps) {
            EXPECT_EQ(unplugged, 0);
            g_sinks = step.sinks;
            if (step.now) {
                watch.Follow(nullptr, *step.now);
                watch.OnSinkChanged(*step.now);
            } else {
                watch.Leave();
            }
        }
        EXPECT_EQ(unplugged, c.unplugged ? 1 : 0);
    }
}

}  // namespace
