#pragma once

#include <emmintrin.h>

#include <cstdint>

// Two doubles at a time.
struct Sse2Vector {
    using Reg = __m128d;
    static constexpr int kLanes = 2;

    static Reg Set(double value) { return _mm_set1_pd(value); }
    static Reg Load(const double* from) { return _mm_loadu_pd(from); }
    static void Store(double* to, Reg value) { _mm_storeu_pd(to, value); }
    static Reg Add(Reg a, Reg b) { return _mm_add_pd(a, b); }
    static Reg Sub(Reg a, Reg b) { return _mm_sub_pd(a, b); }
    static Reg Mul(Reg a, Reg b) { return _mm_mul_pd(a, b); }
    static Reg RoundToFloat(Reg value) { return _mm_cvtps_pd(_mm_cvtpd_ps(value)); }

    static void StoreInterleaved(double* to, Reg even, Reg odd) {
        _mm_storeu_pd(to, _mm_unpacklo_pd(even, odd));
        _mm_storeu_pd(to + 2, _mm_unpackhi_pd(even, odd));
    }

    // The low 16 bits of both, side by side: a saturating pack would not wrap.
    static void StoreSamples(int16_t* to, Reg even, Reg odd) {
        const __m128i evens = _mm_cvttps_epi32(_mm_cvtpd_ps(even));
        const __m128i odds = _mm_cvttps_epi32(_mm_cvtpd_ps(odd));
        const __m128i pairs =
            _mm_or_si128(_mm_and_si128(evens, _mm_set1_epi32(0xFFFF)), _mm_slli_epi32(odds, 16));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), pairs);
    }
};
