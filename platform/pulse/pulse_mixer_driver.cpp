#include "platform/pulse/pulse_mixer_driver.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/pulse/pulse_mixer_state.h"
#include "platform/pulse/volume_scale.h"

namespace {

std::vector<MixerDestination> MakeDestinations() {
    constexpr LONG loudest = kLoudestVolume;
    MixerLine speakers{MIXERLINE_COMPONENTTYPE_DST_SPEAKERS,
                       "Speakers",
                       {{kMasterVolumeId, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, loudest, "Volume"},
                        {kMasterMuteId, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1, "Mute"}}};
    MixerLine wave{MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT,
                   "Wave",
                   {{kWaveVolumeId, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, loudest, "Volume"},
                    {kWaveMuteId, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1, "Mute"},
                    {kWavePeakId, MIXERCONTROL_CONTROLTYPE_PEAKMETER, -32768, 32767, "Level"}}};
    return {{std::move(speakers), {std::move(wave)}}};
}

class PulseMixer : public Mixer {
public:
    PulseMixer(std::shared_ptr<PulseMixerState> state, std::shared_ptr<MixerListener> listener)
        : m_state(std::move(state)), m_listener(std::move(listener)) {
        m_state->Add(m_listener);
    }

    ~PulseMixer() override { m_state->Remove(m_listener); }

    MMRESULT GetName(std::string& name) override { return m_state->GetName(name); }
    const std::vector<MixerDestination>& Destinations() const override { return m_destinations; }
    MMRESULT GetValue(DWORD controlId, DWORD& value) override { return m_state->GetValue(controlId, value); }
    MMRESULT SetValue(DWORD controlId, DWORD value) override { return m_state->SetValue(controlId, value); }

private:
    const std::shared_ptr<PulseMixerState> m_state;
    const std::shared_ptr<MixerListener> m_listener;
    const std::vector<MixerDestination> m_destinations = MakeDestinations();
};

}  // namespace

PulseMixerDriver::PulseMixerDriver(std::shared_ptr<PulseConnection> connection)
    : m_state(std::make_shared<PulseMixerState>(std::move(connection))) {}

UINT PulseMixerDriver::Count() {
    return m_state->WaitKnown() ? 1 : 0;
}

MMRESULT PulseMixerDriver::Open(UINT device, std::shared_ptr<MixerListener> listener,
                                std::unique_ptr<Mixer>& mixer) {
    if (device != 0) return MMSYSERR_BADDEVICEID;
    if (!m_state->WaitKnown()) return MMSYSERR_NODRIVER;
    mixer = std::make_unique<PulseMixer>(m_state, std::move(listener));
    return MMSYSERR_NOERROR;
}
