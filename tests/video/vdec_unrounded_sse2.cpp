#include "tests/video/vdec_unrounded.h"
#include "video/vdec_vector_sse2.h"

const VdecKernels unrounded_sse2 = UnroundedKernels<Sse2Vector>("sse2");
