// SPDX-License-Identifier: MIT
// What the sound functions post, kept with the time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/sound/sound_drivers.h"

struct PostedMessage {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    std::chrono::steady_clock::time_point when;
};

// The window that tests name.
inline const HWND kWindow = reinterpret_cast<HWND>(std::uintptr_t{7});

class PostedMessages {
public:
    // From here on what is posted comes here.
    PostedMessages() {
        s_current = this;
        SetSoundPoster([](HWND, UINT message, WPARAM wParam, std::span<const LPARAM> lParams) -> BOOL {
            for (const LPARAM lParam : lParams)
                s_current->Add({message, wParam, lParam, std::chrono::steady_clock::now()});
            return TRUE;
        });
    }

    // Removes and returns everything posted so far, oldest first.
    std::vector<PostedMessage> Take() {
        const std::scoped_lock lock(m_lock);
        return std::exchange(m_messages, {});
    }

    // Waits until `count` messages wait to be taken; false when that takes ten seconds.
    bool WaitFor(std::size_t count) {
        std::unique_lock lock(m_lock);
        return m_posted.wait_for(lock, std::chrono::seconds(10), [&] { return m_messages.size() >= count; });
    }

private:
    void Add(const PostedMessage& message) {
        const std::scoped_lock lock(m_lock);
        m_messages.push_back(message);
        m_posted.notify_all();
    }

    inline static PostedMessages* s_current = nullptr;
    std::mutex m_lock;
    std::condition_variable m_posted;
    std::vector<PostedMessage> m_messages;
};
