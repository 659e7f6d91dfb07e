// SPDX-License-Identifier: MIT
// The volumes that this program has set and not seen yet. PipeWire's server answers from what it has carried
// out, which may be some settings behind: what comes back then is older than what is wanted.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "platform/sound/mmsystem.h"

class OwnVolumes {
public:
    // `before` was the volume until now. When more wait than there is room for, the oldest are forgotten.
    void Set(DWORD before, DWORD volume) {
        if (m_count == 0) Push(before);
        Push(volume);
    }

    // Whether a volume that the server tells is one's own from before the last, which will follow. One that
    // nobody here has set is another program's, and ends the waiting.
    bool IsOutdated(DWORD volume) {
        const auto end = m_waiting.begin() + static_cast<std::ptrdiff_t>(m_count);
        const auto found = std::find(std::make_reverse_iterator(end), m_waiting.rend(), volume);
        if (found == m_waiting.rend()) {
            Clear();
            return false;
        }
        m_count =
            static_cast<std::size_t>(std::copy(found.base(), end, m_waiting.begin()) - m_waiting.begin());
        return m_count != 0;
    }

    void Clear() { m_count = 0; }

private:
    void Push(DWORD volume) {
        if (m_count == m_waiting.size()) {
            std::copy(m_waiting.begin() + 1, m_waiting.end(), m_waiting.begin());
            --m_count;
        }
        m_waiting[m_count++] = volume;
    }

    std::array<DWORD, 64> m_waiting{};  // oldest first
    std::size_t m_count = 0;
};
