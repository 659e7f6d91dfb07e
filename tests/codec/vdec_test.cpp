#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <thread>
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
        PayloadWriter writer(SharedCodes());
        writer.Start(0, 0);
        writer.Put(kYApprox, 10);
        writer.PutRepeated(kYApprox, 0, 1199);
        writer.PutRepeated(kUApprox, 0, 300);
        writer.PutRepeated(kVApprox, 0, 300);
        return writer.Bytes();
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

// The band is flat at 80, its Y samples lie a few millionths around 10: which ones truncate to 9 depends on
// the order and the precision of every sum.
TEST_F(Vdec, DecodesAGreyPictureToTheLastSample) {
    vdec_init();
    const std::vector<uint8_t> payload = GreyPayload();
    EXPECT_EQ(payload.size(), 643U);
    ASSERT_TRUE(Decode(payload));
    std::map<int, int> pixels;
    for (size_t i = 0; i < kPictureBytes; i += 3) {
        ASSERT_EQ(m_picture[i], m_picture[i + 1]);
        ASSERT_EQ(m_picture[i], m_picture[i + 2]);
        ++pixels[m_picture[i]];
    }
    EXPECT_EQ(pixels, (std::map<int, int>{{9, 19240}, {10, 57560}}));
    EXPECT_EQ(m_picture[0], 9);
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

// What one picture left must not show in the next.
TEST_F(Vdec, KeepsNothingFromThePictureBefore) {
    const std::vector<uint8_t> busy = RandomPayload(SharedCodes(), 1, 300, 2.0);
    std::vector<uint8_t> cut = RandomPayload(SharedCodes(), 2, 300, 1.0);
    cut.resize(cut.size() / 2);
    vdec_init();
    ASSERT_TRUE(Decode(cut));
    const std::vector<uint8_t> fresh = m_picture;
    ASSERT_TRUE(Decode(busy));
    ASSERT_NE(m_picture, fresh);
    ASSERT_TRUE(Decode(cut));
    EXPECT_EQ(m_picture, fresh);
}

// Decoders of different threads share nothing.
TEST_F(Vdec, DecodersOfOnesOwnWorkSideBySide) {
    const std::vector<uint8_t> payload = RandomPayload(SharedCodes(), 3, 200, 1.0);
    const signed char qualities[] = {0, 3};
    std::vector<uint8_t> pictures[2];
    std::vector<std::jthread> threads;
    for (const signed char quality : qualities) {
        threads.emplace_back([&payload, &picture = pictures[quality / 3], quality] {
            VdecDecoder* decoder = vdec_create();
            ASSERT_TRUE(vdec_set_quality(*decoder, quality));
            EXPECT_FALSE(vdec_set_quality(*decoder, 4));
            picture.resize(kPictureBytes);
            for (int i = 0; i < 50; ++i)
                vdec_decode(*decoder, payload.data(), payload.size(), picture.data());
            vdec_destroy(decoder);
        });
    }
    threads.clear();
    vdec_init();
    for (const signed char quality : qualities) {
        vdec_set_quality(quality);
        ASSERT_TRUE(Decode(payload));
        EXPECT_EQ(m_picture, pictures[quality / 3]);
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

TEST_F(Vdec, AllocatesNothingPerPicture) {
    if (!allocation_probe::Counts()) GTEST_SKIP() << "allocations are not counted in this build";
    const std::vector<uint8_t> payload = RandomPayload(SharedCodes(), 1, 200, 1.0);
    vdec_init();
    const long before = allocation_probe::OnThisThread();
    Decode(payload);
    EXPECT_EQ(allocation_probe::OnThisThread(), before);
}

}  // namespace
