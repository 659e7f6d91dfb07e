// Base of fixtures: a sound card and a mixer whose clock and values are the test's take the system's place.
#pragma once

#include <memory>

#include "platform/sound/simulated_mixer_driver.h"
#include "platform/sound/simulated_wave_driver.h"

class SimulatedSound {
protected:
    SimulatedSound() {
        SetWaveDriver(m_sound);
        SetMixerDriver(m_mixer);
    }
    ~SimulatedSound() {
        SetMixerDriver(nullptr);
        SetWaveDriver(nullptr);
    }

    std::shared_ptr<SimulatedWaveDriver> m_sound = std::make_shared<SimulatedWaveDriver>();
    std::shared_ptr<SimulatedMixerDriver> m_mixer = std::make_shared<SimulatedMixerDriver>();
};
