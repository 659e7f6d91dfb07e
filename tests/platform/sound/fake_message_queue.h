// A message queue that keeps what is posted, with the time, in place of the framework's.
#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "platform/framework/message_queue.h"

struct PostedMessage {
    MSG msg;
    std::chrono::steady_clock::time_point when;
};

// The only window there is.
inline const HWND kWindow = reinterpret_cast<HWND>(std::uintptr_t{7});

// Takes out everything posted so far, oldest first.
std::vector<PostedMessage> TakePosted();

// Waits until `count` messages wait to be taken; false after `timeout`.
bool WaitForPosted(std::size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(10));
