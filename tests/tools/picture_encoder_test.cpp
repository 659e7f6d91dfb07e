// SPDX-License-Identifier: MIT
#include "tools/encode/picture_encoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "codec/vdec.h"
#include "codec/vdec_stages.h"
#include "tools/dump/payload_facts.h"

namespace {

using tools::PictureEncoder;

struct Colour {
    int red, green, blue;
};

std::vector<uint8_t> Draw(const std::function<Colour(int x, int y)>& colour_at) {
    std::vector<uint8_t> bgr;
    bgr.reserve(kPictureBytes);
    for (int y = 0; y < kPictureHeight; ++y) {
        for (int x = 0; x < kPictureWidth; ++x) {
            const Colour c = colour_at(x, y);
            for (const int part : {c.blue, c.green, c.red}) bgr.push_back(static_cast<uint8_t>(part));
        }
    }
    return bgr;
}

// Soft discs of several sizes and colours before a sky, such as a face before a wall.
std::vector<uint8_t> Scene() {
    return Draw([](int x, int y) {
        Colour c = {120, 150, 130 + y / 2};
        const auto disc = [&](int cx, int cy, int radius, Colour inside) {
            const double distance = std::hypot(x - cx, y - cy);
            const double part = 1 / (1 + std::exp((distance - radius) / 1.5));
            c.red += static_cast<int>((inside.red - c.red) * part);
            c.green += static_cast<int>((inside.green - c.green) * part);
            c.blue += static_cast<int>((inside.blue - c.blue) * part);
        };
        disc(160, 120, 80, {220, 180, 150});
        disc(130, 140, 10, {60, 50, 50});
        disc(190, 140, 10, {60, 50, 50});
        disc(160, 90, 22, {170, 90, 90});
        return c;
    });
}

// Black and white noise with grains of the size that the detail bands hold best.
std::vector<uint8_t> Grains() {
    std::mt19937 random(7);
    std::vector<int> grain(107 * 80);
    for (int& grey : grain) grey = (random() & 1) != 0 ? 255 : 0;
    return Draw([&](int x, int y) {
        const int grey = grain[static_cast<std::size_t>(y / 3 * 107 + x / 3)];
        return Colour{grey, grey, grey};
    });
}

std::span<const uint8_t, kPictureBytes> Span(const std::vector<uint8_t>& bgr) {
    return std::span<const uint8_t, kPictureBytes>(bgr.data(), kPictureBytes);
}

std::vector<uint8_t> Decode(std::span<const uint8_t> payload, int quality) {
    std::vector<uint8_t> picture(kPictureBytes);
    vdec_init();
    EXPECT_TRUE(vdec_set_quality(static_cast<signed char>(quality)));
    EXPECT_TRUE(vdec_decode(payload.data(), payload.size(), picture.data()));
    vdec_free();
    return picture;
}

double Psnr(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    double squares = 0;
    for (std::size_t i = 0; i < a.size(); ++i) squares += (a[i] - b[i]) * (a[i] - b[i]);
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / std::max(squares, 1.0));
}

}  // namespace

TEST(PictureEncoder, DecodedPicturesAreClose) {
    // Bounds a little below what the encoder reaches; a wrong step, filter, order of values or rounding
    // costs several decibels.
    const double bounds[kQualityLevels] = {32, 33, 34, 35};
    const auto picture = Scene();
    std::size_t bytes = 0;
    double psnr = 0;
    for (int quality = 0; quality < kQualityLevels; ++quality) {
        PictureEncoder encoder(quality);
        const auto payload = encoder.Encode(Span(picture));
        const double reached = Psnr(Decode(payload, quality), picture);
        EXPECT_GE(reached, bounds[quality]) << quality;
        EXPECT_GT(reached, psnr) << quality << ": a better quality is no better";
        EXPECT_GT(payload.size(), bytes) << quality << ": a better quality is no larger";
        psnr = reached;
        bytes = payload.size();
    }
}

TEST(PictureEncoder, FlatColoursComeBackWithinARoundingStep) {
    PictureEncoder encoder(3);
    for (const Colour c :
         {Colour{0, 0, 0}, Colour{255, 255, 255}, Colour{100, 100, 100}, Colour{200, 40, 60},
          Colour{0, 255, 0}, Colour{60, 80, 255}, Colour{220, 180, 150}, Colour{37, 90, 201}}) {
        const auto picture = Draw([&](int, int) { return c; });
        const auto payload = encoder.Encode(Span(picture));
        const auto decoded = Decode(payload, 3);
        for (std::size_t i = 0; i < kPictureBytes; ++i) {
            ASSERT_LE(std::abs(decoded[i] - picture[i]), 2) << c.red << " " << c.green << " " << c.blue;
        }
        EXPECT_EQ(tools::PayloadInspector().Inspect(payload).coded_blocks, 0);
    }
}

TEST(PictureEncoder, DecoderReadsTheVeryValuesAndTheWholePayload) {
    VdecCodes codes;
    ASSERT_TRUE(vdec_build_codes(codes));
    const auto symbols = std::make_unique<VdecSymbols>();
    const tools::PayloadInspector inspector;
    PictureEncoder encoder(3);
    for (const auto& picture : {Scene(), Grains()}) {
        const auto payload = encoder.Encode(Span(picture));
        const tools::PayloadFacts facts = inspector.Inspect(payload);
        EXPECT_FALSE(facts.runs_short || facts.counts_disagree || facts.counts_out_of_range);
        EXPECT_TRUE(inspector.Inspect(payload.first(payload.size() - 1)).runs_short) << "bytes without use";

        vdec_read_symbols(codes, payload.data(), payload.size(), *symbols);
        const tools::QuantisedPicture& q = encoder.quantised();
        EXPECT_TRUE(std::equal(q.approximation.begin(), q.approximation.end(), symbols->values.begin()));
        auto coarse = symbols->values.begin() + kCoarseStart;
        auto fine = symbols->values.begin() + kFineStart;
        for (std::size_t block = 0; block < kBlockCount; ++block) {
            ASSERT_EQ(symbols->head.IsSkipped(static_cast<int>(block)), q.skipped[block]);
            if (q.skipped[block]) continue;
            EXPECT_TRUE(std::equal(q.coarse[block].begin(), q.coarse[block].end(), coarse));
            EXPECT_TRUE(std::equal(q.fine[block].begin(), q.fine[block].end(), fine));
            coarse += kCoarsePerBlock;
            fine += kFinePerBlock;
        }
    }
}

TEST(PictureEncoder, TooMuchDetailIsThinnedOutNotGivenUp) {
    const auto picture = Grains();
    double psnr = 0;
    for (const std::size_t most_bytes : {1000U, 6000U, 13500U}) {
        PictureEncoder encoder(3, most_bytes);
        const auto payload = encoder.Encode(Span(picture));
        EXPECT_LE(payload.size(), std::max<std::size_t>(most_bytes, 4167));
        EXPECT_GT(payload.size(), most_bytes - most_bytes / 25) << "room left unused";
        const double reached = Psnr(Decode(payload, 3), picture);
        EXPECT_GT(reached, psnr) << most_bytes;
        psnr = reached;
    }
}

// Edges from one end of a chroma range to the other ask for differences that the alphabets do not have.
TEST(PictureEncoder, ClampedDifferencesAreMadeUpForByTheNeighbours) {
    const Colour ends[] = {{255, 0, 0}, {0, 255, 255}, {0, 0, 255}, {255, 255, 0}};
    for (int pair = 0; pair < 4; pair += 2) {
        const auto picture = Draw([&](int x, int) { return ends[pair + (x / 80) % 2]; });
        PictureEncoder encoder(3);
        const auto payload = encoder.Encode(Span(picture));
        const auto decoded = Decode(payload, 3);
        // Each stripe is right before it ends, the last as much as the first.
        for (int stripe = 0; stripe < 4; ++stripe) {
            for (int y = 0; y < kPictureHeight; y += 40) {
                const auto at = static_cast<std::size_t>(y * kPictureWidth + stripe * 80 + 60) * 3;
                for (std::size_t c = 0; c < 3; ++c) {
                    EXPECT_LE(std::abs(decoded[at + c] - picture[at + c]), 12)
                        << "stripe " << stripe << " row " << y;
                }
            }
        }
    }
}
