// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

#include "codec/message_format.h"
#include "codec/queue_limits.h"

// When things happen in a message. Time is counted from the message's start in frames of 20 ms, the unit of
// speech; the picture period is a whole number of milliseconds and need not be one of frames. Pure
// arithmetic, the same for the player, its index and the tools.
//
// Rules. With P the picture period, picture k (from 0) is due at (k + 1) * P. A speech block begins where the
// one before it ended, but no earlier than (n - kMaxPictureLead) * P when n pictures stand before it in
// the file: otherwise a queue full of pictures would keep the speech behind them waiting for good. Silence
// fills the gap. The message lasts until its last block has ended, or, where its last picture is due more
// than one period after that, until that picture has been shown for its period.

constexpr int64_t kFrameMilliseconds = 1000 * kSpeechFrameSamples / kSpeechSampleRate;

// The least number of frames that reach `milliseconds` (0 or more).
constexpr int64_t FramesFromMilliseconds(int64_t milliseconds) {
    return (milliseconds + kFrameMilliseconds - 1) / kFrameMilliseconds;
}

// `rate` is the header's: pictures per second, 0 for a message of speech alone, which has no pictures in
// time.
constexpr int64_t PicturePeriodMilliseconds(int rate) {
    return rate > 0 ? 1000 / rate : 0;
}

// The first frame at which picture `picture` (from 0) is due. `rate` above 0.
constexpr int64_t PictureDueFrame(int64_t picture, int rate) {
    return FramesFromMilliseconds((picture + 1) * PicturePeriodMilliseconds(rate));
}

// How many pictures are due once `frame` frames have been played, of a message that does not run out of them;
// the last of them is the one to be seen, none before the first period.
constexpr int64_t PicturesDueAt(int64_t frame, int rate) {
    return rate > 0 ? frame * kFrameMilliseconds / PicturePeriodMilliseconds(rate) : 0;
}

// The number of that picture; -1: none.
constexpr int64_t PictureAt(int64_t frame, int rate) {
    return PicturesDueAt(frame, rate) - 1;
}

// The place in time that a reader of a message's records has reached.
class MessageClock {
public:
    constexpr explicit MessageClock(int rate = 0) : m_rate(rate) {}
    // Within a message: `frame` is the end of the last speech block, `pictures` stand before here.
    constexpr MessageClock(int rate, int64_t frame, int64_t pictures)
        : m_rate(rate), m_frame(frame), m_pictures(pictures) {}

    // Where a speech block that stood here would begin.
    constexpr int64_t NextSpeechFrame() const {
        if (m_rate == 0) return m_frame;
        const int64_t earliest = (m_pictures - kMaxPictureLead) * PicturePeriodMilliseconds(m_rate);
        return std::max(m_frame, FramesFromMilliseconds(std::max<int64_t>(earliest, 0)));
    }
    // Frames of silence to play before such a block.
    constexpr int64_t SilenceBeforeSpeech() const { return NextSpeechFrame() - m_frame; }

    constexpr void AddSpeechBlock() { m_frame = NextSpeechFrame() + kFramesPerSpeechBlock; }
    constexpr void AddPicture() { ++m_pictures; }

    constexpr int Rate() const { return m_rate; }
    // End of the last speech block.
    constexpr int64_t SpeechEnd() const { return m_frame; }
    constexpr int64_t Pictures() const { return m_pictures; }

    // Length of the message if it ended here.
    constexpr int64_t Length() const {
        if (m_rate == 0 || m_pictures == 0) return m_frame;
        const int64_t period = PicturePeriodMilliseconds(m_rate);
        const int64_t allowed = m_frame == 0 ? 0 : m_frame * kFrameMilliseconds + period;
        const bool outlasts = m_pictures * period > allowed;
        return outlasts ? FramesFromMilliseconds((m_pictures + 1) * period) : m_frame;
    }

private:
    int m_rate;
    int64_t m_frame = 0;
    int64_t m_pictures = 0;
};
