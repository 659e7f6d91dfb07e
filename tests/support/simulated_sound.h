// SPDX-License-Identifier: MIT
// Base of fixtures: a sound card and a mixer whose clock and values are the test's take the system's place.
#pragma once

#include <memory>

#include "tests/support/simulated_mixer_driver.h"
#include "tests/support/simulated_wave_driver.h"

class SimulatedSound {
protected:
    SimulatedSound() { SetSoundDrivers(m_sound, m_mixer); }
    ~SimulatedSound() { SetSoundDrivers(nullptr, nullptr); }

    std::shared_ptr<SimulatedWaveDriver> m_sound = std::make_shared<SimulatedWaveDriver>();
    std::shared_ptr<SimulatedMixerDriver> m_mixer = std::make_shared<SimulatedMixerDriver>();
};
