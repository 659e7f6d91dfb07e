// SPDX-License-Identifier: MIT
#include "tools/export/film_pictures.h"

#include <new>

#include "codec/message_time.h"

namespace tools {
namespace {

// How long after the start of the stretch the next picture is due.
int64_t SecondMs(const MessageFeed& feed) {
    const int64_t period = PicturePeriodMilliseconds(feed.rate());
    return period - feed.range().from * kFrameMilliseconds % period;
}

}  // namespace

FilmPictures::FilmPictures(MessageFeed& feed, int64_t second_ms, int64_t period_ms, bool bottom_up)
    : feed_(feed),
      second_ms_(second_ms),
      period_ms_(period_ms),
      bottom_up_(bottom_up),
      at_ms_(feed.range().from * kFrameMilliseconds) {}

std::span<const uint8_t> FilmPictures::Next() {
    if (!feed_.LastsBeyond(at_ms_)) return {};
    const std::span<const uint8_t> picture = Draw(at_ms_);
    at_ms_ += begun_ ? period_ms_ : second_ms_;
    begun_ = true;
    return picture;
}

MessagePictures::MessagePictures(MessageFeed& feed, int quality)
    : FilmPictures(feed, SecondMs(feed), PicturePeriodMilliseconds(feed.rate()), true),
      decoder_(vdec_create()),
      picture_(kPictureBytes) {
    if (!decoder_ || !vdec_set_quality(*decoder_, static_cast<signed char>(quality))) throw std::bad_alloc();
}

std::span<const uint8_t> MessagePictures::Draw(int64_t milliseconds) {
    const MessageFeed::SeenPicture* const seen = feed().PictureAt(milliseconds);
    if (seen != nullptr && seen->number != drawn_) {
        vdec_decode(*decoder_, seen->payload.data(), seen->payload.size(), picture_.data());
        drawn_ = seen->number;
    }
    return picture_;
}

}  // namespace tools
