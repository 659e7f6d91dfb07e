// SPDX-License-Identifier: MIT
#include "tools/dump/thumbnail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <span>
#include <vector>

#include "codec/message_format.h"
#include "codec/vdec.h"
#include "tools/dump/canvas_png.h"
#include "tools/dump/confinement.h"
#include "tools/dump/thumbnail_levels.h"
#include "tools/export/canvas.h"
#include "tools/export/message_file.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

// Where the search for a picture ends: half a minute at the usual rates.
constexpr int kMostPictures = 24;
constexpr uint64_t kMostBytes = uint64_t{1} << 19;

constexpr Colour kBackground = {0, 0, 0};
constexpr Colour kMiddleLine = {0x1F, 0x1F, 0x1F};
constexpr Colour kTrace = {0, 0xFF, 0};
constexpr Colour kText = {0xE0, 0xE0, 0xE0};

// Whether its channels stray so little from their means, at every fourth pixel of every fourth row, that a
// person sees one colour.
bool IsNearlyOneColour(const std::vector<uint8_t>& picture) {
    constexpr std::size_t kStep = 4;
    constexpr long kLeastDeviation = 8;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto sum = [&](auto&& value_of) {
            long total = 0;
            for (std::size_t y = 0; y < kPictureHeight; y += kStep) {
                for (std::size_t x = 0; x < kPictureWidth; x += kStep) {
                    total += value_of(picture[(y * kPictureWidth + x) * 3 + channel]);
                }
            }
            return total;
        };
        constexpr long kCount = (kPictureWidth / kStep) * (kPictureHeight / kStep);
        const long mean = sum([](int value) { return value; }) / kCount;
        if (sum([&](int value) { return std::labs(value - mean); }) >= kLeastDeviation * kCount) return false;
    }
    return true;
}

// The picture that stands for a video message; nothing where no picture comes within the limits.
std::optional<std::vector<uint8_t>> ChoosePicture(MessageFile& message) {
    struct Decoder {
        Decoder() {
            vdec_init();
            if (!vdec_set_quality(3)) throw std::bad_alloc();
        }
        ~Decoder() { vdec_free(); }
        Decoder(const Decoder&) = delete;
        Decoder& operator=(const Decoder&) = delete;
    };
    if (message.rate() == 0) return std::nullopt;
    const Decoder decoder;
    std::optional<std::vector<uint8_t>> first;
    std::vector<uint8_t> picture(kPictureBytes);
    int pictures = 0;
    for (uint64_t bytes = 0; bytes < kMostBytes && pictures < kMostPictures;) {
        const MessageRecord record = message.Read();
        if (record.kind == MessageRecordKind::End) break;
        bytes += 1 + record.body.size();
        if (record.kind != MessageRecordKind::Video) continue;
        vdec_decode(record.body.data(), record.body.size(), picture.data());
        if (!IsNearlyOneColour(picture)) return picture;
        if (pictures++ == 0) first = picture;
    }
    return first;
}

Canvas PictureThumbnail(const std::vector<uint8_t>& picture, int size) {
    const int width = std::min(size, kPictureWidth);
    Canvas canvas(width, std::max(1, width * kPictureHeight / kPictureWidth));
    canvas.DrawPicture(picture);
    return canvas;
}

std::string Duration(uint32_t frames) {
    const uint32_t seconds = frames / (kSpeechSampleRate / kSpeechFrameSamples);
    char text[32];
    if (seconds < 3600) {
        std::snprintf(text, sizeof text, "%u:%02u", seconds / 60, seconds % 60);
    } else {
        std::snprintf(text, sizeof text, "%u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    }
    return text;
}

// Bars around a middle line, the loudest of their part of the message each, and the duration below.
Canvas LevelThumbnail(const MessageFile& message, int size) {
    Canvas canvas(size, std::max(1, size * kPictureHeight / kPictureWidth));
    canvas.Fill({0, 0, canvas.width(), canvas.height()}, kBackground);
    const int text_height = canvas.DrawTime(Duration(message.frame_count()), kText);
    const int height = canvas.height() - text_height;
    const int step = std::max(2, size / 48);
    canvas.Fill({0, height / 2, size, 1}, kMiddleLine);
    const std::vector<float> levels =
        LoudestPerPart(SampleLevels(message.descriptor()), static_cast<std::size_t>(size / step));
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const int bar = static_cast<int>(std::lround(std::sqrt(levels[i]) * static_cast<float>(height - 2)));
        canvas.Fill({static_cast<int>(i) * step, (height - bar) / 2, std::max(1, step * 3 / 5), bar}, kTrace);
    }
    return canvas;
}

[[noreturn]] void FailToWrite(const std::string& output, int error) {
    throw ToolError(output + ": cannot be written: " + std::strerror(error));
}

// A file manager's own temporary file is written in place; a file that this call created does not outlive its
// failure.
void WriteWhole(const std::string& output, std::span<const uint8_t> bytes) {
    const bool existed = access(output.c_str(), F_OK) == 0;
    const int file = output == "-" ? dup(STDOUT_FILENO)
                                   : open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) FailToWrite(output, errno);
    int error = 0;
    while (!bytes.empty() && error == 0) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            error = errno;
        }
    }
    if (close(file) != 0 && error == 0) error = errno;
    if (error == 0) return;
    if (!existed && output != "-") unlink(output.c_str());
    FailToWrite(output, error);
}

}  // namespace

std::vector<uint8_t> DrawThumbnail(MessageFile& message, int size) {
    const std::optional<std::vector<uint8_t>> picture = ChoosePicture(message);
    return EncodePng(picture ? PictureThumbnail(*picture, size) : LevelThumbnail(message, size));
}

void WriteThumbnail(const std::string& path, const std::string& output, int size) {
    // Anything else could keep a file manager waiting for ever.
    MessageFile message(path, MessageFile::Kind::Regular);
    std::error_code error;
    if (std::filesystem::equivalent(path, output, error) && !error)
        throw ToolError(output + ": is the message itself, not overwritten");
    const auto png = MakeConfined([&] { return DrawThumbnail(message, size); });
    if (!png) throw ToolError(path + ": no thumbnail can be made");
    WriteWhole(output, *png);
}

}  // namespace tools
