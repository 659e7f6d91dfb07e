// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

// The size of a picture, and every size that follows from it.

constexpr int kPictureWidth = 320;
constexpr int kPictureHeight = 240;

// A picture: rows of kPictureWidth pixels of the bytes B, G, R, without gaps. Row 0 is the bottom line when
// shown.
constexpr int kPictureRowBytes = 3 * kPictureWidth;
constexpr size_t kPictureBytes = size_t{kPictureRowBytes} * kPictureHeight;

// Each level of the wavelet transform turns the top left region of a plane, LevelWidth(level - 1) x
// LevelHeight(level - 1), into the four subbands LL, HL (high-pass along rows), LH (high-pass along columns)
// and HH of LevelWidth(level) x LevelHeight(level). Level 0 is the whole plane.
constexpr int LevelWidth(int level) {
    return kPictureWidth >> level;
}
constexpr int LevelHeight(int level) {
    return kPictureHeight >> level;
}
constexpr size_t LevelSize(int level) {
    return static_cast<size_t>(LevelWidth(level)) * static_cast<size_t>(LevelHeight(level));
}
constexpr int kLumaLevels = 3;
constexpr int kChromaLevels = 4;

// Coded detail of Y: HL, LH and HH of the coarse level, HL and LH of the fine one.
constexpr int kCoarseLevel = 3;
constexpr int kFineLevel = 2;

// Detail belongs to block positions of 16 x 16 pixels, numbered row by row.
constexpr int kBlockPixels = 16;
constexpr int kBlockColumns = kPictureWidth / kBlockPixels;
constexpr int kBlockRows = kPictureHeight / kBlockPixels;
constexpr int kBlockCount = kBlockColumns * kBlockRows;

// A block position's width and height within a subband of a level.
constexpr int BlockSide(int level) {
    return kBlockPixels >> level;
}
constexpr int kCoarsePerBlock = 3 * BlockSide(kCoarseLevel) * BlockSide(kCoarseLevel);
constexpr int kFinePerBlock = 2 * BlockSide(kFineLevel) * BlockSide(kFineLevel);
