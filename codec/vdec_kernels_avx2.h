// SPDX-License-Identifier: MIT
#pragma once

#include "codec/vdec_kernels.h"

extern const VdecKernels vdec_kernels_avx2;

// Raises `peak` to the largest magnitude of so many values, a multiple of 8.
void vdec_raise_peak_avx2(const float* values, int count, float& peak);
