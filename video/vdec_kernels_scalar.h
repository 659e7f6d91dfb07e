#pragma once

#include "video/vdec_kernels.h"

extern const VdecKernels vdec_kernels_scalar;
