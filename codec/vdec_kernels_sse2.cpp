// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels_sse2.h"

#include "codec/vdec_synth.h"
#include "codec/vdec_vector_sse2.h"

namespace {

// B, G, R of eight pixels before they are clamped.
struct Colours {
    __m128i b, g, r;
};

// y + (260 u >> 7) = y + 2u + (u >> 5) and y + (146 v >> 7) = y + v + (18 v >> 7), 18 v >> 7 being the high
// half of 9216 v; all modulo 2^16. Green needs its sum in 32 bits, which then fits 16.
Colours Convert(const int16_t* y_at, const int16_t* u_at, const int16_t* v_at) {
    const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y_at));
    const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(u_at));
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(v_at));
    const __m128i green_factors = _mm_set1_epi32(static_cast<int>((0x10000U - 74U) << 16 | (0x10000U - 51U)));
    const __m128i first = _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(u, v), green_factors), 7);
    const __m128i second = _mm_srai_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(u, v), green_factors), 7);
    return {_mm_add_epi16(_mm_add_epi16(y, _mm_add_epi16(u, u)), _mm_srai_epi16(u, 5)),
            _mm_add_epi16(y, _mm_packs_epi32(first, second)),
            _mm_add_epi16(_mm_add_epi16(y, v), _mm_mulhi_epi16(v, _mm_set1_epi16(9216)))};
}

// Four pixels B, G, R, 0 to 12 bytes and four zeros.
__m128i DropFourths(__m128i pixels) {
    const __m128i first = _mm_and_si128(pixels, _mm_set1_epi64x(0x0000000000FFFFFF));
    const __m128i second = _mm_and_si128(_mm_srli_epi64(pixels, 8), _mm_set1_epi64x(0x0000FFFFFF000000));
    const __m128i pairs = _mm_or_si128(first, second);
    const __m128i upper = _mm_and_si128(_mm_srli_si128(pairs, 2), _mm_set_epi32(0, -1, -0x10000, 0));
    return _mm_or_si128(_mm_move_epi64(pairs), upper);
}

void BgrRow(const int16_t* y, const int16_t* u, const int16_t* v, int width, uint8_t* bgr) {
    const __m128i zero = _mm_setzero_si128();
    for (int x = 0; x < width; x += 16, bgr += 48) {
        const Colours left = Convert(y + x, u + x, v + x);
        const Colours right = Convert(y + x + 8, u + x + 8, v + x + 8);
        const __m128i blue = _mm_packus_epi16(left.b, right.b);
        const __m128i green = _mm_packus_epi16(left.g, right.g);
        const __m128i red = _mm_packus_epi16(left.r, right.r);
        const __m128i blue_green[] = {_mm_unpacklo_epi8(blue, green), _mm_unpackhi_epi8(blue, green)};
        const __m128i red_zero[] = {_mm_unpacklo_epi8(red, zero), _mm_unpackhi_epi8(red, zero)};
        const __m128i fours[] = {DropFourths(_mm_unpacklo_epi16(blue_green[0], red_zero[0])),
                                 DropFourths(_mm_unpackhi_epi16(blue_green[0], red_zero[0])),
                                 DropFourths(_mm_unpacklo_epi16(blue_green[1], red_zero[1])),
                                 DropFourths(_mm_unpackhi_epi16(blue_green[1], red_zero[1]))};
        auto* to = reinterpret_cast<__m128i*>(bgr);
        _mm_storeu_si128(to, _mm_or_si128(fours[0], _mm_slli_si128(fours[1], 12)));
        _mm_storeu_si128(to + 1, _mm_or_si128(_mm_srli_si128(fours[1], 4), _mm_slli_si128(fours[2], 8)));
        _mm_storeu_si128(to + 2, _mm_or_si128(_mm_srli_si128(fours[2], 8), _mm_slli_si128(fours[3], 4)));
    }
}

}  // namespace

const VdecKernels vdec_kernels_sse2 = {
    "SSE2",
    vdec_synth_columns<Sse2Vector>,
    vdec_synth_rows<Sse2Vector>,
    vdec_synth_half_row<Sse2Vector>,
    vdec_synth_samples<Sse2Vector>,
    BgrRow,
};
