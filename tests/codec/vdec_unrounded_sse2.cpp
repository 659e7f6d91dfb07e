#include "codec/vdec_vector_sse2.h"
#include "tests/codec/vdec_unrounded.h"

const VdecKernels unrounded_sse2 = UnroundedKernels<Sse2Vector>("sse2");
