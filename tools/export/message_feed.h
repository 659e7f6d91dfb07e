// SPDX-License-Identifier: MIT
#pragma once

#include <gsm/gsm.h>

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "codec/message_format.h"
#include "codec/message_time.h"
#include "tools/export/message_file.h"
#include "tools/export/time_range.h"

namespace tools {

// A stretch of a message as the player plays it, for takers that each go on at their own pace: sound,
// pictures, levels. The message is read once, front to back; what one taker has not come to yet is kept,
// pictures as their payloads. Times are the message's. Calls throw ToolError when the system has no memory
// for the decoder, and whatever `check`, which is called at each record, throws.
class MessageFeed {
public:
    struct Wants {
        bool sound = false;
        bool fill_gaps = true;  // silence where there is no speech; else speech alone
        bool pictures = false;
        int levels = 0;  // how many at once
    };

    // `message` stands at its first record.
    MessageFeed(MessageFile& message, const TimeRange& range, const Wants& wants,
                std::function<void()> check);

    const TimeRange& range() const { return range_; }
    int rate() const { return clock_.Rate(); }

    // Whether the stretch goes on beyond a time.
    bool LastsBeyond(int64_t milliseconds);

    // The next samples, a second of them at most; none at the stretch's end.
    std::span<const int16_t> TakeSound();

    // What is seen at a time, none before the first picture. Times asked for never go back.
    struct SeenPicture {
        int64_t number;  // from 0
        std::span<const uint8_t> payload;
    };
    const SeenPicture* PictureAt(int64_t milliseconds);

    // The levels (0 to 2, silence is 1) of the last frames before `frame`, oldest first: as many as are
    // wanted and there are. `frame` never goes back.
    std::span<const float> LevelsBefore(int64_t frame);

    // How much of the stretch a taker at this time has, 0 to 1, as far as can be said.
    double ShareAt(int64_t milliseconds) const;

private:
    struct Frame {
        int64_t number;
        std::array<int16_t, kSpeechFrameSamples> samples;
    };
    struct DestroyDecoder {
        void operator()(gsm state) const { gsm_destroy(state); }
    };

    void ReadRecord();
    void AddSpeech(std::span<const uint8_t> block);
    void AddPicture(std::span<const uint8_t> payload);
    bool AtSilence() const;

    MessageFile& message_;
    TimeRange range_;
    Wants wants_;
    std::function<void()> check_;
    std::unique_ptr<gsm_state, DestroyDecoder> decoder_;
    MessageClock clock_;
    bool ended_ = false;

    int64_t decode_from_;
    std::deque<Frame> speech_;
    int64_t sound_at_;  // the frame that TakeSound goes on with
    std::vector<int16_t> chunk_;

    std::deque<std::vector<uint8_t>> pictures_;
    int64_t first_picture_ = 0;  // the number of pictures_' first
    int64_t due_picture_;        // the last that was asked for
    SeenPicture seen_ = {};

    std::vector<float> levels_;
    int64_t levels_end_ = 0;  // the frame behind the last
};

}  // namespace tools
