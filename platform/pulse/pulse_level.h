// SPDX-License-Identifier: MIT
// Volume and mute of something that sounds, and how they stand to the sound server's: between the mixer's
// volumes, 0 to 65535, and 0 to PA_VOLUME_NORM.
//
// The server's volumes are cubic in the amplitude, so even steps of them sound even; the two differ by a
// factor of 65536 / 65535 only, and every mixer value survives the way there and back.
#pragma once

#include <pulse/volume.h>

#include <algorithm>

#include "platform/sound/sound_drivers.h"

inline constexpr DWORD kLoudestVolume = 65535;

constexpr pa_volume_t ToServer(DWORD value) {
    return value + (value > kLoudestVolume / 2 ? 1 : 0);
}

// Volumes beyond 100 % count as 100 %.
constexpr DWORD FromServer(pa_volume_t volume) {
    const pa_volume_t within = std::min<pa_volume_t>(volume, PA_VOLUME_NORM);
    return within - (within > kLoudestVolume / 2 + 1 ? 1 : 0);
}

// Both are monotonic, so the ends and the middle tell for all.
static_assert(ToServer(0) == PA_VOLUME_MUTED && ToServer(kLoudestVolume) == PA_VOLUME_NORM);
static_assert(FromServer(ToServer(0)) == 0 && FromServer(ToServer(1)) == 1);
static_assert(FromServer(ToServer(32767)) == 32767 && FromServer(ToServer(32768)) == 32768);
static_assert(FromServer(ToServer(65534)) == 65534 && FromServer(ToServer(65535)) == 65535);

inline DWORD LoudestOf(const pa_cvolume& volume) {
    return volume.channels != 0 ? FromServer(pa_cvolume_max(&volume)) : kLoudestVolume;
}

struct PulseLevel {
    DWORD volume = kLoudestVolume;
    bool muted = false;

    bool operator==(const PulseLevel&) const = default;
};
