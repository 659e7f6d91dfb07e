#pragma once

#include "codec/message_format.h"

// How far a player reads ahead. Rings keep one slot free, so that full and empty differ.

constexpr int kPictureSlots = 20;
constexpr int kMaxQueuedPictures = kPictureSlots - 1;

// Sound is queued by blocks of one speech frame: 20 ms each.
constexpr int kSoundBlockSlots = 250;
constexpr int kMaxQueuedBlocks = kSoundBlockSlots - 1;

// Whether the queues take whatever the next record holds: one picture or the frames of one speech block.
constexpr bool HasRoomForRecord(int queued_pictures, int queued_blocks) {
    return queued_pictures < kMaxQueuedPictures && queued_blocks + kFramesPerSpeechBlock <= kMaxQueuedBlocks;
}
