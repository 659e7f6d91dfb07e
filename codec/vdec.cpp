#include "codec/vdec.h"

#include <memory>
#include <new>

#include "codec/vdec_stages.h"

namespace {

constexpr signed char kBestQuality = 3;

struct VdecState {
    signed char quality = kBestQuality;
    VdecCodes codes;
    VdecSymbols symbols;
    VdecCoefficients coefficients;
    VdecHalfPlanes planes;
};

// Null while the decoder is not initialised.
std::unique_ptr<VdecState> state;

}  // namespace

void vdec_init() {
    state.reset();
    std::unique_ptr<VdecState> fresh(new (std::nothrow) VdecState);
    if (fresh && vdec_build_codes(fresh->codes)) state = std::move(fresh);
}

bool vdec_set_quality(signed char level) {
    if (!state || level < 0 || level >= kQualityLevels) return false;
    state->quality = level;
    return true;
}

bool vdec_decode(const uint8_t* payload, size_t length, uint8_t* picture) {
    if (!state) return false;
    const VdecKernels& kernels = vdec_best_kernels();
    vdec_read_symbols(state->codes, payload, length, state->symbols);
    vdec_reconstruct(state->symbols, state->quality, state->coefficients);
    vdec_inverse_dwt(kernels, state->coefficients, state->planes);
    vdec_to_bgr(kernels, state->planes, picture);
    return true;
}

void vdec_free() {
    state.reset();
}
