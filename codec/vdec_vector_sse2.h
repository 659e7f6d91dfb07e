// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

#include <cstdint>

// Two doubles at a time.
struct Sse2Vector {
    using Reg = __m128d;
    static constexpr int kLanes = 2;
    using SampleRegs = Reg[2];

    static Reg Set(double value) { return _mm_set1_pd(value); }
    static Reg Load(const double* from) { return _mm_loadu_pd(from); }
    static Reg Load(const float* from) {
        return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
    }
    static void Store(double* to, Reg value) { _mm_storeu_pd(to, value); }
    static Reg Add(Reg a, Reg b) { return _mm_add_pd(a, b); }
    static Reg Sub(Reg a, Reg b) { return _mm_sub_pd(a, b); }
    static Reg Mul(Reg a, Reg b) { return _mm_mul_pd(a, b); }
    static Reg RoundToFloat(Reg value) { return _mm_cvtps_pd(_mm_cvtpd_ps(value)); }

    static void StoreInterleaved(float* to, Reg even, Reg odd) {
        _mm_storeu_ps(to, _mm_unpacklo_ps(_mm_cvtpd_ps(even), _mm_cvtpd_ps(odd)));
    }
    static void StoreInterleaved(double* to, Reg even, Reg odd) {
        even = RoundToFloat(even);
        odd = RoundToFloat(odd);
        _mm_storeu_pd(to, _mm_unpacklo_pd(even, odd));
        _mm_storeu_pd(to + 2, _mm_unpackhi_pd(even, odd));
    }

    static __m128i Truncate(const SampleRegs& values) {
        return _mm_cvttps_epi32(_mm_movelh_ps(_mm_cvtpd_ps(values[0]), _mm_cvtpd_ps(values[1])));
    }

    // The low 16 bits of both side by side: a saturating pack would not wrap.
    static void StoreSamples(int16_t* to, const SampleRegs& even, const SampleRegs& odd) {
        const __m128i low_halves = _mm_and_si128(Truncate(even), _mm_set1_epi32(0xFFFF));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                         _mm_or_si128(low_halves, _mm_slli_epi32(Truncate(odd), 16)));
    }
};
