#include "platform/sound/simulated_mixer_driver.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr LONG kLoudest = 65535;

std::vector<MixerDestination> WholeCard() {
    using Driver = SimulatedMixerDriver;
    MixerLine speakers{MIXERLINE_COMPONENTTYPE_DST_SPEAKERS,
                       "Speakers",
                       {{Driver::kMasterVolume, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, kLoudest, "Volume"},
                        {Driver::kMasterMute, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1, "Mute"}}};
    MixerLine wave{MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT,
                   "Wave",
                   {{Driver::kWaveVolume, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, kLoudest, "Volume"},
                    {Driver::kWaveMute, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1, "Mute"},
                    {Driver::kWavePeak, MIXERCONTROL_CONTROLTYPE_PEAKMETER, -32768, 32767, "Level"}}};
    return {{std::move(speakers), {std::move(wave)}}};
}

}  // namespace

struct SimulatedMixerDriver::State {
    // The listeners to be told, which is done without the lock.
    std::vector<std::shared_ptr<MixerListener>> Listeners() const {
        std::vector<std::shared_ptr<MixerListener>> listeners;
        for (const auto& entry : open) listeners.push_back(entry.second);
        return listeners;
    }

    template <typename Action>
    void ForEachLine(Action action) {
        for (MixerDestination& destination : destinations) {
            action(destination.line);
            for (MixerLine& source : destination.sources) action(source);
        }
    }

    mutable std::mutex lock;
    UINT count = 1;
    std::string name = "Simulated Audio";
    std::vector<MixerDestination> destinations = WholeCard();
    std::map<DWORD, DWORD> values{
        {kMasterVolume, 40000}, {kMasterMute, 0}, {kWaveVolume, 50000}, {kWaveMute, 0}, {kWavePeak, 0}};
    MMRESULT openResult = MMSYSERR_NOERROR;
    MMRESULT nameResult = MMSYSERR_NOERROR;
    MMRESULT readResult = MMSYSERR_NOERROR;
    MMRESULT writeResult = MMSYSERR_NOERROR;
    unsigned reads = 0;
    unsigned writes = 0;
    std::map<const Mixer*, std::shared_ptr<MixerListener>> open;
};

class SimulatedMixerDriver::Simulated : public Mixer {
public:
    // With the state's lock held.
    explicit Simulated(std::shared_ptr<State> state)
        : m_state(std::move(state)), m_destinations(m_state->destinations) {}

    ~Simulated() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->open.erase(this);
    }

    MMRESULT GetName(std::string& name) override {
        const std::scoped_lock lock(m_state->lock);
        if (m_state->nameResult == MMSYSERR_NOERROR) name = m_state->name;
        return m_state->nameResult;
    }

    const std::vector<MixerDestination>& Destinations() const override { return m_destinations; }

    MMRESULT GetValue(DWORD controlId, DWORD& value) override {
        const std::scoped_lock lock(m_state->lock);
        ++m_state->reads;
        if (m_state->readResult == MMSYSERR_NOERROR) value = m_state->values[controlId];
        return m_state->readResult;
    }

    MMRESULT SetValue(DWORD controlId, DWORD value) override {
        std::vector<std::shared_ptr<MixerListener>> listeners;
        {
            const std::scoped_lock lock(m_state->lock);
            ++m_state->writes;
            if (m_state->writeResult != MMSYSERR_NOERROR) return m_state->writeResult;
            m_state->values[controlId] = value;
            listeners = m_state->Listeners();
        }
        for (const auto& listener : listeners) listener->OnControlChange(controlId);
        return MMSYSERR_NOERROR;
    }

private:
    std::shared_ptr<State> m_state;
    std::vector<MixerDestination> m_destinations;
};

SimulatedMixerDriver::SimulatedMixerDriver() : m_state(std::make_shared<State>()) {}

SimulatedMixerDriver::~SimulatedMixerDriver() = default;

UINT SimulatedMixerDriver::Count() {
    const std::scoped_lock lock(m_state->lock);
    return m_state->count;
}

MMRESULT SimulatedMixerDriver::Open(UINT device, std::shared_ptr<MixerListener> listener,
                                    std::unique_ptr<Mixer>& mixer) {
    const std::scoped_lock lock(m_state->lock);
    if (device >= m_state->count) return MMSYSERR_BADDEVICEID;
    if (m_state->openResult != MMSYSERR_NOERROR) return m_state->openResult;
    mixer = std::make_unique<Simulated>(m_state);
    m_state->open[mixer.get()] = std::move(listener);
    return MMSYSERR_NOERROR;
}

void SimulatedMixerDriver::SetCount(UINT mixers) {
    const std::scoped_lock lock(m_state->lock);
    m_state->count = mixers;
}

void SimulatedMixerDriver::SetName(const std::string& name) {
    const std::scoped_lock lock(m_state->lock);
    m_state->name = name;
}

void SimulatedMixerDriver::SetBounds(DWORD controlId, LONG minimum, LONG maximum) {
    const std::scoped_lock lock(m_state->lock);
    m_state->ForEachLine([=](MixerLine& line) {
        for (MixerControl& control : line.controls) {
            if (control.id != controlId) continue;
            control.minimum = minimum;
            control.maximum = maximum;
        }
    });
}

void SimulatedMixerDriver::RemoveControl(DWORD controlId) {
    const std::scoped_lock lock(m_state->lock);
    m_state->ForEachLine([controlId](MixerLine& line) {
        std::erase_if(line.controls, [=](const MixerControl& control) { return control.id == controlId; });
    });
}

void SimulatedMixerDriver::RemoveLine(DWORD componentType) {
    const std::scoped_lock lock(m_state->lock);
    const auto isIt = [=](const MixerLine& line) { return line.componentType == componentType; };
    std::erase_if(m_state->destinations, [&](const MixerDestination& to) { return isIt(to.line); });
    for (MixerDestination& destination : m_state->destinations) std::erase_if(destination.sources, isIt);
}

void SimulatedMixerDriver::DisconnectWaveFromSpeakers() {
    const std::scoped_lock lock(m_state->lock);
    MixerDestination recording{{MIXERLINE_COMPONENTTYPE_DST_WAVEIN, "Recording", {}},
                               std::move(m_state->destinations.at(0).sources)};
    m_state->destinations[0].sources.clear();
    m_state->destinations.push_back(std::move(recording));
}

void SimulatedMixerDriver::SetOpenResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->openResult = result;
}

void SimulatedMixerDriver::SetNameResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->nameResult = result;
}

void SimulatedMixerDriver::SetReadResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->readResult = result;
}

void SimulatedMixerDriver::SetWriteResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->writeResult = result;
}

void SimulatedMixerDriver::Change(DWORD controlId, DWORD value) {
    std::vector<std::shared_ptr<MixerListener>> listeners;
    {
        const std::scoped_lock lock(m_state->lock);
        m_state->values[controlId] = value;
        if (controlId != kWavePeak) listeners = m_state->Listeners();
    }
    for (const auto& listener : listeners) listener->OnControlChange(controlId);
}

DWORD SimulatedMixerDriver::Value(DWORD controlId) const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->values.at(controlId);
}

unsigned SimulatedMixerDriver::Reads() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->reads;
}

unsigned SimulatedMixerDriver::Writes() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->writes;
}

unsigned SimulatedMixerDriver::OpenMixers() const {
    const std::scoped_lock lock(m_state->lock);
    return static_cast<unsigned>(m_state->open.size());
}
