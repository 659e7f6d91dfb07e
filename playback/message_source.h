// SPDX-License-Identifier: MIT
// An open message, shared by the panel and the threads that read it.
#pragma once

#include <gsm/gsm.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <stop_token>

#include "codec/message_index.h"
#include "platform/framework/wintypes.h"
#include "playback/reader_gate.h"
#include "playback/real_time_pace.h"

class CVideoWnd;
class CWaveDevice;
class CWaveformWnd;

// Where what is read goes to. The windows outlive the playing, not the threads: they are used only as the
// gate allows.
struct MessageOutputs {
    HWND hPanel = nullptr;              // what the threads post goes there
    CWaveformWnd* pWaveform = nullptr;  // null: no level values are wanted
    CWaveDevice* pWaveDevice = nullptr;
    CVideoWnd* pVideo = nullptr;
    BOOL bSound = FALSE;   // the device is open
    RealTimePace noSound;  // without one: how fast speech is read

    // Whether the queues take so much.
    BOOL HaveRoom(CReaderGate::Need need) const;
};

// Levels before a place that was sought; more than the trace shows at once.
using MessageTrace = std::array<float, 256>;

// Lives until the last of those who share it lets it go. So a thread whose read does not return keeps what it
// reads from, and closes it when the read returns at last.
struct MessageSource {
    // Owns pOpenFile from now on. nRate and nCount are the header's.
    MessageSource(std::FILE* pOpenFile, BYTE nRate, DWORD nCount);
    ~MessageSource();
    MessageSource(const MessageSource&) = delete;
    MessageSource& operator=(const MessageSource&) = delete;

    // Frames that the message has: what the header says until more is known.
    int64_t Length() const;
    // To be called when one of the outputs' queues has become shorter. Any thread.
    void OnShorterQueue() {
        gate.OnShorterQueue([this](CReaderGate::Need need) { return outputs.HaveRoom(need); });
    }

    const unsigned nSerial;      // no other message has it
    std::FILE* const pFile;      // the reader thread's once that has started
    const BYTE nVideoRate;       // pictures per second; 0: speech alone
    const DWORD nFrameCount;     // the header's
    gsm hSpeech = gsm_create();  // decoder state, the reader thread's too; null when there is no memory
    CReaderGate gate;
    MessageOutputs outputs;
    MessageTrace trace = {};  // under the gate's lock
    int nTrace = 0;
    MessageIndex index;
    std::stop_source stopIndexing;
    std::atomic<bool> bIndexing = false;
};
