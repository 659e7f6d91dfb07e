#include "platform/pulse/pulse_wave_driver.h"

#include "platform/pulse/pulse_wave_stream.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kOpenTime = 1s;

}  // namespace

MMRESULT PulseWaveDriver::Open(const WAVEFORMATEX& format, std::shared_ptr<WaveListener> listener,
                               std::unique_ptr<WaveStream>& stream) {
    const auto deadline = PulseLoop::Clock::now() + kOpenTime;
    auto opened = std::make_unique<PulseWaveStream>(m_connection, std::move(listener), format.nSamplesPerSec);
    const MMRESULT result = opened->Open(deadline);
    if (result == MMSYSERR_NOERROR) stream = std::move(opened);
    return result;
}
