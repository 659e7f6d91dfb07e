// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "codec/message_format.h"
#include "codec/vdec.h"
#include "tests/codec/vdec_payload.h"
#include "tests/support/allocation_probe.h"

namespace {

class Vdec : public testing::Test {
protected:
    ~Vdec() override { vdec_free(); }

    bool Decode(const std::vector<uint8_t>& payload) {
        return vdec_decode(payload.data(), payload.size(), m_picture.data());
    }
    bool IsUntouched() const {
        return std::all_of(m_picture.begin(), m_picture.end(), [](uint8_t byte) { return byte == 0xA5; });
    }
    static std::vector<uint8_t> GreyPayload() {
        int value = 10;
        return MakePayload({}, [&](VdecGroup) { return std::exchange(value, 0); });
    }

    std::vector<uint8_t> m_picture = std::vector<uint8_t>(kPictureBytes, 0xA5);
};

TEST_F(Vdec, DoesNothingUnlessInitialised) {
    EXPECT_FALSE(vdec_set_quality(3));
    EXPECT_FALSE(Decode(GreyPayload()));
    vdec_free();
    vdec_init();
    vdec_free();
    EXPECT_FALSE(vdec_set_quality(3));
    EXPECT_FALSE(Decode(GreyPayload()));
    EXPECT_TRUE(IsUntouched());
}

TEST_F(Vdec, QualityStaysUntilTheNextInit) {
    const std::vector<uint8_t> payload = GreyPayload();
    // 10 x step / 8, cut off.
    const auto expect = [&](int least, int most) {
        EXPECT_TRUE(Decode(payload));
        EXPECT_GE(m_picture[kPictureBytes / 2 + 480], least);
        EXPECT_LE(m_picture[kPictureBytes / 2 + 480], most);
    };
    for (int round = 0; round < 2; ++round) {
        vdec_init();
        expect(9, 10);
        EXPECT_TRUE(vdec_set_quality(0));
        expect(47, 47);
        EXPECT_FALSE(vdec_set_quality(4));
        EXPECT_FALSE(vdec_set_quality(-1));
        expect(47, 47);
        EXPECT_TRUE(vdec_set_quality(2));
        expect(22, 22);
    }
}

// No payload is refused; one without codes is black.
TEST_F(Vdec, DecodesPayloadsOfAnyLength) {
    vdec_init();
    std::vector<uint8_t> payload(kMaxPayloadBytes, 0);
    for (size_t length : {size_t{0}, size_t{3}, size_t{4}, size_t{41}, size_t{42}}) {
        std::fill(m_picture.begin(), m_picture.end(), uint8_t{0xA5});
        EXPECT_TRUE(vdec_decode(length == 0 ? nullptr : payload.data(), length, m_picture.data()));
        EXPECT_EQ(std::count(m_picture.begin(), m_picture.end(), 0), static_cast<long>(kPictureBytes));
    }
    std::fill(payload.begin(), payload.end(), uint8_t{0xFF});
    EXPECT_TRUE(Decode(payload));
}

// Each has its own quality level, and nothing that one picture left shows in the next.
TEST_F(Vdec, DecodersShareNothing) {
    const std::vector<uint8_t> payload = RandomPayload(3, 200, 1.0);
    std::vector<uint8_t> fresh[kQualityLevels];
    std::vector<VdecDecoder*> decoders;
    for (int quality = 0; quality < kQualityLevels; ++quality) {
        vdec_init();
        vdec_set_quality(static_cast<signed char>(quality));
        ASSERT_TRUE(Decode(payload));
        fresh[quality] = m_picture;
        decoders.push_back(vdec_create());
        ASSERT_TRUE(vdec_set_quality(*decoders.back(), static_cast<signed char>(quality)));
        EXPECT_FALSE(vdec_set_quality(*decoders.back(), 4));
    }
    const std::vector<uint8_t> busy = RandomPayload(1, 300, 2.0);
    for (size_t i = 0; i < decoders.size(); ++i) {
        vdec_decode(*decoders[i], busy.data(), busy.size(), m_picture.data());
        vdec_decode(*decoders[i], payload.data(), payload.size(), m_picture.data());
        EXPECT_EQ(m_picture, fresh[i]);
        vdec_destroy(decoders[i]);
    }
}

TEST_F(Vdec, StaysUninitialisedWhenMemoryRunsOut) {
    if (!allocation_probe::Counts()) GTEST_SKIP() << "allocations are not counted in this build";
    const std::vector<uint8_t> payload = GreyPayload();
    vdec_init();
    bool ready = true;
    long given = 0;
    for (; given < 1000; ++given) {
        allocation_probe::GiveOnly(given);
        vdec_init();
        allocation_probe::GiveOnly(-1);
        ready = vdec_set_quality(3);
        if (ready) break;
        ASSERT_FALSE(Decode(payload)) << "given " << given;
        ASSERT_TRUE(IsUntouched());
    }
    EXPECT_TRUE(ready);
    EXPECT_GT(given, 10) << "init makes this many allocations";
    EXPECT_TRUE(Decode(payload));
}

}  // namespace
