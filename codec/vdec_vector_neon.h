// SPDX-License-Identifier: MIT
#pragma once

#ifdef __aarch64__

#include <arm_neon.h>

#include <cstdint>

// Two doubles at a time. For arm64; elsewhere it is not there.
struct NeonVector {
    using Reg = float64x2_t;
    static constexpr int kLanes = 2;
    using SampleRegs = Reg[2];

    static Reg Set(double value) { return vdupq_n_f64(value); }
    static Reg Load(const double* from) { return vld1q_f64(from); }
    static Reg Load(const float* from) { return vcvt_f64_f32(vld1_f32(from)); }
    static void Store(double* to, Reg value) { vst1q_f64(to, value); }
    static Reg Add(Reg a, Reg b) { return vaddq_f64(a, b); }
    static Reg Sub(Reg a, Reg b) { return vsubq_f64(a, b); }
    static Reg Mul(Reg a, Reg b) { return vmulq_f64(a, b); }
    static Reg RoundToFloat(Reg value) { return vcvt_f64_f32(vcvt_f32_f64(value)); }

    static void StoreInterleaved(float* to, Reg even, Reg odd) {
        vst2_f32(to, float32x2x2_t{{vcvt_f32_f64(even), vcvt_f32_f64(odd)}});
    }
    static void StoreInterleaved(double* to, Reg even, Reg odd) {
        even = RoundToFloat(even);
        odd = RoundToFloat(odd);
        vst1q_f64(to, vzip1q_f64(even, odd));
        vst1q_f64(to + 2, vzip2q_f64(even, odd));
    }

    // The low 16 bits: a saturating conversion would not wrap.
    static int16x4_t Truncate(const SampleRegs& values) {
        return vmovn_s32(vcvtq_s32_f32(vcombine_f32(vcvt_f32_f64(values[0]), vcvt_f32_f64(values[1]))));
    }

    static void StoreSamples(int16_t* to, const SampleRegs& even, const SampleRegs& odd) {
        vst2_s16(to, int16x4x2_t{{Truncate(even), Truncate(odd)}});
    }
};

#endif
