// SPDX-License-Identifier: MIT
// What stands behind the waveOut and mixer functions: a driver that opens streams and one that has the
// mixer's values. Headers, handles, structures and messages are not their business.
//
// Nothing here waits for a sound server unless it says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/sound/mixer_functions.h"
#include "platform/sound/mmsystem.h"

// An output's queue, as its stream sees it. Positions count the bytes written since the output was opened and
// never start again, so that a position learnt before a reset cannot touch a block written after it. Any
// thread.
class WaveSource {
public:
    virtual ~WaveSource() = default;

    // Copies up to `bytes` bytes of what is queued at `position` and behind it, and returns how many there
    // were. Takes a short lock of its own and calls nobody.
    virtual std::size_t Read(std::uint64_t position, void* to, std::size_t bytes) = 0;

    // Everything up to `position` has been heard. Positions never decrease. Takes the same lock and posts
    // what is done.
    virtual void OnHeard(std::uint64_t position) = 0;

    // WOM_CALL_BEGINS and the others. Posts that.
    virtual void OnInterrupted(DWORD what) = 0;
};

// One open output's sound. The caller serialises the calls. None of them fails or allocates: a stream that
// has lost its server goes on at the pace of the clock, so that whoever plays is not held up.
class WaveStream {
public:
    virtual ~WaveStream() = default;

    // The source has bytes up to this position now. What has not been read yet may have been replaced.
    virtual void Write(std::uint64_t written) = 0;

    virtual void Pause() = 0;
    virtual void Restart() = 0;

    // Drops what has not been heard. Positions go on from the number of bytes written so far. A running
    // stream stays running.
    virtual void Reset() = 0;

    // Keeps what is about to be played and returns the position where that ends: what has been read behind it
    // is read again, and nothing is before the next Write.
    virtual std::uint64_t TakeBack() = 0;
};

class WaveDriver {
public:
    virtual ~WaveDriver() = default;

    // Opens a running, empty stream for 16-bit mono PCM at the format's rate. The stream keeps the driver's
    // insides alive as long as it needs them. MMSYSERR_NODRIVER or MMSYSERR_ALLOCATED when that fails; it
    // takes a second at most.
    virtual MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveSource> source,
                          std::unique_ptr<WaveStream>& stream) = 0;
};

// The ids of a mixer's controls.
enum MixerControlId : DWORD { kMasterVolume = 1, kMasterMute, kWaveVolume, kWaveMute, kWavePeak };

// The values behind them. Any thread. MMSYSERR_NODRIVER from each while the sound system is away.
class MixerDriver {
public:
    virtual ~MixerDriver() = default;

    // Whether there is a mixer; waits a second at most.
    virtual bool Exists() = 0;
    // What it lacks: 1 << id for each control, 1 << 0 when its wave output does not feed its speakers.
    virtual unsigned Missing() const { return 0; }

    virtual MMRESULT GetName(std::string& name) = 0;
    // The id is one of the mixer's, a value to be set lies within the control's bounds. A meter's value is
    // signed.
    virtual MMRESULT GetValue(DWORD controlId, DWORD& value) = 0;
    virtual MMRESULT SetValue(DWORD controlId, DWORD value) = 0;
};

// For the mixer's driver: posts the change of a control's value to the window of each open mixer. Any thread;
// takes a short lock of its own.
void NotifyControlChange(DWORD controlId);

// Makes these the drivers that the functions use from now on; null for none. Open outputs keep theirs. Any
// thread.
void SetSoundDrivers(std::shared_ptr<WaveDriver> wave, std::shared_ptr<MixerDriver> mixer);
std::shared_ptr<WaveDriver> CurrentWaveDriver();
std::shared_ptr<MixerDriver> CurrentMixerDriver();

// How notifications are posted: by PostMessages, unless a program without windows sets something else before
// the first output or mixer is opened.
using MessagePoster = BOOL (*)(HWND hWnd, UINT message, WPARAM wParam, std::span<const LPARAM> lParams);
void SetSoundPoster(MessagePoster post);
void PostSoundMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
void PostSoundMessages(HWND hWnd, UINT message, WPARAM wParam, std::span<const LPARAM> lParams);
