// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels_avx2.h"

#include "codec/vdec_synth.h"
#include "codec/vdec_vector_avx2.h"

namespace {

__m256i Load16(const int16_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

// Sixteen pixels at a time, eight in each lane; see the SSE2 form for the arithmetic.
void BgrRow(const int16_t* y_row, const int16_t* u_row, const int16_t* v_row, int width, uint8_t* bgr) {
    const __m256i green_factors =
        _mm256_set1_epi32(static_cast<int>((0x10000U - 74U) << 16 | (0x10000U - 51U)));
    const __m256i red_factor = _mm256_set1_epi16(9216);
    // From B0…B7 G0…G7 and R0…R7 to the first 16 and the last 8 bytes of eight pixels; -1 leaves a zero.
    const __m256i blue_green_16 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 8, -1, 1, 9, -1, 2, 10, -1, 3, 11, -1, 4, 12, -1, 5));
    const __m256i red_16 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1));
    const __m256i blue_green_8 = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(13, -1, 6, 14, -1, 7, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i red_8 = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, -1, -1, -1, -1, -1, -1));

    for (int x = 0; x < width; x += 16, bgr += 48) {
        const __m256i y = Load16(y_row + x);
        const __m256i u = Load16(u_row + x);
        const __m256i v = Load16(v_row + x);
        const __m256i blue =
            _mm256_add_epi16(_mm256_add_epi16(y, _mm256_add_epi16(u, u)), _mm256_srai_epi16(u, 5));
        const __m256i red = _mm256_add_epi16(_mm256_add_epi16(y, v), _mm256_mulhi_epi16(v, red_factor));
        const __m256i first =
            _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(u, v), green_factors), 7);
        const __m256i second =
            _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(u, v), green_factors), 7);
        const __m256i green = _mm256_add_epi16(y, _mm256_packs_epi32(first, second));

        const __m256i blue_green = _mm256_packus_epi16(blue, green);
        const __m256i reds = _mm256_packus_epi16(red, red);
        const __m256i sixteen = _mm256_or_si256(_mm256_shuffle_epi8(blue_green, blue_green_16),
                                                _mm256_shuffle_epi8(reds, red_16));
        const __m256i eight =
            _mm256_or_si256(_mm256_shuffle_epi8(blue_green, blue_green_8), _mm256_shuffle_epi8(reds, red_8));
        auto* to = reinterpret_cast<__m128i*>(bgr);
        auto* to_second = reinterpret_cast<__m128i*>(bgr + 24);
        _mm_storeu_si128(to, _mm256_castsi256_si128(sixteen));
        _mm_storel_epi64(to + 1, _mm256_castsi256_si128(eight));
        _mm_storeu_si128(to_second, _mm256_extracti128_si256(sixteen, 1));
        _mm_storel_epi64(to_second + 1, _mm256_extracti128_si256(eight, 1));
    }
}

}  // namespace

const VdecKernels vdec_kernels_avx2 = {
    "AVX2", vdec_synth_columns<Avx2Vector>, vdec_synth_rows<Avx2Vector>, vdec_synth_samples<Avx2Vector>,
    BgrRow,
};
