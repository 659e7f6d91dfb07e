// SPDX-License-Identifier: MIT
#include "codec/vdec_kernels_avx2.h"

#include "codec/vdec_synth.h"
#include "codec/vdec_vector_avx2.h"

namespace {

__m256i Load16(const int16_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

void SynthHalfRow(const double* low, const double* high, int half_width, float* row, float* peak) {
    vdec_synth_rows<Avx2Vector>(low, high, half_width, row);
    if (peak != nullptr) vdec_raise_peak_avx2(row, 2 * half_width, *peak);
}

// Eight singles at a time.
struct Avx2Singles {
    using Reg = __m256;
    static Reg Set(double value) { return _mm256_set1_ps(static_cast<float>(value)); }
    static Reg Add(Reg a, Reg b) { return _mm256_add_ps(a, b); }
    static Reg Sub(Reg a, Reg b) { return _mm256_sub_ps(a, b); }
    static Reg Mul(Reg a, Reg b) { return _mm256_mul_ps(a, b); }
};

// The last level in single precision, and again in double precision where that could tell another sample.
//
// Let u = 2^-24, P the peak and A = 2 (o1 + o3) < 0.9653, the larger sum of a filter's magnitudes. Both forms
// stand for the same sums; c and r are what these give in real numbers, from the rows and from the exact
// columns.
//
// Columns: at most three roundings lie on the way of each product, so single precision is off c by no more
// than 3 A u P < 2.90 u P. The exact form rounds c once: A u P < 0.97 u P. They differ by less than 3.87 u P.
//
// Rows: that difference arrives as A * 3.87 u P < 3.74 u P. Three more roundings: 3 A * A u P < 2.80 u P. The
// exact form rounds r once: A * A u P < 0.94 u P. Together less than 7.5 u P.
//
// What is left out (products of two such errors, the roundings of double precision, denormals) is far below
// the 0.5 u P that are missing to 8 u P, which is P / 32 in units of 2^-16. Results are taken in these units,
// a scale that is exact; rounding them to integers adds a half. So where a result is further than P / 32 +
// 1/2 from every whole number, the exact one lies between the same two, none of which it can reach by its own
// rounding. All magnitudes being below A * A * 32768, the whole part fits 16 bits.
void SynthSamples(const float* const* rows, float peak, int16_t* even_row, int16_t* odd_row) {
    constexpr int kWidth = kPictureWidth / 2;
    constexpr int kMargin = 8;
    alignas(64) float lines[2][kMargin + kWidth + kMargin];
    const SynthFilter<Avx2Singles> columns;
    for (int x = -kMargin; x < kWidth + kMargin; x += 8) {
        const __m256 s[] = {_mm256_load_ps(rows[0] + x), _mm256_load_ps(rows[1] + x),
                            _mm256_load_ps(rows[2] + x), _mm256_load_ps(rows[3] + x)};
        _mm256_store_ps(lines[0] + kMargin + x, columns.EvenLow(s));
        _mm256_store_ps(lines[1] + kMargin + x, columns.OddLow(s));
    }
    const SynthFilter<Avx2Singles> filter(65536);
    const __m256i tolerance =
        _mm256_set1_epi16(static_cast<int16_t>(peak < 32768 ? peak / 32 + 0.5F : 32767.0F));
    int16_t* const to[] = {even_row, odd_row};
    for (int x = 0; x < kWidth; x += 8) {
        // Of sixteen samples of each row the whole part, rounded down, and what is above it; the latter as a
        // signed number is the distance from the nearest whole number.
        __m256i whole[2];
        __m256i part[2];
        for (int row = 0; row < 2; ++row) {
            const float* at = lines[row] + kMargin + x;
            const __m256 s[] = {_mm256_loadu_ps(at - 1), _mm256_load_ps(at), _mm256_loadu_ps(at + 1),
                                _mm256_loadu_ps(at + 2)};
            const __m256i even = _mm256_cvtps_epi32(filter.EvenLow(s));
            const __m256i odd = _mm256_cvtps_epi32(filter.OddLow(s));
            whole[row] = _mm256_blend_epi16(_mm256_srli_epi32(even, 16), odd, 0xAA);
            part[row] = _mm256_blend_epi16(even, _mm256_slli_epi32(odd, 16), 0xAA);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to[row] + 2 * x),
                                _mm256_sub_epi16(whole[row], _mm256_srai_epi16(whole[row], 15)));
        }
        const __m256i nearest = _mm256_min_epi16(_mm256_abs_epi16(part[0]), _mm256_abs_epi16(part[1]));
        if (_mm256_movemask_epi8(_mm256_cmpgt_epi16(nearest, tolerance)) != -1) [[unlikely]] {
            // Both sides of 0 are truncated to it: zero areas, as grey pictures have them, are right already.
            const auto settled = [&](int row) {
                const __m256i away = _mm256_cmpgt_epi16(_mm256_abs_epi16(part[row]), tolerance);
                const __m256i zero = _mm256_cmpeq_epi16(whole[row], _mm256_srai_epi16(part[row], 15));
                return _mm256_movemask_epi8(_mm256_or_si256(away, zero)) == -1;
            };
            if (peak < 32768 && settled(0) && settled(1)) continue;
            const float* const from[] = {rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x};
            vdec_synth_samples<Avx2Vector, 8>(from, 0, even_row + 2 * x, odd_row + 2 * x);
        }
    }
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

void vdec_raise_peak_avx2(const float* values, int count, float& peak) {
    __m256 peaks = _mm256_set1_ps(peak);
    for (int x = 0; x < count; x += 8)
        peaks = _mm256_max_ps(peaks, _mm256_andnot_ps(_mm256_set1_ps(-0.0F), _mm256_loadu_ps(values + x)));
    __m128 four = _mm_max_ps(_mm256_castps256_ps128(peaks), _mm256_extractf128_ps(peaks, 1));
    four = _mm_max_ps(four, _mm_movehl_ps(four, four));
    peak = _mm_cvtss_f32(_mm_max_ss(four, _mm_movehdup_ps(four)));
}

const VdecKernels vdec_kernels_avx2 = {
    "AVX2", vdec_synth_columns<Avx2Vector>, vdec_synth_rows<Avx2Vector>, SynthHalfRow, SynthSamples, BgrRow,
};
