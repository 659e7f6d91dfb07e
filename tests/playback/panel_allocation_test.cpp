// SPDX-License-Identifier: MIT
// What is allocated on other threads than the window's while a message plays.
#include "tests/playback/player_fixture.h"
#include "tests/support/allocation_probe.h"

namespace {

using PanelAllocation = PlayerTest;

TEST_F(PanelAllocation, ReadingAndPacingAllocateNothingPerRecord) {
    if (!allocation_probe::Counts()) GTEST_SKIP() << "allocations are not counted in this build";
    for (const auto& [rate, speed] : {std::pair(0, 100), {5, 100}, {5, 150}, {0, 50}}) {
        SCOPED_TRACE(testing::Message() << rate << ' ' << speed);
        MessageBuilder message(rate, 600);
        for (int i = 0; i < 60; ++i) {
            message.Speech(1);
            if (rate != 0) message.Picture();
        }
        ASSERT_TRUE(Open(message));
        Panel().SetSpeed(speed);
        // The buffers are made when the threads start.
        Panel().Play();
        WaitForReader();
        const size_t before = m_sound->BlocksWritten();
        const long allocations = allocation_probe::OnOtherThreads();
        EXPECT_TRUE(Hear(150));
        HeadlessToolkit::PumpFor(450);
        WaitForReader();
        EXPECT_EQ(allocation_probe::OnOtherThreads(), allocations);
        EXPECT_GT(m_sound->BlocksWritten(), before);
        Panel().Close();
    }
}

}  // namespace
