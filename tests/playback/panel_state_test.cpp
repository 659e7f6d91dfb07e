// SPDX-License-Identifier: MIT
// Every state with every event.
#include "playback/panel_state.h"

#include <gtest/gtest.h>

#include <map>

namespace {

TEST(PanelStateTest, EachEventLeadsWhereItShould) {
    using S = PanelState;
    using E = PanelEvent;
    using A = PanelAction;
    // Whatever is not listed changes nothing and asks for nothing.
    std::map<std::pair<S, E>, std::pair<S, A>> expected = {
        {{S::Playing, E::Pause}, {S::Paused, A::Hold}},
        {{S::Draining, E::Pause}, {S::Paused, A::Hold}},
        {{S::Interrupted, E::Pause}, {S::Paused, A::None}},
        {{S::Interrupted, E::Unplugged}, {S::Paused, A::None}},
        {{S::Interrupted, E::CallEnds}, {S::Playing, A::Start}},
        {{S::Playing, E::ReadAll}, {S::Draining, A::None}},
        {{S::Draining, E::ReadMore}, {S::Playing, A::None}},
        {{S::Draining, E::RanDry}, {S::Stopped, A::End}},
    };
    for (const S state : {S::Playing, S::Draining}) {
        expected[{state, E::CallBegins}] = {S::Interrupted, A::Hold};
        expected[{state, E::Unplugged}] = {S::Paused, A::Hold};
    }
    for (const S state : {S::Ready, S::Draining, S::Paused, S::Interrupted, S::Stopped})
        expected[{state, E::Play}] = {S::Playing, A::Start};
    for (const S state : {S::Ready, S::Playing, S::Draining, S::Paused, S::Interrupted})
        expected[{state, E::Stop}] = {S::Stopped, A::Rewind};
    for (const S state : {S::Ready, S::Playing, S::Draining, S::Paused, S::Interrupted, S::Stopped}) {
        const bool playing = state == S::Playing || state == S::Draining;
        expected[{state, E::Seek}] = {playing                   ? S::Playing
                                      : state == S::Interrupted ? S::Interrupted
                                                                : S::Paused,
                                      A::Move};
        expected[{state, E::Close}] = {S::NoMessage, A::Release};
    }
    for (int s = 0; s <= static_cast<int>(S::Stopped); ++s) {
        expected[{static_cast<S>(s), E::Opened}] = {S::Ready, A::None};
        for (int e = 0; e <= static_cast<int>(E::Close); ++e) {
            const auto key = std::pair(static_cast<S>(s), static_cast<E>(e));
            const auto found = expected.find(key);
            const PanelStep step = Step(key.first, key.second);
            EXPECT_EQ(step.state, found == expected.end() ? key.first : found->second.first) << s << ' ' << e;
            EXPECT_EQ(step.action, found == expected.end() ? A::None : found->second.second) << s << ' ' << e;
        }
    }
}

}  // namespace
