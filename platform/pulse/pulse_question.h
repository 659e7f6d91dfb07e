// SPDX-License-Identifier: MIT
// A question to the server, one at a time. Everything with the lock held.
#pragma once

#include <pulse/operation.h>

#include <utility>

class PulseQuestion {
public:
    PulseQuestion() = default;
    ~PulseQuestion() { Cancel(); }
    PulseQuestion(const PulseQuestion&) = delete;
    PulseQuestion& operator=(const PulseQuestion&) = delete;

    // Sends the question with `send`, which gives its operation or null. While one is under way nothing is
    // sent: its answer will count as stale.
    template <typename Send>
    void Ask(Send send) {
        if (m_operation != nullptr)
            m_stale = true;
        else
            m_operation = send();
    }

    bool UnderWay() const { return m_operation != nullptr; }

    // What is being answered has changed meanwhile.
    void MakeStale() { m_stale = m_operation != nullptr; }

    // To be called when the answer is complete. False when it is stale, so that the asker asks again.
    bool IsCurrent() {
        pa_operation_unref(std::exchange(m_operation, nullptr));
        return !std::exchange(m_stale, false);
    }

    // The answer will not come.
    void Cancel() {
        m_stale = false;
        if (m_operation == nullptr) return;
        pa_operation_cancel(m_operation);
        pa_operation_unref(std::exchange(m_operation, nullptr));
    }

private:
    pa_operation* m_operation = nullptr;
    bool m_stale = false;
};

// For a request whose outcome shows elsewhere or does not matter.
inline void Forget(pa_operation* operation) {
    if (operation != nullptr) pa_operation_unref(operation);
}
