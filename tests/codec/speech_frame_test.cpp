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

Parameters ExplodeRepacked(gsm state, const Frame& frame) {
    gsm_frame repacked;
    RepackSpeechFrameForGsm(frame.data(), repacked);
    Parameters parameters{};
    EXPECT_EQ(gsm_explode(state, repacked, parameters.data()), 0) << "libgsm refused the frame";
    return parameters;
}

class SpeechFrame : public testing::Test {
protected:
    Frame RandomFrame() {
        Frame frame;
        for (uint8_t& byte : frame) byte = static_cast<uint8_t>(m_random());
        return frame;
    }
    Gsm m_state{gsm_create()};
    std::mt19937 m_random{1};
};

// libgsm itself says what is in the repacked frame.
TEST_F(SpeechFrame, CarriesEveryParameterToLibgsm) {
    const Parameters known = ExplodeRepacked(m_state.get(), Frame{0xC5, 0x0F, 0x01, 0x00});
    EXPECT_EQ((std::array{known[0], known[1], known[2], known[3]}),
              (std::array<gsm_signal, 4>{5, 63, 16, 0}));
    for (size_t bit = 0; bit < 264; ++bit) {
        Frame frame{};
        frame[bit / 8] = static_cast<uint8_t>(1 << (bit % 8));
        ASSERT_EQ(ExplodeRepacked(m_state.get(), frame), UnpackBitByBit(frame)) << "bit " << bit;
    }
    for (int round = 0; round < 2000; ++round) {
        const Frame frame = RandomFrame();
        ASSERT_EQ(ExplodeRepacked(m_state.get(), frame), UnpackBitByBit(frame));
    }
}

// One decoder state runs through all frames, and only the samples are written.
TEST_F(SpeechFrame, DecodesLikeLibgsmFrameAfterFrame) {
    const Gsm other(gsm_create());
    for (int round = 0; round < 500; ++round) {
        const Frame frame = round == 0 ? Frame{} : RandomFrame();
        Parameters parameters = UnpackBitByBit(frame);
        gsm_frame imploded;
        gsm_implode(other.get(), parameters.data(), imploded);
        std::array<int16_t, kSpeechFrameSamples> expected;
        ASSERT_EQ(gsm_decode(other.get(), imploded, expected.data()), 0);

        std::array<int16_t, kSpeechFrameSamples + 2> samples;
        samples.fill(12345);
        DecodeSpeechFrame(m_state.get(), frame.data(), samples.data() + 1);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), samples.begin() + 1)) << "frame " << round;
        ASSERT_EQ(samples.front(), 12345);
        ASSERT_EQ(samples.back(), 12345);
    }
}

}  // namespace
