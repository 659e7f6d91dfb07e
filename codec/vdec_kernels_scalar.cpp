// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels_scalar.h"

#include "codec/vdec_synth.h"
#include "codec/vdec_vector_scalar.h"

namespace {

uint8_t Clamp(int value) {
    const auto wrapped = static_cast<int16_t>(value);
    return static_cast<uint8_t>(wrapped < 0 ? 0 : wrapped > 255 ? 255 : wrapped);
}

// The analog YUV equations (R = Y + 1.140 V, G = Y - 0.395 U - 0.581 V, B = Y + 2.032 U) in 7-bit fixed
// point.
void BgrRow(const int16_t* y, const int16_t* u, const int16_t* v, int width, uint8_t* bgr) {
    for (int x = 0; x < width; ++x, bgr += 3) {
        bgr[0] = Clamp((128 * y[x] + 260 * u[x]) >> 7);
        bgr[1] = Clamp((128 * y[x] - 51 * u[x] - 74 * v[x]) >> 7);
        bgr[2] = Clamp((128 * y[x] + 146 * v[x]) >> 7);
    }
}

}  // namespace

const VdecKernels vdec_kernels_scalar = {
    "scalar",
    vdec_synth_columns<ScalarVector>,
    vdec_synth_rows<ScalarVector>,
    vdec_synth_half_row<ScalarVector>,
    vdec_synth_samples<ScalarVector>,
    BgrRow,
};
