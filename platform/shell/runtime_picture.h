// SPDX-License-Identifier: MIT
// A picture as a file for other programs of this user.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

// A PNG file in the user's runtime folder, which is in memory; it goes with the object.
class RuntimePicture {
public:
    virtual ~RuntimePicture() = default;
    virtual std::string Path() const = 0;
};

// pixels: rows without gaps from the bottom up, of B, G, R bytes. Null where there is no runtime folder or no
// room in it. Any thread, as long as the toolkit exists.
std::unique_ptr<RuntimePicture> WriteRuntimePicture(const std::uint8_t* pixels, int width, int height);
