#include "tools/encode/message_writer.h"

#include <gtest/gtest.h>

TEST(MessageLayout, PicturesGoBeforeTheSpeechOfTheirTime) {
    // rate, block of 200 ms, pictures whose time has come before its end
    const struct {
        int rate;
        uint64_t block, due;
    } cases[] = {
        {1, 0, 1}, {1, 4, 1}, {1, 5, 2}, {1, 9, 2}, {1, 10, 3},   {2, 0, 1},     {2, 2, 2}, {2, 4, 2},
        {2, 5, 3}, {3, 0, 1}, {3, 1, 2}, {3, 3, 3}, {3, 4, 4},    {3, 9, 7},     {4, 0, 1}, {4, 1, 2},
        {4, 2, 3}, {4, 5, 5}, {5, 0, 1}, {5, 1, 2}, {5, 99, 100}, {5, 100, 101},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tools::PicturesDueBy(c.block, c.rate), c.due) << "rate " << c.rate << " block " << c.block;
    }
    // As many blocks as it takes are exactly those that bring the last picture its time.
    for (int rate = 1; rate <= kMaxVideoRate; ++rate) {
        for (uint64_t pictures = 1; pictures < 60; ++pictures) {
            const uint64_t blocks = tools::BlocksNeededFor(pictures, rate);
            const uint64_t period = static_cast<uint64_t>(1000 / rate);
            EXPECT_GE(blocks * tools::kBlockMilliseconds, pictures * period);
            EXPECT_LT((blocks - 1) * tools::kBlockMilliseconds, pictures * period);
            EXPECT_GE(tools::PicturesDueBy(blocks - 1, rate), pictures);
        }
    }
}
