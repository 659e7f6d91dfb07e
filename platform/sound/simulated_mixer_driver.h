// A mixer without a sound card, for tests: its lines and controls can be taken away, it can refuse, and it
// keeps count of what reaches it.
//
// One mixer device: a speakers destination with a wave-output source, all five controls. What is changed of
// its make-up counts for mixers opened afterwards. Any thread; notifications are posted by the thread that
// makes the change.
#pragma once

#include <memory>
#include <string>

#include "platform/sound/mixer_driver.h"

class SimulatedMixerDriver : public MixerDriver {
public:
    // The controls' ids.
    static constexpr DWORD kMasterVolume = 21;
    static constexpr DWORD kMasterMute = 22;
    static constexpr DWORD kWaveVolume = 31;
    static constexpr DWORD kWaveMute = 32;
    static constexpr DWORD kWavePeak = 33;

    // Volumes at 40000 and 50000 of 0 to 65535, nothing muted, the meter at 0 of -32768 to 32767.
    SimulatedMixerDriver();
    ~SimulatedMixerDriver() override;

    UINT Count() override;
    MMRESULT Open(UINT device, std::shared_ptr<MixerListener> listener,
                  std::unique_ptr<Mixer>& mixer) override;

    void SetCount(UINT mixers);  // 1, or 0 for a machine without
    void SetName(const std::string& name);
    void SetBounds(DWORD controlId, LONG minimum, LONG maximum);
    void RemoveControl(DWORD controlId);
    void RemoveLine(DWORD componentType);
    // The wave output becomes a source of a recording destination.
    void DisconnectWaveFromSpeakers();

    // What the calls give from now on; MMSYSERR_NOERROR lets them succeed again.
    void SetOpenResult(MMRESULT result);
    void SetNameResult(MMRESULT result);
    void SetReadResult(MMRESULT result);
    void SetWriteResult(MMRESULT result);

    // Another program's change, notified like any other. A meter's value is not notified.
    void Change(DWORD controlId, DWORD value);

    DWORD Value(DWORD controlId) const;
    unsigned Reads() const;  // of values, successful or not
    unsigned Writes() const;
    unsigned OpenMixers() const;

private:
    class Simulated;
    struct State;
    std::shared_ptr<State> m_state;
};
