// SPDX-License-Identifier: MIT
// The keys of the main window, beside those of the desktop that the menu shows.
#pragma once

#include <algorithm>
#include <iterator>

#include "platform/framework/winuser.h"
#include "res/resource.h"

struct CKeyCommand {
    WPARAM nKey;      // VK_…, or the capital letter or digit
    UINT nModifiers;  // MK_SHIFT and MK_CONTROL, as they must be held
    UINT nCommand;
    BOOL bRepeats;  // goes on while the key is held
};

inline constexpr CKeyCommand kKeyTable[] = {
    {VK_SPACE, 0, ID_PLAY_PLAYPAUSE, FALSE},
    {VK_LEFT, 0, ID_PLAY_BACK_5, TRUE},
    {VK_RIGHT, 0, ID_PLAY_ON_5, TRUE},
    {VK_LEFT, MK_SHIFT, ID_PLAY_BACK_1, TRUE},
    {VK_RIGHT, MK_SHIFT, ID_PLAY_ON_1, TRUE},
    {VK_PRIOR, 0, ID_PLAY_BACK_TENTH, TRUE},
    {VK_NEXT, 0, ID_PLAY_ON_TENTH, TRUE},
    {VK_HOME, 0, ID_PLAY_TO_START, FALSE},
    {VK_END, 0, ID_PLAY_TO_END, FALSE},
    {VK_OEM_COMMA, 0, ID_PLAY_PREVIOUS_PICTURE, TRUE},
    {VK_OEM_PERIOD, 0, ID_PLAY_NEXT_PICTURE, TRUE},
    {VK_UP, 0, ID_PLAY_LOUDER, TRUE},
    {VK_DOWN, 0, ID_PLAY_QUIETER, TRUE},
    {'0', 0, ID_PLAY_LOUDER, TRUE},
    {'9', 0, ID_PLAY_QUIETER, TRUE},
    {'M', 0, ID_PLAY_MUTE, FALSE},
    {VK_OEM_4, 0, ID_PLAY_SLOWER, TRUE},
    {VK_OEM_6, 0, ID_PLAY_FASTER, TRUE},
    {VK_BACK, 0, ID_PLAY_NORMAL_SPEED, FALSE},
};

// What a key does; null for a key that the window has no use for.
constexpr const CKeyCommand* FindKey(WPARAM nKey, UINT nModifiers) {
    const auto* const pFound =
        std::find_if(std::begin(kKeyTable), std::end(kKeyTable),
                     [=](const auto& entry) { return entry.nKey == nKey && entry.nModifiers == nModifiers; });
    return pFound == std::end(kKeyTable) ? nullptr : pFound;
}
