// SPDX-License-Identifier: MIT
// A stream whose bytes are in memory and can be exchanged, so that a run costs no system call.
#pragma once

#include <stdio_ext.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

class MemoryFile {
public:
    MemoryFile()
        : m_stream(
              fopencookie(this, "rb", {.read = Read, .write = nullptr, .seek = Seek, .close = nullptr})) {
        if (m_stream == nullptr) std::abort();
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { std::fclose(m_stream); }

    // The bytes are borrowed.
    std::FILE* Show(std::span<const uint8_t> bytes) {
        m_bytes = bytes;
        __fpurge(m_stream);  // of what was read ahead of earlier ones
        std::rewind(m_stream);
        return m_stream;
    }

private:
    static ssize_t Read(void* cookie, char* out, size_t bytes) {
        auto& file = *static_cast<MemoryFile*>(cookie);
        const size_t at = std::min(file.m_at, file.m_bytes.size());
        bytes = std::min(bytes, file.m_bytes.size() - at);
        if (bytes > 0) std::memcpy(out, file.m_bytes.data() + at, bytes);
        file.m_at = at + bytes;
        return static_cast<ssize_t>(bytes);
    }
    static int Seek(void* cookie, off64_t* offset, int whence) {
        auto& file = *static_cast<MemoryFile*>(cookie);
        if (whence == SEEK_CUR) *offset += static_cast<off64_t>(file.m_at);
        if (whence == SEEK_END) *offset += static_cast<off64_t>(file.m_bytes.size());
        if (*offset < 0) return -1;
        file.m_at = static_cast<size_t>(*offset);
        return 0;
    }

    std::span<const uint8_t> m_bytes;
    size_t m_at = 0;
    std::FILE* m_stream;
};
