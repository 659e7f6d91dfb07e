// SPDX-License-Identifier: MIT
#include "tests/support/allocation_probe.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> g_all = 0;
thread_local long t_own = 0;
thread_local long t_left = -1;

[[maybe_unused]] void* Allocate(std::size_t size, std::size_t alignment = 1) {
    ++g_all;
    ++t_own;
    if (t_left == 0) return nullptr;
    if (t_left > 0) --t_left;
    size = std::max<std::size_t>(size, 1);
    if (alignment <= alignof(std::max_align_t)) return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}
[[maybe_unused]] void* AllocateOrThrow(std::size_t size, std::size_t alignment = 1) {
    void* memory = Allocate(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

namespace allocation_probe {

long OnThisThread() {
    return t_own;
}

long OnOtherThreads() {
    return g_all - t_own;
}

void GiveOnly(long count) {
    t_left = count;
}

}  // namespace allocation_probe

bool allocation_probe::Counts() {
#ifdef __SANITIZE_THREAD__
    return false;
#else
    return true;
#endif
}

// The thread sanitizer's own forms know which memory changes hands inside libraries that it cannot see into.
#ifndef __SANITIZE_THREAD__

// Every form, since a sanitizer's own forms for arrays do not come down to the others.
#define PROBE_FORMS_OF(NEW, DELETE)                                                                    \
    void* operator NEW(std::size_t size) {                                                             \
        return AllocateOrThrow(size);                                                                  \
    }                                                                                                  \
    void* operator NEW(std::size_t size, std::align_val_t alignment) {                                 \
        return AllocateOrThrow(size, static_cast<std::size_t>(alignment));                             \
    }                                                                                                  \
    void* operator NEW(std::size_t size, const std::nothrow_t&) noexcept {                             \
        return Allocate(size);                                                                         \
    }                                                                                                  \
    void* operator NEW(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { \
        return Allocate(size, static_cast<std::size_t>(alignment));                                    \
    }                                                                                                  \
    void operator DELETE(void* memory) noexcept {                                                      \
        std::free(memory);                                                                             \
    }                                                                                                  \
    void operator DELETE(void* memory, std::size_t) noexcept {                                         \
        std::free(memory);                                                                             \
    }                                                                                                  \
    void operator DELETE(void* memory, std::align_val_t) noexcept {                                    \
        std::free(memory);                                                                             \
    }                                                                                                  \
    void operator DELETE(void* memory, std::size_t, std::align_val_t) noexcept {                       \
        std::free(memory);                                                                             \
    }

PROBE_FORMS_OF(new, delete)
PROBE_FORMS_OF(new[], delete[])

#endif
