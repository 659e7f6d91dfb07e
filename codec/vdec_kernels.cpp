// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels.h"

#include <initializer_list>

#include "codec/vdec_kernels_scalar.h"
#ifdef __x86_64__
#include "codec/vdec_kernels_avx2.h"
#include "codec/vdec_kernels_avx512.h"
#include "codec/vdec_kernels_sse2.h"
#elif defined(__aarch64__)
#include "codec/vdec_kernels_neon.h"
#endif

const VdecKernels* vdec_kernels_for(VdecIsa isa) {
    switch (isa) {
        case VdecIsa::Scalar:
            return &vdec_kernels_scalar;
#ifdef __x86_64__
        case VdecIsa::Sse2:
            return &vdec_kernels_sse2;
        case VdecIsa::Avx2:
            return __builtin_cpu_supports("avx2") ? &vdec_kernels_avx2 : nullptr;
        case VdecIsa::Avx512:
            return __builtin_cpu_supports("avx512f") ? &vdec_kernels_avx512 : nullptr;
#elif defined(__aarch64__)
        case VdecIsa::Neon:
            return &vdec_kernels_neon;
#endif
        default:
            return nullptr;
    }
}

const VdecKernels& vdec_best_kernels() {
    for (const VdecIsa isa : {VdecIsa::Avx512, VdecIsa::Avx2, VdecIsa::Sse2, VdecIsa::Neon}) {
        if (const VdecKernels* kernels = vdec_kernels_for(isa)) return *kernels;
    }
    return vdec_kernels_scalar;
}
