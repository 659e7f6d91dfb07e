#include "codec/vdec_vector_scalar.h"
#include "tests/codec/vdec_unrounded.h"

const VdecKernels unrounded_scalar = UnroundedKernels<ScalarVector>("scalar");
