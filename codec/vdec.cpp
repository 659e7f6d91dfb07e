// SPDX-License-Identifier: MIT
#include "codec/vdec.h"

#include <memory>
#include <new>

#include "codec/vdec_stages.h"

struct VdecDecoder {
    signed char quality = kQualityLevels - 1;
    VdecCodes codes;
    VdecSymbols symbols;
    VdecCoefficients coefficients;
    VdecHalfPlanes planes;
};

namespace {

struct Destroy {
    void operator()(VdecDecoder* decoder) const { vdec_destroy(decoder); }
};

// Null while the process's decoder is not initialised.
std::unique_ptr<VdecDecoder, Destroy> shared;

}  // namespace

VdecDecoder* vdec_create() {
    std::unique_ptr<VdecDecoder, Destroy> decoder(new (std::nothrow) VdecDecoder);
    if (!decoder || !vdec_build_codes(decoder->codes)) return nullptr;
    return decoder.release();
}

void vdec_destroy(VdecDecoder* decoder) {
    delete decoder;
}

bool vdec_set_quality(VdecDecoder& decoder, signed char level) {
    if (level < 0 || level >= kQualityLevels) return false;
    decoder.quality = level;
    return true;
}

void vdec_decode(VdecDecoder& decoder, const uint8_t* payload, size_t length, uint8_t* picture) {
    const VdecKernels& kernels = vdec_best_kernels();
    vdec_read_symbols(decoder.codes, payload, length, decoder.symbols);
    vdec_reconstruct(decoder.symbols, decoder.quality, decoder.coefficients);
    vdec_inverse_dwt(kernels, decoder.coefficients, decoder.planes);
    vdec_to_bgr(kernels, decoder.planes, picture);
}

void vdec_init() {
    shared.reset();
    shared.reset(vdec_create());
}

bool vdec_set_quality(signed char level) {
    return shared && vdec_set_quality(*shared, level);
}

bool vdec_decode(const uint8_t* payload, size_t length, uint8_t* picture) {
    if (!shared) return false;
    vdec_decode(*shared, payload, length, picture);
    return true;
}

void vdec_free() {
    shared.reset();
}
