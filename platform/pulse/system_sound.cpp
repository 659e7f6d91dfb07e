#include "platform/sound/system_sound.h"

#include <memory>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_wave_driver.h"
#include "platform/sound/wave_driver.h"

void UseSystemSound() {
    SetWaveDriver(std::make_shared<PulseWaveDriver>(std::make_shared<PulseConnection>()));
}
