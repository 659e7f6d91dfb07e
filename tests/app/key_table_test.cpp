// SPDX-License-Identifier: MIT
// Which key is which command, and what the commands come to.
#include "app/key_table.h"

#include <gtest/gtest.h>

#include <climits>

#include "app/play_commands.h"
#include "audio/play_speed.h"
#include "codec/message_format.h"

namespace {

UINT CommandOf(WPARAM nKey, UINT nModifiers) {
    const CKeyCommand* pKey = FindKey(nKey, nModifiers);
    return pKey == nullptr ? 0 : pKey->nCommand;
}

TEST(KeyTable, EachKeyWithItsModifiersIsOneCommand) {
    EXPECT_EQ(CommandOf(VK_LEFT, 0), UINT{ID_PLAY_BACK_5});
    EXPECT_EQ(CommandOf(VK_LEFT, MK_SHIFT), UINT{ID_PLAY_BACK_1});
    EXPECT_EQ(CommandOf('9', 0), CommandOf(VK_DOWN, 0));
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE, WPARAM{0}}) EXPECT_EQ(CommandOf(key, 0), 0U);
    EXPECT_EQ(CommandOf('M', MK_CONTROL), 0U);
    EXPECT_FALSE(FindKey('M', 0)->bRepeats);
    for (const CKeyCommand& entry : kKeyTable)
        EXPECT_EQ(FindKey(entry.nKey, entry.nModifiers), &entry) << "hidden by one before it: " << entry.nKey;
}

TEST(PlayCommands, MovesStayWithinTheMessage) {
    const struct {
        UINT command;
        int position, length, target;
    } cases[] = {
        {ID_PLAY_BACK_5, 1000, 5000, 750},   {ID_PLAY_BACK_5, 100, 5000, 0},
        {ID_PLAY_ON_5, 1000, 5000, 1250},    {ID_PLAY_ON_5, INT_MAX - 9, INT_MAX, INT_MAX},
        {ID_PLAY_BACK_1, 1000, 5000, 950},   {ID_PLAY_ON_1, 1000, 5000, 1050},
        {ID_PLAY_BACK_TENTH, 9, 8, 8},       {ID_PLAY_ON_TENTH, 3, 8, 4},
        {ID_PLAY_ON_TENTH, 900, 5000, 1400}, {ID_PLAY_TO_START, 900, 5000, 0},
        {ID_PLAY_TO_END, 900, 5000, 5000},   {ID_PLAY_ON_5, 0, 0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MoveTarget(c.command, c.position, c.length), c.target) << c.command << ", " << c.position;
}

TEST(PlayCommands, TheVolumeStepsByATwentiethOfItsRange) {
    EXPECT_EQ(SteppedVolume(30000, 0, 65535, true), 33277U);
    EXPECT_EQ(SteppedVolume(30000, 0, 65535, false), 26723U);
    EXPECT_EQ(SteppedVolume(64000, 0, 65535, true), 65535U);
    EXPECT_EQ(SteppedVolume(5, 3, 65535, false), 3U);
    EXPECT_EQ(SteppedVolume(5, 0, 7, true), 6U);
}

TEST(PlayCommands, SpeedsFollowEachOtherAndEndAtTheLast) {
    int speed = kNormalSpeed;
    for (const int expected : {125, 150, 175, 200, 250, 300, 300})
        EXPECT_EQ(speed = SteppedSpeed(speed, 1), expected);
    for (const int expected : {250, 200, 175, 150, 125, 100, 75, 50, 50})
        EXPECT_EQ(speed = SteppedSpeed(speed, -1), expected);
    for (const int each : kSpeeds)
        EXPECT_EQ(kSpeechFrameSamples * each % kNormalSpeed, 0) << "whole samples in a block";
}

}  // namespace
