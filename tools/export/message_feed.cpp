// SPDX-License-Identifier: MIT
#include "tools/export/message_feed.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

#include "codec/speech_frame.h"

namespace tools {
namespace {

constexpr std::size_t kChunkSamples = kSpeechSampleRate;
// A reader in the player is at most so far ahead of what is heard; a picture that comes later is late.
constexpr int64_t kReadAhead = kMaxQueuedBlocks - kFramesPerSpeechBlock;

}  // namespace

MessageFeed::MessageFeed(MessageFile& message, const TimeRange& range, const Wants& wants,
                         std::function<void()> check)
    : message_(message),
      range_(range),
      wants_(wants),
      check_(std::move(check)),
      decoder_(gsm_create()),
      clock_(message.rate()),
      decode_from_(range.from - kSpeechPrerollFrames - wants.levels),
      sound_at_(range.from),
      due_picture_(::PictureAt(range.from, message.rate())) {
    if (!decoder_) throw std::bad_alloc();
    chunk_.reserve(kChunkSamples + kSpeechFrameSamples);
}

void MessageFeed::ReadRecord() {
    check_();
    const MessageRecord record = message_.Read();
    switch (record.kind) {
        case MessageRecordKind::Speech:
            AddSpeech(record.body);
            break;
        case MessageRecordKind::Video:
            if (rate() == 0) break;
            if (wants_.pictures) AddPicture(record.body);
            clock_.AddPicture();
            break;
        case MessageRecordKind::Skipped:
            break;
        case MessageRecordKind::End:
            check_();
            ended_ = true;
            break;
    }
}

void MessageFeed::AddSpeech(std::span<const uint8_t> block) {
    const int64_t begin = clock_.NextSpeechFrame();
    clock_.AddSpeechBlock();
    if (!wants_.sound && wants_.levels == 0) return;
    for (int i = 0; i < kFramesPerSpeechBlock; ++i) {
        const int64_t number = begin + i;
        if (number < decode_from_ || number >= range_.to) continue;
        Frame frame{number, {}};
        DecodeSpeechFrame(decoder_.get(), block.data() + static_cast<std::size_t>(i) * kSpeechFrameBytes,
                          frame.samples.data());
        // As the player's trace: a frame's first sample stands for it.
        if (wants_.levels > 0) levels_.push_back(static_cast<float>(frame.samples[0]) / 32768.0F + 1.0F);
        levels_end_ = number + 1;
        if (wants_.sound && number >= range_.from) speech_.push_back(frame);
    }
}

void MessageFeed::AddPicture(std::span<const uint8_t> payload) {
    const int64_t number = clock_.Pictures();
    if (number <= due_picture_) pictures_.clear();
    if (pictures_.empty()) first_picture_ = number;
    pictures_.emplace_back(payload.begin(), payload.end());
}

bool MessageFeed::LastsBeyond(int64_t milliseconds) {
    if (milliseconds >= range_.to * kFrameMilliseconds) return false;
    // What has been read already lasts at least until here, whatever follows.
    const auto sure = [this] {
        return std::max(clock_.SpeechEnd() * kFrameMilliseconds,
                        (clock_.Pictures() - 1) * PicturePeriodMilliseconds(rate()));
    };
    while (!ended_ && sure() <= milliseconds) ReadRecord();
    return milliseconds < (ended_ ? clock_.Length() * kFrameMilliseconds : sure());
}

bool MessageFeed::AtSilence() const {
    return wants_.fill_gaps && (ended_ ? sound_at_ < clock_.Length() : clock_.NextSpeechFrame() > sound_at_);
}

std::span<const int16_t> MessageFeed::TakeSound() {
    chunk_.clear();
    while (chunk_.size() < kChunkSamples) {
        if (!wants_.fill_gaps && !speech_.empty()) sound_at_ = speech_.front().number;
        if (sound_at_ >= range_.to) break;
        if (!speech_.empty() && speech_.front().number <= sound_at_) {
            const auto& samples = speech_.front().samples;
            chunk_.insert(chunk_.end(), samples.begin(), samples.end());
            speech_.pop_front();
            ++sound_at_;
        } else if (!speech_.empty() || AtSilence()) {
            chunk_.insert(chunk_.end(), kSpeechFrameSamples, int16_t{0});
            ++sound_at_;
        } else if (ended_ || clock_.SpeechEnd() >= range_.to) {
            break;
        } else {
            ReadRecord();
        }
    }
    return chunk_;
}

const MessageFeed::SeenPicture* MessageFeed::PictureAt(int64_t milliseconds) {
    if (rate() == 0) return nullptr;
    due_picture_ = milliseconds / PicturePeriodMilliseconds(rate()) - 1;
    const int64_t read_to = milliseconds / kFrameMilliseconds + kReadAhead;
    while (!ended_ && clock_.Pictures() <= due_picture_ && clock_.SpeechEnd() <= read_to) ReadRecord();
    for (; pictures_.size() > 1 && first_picture_ < due_picture_; ++first_picture_) pictures_.pop_front();
    if (pictures_.empty() || first_picture_ > due_picture_) return nullptr;
    seen_ = {first_picture_, pictures_.front()};
    return &seen_;
}

std::span<const float> MessageFeed::LevelsBefore(int64_t frame) {
    while (!ended_ && clock_.SpeechEnd() < frame) ReadRecord();
    const int64_t first = levels_end_ - static_cast<int64_t>(levels_.size());
    const int64_t old = std::clamp<int64_t>(frame - wants_.levels - first, 0, std::ssize(levels_));
    // In few steps of many, as each moves the rest.
    constexpr int64_t kMany = 1000;
    const bool drop = old > kMany;
    const std::span<const float> known = std::span(levels_).subspan(static_cast<std::size_t>(old));
    const int64_t count = std::clamp<int64_t>(frame - first - old, 0, std::ssize(known));
    if (!drop) return known.first(static_cast<std::size_t>(count));
    levels_.erase(levels_.begin(), levels_.begin() + static_cast<std::ptrdiff_t>(old));
    return std::span<const float>(levels_).first(static_cast<std::size_t>(count));
}

double MessageFeed::ShareAt(int64_t milliseconds) const {
    const int64_t announced =
        ended_ ? clock_.Length() : std::max<int64_t>(message_.frame_count(), clock_.SpeechEnd());
    const int64_t from = range_.from * kFrameMilliseconds;
    const int64_t whole = std::min(range_.to, announced) * kFrameMilliseconds - from;
    return whole <= 0
               ? 0.0
               : std::clamp(static_cast<double>(milliseconds - from) / static_cast<double>(whole), 0.0, 1.0);
}

}  // namespace tools
