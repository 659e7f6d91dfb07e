#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A stream over `bytes`, of which there must be some; they must stay where they are.
inline File OpenBytes(std::vector<uint8_t>& bytes) {
    return File(fmemopen(bytes.data(), bytes.size(), "rb"));
}
