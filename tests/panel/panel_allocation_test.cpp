// Counts what is allocated on other threads than the window's while a message plays.
#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/panel/player_fixture.h"

namespace {

std::atomic<bool> g_counting = false;
std::atomic<int> g_allocations = 0;
thread_local bool t_windowThread = false;

void* Allocate(std::size_t size) {
    if (g_counting && !t_windowThread) ++g_allocations;
    return std::malloc(size == 0 ? 1 : size);
}
void* AllocateOrThrow(std::size_t size) {
    void* memory = Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
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

namespace {

using PanelAllocation = PlayerTest;

TEST_F(PanelAllocation, ReadingAndPacingAllocateNothingPerRecord) {
    t_windowThread = true;
    for (const int rate : {0, 5}) {
        SCOPED_TRACE(rate);
        MessageBuilder message(rate, 600);
        for (int i = 0; i < 60; ++i) {
            message.Speech(1);
            if (rate != 0) message.Picture();
        }
        ASSERT_TRUE(Open(message));
        // The buffers are made when the threads start.
        m_main->panel->Play();
        WaitForReader();
        const size_t before = m_sound->BlocksWritten();
        g_counting = true;
        HeadlessToolkit::PumpFor(450);
        EXPECT_TRUE(Hear(150));
        WaitForReader();
        g_counting = false;
        EXPECT_GT(m_sound->BlocksWritten(), before);
        EXPECT_EQ(g_allocations, 0);
        m_main->panel->Close();
    }
}

}  // namespace
