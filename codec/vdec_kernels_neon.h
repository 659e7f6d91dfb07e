// SPDX-License-Identifier: MIT
#pragma once

#include "codec/vdec_kernels.h"

extern const VdecKernels vdec_kernels_neon;
