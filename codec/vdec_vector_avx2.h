// SPDX-License-Identifier: MIT
#pragma once

#include <immintrin.h>

#include <cstdint>

#ifdef __AVX2__

// Four doubles at a time. For files compiled with AVX2 but without FMA; for others it is not there.
struct Avx2Vector {
    using Reg = __m256d;
    static constexpr int kLanes = 4;
    using SampleRegs = Reg[2];

    static Reg Set(double value) { return _mm256_set1_pd(value); }
    static Reg Load(const double* from) { return _mm256_loadu_pd(from); }
    static Reg Load(const float* from) { return _mm256_cvtps_pd(_mm_loadu_ps(from)); }
    static void Store(double* to, Reg value) { _mm256_storeu_pd(to, value); }
    static Reg Add(Reg a, Reg b) { return _mm256_add_pd(a, b); }
    static Reg Sub(Reg a, Reg b) { return _mm256_sub_pd(a, b); }
    static Reg Mul(Reg a, Reg b) { return _mm256_mul_pd(a, b); }
    static Reg RoundToFloat(Reg value) { return _mm256_cvtps_pd(_mm256_cvtpd_ps(value)); }

    static void StoreInterleaved(float* to, Reg even, Reg odd) {
        const __m128 evens = _mm256_cvtpd_ps(even);
        const __m128 odds = _mm256_cvtpd_ps(odd);
        _mm_storeu_ps(to, _mm_unpacklo_ps(evens, odds));
        _mm_storeu_ps(to + 4, _mm_unpackhi_ps(evens, odds));
    }
    static void StoreInterleaved(double* to, Reg even, Reg odd) {
        even = RoundToFloat(even);
        odd = RoundToFloat(odd);
        const Reg first = _mm256_unpacklo_pd(even, odd);
        const Reg second = _mm256_unpackhi_pd(even, odd);
        _mm256_storeu_pd(to, _mm256_permute2f128_pd(first, second, 0x20));
        _mm256_storeu_pd(to + 4, _mm256_permute2f128_pd(first, second, 0x31));
    }

    static __m256i Truncate(const SampleRegs& values) {
        return _mm256_cvttps_epi32(_mm256_set_m128(_mm256_cvtpd_ps(values[1]), _mm256_cvtpd_ps(values[0])));
    }

    // The low 16 bits of both side by side: a saturating pack would not wrap.
    static void StoreSamples(int16_t* to, const SampleRegs& even, const SampleRegs& odd) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                            _mm256_blend_epi16(Truncate(even), _mm256_slli_epi32(Truncate(odd), 16), 0xAA));
    }
};

#endif
