#include "codec/speech_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

namespace {

struct DestroyGsm {
    void operator()(gsm state) const { gsm_destroy(state); }
};
using Gsm = std::unique_ptr<std::remove_pointer_t<gsm>, DestroyGsm>;

using Frame = std::array<uint8_t, kSpeechFrameBytes>;
using Parameters = std::array<gsm_signal, 76>;

// One bit at a time, each parameter's lowest bit first.
Parameters UnpackBitByBit(const Frame& frame) {
    std::vector<int> widths = {6, 6, 5, 5, 4, 4, 3, 3};
    for (int j = 0; j < 4; ++j) {
        widths.insert(widths.end(), {7, 2, 2, 6});
        widths.insert(widths.end(), 13, 3);
    }
    Parameters parameters{};
    size_t bit = 0;
    for (size_t i = 0; i < parameters.size(); ++i) {
        for (int k = 0; k < widths[i]; ++k, ++bit) {
            if (((frame[bit / 8] >> (bit % 8)) & 1) != 0) {
                parameters[i] = static_cast<gsm_signal>(parameters[i] + (1 << k));
            }
        }
    }
    EXPECT_EQ(bit, 260U);
    return parameters;
}

// One decoder state runs through all frames, and only the samples are written. Every bit of a frame is set
// alone once.
TEST(SpeechFrame, DecodesTheParametersThatItHoldsFrameAfterFrame) {
    EXPECT_EQ(UnpackBitByBit(Frame{0xC5, 0x0F, 0x01})[1], 63);
    std::mt19937 random(1);
    const Gsm decoder(gsm_create());
    const Gsm plain(gsm_create());
    for (size_t round = 0; round < 1000; ++round) {
        Frame frame{};
        if (round < 264) {
            frame[round / 8] = static_cast<uint8_t>(1 << (round % 8));
        } else {
            for (uint8_t& byte : frame) byte = static_cast<uint8_t>(random());
        }
        Parameters parameters = UnpackBitByBit(frame);
        gsm_frame imploded;
        gsm_implode(plain.get(), parameters.data(), imploded);
        std::array<int16_t, kSpeechFrameSamples> expected;
        ASSERT_EQ(gsm_decode(plain.get(), imploded, expected.data()), 0);

        std::array<int16_t, kSpeechFrameSamples + 2> samples;
        samples.fill(12345);
        DecodeSpeechFrame(decoder.get(), frame.data(), samples.data() + 1);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), samples.begin() + 1)) << "frame " << round;
        ASSERT_EQ(samples.front(), 12345);
        ASSERT_EQ(samples.back(), 12345);
    }
}

}  // namespace
