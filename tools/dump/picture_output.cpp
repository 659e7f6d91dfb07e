// SPDX-License-Identifier: MIT
#include "tools/dump/picture_output.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>

#include "tools/tool_error.h"

namespace tools {
namespace {

bool WritePng(std::FILE* stream, std::span<const uint8_t, kPictureBytes> bgr) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = kPictureWidth;
    image.height = kPictureHeight;
    image.format = PNG_FORMAT_BGR;
    image.flags = PNG_IMAGE_FLAG_FAST;  // a quarter of the time, at the cost of larger files
    // A negative row distance tells that the first row is the bottom one.
    return png_image_write_to_stdio(&image, stream, 0, bgr.data(), -kPictureRowBytes, nullptr) != 0;
}

}  // namespace

PictureOutput::PictureOutput(const std::filesystem::path& folder, Format format)
    : folder_(folder), format_(format) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::error_code unreachable;
    if (!std::filesystem::is_directory(folder, unreachable)) {
        throw ToolError(folder.string() + ": cannot be made a folder" +
                        (error ? ": " + error.message() : ""));
    }
}

void PictureOutput::Write(unsigned number, std::span<const uint8_t, kPictureBytes> bgr) const {
    char name[32];
    std::snprintf(name, sizeof name, "picture-%04u.%s", number, format_ == Format::Png ? "png" : "bgr");
    const std::filesystem::path path = folder_ / name;
    std::FILE* const stream = std::fopen(path.c_str(), "wb");
    if (stream == nullptr) throw ToolError(path.string() + ": cannot be written: " + std::strerror(errno));
    const bool written = format_ == Format::Png
                             ? WritePng(stream, bgr)
                             : std::fwrite(bgr.data(), 1, bgr.size(), stream) == bgr.size();
    const bool closed = std::fclose(stream) == 0;
    if (written && closed) return;
    const int reason = errno;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
    throw ToolError(path.string() + ": cannot be written: " + std::strerror(reason));
}

}  // namespace tools
