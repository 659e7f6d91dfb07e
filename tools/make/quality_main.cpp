// SPDX-License-Identifier: MIT
// picture_quality: how close decoded pictures come to their sources. Encodes each image at every quality
// level, decodes it with the player's decoder and prints peak signal-to-noise ratios and payload sizes.

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "codec/vdec.h"
#include "tools/encode/picture_encoder.h"
#include "tools/make/picture_source.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

// Weights of B, G and R in luma, as in the decoder's colour equations.
constexpr std::array<double, 3> kLumaWeights = {0.114, 0.587, 0.299};

double Psnr(double squared_error, double count) {
    return squared_error == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * count / squared_error);
}

struct Figures {
    double colour_psnr;
    double luma_psnr;
    double bytes;
};

Figures Compare(std::span<const uint8_t> source, std::span<const uint8_t> decoded, std::size_t bytes) {
    double colour = 0;
    double luma = 0;
    for (std::size_t i = 0; i < kPictureBytes; i += 3) {
        double luma_error = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const double error = double{1} * source[i + c] - decoded[i + c];
            colour += error * error;
            luma_error += kLumaWeights[c] * error;
        }
        luma += luma_error * luma_error;
    }
    return {Psnr(colour, kPictureBytes), Psnr(luma, kPictureBytes / 3), static_cast<double>(bytes)};
}

void PrintRow(int quality, const std::vector<Figures>& figures) {
    const auto print = [&](double Figures::*field, int decimals) {
        double sum = 0;
        double lowest = figures.front().*field;
        double highest = lowest;
        for (const Figures& f : figures) {
            sum += f.*field;
            lowest = std::min(lowest, f.*field);
            highest = std::max(highest, f.*field);
        }
        std::printf("| %.*f (%.*f to %.*f) ", decimals, sum / static_cast<double>(figures.size()), decimals,
                    lowest, decimals, highest);
    };
    std::printf("| %d ", quality);
    print(&Figures::luma_psnr, 1);
    print(&Figures::colour_psnr, 1);
    print(&Figures::bytes, 0);
    std::puts("|");
}

void Measure(const std::vector<std::string>& paths) {
    std::vector<uint8_t> sources(paths.size() * kPictureBytes);
    const auto source = [&](std::size_t i) {
        return std::span<uint8_t, kPictureBytes>(sources.data() + i * kPictureBytes, kPictureBytes);
    };
    for (std::size_t i = 0; i < paths.size(); ++i) LoadPicture(paths[i], source(i));

    std::printf(
        "%zu pictures\n| quality | luma PSNR, dB | colour PSNR, dB | payload, bytes |\n|---|---|---|---|\n",
        paths.size());
    std::vector<uint8_t> decoded(kPictureBytes);
    for (int quality = 0; quality < kQualityLevels; ++quality) {
        PictureEncoder encoder(quality);
        vdec_init();
        vdec_set_quality(static_cast<signed char>(quality));
        std::vector<Figures> figures;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const auto payload = encoder.Encode(source(i));
            if (!vdec_decode(payload.data(), payload.size(), decoded.data())) throw std::bad_alloc();
            figures.push_back(Compare(source(i), decoded, payload.size()));
        }
        vdec_free();
        PrintRow(quality, figures);
    }
}

}  // namespace
}  // namespace tools

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("Usage: picture_quality IMAGE...\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    try {
        tools::Measure(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "picture_quality: %s\n", error.what());
        return 1;
    }
    return 0;
}
