// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "codec/vdec.h"

// Any bytes as a payload, whole pictures. The first byte chooses the quality level.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = [] {
        vdec_init();
        return vdec_set_quality(3);
    }();
    if (!ready || size == 0) return 0;
    vdec_set_quality(static_cast<signed char>(data[0] & 3));

    // Copies of their own size, so that a step outside is seen.
    const std::vector<uint8_t> payload(data + 1, data + size);
    static std::vector<uint8_t> picture(kPictureBytes);
    picture.back() = 1;
    if (!vdec_decode(payload.data(), payload.size(), picture.data())) std::abort();
    return 0;
}
