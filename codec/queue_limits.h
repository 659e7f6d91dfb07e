// SPDX-License-Identifier: MIT
#pragma once

#include "codec/message_format.h"

// How far a player reads ahead. Rings keep one slot free, so that full and empty differ.

constexpr int kPictureSlots = 20;
constexpr int kMaxQueuedPictures = kPictureSlots - 1;
// How many pictures speech may lag behind in the file without being held back. Three fewer than the queue
// takes: at five pictures a second a full queue of pictures then stands beside 600 ms of sound or more, and a
// sound device waits for less before it starts.
constexpr int kMaxPictureLead = kMaxQueuedPictures - 3;

// Sound is queued by blocks of one speech frame: 20 ms each.
constexpr int kSoundBlockSlots = 250;
constexpr int kMaxQueuedBlocks = kSoundBlockSlots - 1;
