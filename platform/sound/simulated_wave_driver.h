// A wave driver without a sound card, for tests: its clock moves only when told to, it can be made to fail,
// and it keeps what would have been heard.
//
//     auto sound = std::make_shared<SimulatedWaveDriver>();
//     SetWaveDriver(sound);
//     … waveOutOpen, waveOutWrite …
//     sound->Advance(420);
//
// One output at a time: a second one is refused with MMSYSERR_ALLOCATED. Everything may be called on any
// thread; notifications are posted by the thread that calls Advance or waveOutReset. With up to 512 blocks
// queued and up to nine minutes heard at 8000 samples a second nothing is allocated after the driver is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/sound/wave_driver.h"

class SimulatedWaveDriver : public WaveDriver {
public:
    SimulatedWaveDriver();
    ~SimulatedWaveDriver() override;

    MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveListener> listener,
                  std::unique_ptr<WaveStream>& stream) override;

    // Moves the clock on; blocks that end within that time are notified before it returns.
    void Advance(unsigned milliseconds);

    // What waveOutOpen gives from now on; MMSYSERR_NOERROR lets it succeed again.
    void SetOpenResult(MMRESULT result);

    // The share of its time that the sound gets: 100 as it should be, 50 half as fast, 0 a server that hangs.
    void SetSpeed(unsigned percent);

    // The open output loses its server: blocks go on being done by the clock, but nothing more is heard. The
    // next waveOutOpen has a server again.
    void FailMidPlay();

    bool IsOpen() const;
    bool IsPaused() const;   // by waveOutPause; false when nothing is open
    bool IsRunning() const;  // open and not paused

    unsigned OpenCount() const;               // successful waveOutOpen calls so far
    std::size_t BlocksWritten() const;        // waveOutWrite calls so far, over all outputs
    std::size_t BytesQueued() const;          // of the open output: written, not heard, not thrown away
    std::vector<std::int16_t> Heard() const;  // every sample heard so far, over all outputs
    std::size_t HeardCount() const;
    void ForgetHeard();

private:
    class Stream;
    struct State;
    std::shared_ptr<State> m_state;
};
