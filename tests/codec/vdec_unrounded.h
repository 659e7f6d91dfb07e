#pragma once

#include "codec/vdec_synth.h"

// The decoder's own filter code with its double results left as they are: an order of sums that is wrong
// hardly ever shows after the rounding to float. Only the two synth_rows and synth_columns are there.
struct KeepDouble {
    template <class V>
    static typename V::Reg Apply(typename V::Reg value) {
        return value;
    }
};

template <class V>
constexpr VdecKernels UnroundedKernels(const char* name) {
    return {name, vdec_synth_columns<V, KeepDouble>, vdec_synth_rows<V, KeepDouble>, nullptr, nullptr};
}

extern const VdecKernels unrounded_scalar;
extern const VdecKernels unrounded_sse2;
extern const VdecKernels unrounded_avx2;
