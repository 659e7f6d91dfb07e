// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// One double at a time, for machines without a vector path.
struct ScalarVector {
    using Reg = double;
    static constexpr int kLanes = 1;
    using SampleRegs = Reg[1];  // taken by StoreSamples at a time

    static Reg Set(double value) { return value; }
    static Reg Load(const double* from) { return *from; }
    static Reg Load(const float* from) { return double{*from}; }
    static void Store(double* to, Reg value) { *to = value; }
    static Reg Add(Reg a, Reg b) { return a + b; }
    static Reg Sub(Reg a, Reg b) { return a - b; }
    static Reg Mul(Reg a, Reg b) { return a * b; }
    static Reg RoundToFloat(Reg value) { return double{static_cast<float>(value)}; }

    template <class T>
    static void StoreInterleaved(T* to, Reg even, Reg odd) {
        to[0] = static_cast<float>(even);
        to[1] = static_cast<float>(odd);
    }

    // Coefficients are 16 bits and a level amplifies less than five times, so 32 bits hold every sample.
    static void StoreSamples(int16_t* to, const SampleRegs& even, const SampleRegs& odd) {
        to[0] = static_cast<int16_t>(static_cast<int32_t>(static_cast<float>(even[0])));
        to[1] = static_cast<int16_t>(static_cast<int32_t>(static_cast<float>(odd[0])));
    }
};
