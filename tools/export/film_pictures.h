// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "codec/picture_geometry.h"
#include "codec/vdec.h"
#include "tools/export/canvas.h"
#include "tools/export/message_feed.h"

namespace tools {

// The pictures of a film, kPictureBytes each of B, G, R. The first is seen from the stretch's start on, the
// second from `second_ms` later on, and each further one `period_ms` after the one before it.
class FilmPictures {
public:
    explicit FilmPictures(MessageFeed& feed, int64_t second_ms, int64_t period_ms, bool bottom_up);
    virtual ~FilmPictures() = default;

    int64_t second_ms() const { return second_ms_; }
    int64_t period_ms() const { return period_ms_; }
    bool bottom_up() const { return bottom_up_; }

    // The next picture, valid until the next call; none at the end.
    std::span<const uint8_t> Next();
    // Of the stretch, how much is done.
    double Share() const { return feed_.ShareAt(at_ms_); }
    int64_t at_ms() const { return at_ms_; }

protected:
    // What is seen at a time of the message.
    virtual std::span<const uint8_t> Draw(int64_t milliseconds) = 0;
    MessageFeed& feed() { return feed_; }

private:
    MessageFeed& feed_;
    int64_t second_ms_;
    int64_t period_ms_;
    bool bottom_up_;
    int64_t at_ms_;  // of the next
    bool begun_ = false;
};

// A video message's: black before its first picture, the last one to its end.
class MessagePictures : public FilmPictures {
public:
    // `quality` is the decoder's level. Throws std::bad_alloc.
    MessagePictures(MessageFeed& feed, int quality);

private:
    struct DestroyDecoder {
        void operator()(VdecDecoder* decoder) const { vdec_destroy(decoder); }
    };
    std::span<const uint8_t> Draw(int64_t milliseconds) override;

    std::unique_ptr<VdecDecoder, DestroyDecoder> decoder_;
    std::vector<uint8_t> picture_;
    std::optional<int64_t> drawn_;
};

// A voice-only message's: its trace as the player's window draws it, with the elapsed time below, 25 a
// second.
class TracePictures : public FilmPictures {
public:
    // How many levels the feed is to keep.
    static const int kLevels;

    explicit TracePictures(MessageFeed& feed);

private:
    std::span<const uint8_t> Draw(int64_t milliseconds) override;

    Canvas grid_;
    Canvas canvas_;
};

}  // namespace tools
