// The sound server as a wave driver.
#pragma once

#include <memory>
#include <utility>

#include "platform/pulse/pulse_connection.h"
#include "platform/sound/wave_driver.h"

class PulseWaveDriver : public WaveDriver {
public:
    explicit PulseWaveDriver(std::shared_ptr<PulseConnection> connection)
        : m_connection(std::move(connection)) {}

    // Connects if there is no connection; a server that does not answer within a second is given up.
    MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveListener> listener,
                  std::unique_ptr<WaveStream>& stream) override;

private:
    std::shared_ptr<PulseConnection> m_connection;
};
