// SPDX-License-Identifier: MIT
#include "tests/playback/walked_message.h"

#include "codec/message_time.h"
#include "codec/picture_geometry.h"
#include "codec/vdec.h"

namespace {

Look LookOf(const uint8_t* picture) {
    Look look;
    for (int i = 1; i < 8; ++i) {
        const uint8_t* bgr = picture + (kPictureHeight - 1 - i * 30) * kPictureRowBytes + i * 40 * 3;
        look.push_back(RGB(bgr[2], bgr[1], bgr[0]));
    }
    return look;
}

}  // namespace

Walked Make(int rate, const std::string& records) {
    Walked walked;
    walked.rate = rate;
    MessageClock clock(rate);
    MessageBuilder body(rate);
    std::vector<uint8_t> picture(kPictureBytes);
    vdec_init();
    vdec_set_quality(3);
    for (const char record : records) {
        const size_t from = body.Data().size();
        if (record == 's') {
            body.Speech(1);
            for (int i = 0; i < kFramesPerSpeechBlock; ++i)
                walked.speechAt.push_back(static_cast<int>(clock.NextSpeechFrame()) + i);
            walked.speech.insert(walked.speech.end(), body.Data().begin() + static_cast<long>(from) + 1,
                                 body.Data().end());
            clock.AddSpeechBlock();
        } else if (record == 'v') {
            body.Picture();
            vdec_decode(body.Data().data() + from + 3, body.Data().size() - from - 3, picture.data());
            walked.pictures.push_back(LookOf(picture.data()));
            clock.AddPicture();
        } else {
            body.Bytes({9});
        }
    }
    vdec_free();
    walked.length = static_cast<int>(clock.Length());
    walked.message = MessageBuilder(rate, static_cast<uint32_t>(walked.length));
    walked.message.Bytes({body.Data().begin() + kMessageDataStart, body.Data().end()});
    return walked;
}
