// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstdio>

#include "codec/message_time.h"
#include "tools/export/film_pictures.h"

// The player's trace: its layout, its colours and its limits are those of the window that scrolls it.

namespace tools {
namespace {

constexpr int64_t kPeriodMs = 40;

constexpr Colour kGround = {0, 0, 0};
constexpr Colour kGrid = {0x1F, 0x1F, 0x1F};
constexpr Colour kTrace = {0, 0xFF, 0};
constexpr Colour kText = {0xE0, 0xE0, 0xE0};

constexpr int kMargin = 4;
constexpr int kTextDot = 2;
constexpr int kTextHeight = 5 * kTextDot;
constexpr int kTextTop = kPictureHeight - kTextHeight - kMargin;
constexpr int kRight = kPictureWidth - kMargin;
constexpr int kBottom = kTextTop - 2 * kMargin;
constexpr int kGridRows = 5;
constexpr int kGridStep = (kBottom - kMargin) / kGridRows;

constexpr int kShift = 2;  // pixels per level
constexpr float kUpper = 2.0F;
constexpr float kEdge = 0.001F;  // how far inside the range a level at one of its ends is drawn

int LevelY(float level) {
    constexpr float kScale = static_cast<float>(kBottom - kMargin) / kUpper;
    return kBottom - static_cast<int>(level * kScale);
}

Canvas DrawGrid() {
    Canvas grid(kPictureWidth, kPictureHeight);
    grid.Fill({0, 0, kPictureWidth, kPictureHeight}, kGround);
    const auto horizontal = [&](int y) { grid.Fill({kMargin, y, kRight + 1 - kMargin, 1}, kGrid); };
    const auto vertical = [&](int x) { grid.Fill({x, kMargin, 1, kBottom + 1 - kMargin}, kGrid); };
    for (int k = 0; k < kGridRows; ++k) horizontal(kMargin + k * kGridStep);
    grid.Fill({kMargin, kBottom + 1, kRight + 2 - kMargin, 1}, kGrid);
    vertical(kMargin);
    grid.Fill({kRight + 1, kMargin, 1, kBottom + 2 - kMargin}, kGrid);
    for (int k = 1; k < (kRight - kMargin) / kGridStep; ++k) vertical(kRight - k * kGridStep);
    return grid;
}

}  // namespace

const int TracePictures::kLevels = (kRight - kMargin) / kShift + 1;

TracePictures::TracePictures(MessageFeed& feed)
    : FilmPictures(feed, kPeriodMs, kPeriodMs, false),
      grid_(DrawGrid()),
      canvas_(kPictureWidth, kPictureHeight) {}

std::span<const uint8_t> TracePictures::Draw(int64_t milliseconds) {
    const int64_t frame = milliseconds / kFrameMilliseconds;
    canvas_.CopyFrom(grid_);
    const std::span<const float> levels = feed().LevelsBefore(frame);
    // The last level ends half a shift before the right edge. The first of all comes up from the bottom.
    int x = kRight - kShift / 2 - kShift * static_cast<int>(levels.size());
    int y = kBottom;
    const bool from_start = std::ssize(levels) == frame;
    const Canvas::Rect clip = {kMargin, kMargin - 1, kRight + 1 - kMargin, kBottom + 2 - kMargin};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const int next = LevelY(std::clamp(levels[i], kEdge, kUpper - kEdge));
        if (i > 0 || from_start) canvas_.OrLine({x, y}, {x + kShift, next}, clip, kTrace);
        x += kShift;
        y = next;
    }
    constexpr int64_t kFramesPerMinute = 60 * 1000 / kFrameMilliseconds;
    std::array<char, 48> text;
    std::snprintf(text.data(), text.size(), "%02d mins, %.1f secs",
                  static_cast<int>(frame / kFramesPerMinute),
                  static_cast<double>(frame % kFramesPerMinute * kFrameMilliseconds) / 1000);
    canvas_.DrawText(text.data(), kRight - kTextDot * Canvas::TextWidth(text.data()), kTextTop, kTextDot,
                     kText);
    return canvas_.pixels();
}

}  // namespace tools
