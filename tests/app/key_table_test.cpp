// Which key is which command, and what the commands come to.
#include "app/key_table.h"

#include <gtest/gtest.h>

#include "app/play_commands.h"

namespace {

UINT CommandOf(WPARAM nKey, UINT nModifiers) {
    const CKeyCommand* pKey = FindKey(nKey, nModifiers);
    return pKey == nullptr ? 0 : pKey->nCommand;
}

TEST(KeyTable, EachKeyWithItsModifiersIsOneCommand) {
    EXPECT_EQ(CommandOf('0', 0), UINT{ID_PLAY_LOUDER});
    EXPECT_EQ(CommandOf('9', 0), CommandOf(VK_DOWN, 0));
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE, VK_SPACE, WPARAM{0}}) EXPECT_EQ(CommandOf(key, 0), 0U);
    EXPECT_EQ(CommandOf('M', MK_CONTROL), 0U);
    EXPECT_FALSE(FindKey('M', 0)->bRepeats);
    for (const CKeyCommand& entry : kKeyTable)
        EXPECT_EQ(FindKey(entry.nKey, entry.nModifiers), &entry) << "hidden by one before it: " << entry.nKey;
}

TEST(PlayCommands, TheVolumeStepsByATwentiethOfItsRange) {
    EXPECT_EQ(SteppedVolume(30000, 0, 65535, true), 33277U);
    EXPECT_EQ(SteppedVolume(30000, 0, 65535, false), 26723U);
    EXPECT_EQ(SteppedVolume(64000, 0, 65535, true), 65535U);
    EXPECT_EQ(SteppedVolume(5, 3, 65535, false), 3U);
    EXPECT_EQ(SteppedVolume(5, 0, 7, true), 6U);
}

}  // namespace
