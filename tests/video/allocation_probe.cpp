#include "tests/video/allocation_probe.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

long allocations = 0;
long refuse_from = -1;

namespace {

void* Allocate(std::size_t size, std::size_t alignment) {
    ++allocations;
    if (refuse_from >= 0 && allocations > refuse_from) return nullptr;
    size = std::max<std::size_t>(size, 1);
    if (alignment <= alignof(std::max_align_t)) return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}
void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* memory = Allocate(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
