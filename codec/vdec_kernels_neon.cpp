// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels_neon.h"

#include "codec/vdec_synth.h"
#include "codec/vdec_vector_neon.h"

namespace {

// B, G, R of eight pixels. y + (260 u >> 7) = y + 2u + (u >> 5) and y + (146 v >> 7) = y + v + (18 v >> 7),
// modulo 2^16. Green needs its sum in 32 bits, which then fits 16.
uint8x8x3_t Convert(const int16_t* y_at, const int16_t* u_at, const int16_t* v_at) {
    const int16x8_t y = vld1q_s16(y_at);
    const int16x8_t u = vld1q_s16(u_at);
    const int16x8_t v = vld1q_s16(v_at);
    const int16x8_t blue = vaddq_s16(vaddq_s16(y, vaddq_s16(u, u)), vshrq_n_s16(u, 5));
    const int32x4_t first = vmlal_n_s16(vmull_n_s16(vget_low_s16(u), -51), vget_low_s16(v), -74);
    const int32x4_t second = vmlal_n_s16(vmull_n_s16(vget_high_s16(u), -51), vget_high_s16(v), -74);
    const int16x8_t green = vaddq_s16(y, vcombine_s16(vshrn_n_s32(first, 7), vshrn_n_s32(second, 7)));
    const int16x8_t share = vcombine_s16(vshrn_n_s32(vmull_n_s16(vget_low_s16(v), 18), 7),
                                         vshrn_n_s32(vmull_n_s16(vget_high_s16(v), 18), 7));
    const int16x8_t red = vaddq_s16(vaddq_s16(y, v), share);
    return {{vqmovun_s16(blue), vqmovun_s16(green), vqmovun_s16(red)}};
}

void BgrRow(const int16_t* y, const int16_t* u, const int16_t* v, int width, uint8_t* bgr) {
    for (int x = 0; x < width; x += 8, bgr += 24) vst3_u8(bgr, Convert(y + x, u + x, v + x));
}

}  // namespace

const VdecKernels vdec_kernels_neon = {
    "NEON",
    vdec_synth_columns<NeonVector>,
    vdec_synth_rows<NeonVector>,
    vdec_synth_half_row<NeonVector>,
    vdec_synth_samples<NeonVector>,
    BgrRow,
};
