// SPDX-License-Identifier: MIT
#include <array>
#include <span>
#include <string>
#include <vector>

#include "platform/framework/resources.h"
#include "platform/framework/unsupported.h"

// Any bytes as compiled resources: what is not supported is refused, and nothing else happens.

namespace {

struct Refused {};

template <class Load>
void Try(Load load) {
    try {
        load();
    } catch (const Refused&) {
    }
}

constexpr uint8_t kId = 1;
constexpr std::array<uint8_t, 20> kGroup = {0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kId, 0};

// Appends an entry as a resource compiler writes it.
void Append(std::vector<uint8_t>& file, unsigned type, std::span<const uint8_t> bytes) {
    const auto length = static_cast<uint32_t>(bytes.size());
    for (unsigned shift = 0; shift < 32; shift += 8) file.push_back(static_cast<uint8_t>(length >> shift));
    const uint8_t number = static_cast<uint8_t>(type);
    file.insert(file.end(), {32, 0, 0, 0, 0xFF, 0xFF, number, 0, 0xFF, 0xFF, kId, 0});
    file.resize(file.size() + 16);
    file.insert(file.end(), bytes.begin(), bytes.end());
    file.resize((file.size() + 3) / 4 * 4);
}

}  // namespace

// In place of the layer's own, which end the program.
void Unsupported(const char*, const std::string&) {
    throw Refused();
}
void Unsupported(const char*, unsigned long) {
    throw Refused();
}

// The first byte chooses the type; 0: the rest is the file itself.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const unsigned type = data[0] % 16;
    const std::span<const uint8_t> bytes(data + 1, size - 1);
    std::vector<uint8_t> file;
    if (type == 0) {
        file.assign(bytes.begin(), bytes.end());
    } else {
        Append(file, type, bytes);
        // A group of one, so that the picture is found.
        const unsigned group = type == resources::kCursor ? resources::kGroupCursor : resources::kGroupIcon;
        if (type != group) Append(file, group, kGroup);
    }
    Try([&] { resources::Use(file.data(), file.size()); });
    Try([&] { (void)resources::LoadMenu(kId); });
    Try([&] { (void)resources::LoadDialog(kId); });
    Try([&] { (void)resources::LoadString(16 * (kId - 1) + size % 16); });
    Try([&] { (void)resources::LoadIcon(kId, 32); });
    Try([&] { (void)resources::LoadCursor(kId, 32); });
    Try([&] { (void)resources::LoadBitmap(kId); });
    return 0;
}
