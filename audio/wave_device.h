// SPDX-License-Identifier: MIT
// The wave output device: a ring of blocks between the thread that decodes speech and the sound card.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "audio/sample_ring.h"
#include "audio/speed_converter.h"
#include "audio/wave_client.h"
#include "codec/queue_limits.h"
#include "platform/framework/afxcmn.h"
#include "platform/sound/mmsystem.h"

class CVolumeDlg;

// Sound starts only when more than a threshold of blocks is queued, and again so whenever the queue has run
// dry. Each block that has been heard is reported to the client. A block lies at the driver from Write to its
// report; when Pause takes all blocks back from the driver they stay in the ring, and Resume hands them over
// again, oldest first.
//
// What is written is kept until it has been heard, so that it can be played again at another speed: then the
// driver hands back what is not about to sound, and the same place follows at the new speed. Every count of
// queued blocks is one of blocks written, whatever the speed.
//
// The device is a hidden child window, because the driver's notifications are window messages. One other
// thread, the writer, may call Write, EndOfSound and GetQueuedCount; everything else belongs to the UI
// thread. Pause, Flush and Close want the writer to be quiet meanwhile. Only Open reports a failure.
// Nothing is allocated after the constructor but by SetSpeed.
class CWaveDevice : public CStatic {
public:
    enum Direction { kRecord = 0, kPlay = 1, kBoth = 2 };

    // pClient may be null; neither it nor pParent is owned. nDirection: a Direction, of which only the
    // playing side does anything. nBlockLength: samples per block. nStartThreshold: blocks, 0 or more.
    // nBytesPerSample: 2.
    CWaveDevice(CWnd* pParent, CWaveClient* pClient, int nDirection, int nBlockLength, int nStartThreshold,
                int nBytesPerSample, int nSampleRate);
    // Close comes first: the driver must hold no block any more.
    ~CWaveDevice() override;

    // Opens the default output, silent and empty. FALSE when the driver refuses; the device is then closed,
    // drops what is written and counts 0 blocks. Must not be open.
    BOOL Open();
    // Drops the queue and gives the output back.
    void Close();

    // Queues a copy of one block of samples; while paused it waits for Resume with the others. Dropped while
    // closed or full. Writer's thread.
    void Write(const void* pBlock);
    // No more comes for now: what is queued is played however little it is, after a Resume too. The next
    // Write, Flush or Open takes that back. Writer's thread.
    void EndOfSound();
    // Blocks queued and not yet reported; 0 while closed. Any thread.
    int GetQueuedCount();
    BOOL IsOpen() const { return m_bOpen; }
    // Whether it sounds: more is there than it waits for, and it is not paused. UI thread.
    BOOL IsRunning();

    // Silences the output. A block that was sounding will be heard again from its start.
    void Pause();
    void Resume();
    // Empties the queue. Only while paused.
    void Flush();

    // Plays at one of kSpeeds from now on, from message to message. What sounds goes on at the old speed for
    // as long as the driver keeps, some 150 ms. FALSE, and at the speed as before, when there is no memory.
    BOOL SetSpeed(int nSpeed);

    void ShowVolumeControls(BOOL bShow);

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg LRESULT OnWaveOutDone(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnWaveOutInterrupt(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnVolumeClosed(WPARAM wParam, LPARAM lParam);

private:
    // A block as the driver gets it.
    struct Block {
        WAVEHDR header = {};
        std::int64_t nFrom = 0;  // the first of the samples written that it stands for
        int nSamples = 0;        // how many
    };

    static int NextIndex(int nIndex) { return (nIndex + 1) % kSoundBlockSlots; }
    BOOL HasOutput() const { return m_nDirection != kRecord; }
    // Blocks written and not yet heard, one that has been heard in part included.
    int CountQueued() const;
    void EmptyRing();
    std::span<std::int16_t> SamplesOf(int nIndex);
    BOOL MakeBlock();
    void MakeBlocks();
    void SendToDriver(int nIndex);
    void StartOutput();
    int TakeBack();

    CWnd* m_pParent;
    CWaveClient* m_pClient;
    int m_nDirection;
    int m_nBlockLength;
    int m_nStartThreshold;
    int m_nBytesPerSample;
    int m_nSampleRate;

    // Guards the state below, so that the writer's restart and the pause of an empty queue cannot cross.
    // Never held while the client is called.
    CCriticalSection m_lock;
    BOOL m_bOpen = FALSE;
    BOOL m_bRunning = FALSE;  // sounding, not buffering
    BOOL m_bPaused = FALSE;
    BOOL m_bNoMore = FALSE;  // EndOfSound holds
    HWAVEOUT m_hWaveOut = nullptr;
    CSampleRing m_written;
    std::int64_t m_nHeard = 0;  // of the samples written
    CSpeedConverter m_converter;
    std::array<Block, kSoundBlockSlots> m_blocks;  // block i has buffer i
    std::vector<std::int16_t> m_buffers;
    int m_nMade = 0;        // blocks made and not yet reported: (write index - read index) modulo the slots
    int m_nReadIndex = 0;   // oldest of them
    int m_nWriteIndex = 0;  // the next one to be made
    // Notifications still to come for blocks that Pause has taken back from the driver. Notifications keep
    // the order of writing, so that many of the next ones count for nothing.
    int m_nStale = 0;

    CVolumeDlg* m_pVolumeDlg = nullptr;  // owned
};
