// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <memory>
#include <vector>

#include "codec/vdec.h"

// Any bytes as a payload, whole pictures. The first byte chooses the quality level.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static VdecDecoder* const decoder = vdec_create();
    static const auto picture = std::make_unique<uint8_t[]>(kPictureBytes);
    if (size == 0) return 0;
    if (!vdec_set_quality(*decoder, static_cast<signed char>(data[0] & 3))) std::abort();
    // A copy of its own size, so that a step outside is seen.
    const std::vector<uint8_t> payload(data + 1, data + size);
    vdec_decode(*decoder, payload.data(), payload.size(), picture.get());
    return 0;
}
