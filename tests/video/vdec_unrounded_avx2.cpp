#include "tests/video/vdec_unrounded.h"
#include "video/vdec_vector_avx2.h"

const VdecKernels unrounded_avx2 = UnroundedKernels<Avx2Vector>("avx2");
