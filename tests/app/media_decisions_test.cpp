// SPDX-License-Identifier: MIT
// What other programs' numbers and people's file names come to, at their edges.
#include "app/media_decisions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "app/natural_order.h"
#include "app/play_commands.h"

namespace {

TEST(NaturalOrder, PutsEachNameBeforeAllThatFollow) {
    // Names that differ in zeros or case alone are told apart by their bytes; the rest by what a person
    // reads.
    constexpr std::string_view kOrder[] = {"",
                                           "1",
                                           "2 b.trv",
                                           "2.trv",
                                           "10.trv",
                                           "99999999999999999999",
                                           "100000000000000000000",
                                           "a",
                                           "a 1",
                                           "A1",
                                           "a01",
                                           "a1",
                                           "a2b1",
                                           "a2b10",
                                           "a10",
                                           "b0",
                                           "b00x",
                                           "\xff"};
    for (std::size_t i = 0; i < std::size(kOrder); ++i)
        for (std::size_t j = 0; j < std::size(kOrder); ++j)
            EXPECT_EQ(NaturalLess(kOrder[i], kOrder[j]), i < j) << kOrder[i] << " and " << kOrder[j];
}

TEST(MediaDecisions, StepsAndPositionsOfAnySizeStayInTheMessage) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr int kLongest = std::numeric_limits<int>::max();
    const struct {
        std::int64_t offset;
        int position;
        int length;
        std::optional<int> frame;
    } steps[] = {
        {1000000, 10, 100, 60},
        {-1000000, 10, 100, 0},
        {kLeast, 99, 100, 0},
        {kMost, 0, 100, std::nullopt},
        {1800000, 10, 100, std::nullopt},
        {1780000, 10, 100, 99},
        {0, 5, 0, 0},
        {kLeast, kLongest, kLongest, 0},
        {kMost, kLongest, kLongest, std::nullopt},
        {-20000, kLongest, kLongest, kLongest - 1},
    };
    for (const auto& step : steps)
        EXPECT_EQ(FrameAfterStep(step.offset, step.position, step.length), step.frame) << step.offset;
    for (const auto& [position, frame] : {std::pair<std::int64_t, std::optional<int>>(0, 0),
                                          {2000000, 100},
                                          {2000001, std::nullopt},
                                          {-1, std::nullopt},
                                          {1999999, 99},
                                          {kMost, std::nullopt},
                                          {kLeast, std::nullopt}})
        EXPECT_EQ(FrameOfPosition(position, 100), frame) << position;
}

TEST(MediaDecisions, SharesOfTheVolumeAreWithinItsRange) {
    for (const auto& [share, volume] : {std::pair(0.0, 100U),
                                        {1.0, 300U},
                                        {0.5, 200U},
                                        {-1e300, 100U},
                                        {1e300, 300U},
                                        {std::numeric_limits<double>::infinity(), 300U}}) {
        EXPECT_EQ(VolumeOfShare(share, 100, 300), volume);
        EXPECT_EQ(VolumeShare(volume, 100, 300), std::clamp(share, 0.0, 1.0));
    }
    EXPECT_EQ(VolumeShare(5, 7, 7), 1);
    EXPECT_EQ(VolumeOfShare(0.5, 7, 7), 7U);
    EXPECT_EQ(VolumeOfShare(1.0, 0, 0xFFFFFFFFU), 0xFFFFFFFFU);
}

}  // namespace
