// SPDX-License-Identifier: MIT
#include "tools/encode/speech_encoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "codec/speech_frame.h"

// What libgsm decodes from its own frames and what a player decodes from ours must be the same samples.
TEST(SpeechEncoder, FramesDecodeAsLibgsmDecodesItsOwn) {
    std::mt19937 random(3);
    std::uniform_int_distribution<int> loudness(-20000, 20000);
    const gsm encoder = gsm_create();
    const gsm decoder = gsm_create();
    const gsm player = gsm_create();
    tools::SpeechEncoder ours;
    for (int frame = 0; frame < 400; ++frame) {
        std::array<int16_t, kSpeechFrameSamples> samples;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double time = frame * kSpeechFrameSamples + static_cast<double>(i);
            const double voiced = 12000 * std::sin(time * 0.11) + 8000 * std::sin(time * 0.35);
            samples[i] = static_cast<int16_t>(frame % 3 == 0 ? loudness(random) : static_cast<int>(voiced));
        }
        std::array<uint8_t, kSpeechFrameBytes> packed;
        ours.Encode(samples, packed);
        EXPECT_EQ(packed.back() & 0xF0, 0);

        std::array<gsm_byte, kSpeechFrameBytes> standard;
        std::array<gsm_signal, kSpeechFrameSamples> expected;
        gsm_encode(encoder, samples.data(), standard.data());
        gsm_decode(decoder, standard.data(), expected.data());
        std::array<int16_t, kSpeechFrameSamples> decoded;
        DecodeSpeechFrame(player, packed.data(), decoded.data());
        ASSERT_EQ(decoded, expected) << "frame " << frame;
    }
    gsm_destroy(encoder);
    gsm_destroy(decoder);
    gsm_destroy(player);
}
