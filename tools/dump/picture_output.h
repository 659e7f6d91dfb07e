// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "codec/picture_geometry.h"

namespace tools {

// A folder of numbered pictures: picture-0001.png (upright, 320 × 240, 24 bit) or picture-0001.bgr (the
// bytes of the decoder). Every operation throws ToolError when something cannot be written.
class PictureOutput {
public:
    enum class Format { Bgr, Png };

    // Makes the folder where it is missing.
    PictureOutput(const std::filesystem::path& folder, Format format);

    // Writes picture `number`. Any thread.
    void Write(unsigned number, std::span<const uint8_t, kPictureBytes> bgr) const;

private:
    std::filesystem::path folder_;
    Format format_;
};

}  // namespace tools
