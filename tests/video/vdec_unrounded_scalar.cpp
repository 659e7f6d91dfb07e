#include "tests/video/vdec_unrounded.h"
#include "video/vdec_vector_scalar.h"

const VdecKernels unrounded_scalar = UnroundedKernels<ScalarVector>("scalar");
