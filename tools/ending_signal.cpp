// SPDX-License-Identifier: MIT
#include "tools/ending_signal.h"

#include <signal.h>

#include <atomic>
#include <cstdlib>

namespace tools {
namespace {

std::atomic<int> g_ending_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

}  // namespace

void CatchEndingSignals() {
    struct sigaction action {};
    action.sa_handler = [](int number) { g_ending_signal = number; };
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &action, nullptr);
}

void ThrowIfInterrupted() {
    if (g_ending_signal != 0) throw Interrupted();
}

void EndBySignal() {
    signal(g_ending_signal, SIG_DFL);
    raise(g_ending_signal);
    std::abort();
}

}  // namespace tools
