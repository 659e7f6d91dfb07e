// SPDX-License-Identifier: MIT
#pragma once

#include <immintrin.h>

#ifdef __AVX512F__

// Eight doubles at a time. For files compiled with AVX-512F; for others it is not there.
struct Avx512Vector {
    using Reg = __m512d;
    static constexpr int kLanes = 8;

    // The forms without a mask make GCC warn of its own undefined values.
    static constexpr __mmask8 kAll = 0xFF;
    static __m256 ToSingles(Reg value) { return _mm512_maskz_cvtpd_ps(kAll, value); }

    static Reg Set(double value) { return _mm512_set1_pd(value); }
    static Reg Load(const double* from) { return _mm512_loadu_pd(from); }
    static void Store(double* to, Reg value) { _mm512_storeu_pd(to, value); }
    static Reg Add(Reg a, Reg b) { return _mm512_add_pd(a, b); }
    static Reg Sub(Reg a, Reg b) { return _mm512_sub_pd(a, b); }
    static Reg Mul(Reg a, Reg b) { return _mm512_mul_pd(a, b); }
    static Reg RoundToFloat(Reg value) { return _mm512_maskz_cvtps_pd(kAll, ToSingles(value)); }

    static void StoreInterleaved(float* to, Reg even, Reg odd) {
        const __m256 evens = ToSingles(even);
        const __m256 odds = ToSingles(odd);
        const __m256 first = _mm256_unpacklo_ps(evens, odds);
        const __m256 second = _mm256_unpackhi_ps(evens, odds);
        _mm256_storeu_ps(to, _mm256_permute2f128_ps(first, second, 0x20));
        _mm256_storeu_ps(to + 8, _mm256_permute2f128_ps(first, second, 0x31));
    }
    static void StoreInterleaved(double* to, Reg even, Reg odd) {
        even = RoundToFloat(even);
        odd = RoundToFloat(odd);
        const __m512i low = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11);
        const __m512i high = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
        _mm512_storeu_pd(to, _mm512_permutex2var_pd(even, low, odd));
        _mm512_storeu_pd(to + 8, _mm512_permutex2var_pd(even, high, odd));
    }
};

#endif
