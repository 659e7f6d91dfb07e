// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

#include "codec/picture_geometry.h"

namespace tools {

// A plane has one value for each pixel of a picture, row after row without gaps.
inline constexpr std::size_t kPlaneValues = std::size_t{kPictureWidth} * kPictureHeight;

// One level of CDF 9/7 analysis (Cohen, Daubechies, Feauveau 1992) of a line, by direct convolution with
// whole-sample symmetric extension, which the decoder's synthesis undoes. Takes an even number of
// samples and leaves the low-pass half followed by the high-pass half. At most kPictureWidth samples, at
// least 6. Both low-pass filters have a gain of sqrt(2), so errors keep their energy from level to level.
void AnalyseLine(std::span<double> line);

// Analyses the top-left width × height region of a plane once, rows then columns, in place.
void AnalyseRegion(std::span<double, kPlaneValues> plane, int width, int height);

// Analyses a whole plane `levels` times (3 for luma, 4 for chroma), each level working on the low-low
// quarter of the one before.
void ForwardDwt(std::span<double, kPlaneValues> plane, int levels);

}  // namespace tools
