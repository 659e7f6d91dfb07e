// SPDX-License-Identifier: MIT
// The last samples of a stream, by their number in it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// Keeps as many samples as it has room for; more push the oldest out. Nothing is allocated after the
// constructor. Not synchronised.
class CSampleRing {
public:
    explicit CSampleRing(std::size_t nRoom) : m_samples(nRoom) {}

    // The next samples of the stream, no more than there is room for.
    void Write(std::span<const std::int16_t> samples) {
        const std::size_t nAt = Index(m_nEnd);
        const std::size_t nFirst = std::min(samples.size(), m_samples.size() - nAt);
        std::copy_n(samples.begin(), nFirst, m_samples.begin() + static_cast<std::ptrdiff_t>(nAt));
        std::copy(samples.begin() + static_cast<std::ptrdiff_t>(nFirst), samples.end(), m_samples.begin());
        m_nEnd += static_cast<std::int64_t>(samples.size());
    }

    // Copies samples from number nFrom on, as many as are wanted and there. Returns how many. nFrom must not
    // have been pushed out.
    std::size_t Read(std::int64_t nFrom, std::span<std::int16_t> to) const {
        const auto nThere = static_cast<std::size_t>(std::max<std::int64_t>(m_nEnd - nFrom, 0));
        const std::size_t nCount = std::min(to.size(), nThere);
        if (nCount == 0) return 0;
        const auto from = m_samples.begin() + static_cast<std::ptrdiff_t>(Index(nFrom));
        const std::size_t nFirst = std::min(nCount, m_samples.size() - Index(nFrom));
        std::copy_n(m_samples.begin(), nCount - nFirst, std::copy_n(from, nFirst, to.begin()));
        return nCount;
    }

    // The number that the next sample gets; from 0.
    std::int64_t End() const { return m_nEnd; }
    void Empty() { m_nEnd = 0; }

private:
    std::size_t Index(std::int64_t nNumber) const {
        return static_cast<std::size_t>(nNumber) % m_samples.size();
    }

    std::vector<std::int16_t> m_samples;
    std::int64_t m_nEnd = 0;
};
