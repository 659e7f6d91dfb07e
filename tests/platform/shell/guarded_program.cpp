// SPDX-License-Identifier: MIT
// A program that does nothing but obey its guard: it starts, "runs" until a newer instance asks it to close,
// and says how that went by its exit status and one character on standard output each time that it runs or
// ends: F when it is the first, T when it took over, E at its end.
//
//   guarded_program DISPLAY [start-up milliseconds [closing milliseconds]]
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "platform/shell/named_guard.h"

namespace {

void Say(char c) {
    if (write(STDOUT_FILENO, &c, 1) != 1) std::abort();
}

}  // namespace

int main(int argc, char** argv) {
    const auto milliseconds = [&](int i) {
        return std::chrono::milliseconds(argc > i ? std::strtol(argv[i], nullptr, 10) : 0);
    };
    NamedGuard guard("A guarded test program", argc > 1 ? argv[1] : "");
    const NamedGuard::Result result = guard.Acquire();
    if (result == NamedGuard::Result::Superseded) return 1;
    if (result == NamedGuard::Result::Unguarded) return 2;
    std::this_thread::sleep_for(milliseconds(2));
    if (guard.TakeCloseRequest()) return 1;
    Say(result == NamedGuard::Result::First ? 'F' : 'T');
    do {
        pollfd watch{guard.WatchFd(), POLLIN, 0};
        poll(&watch, 1, -1);
    } while (!guard.TakeCloseRequest());
    std::this_thread::sleep_for(milliseconds(3));
    Say('E');
    return 0;
}
