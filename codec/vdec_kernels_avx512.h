// SPDX-License-Identifier: MIT
#pragma once

#include "codec/vdec_kernels.h"

// For machines that also have AVX2.
extern const VdecKernels vdec_kernels_avx512;
