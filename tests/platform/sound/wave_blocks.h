// SPDX-License-Identifier: MIT
// Blocks of 160 samples with contents that name their place: no two stretches of the sound are alike, and
// none is silence.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/sound/mmsystem.h"
#include "tests/platform/sound/posted_messages.h"

inline constexpr std::size_t kBlockSamples = 160;

inline WAVEFORMATEX VoiceFormat() {
    return {WAVE_FORMAT_PCM, 1, 8000, 16000, 2, 16, 0};
}

inline MMRESULT OpenVoice(HWAVEOUT& handle) {
    const WAVEFORMATEX format = VoiceFormat();
    return waveOutOpen(&handle, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(kWindow), 0,
                       CALLBACK_WINDOW);
}

class Blocks {
public:
    explicit Blocks(std::size_t count = 16) : Blocks(Named(count * kBlockSamples)) {}
    // Blocks of these samples, a whole number of blocks.
    explicit Blocks(std::vector<std::int16_t> samples)
        : m_samples(std::move(samples)), m_headers(m_samples.size() / kBlockSamples) {
        for (std::size_t i = 0; i < m_headers.size(); ++i) {
            m_headers[i].lpData = reinterpret_cast<char*>(&m_samples[i * kBlockSamples]);
            m_headers[i].dwBufferLength = kBlockSamples * sizeof(std::int16_t);
        }
    }

    std::size_t Count() const { return m_headers.size(); }
    WAVEHDR& Header(std::size_t block) { return m_headers[block]; }

    MMRESULT Write(HWAVEOUT handle, std::size_t block) {
        const MMRESULT prepared = waveOutPrepareHeader(handle, &m_headers[block], sizeof(WAVEHDR));
        return prepared != MMSYSERR_NOERROR ? prepared
                                            : waveOutWrite(handle, &m_headers[block], sizeof(WAVEHDR));
    }

    // The samples of the blocks from `first` up to and without `last`.
    std::vector<std::int16_t> Samples(std::size_t first, std::size_t last) const {
        const auto at = [this](std::size_t block) {
            return m_samples.begin() + static_cast<std::ptrdiff_t>(block * kBlockSamples);
        };
        return {at(first), at(last)};
    }

private:
    static std::vector<std::int16_t> Named(std::size_t count) {
        std::vector<std::int16_t> samples(count);
        std::uint32_t state = 1;
        for (std::int16_t& sample : samples) {
            state = state * 1664525U + 1013904223U;
            sample = static_cast<std::int16_t>(state >> 18U | 1U);
        }
        return samples;
    }

    std::vector<std::int16_t> m_samples;
    std::vector<WAVEHDR> m_headers;
};
