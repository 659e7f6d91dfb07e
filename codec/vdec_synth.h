// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/vdec_kernels.h"
#include "codec/vdec_tables.h"

// The synthesis filters, for a vector type V (vdec_vector_….h).
//
// Files that instantiate these are compiled for different instruction sets. Everything here therefore depends
// on V, and nothing from the standard library is called: the linker must not get to choose between copies.

template <class V>
struct SynthFilter {
    using Reg = typename V::Reg;

    explicit SynthFilter(double by = 1) : scale(by) {}

    const double scale;  // of the results
    const Reg e0 = V::Set(scale * double{synth_taps.e0}), e1 = V::Set(scale * double{synth_taps.e1});
    const Reg e2 = V::Set(scale * double{synth_taps.e2}), e3 = V::Set(scale * double{synth_taps.e3});
    const Reg o0 = V::Set(scale * double{synth_taps.o0}), o1 = V::Set(scale * double{synth_taps.o1});
    const Reg o2 = V::Set(scale * double{synth_taps.o2}), o3 = V::Set(scale * double{synth_taps.o3});
    const Reg o4 = V::Set(scale * double{synth_taps.o4});

    // s holds low-pass values k - 1 to k + 2, d high-pass values k - 2 to k + 2.
    Reg Even(const Reg (&s)[kLowTaps], const Reg (&d)[kHighTaps]) const {
        const Reg near = V::Sub(V::Mul(e0, s[1]), V::Mul(e1, V::Add(d[2], d[1])));
        const Reg wider = V::Add(near, V::Mul(e2, V::Add(s[2], s[0])));
        return V::Sub(wider, V::Mul(e3, V::Add(d[3], d[0])));
    }
    Reg Odd(const Reg (&s)[kLowTaps], const Reg (&d)[kHighTaps]) const {
        const Reg far = V::Add(V::Mul(o4, V::Add(d[4], d[0])), V::Mul(o3, V::Add(s[3], s[0])));
        const Reg nearer = V::Add(far, V::Mul(o1, V::Add(s[1], s[2])));
        return V::Add(V::Add(nearer, V::Mul(o2, V::Add(d[3], d[1]))), V::Mul(o0, d[2]));
    }

    // With d all zero: an added zero changes nothing but a zero's sign, which no picture shows.
    Reg EvenLow(const Reg (&s)[kLowTaps]) const {
        return V::Add(V::Mul(e0, s[1]), V::Mul(e2, V::Add(s[2], s[0])));
    }
    Reg OddLow(const Reg (&s)[kLowTaps]) const {
        return V::Add(V::Mul(o3, V::Add(s[3], s[0])), V::Mul(o1, V::Add(s[1], s[2])));
    }
};

template <class V>
void vdec_synth_columns(const double* const* low, const double* const* high, int width, double* even,
                        double* odd) {
    using Reg = typename V::Reg;
    const SynthFilter<V> filter;
    if (high == nullptr) {
        for (int x = 0; x < width; x += V::kLanes) {
            const Reg s[] = {V::Load(low[0] + x), V::Load(low[1] + x), V::Load(low[2] + x),
                             V::Load(low[3] + x)};
            V::Store(even + x, V::RoundToFloat(filter.EvenLow(s)));
            V::Store(odd + x, V::RoundToFloat(filter.OddLow(s)));
        }
        return;
    }
    for (int x = 0; x < width; x += V::kLanes) {
        const Reg s[] = {V::Load(low[0] + x), V::Load(low[1] + x), V::Load(low[2] + x), V::Load(low[3] + x)};
        const Reg d[] = {V::Load(high[0] + x), V::Load(high[1] + x), V::Load(high[2] + x),
                         V::Load(high[3] + x), V::Load(high[4] + x)};
        V::Store(even + x, V::RoundToFloat(filter.Even(s, d)));
        V::Store(odd + x, V::RoundToFloat(filter.Odd(s, d)));
    }
}

template <class V, class T>
void vdec_synth_rows(const double* low, const double* high, int half_width, T* line) {
    using Reg = typename V::Reg;
    const SynthFilter<V> filter;
    for (int k = 0; k < half_width; k += V::kLanes) {
        const double* at = low + k;
        const Reg s[] = {V::Load(at - 1), V::Load(at), V::Load(at + 1), V::Load(at + 2)};
        Reg even;
        Reg odd;
        if (high == nullptr) {
            even = filter.EvenLow(s);
            odd = filter.OddLow(s);
        } else {
            const double* high_at = high + k;
            const Reg d[] = {V::Load(high_at - 2), V::Load(high_at - 1), V::Load(high_at),
                             V::Load(high_at + 1), V::Load(high_at + 2)};
            even = filter.Even(s, d);
            odd = filter.Odd(s, d);
        }
        V::StoreInterleaved(line + 2 * k, even, odd);
    }
}

template <class V>
void vdec_synth_half_row(const double* low, const double* high, int half_width, float* row, float*) {
    vdec_synth_rows<V>(low, high, half_width, row);
}

// `width` values of a half plane, from rows[0 … 3] on: the last level in double precision.
template <class V, int width = kPictureWidth / 2>
void vdec_synth_samples(const float* const* rows, float, int16_t* even_row, int16_t* odd_row) {
    using Reg = typename V::Reg;
    using SampleRegs = typename V::SampleRegs;
    constexpr int kRegs = static_cast<int>(sizeof(SampleRegs) / sizeof(Reg));
    const SynthFilter<V> filter;
    double lines[2][size_t{width} + kLowTaps];  // from value -1 on
    for (int x = 0; x < width + kLowTaps; x += V::kLanes) {
        const Reg s[] = {V::Load(rows[0] + x - 1), V::Load(rows[1] + x - 1), V::Load(rows[2] + x - 1),
                         V::Load(rows[3] + x - 1)};
        V::Store(lines[0] + x, V::RoundToFloat(filter.EvenLow(s)));
        V::Store(lines[1] + x, V::RoundToFloat(filter.OddLow(s)));
    }
    int16_t* const to[] = {even_row, odd_row};
    for (int row = 0; row < 2; ++row) {
        for (int k = 0; k < width; k += kRegs * V::kLanes) {
            SampleRegs even;
            SampleRegs odd;
            for (int i = 0; i < kRegs; ++i) {
                const double* at = lines[row] + k + i * V::kLanes;
                const Reg s[] = {V::Load(at), V::Load(at + 1), V::Load(at + 2), V::Load(at + 3)};
                even[i] = filter.EvenLow(s);
                odd[i] = filter.OddLow(s);
            }
            V::StoreSamples(to[row] + 2 * k, even, odd);
        }
    }
}
