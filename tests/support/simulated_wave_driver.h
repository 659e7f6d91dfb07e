// SPDX-License-Identifier: MIT
// A wave driver without a sound card: its clock moves only when told to, it can be made to fail, and it keeps
// what would have been heard.
//
// One output at a time: a second one is refused with MMSYSERR_ALLOCATED. Any thread; notifications are posted
// by the thread that calls Advance or waveOutReset. Up to nine minutes heard at 8000 samples a second nothing
// is allocated after the driver is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/sound/sound_drivers.h"

class SimulatedWaveDriver : public WaveDriver {
public:
    SimulatedWaveDriver();
    ~SimulatedWaveDriver() override;

    MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveSource> source,
                  std::unique_ptr<WaveStream>& stream) override;

    // Moves the clock on; blocks that end within that time are notified before it returns.
    void Advance(unsigned milliseconds);

    // What happens outside: WOM_CALL_BEGINS and the others. The output must be open.
    void Interrupt(DWORD what);

    // The server goes, or is there again: meanwhile the clock goes on and nothing is heard.
    void SetServerAway(bool away);

    // What waveOutOpen returns from now on; MMSYSERR_NOERROR lets it succeed again.
    void SetOpenResult(MMRESULT result);

    bool IsOpen() const;
    bool IsRunning() const;  // open and not paused

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
