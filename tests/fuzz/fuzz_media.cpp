// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <QByteArray>

#include "app/media_decisions.h"
#include "platform/qt/file_uri.h"
#include "tests/fuzz/require.h"

// What other programs may pass over the bus, or drop: times, rates and addresses of any value.

namespace {

template <class T>
T Take(const uint8_t*& data, size_t& size) {
    T value{};
    const size_t bytes = std::min(size, sizeof value);
    std::memcpy(&value, data, bytes);
    data += bytes;
    size -= bytes;
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto time = Take<int64_t>(data, size);
    const auto length = static_cast<int>(Take<uint32_t>(data, size) & 0x7FFFFFFF);
    const auto position = static_cast<int>(Take<uint32_t>(data, size) % (static_cast<unsigned>(length) + 1U));
    const auto rate = Take<double>(data, size);
    const auto is_within = [&](int frame) { return frame >= 0 && (frame < length || length == 0); };

    const auto step = FrameAfterStep(time, position, length);
    Require(step ? is_within(*step) : time > 0);
    const auto frame = FrameOfPosition(time, length);
    Require(!frame || (*frame >= 0 && *frame <= length));
    if (!std::isnan(rate)) {
        const int speed = SpeedForRate(rate);
        Require(std::count(std::begin(kSpeeds), std::end(kSpeeds), speed) == 1);
    }

    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const std::vector<std::string> paths = PathsOfUriList(text, 5);
    Require(paths.size() <= 5);
    for (const std::string& path : paths) {
        Require(path.starts_with('/') && path.find('\0') == std::string::npos);
        Require(PathOfFileUri(FileUri(path)) == path);
    }
    return 0;
}
