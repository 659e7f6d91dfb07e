// What stands behind the waveOut functions: a driver opens streams, and a stream plays bytes and says how
// far they have been heard. Headers, handles, queues and notifications are not its business.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/sound/mmsystem.h"

// The side that learns what has been heard.
class WaveListener {
public:
    virtual ~WaveListener() = default;

    // Everything up to `position` has been heard, in bytes written since the stream was opened (those that a
    // reset threw away included). Positions never decrease. Called on any thread, with no lock of the driver
    // held; one last call may still be under way when the stream's destructor has returned.
    virtual void OnHeard(std::uint64_t position) = 0;
};

// One open output. The caller serialises the calls. None of them waits for a sound server, fails or
// allocates: a stream that has lost its server goes on without sound, at the pace of the clock, so that
// whoever plays is not held up.
class WaveStream {
public:
    virtual ~WaveStream() = default;

    // Appends bytes; they stay valid until they are reported heard or Reset or the destructor is called.
    virtual void Write(const void* data, std::size_t bytes) = 0;

    virtual void Pause() = 0;
    virtual void Restart() = 0;

    // Drops what has not been heard. Positions go on from the number of bytes written so far. A running
    // stream stays running.
    virtual void Reset() = 0;
};

class WaveDriver {
public:
    virtual ~WaveDriver() = default;

    // Opens a running, empty stream for 16-bit mono PCM at the format's rate. The stream keeps the driver's
    // insides alive as long as it needs them. MMSYSERR_NODRIVER or MMSYSERR_ALLOCATED when that fails; it
    // takes a second at most.
    virtual MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveListener> listener,
                          std::unique_ptr<WaveStream>& stream) = 0;
};

// Makes a driver the one that waveOutOpen uses and returns the one before it; null for none. Open outputs
// keep theirs. Any thread.
std::shared_ptr<WaveDriver> SetWaveDriver(std::shared_ptr<WaveDriver> driver);
