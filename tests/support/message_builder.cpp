// SPDX-License-Identifier: MIT
#include "tests/support/message_builder.h"

#include <fstream>

#include "codec/speech_frame.h"

MessageBuilder::MessageBuilder(int rate, uint32_t frameCount) {
    m_data.assign(std::begin(kMessageMagic), std::end(kMessageMagic));
    m_data.push_back(static_cast<uint8_t>(rate));
    for (int i = 0; i < 4; ++i) m_data.push_back(static_cast<uint8_t>(frameCount >> (8 * i)));
}

MessageBuilder& MessageBuilder::Speech(int blocks) {
    for (int i = 0; i < blocks; ++i) {
        m_data.push_back(kSpeechRecord);
        for (size_t k = 0; k < kSpeechBlockBytes; ++k) {
            m_frames.push_back(Noise());
            m_data.push_back(m_frames.back());
        }
    }
    return *this;
}

MessageBuilder& MessageBuilder::Silence(int blocks) {
    int16_t samples[kSpeechFrameSamples] = {};
    gsm encoder = gsm_create();
    for (int i = 0; i < blocks; ++i) {
        m_data.push_back(kSpeechRecord);
        for (int k = 0; k < kFramesPerSpeechBlock; ++k) {
            uint8_t frame[kSpeechFrameBytes];
            EncodeSpeechFrame(encoder, samples, frame);
            m_data.insert(m_data.end(), std::begin(frame), std::end(frame));
        }
    }
    gsm_destroy(encoder);
    return *this;
}

MessageBuilder& MessageBuilder::SpeechOf(uint8_t filler) {
    m_data.push_back(kSpeechRecord);
    m_data.insert(m_data.end(), kSpeechBlockBytes, filler);
    return *this;
}

MessageBuilder& MessageBuilder::Picture() {
    std::vector<uint8_t> payload(600);
    for (uint8_t& byte : payload) byte = Noise();
    return Video(payload.size(), payload);
}

MessageBuilder& MessageBuilder::Video(size_t declared, const std::vector<uint8_t>& payload) {
    Bytes({kVideoRecord, static_cast<uint8_t>(declared), static_cast<uint8_t>(declared >> 8)});
    return Bytes(payload);
}

MessageBuilder& MessageBuilder::Bytes(const std::vector<uint8_t>& bytes) {
    m_data.insert(m_data.end(), bytes.begin(), bytes.end());
    return *this;
}

MessageBuilder& MessageBuilder::CutBy(size_t bytes) {
    m_data.resize(m_data.size() - bytes);
    return *this;
}

std::vector<int16_t> MessageBuilder::Samples(int plays, int firstFrame) const {
    std::vector<int16_t> samples;
    int16_t frame[kSpeechFrameSamples];
    gsm decoder = gsm_create();
    for (int play = 0; play < plays; ++play) {
        for (size_t at = static_cast<size_t>(firstFrame) * kSpeechFrameBytes; at < m_frames.size();
             at += kSpeechFrameBytes) {
            DecodeSpeechFrame(decoder, m_frames.data() + at, frame);
            samples.insert(samples.end(), std::begin(frame), std::end(frame));
        }
    }
    gsm_destroy(decoder);
    return samples;
}

void MessageBuilder::Write(const std::filesystem::path& path) const {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(m_data.data()), static_cast<std::streamsize>(m_data.size()));
}

uint8_t MessageBuilder::Noise() {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<uint8_t>(m_state >> 24);
}
