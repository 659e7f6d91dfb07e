// SPDX-License-Identifier: MIT
// How the player introduces itself to the sound server. The server remembers volume, mute and device of what
// the player plays under the application id, so that one never changes.
#pragma once

#include <string_view>

inline constexpr char kApplicationName[] = "Trivelle Message Player";
inline constexpr char kApplicationId[] = "trivelle.MessagePlayer";
inline constexpr char kApplicationIcon[] = "com.trivelle.MessagePlayer";
inline constexpr char kMediaName[] = "Recorded message";
// Of those that a server asks to be silent while a call goes on.
inline constexpr char kMediaRole[] = "video";

// The name under which the server's stream-restore database keeps them.
inline constexpr char kRestoreName[] = "sink-input-by-application-id:trivelle.MessagePlayer";
static_assert(std::string_view(kRestoreName).ends_with(kApplicationId));
