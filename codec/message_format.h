// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

// The figures of the message file (.trv). docs/message-format.md describes the format.

constexpr char kMessageMagic[] = {'T', 'R', 'V', '0', '1', '.', '0', '1'};
constexpr int kMaxVideoRate = 5;            // pictures per second; 0 stands for a message of speech alone
constexpr long kMessageDataStart = 13;      // file offset of the first record
constexpr size_t kMaxPayloadBytes = 16384;  // of a video record

constexpr uint8_t kSpeechRecord = 0;
constexpr uint8_t kVideoRecord = 1;

// Speech: GSM 06.10 full rate.
constexpr int kSpeechSampleRate = 8000;
constexpr int kSpeechFrameSamples = 160;  // 20 ms
constexpr size_t kSpeechFrameBytes = 33;
constexpr int kFramesPerSpeechBlock = 10;
constexpr size_t kSpeechBlockBytes = kSpeechFrameBytes * kFramesPerSpeechBlock;
