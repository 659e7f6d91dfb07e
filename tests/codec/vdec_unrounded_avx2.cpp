#include "codec/vdec_vector_avx2.h"
#include "tests/codec/vdec_unrounded.h"

const VdecKernels unrounded_avx2 = UnroundedKernels<Avx2Vector>("avx2");
