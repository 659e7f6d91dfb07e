// SPDX-License-Identifier: MIT
// Messages for tests, built record by record.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

class MessageBuilder {
public:
    // Video rate 0 to 5, or anything else that a header can be given.
    explicit MessageBuilder(int rate = 0, uint32_t frameCount = 0);

    // Speech blocks of frames that decode to noise, each different from all others.
    MessageBuilder& Speech(int blocks);
    // Speech blocks of silence; Samples leaves them out.
    MessageBuilder& Silence(int blocks);
    // A speech block of one byte over and over; Samples leaves it out.
    MessageBuilder& SpeechOf(uint8_t filler);
    // A picture record; each one decodes to a different picture.
    MessageBuilder& Picture();
    // A picture record of any payload, and of any length that it claims.
    MessageBuilder& Video(size_t declared, const std::vector<uint8_t>& payload);
    MessageBuilder& Bytes(const std::vector<uint8_t>& bytes);
    // Takes bytes off the end.
    MessageBuilder& CutBy(size_t bytes);

    const std::vector<uint8_t>& Data() const { return m_data; }
    // What the speech decodes to from a frame on, when it is played so many times with one decoder.
    std::vector<int16_t> Samples(int plays = 1, int firstFrame = 0) const;

    void Write(const std::filesystem::path& path) const;

private:
    uint8_t Noise();

    std::vector<uint8_t> m_data;
    std::vector<uint8_t> m_frames;
    uint32_t m_state = 1;
};
