// The waveOut functions: handles and arguments. What an open output does is WaveOutput's.
#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/framework/message_queue.h"
#include "platform/sound/mmsystem.h"
#include "platform/sound/wave_driver.h"
#include "platform/sound/wave_output.h"

namespace {

constexpr DWORD kLowestRate = 1000;
constexpr DWORD kHighestRate = 192000;

class Outputs {
public:
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    static Outputs& Get() {
        static Outputs outputs;
        return outputs;
    }

    std::shared_ptr<WaveDriver> SetDriver(std::shared_ptr<WaveDriver> driver) {
        const std::scoped_lock lock(m_lock);
        return std::exchange(m_driver, std::move(driver));
    }

    std::shared_ptr<WaveDriver> Driver() {
        const std::scoped_lock lock(m_lock);
        return m_driver;
    }

    HWAVEOUT NewHandle() {
        const std::scoped_lock lock(m_lock);
        return reinterpret_cast<HWAVEOUT>(++m_lastHandle);
    }

    void Add(HWAVEOUT handle, std::shared_ptr<WaveOutput> output) {
        const std::scoped_lock lock(m_lock);
        m_open.emplace_back(handle, std::move(output));
    }

    void Remove(HWAVEOUT handle) {
        const std::scoped_lock lock(m_lock);
        std::erase_if(m_open, [handle](const auto& entry) { return entry.first == handle; });
    }

    std::shared_ptr<WaveOutput> Find(HWAVEOUT handle) {
        const std::scoped_lock lock(m_lock);
        const auto found = std::find_if(m_open.begin(), m_open.end(),
                                        [handle](const auto& entry) { return entry.first == handle; });
        return found == m_open.end() ? nullptr : found->second;
    }

private:
    Outputs() = default;

    // The streams end here, on the thread that ends the program, whoever else still holds an output.
    ~Outputs() {
        for (const auto& entry : m_open) entry.second->Abandon();
    }

    std::mutex m_lock;
    std::shared_ptr<WaveDriver> m_driver;
    std::vector<std::pair<HWAVEOUT, std::shared_ptr<WaveOutput>>> m_open;
    std::uintptr_t m_lastHandle = 0;
};

bool IsPlayable(const WAVEFORMATEX& format) {
    return format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels == 1 && format.wBitsPerSample == 16 &&
           format.nBlockAlign == 2 && format.nSamplesPerSec >= kLowestRate &&
           format.nSamplesPerSec <= kHighestRate &&
           format.nAvgBytesPerSec == format.nSamplesPerSec * format.nBlockAlign;
}

MMRESULT OnOutput(HWAVEOUT handle, MMRESULT (WaveOutput::*call)()) {
    const std::shared_ptr<WaveOutput> output = Outputs::Get().Find(handle);
    return output ? ((*output).*call)() : MMSYSERR_INVALHANDLE;
}

MMRESULT OnHeader(HWAVEOUT handle, WAVEHDR* header, UINT size, MMRESULT (WaveOutput::*call)(WAVEHDR&)) {
    const std::shared_ptr<WaveOutput> output = Outputs::Get().Find(handle);
    if (!output) return MMSYSERR_INVALHANDLE;
    if (header == nullptr || size < sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    return ((*output).*call)(*header);
}

}  // namespace

std::shared_ptr<WaveDriver> SetWaveDriver(std::shared_ptr<WaveDriver> driver) {
    return Outputs::Get().SetDriver(std::move(driver));
}

MMRESULT waveOutOpen(HWAVEOUT* phwo, UINT uDeviceID, const WAVEFORMATEX* pwfx, DWORD_PTR dwCallback,
                     DWORD_PTR /*dwInstance*/, DWORD fdwOpen) {
    if (phwo == nullptr || pwfx == nullptr) return MMSYSERR_INVALPARAM;
    if (uDeviceID != 0 && uDeviceID != WAVE_MAPPER) return MMSYSERR_BADDEVICEID;
    if (fdwOpen != CALLBACK_NULL && fdwOpen != CALLBACK_WINDOW) return MMSYSERR_INVALFLAG;
    const HWND window = fdwOpen == CALLBACK_WINDOW ? reinterpret_cast<HWND>(dwCallback) : nullptr;
    if (fdwOpen == CALLBACK_WINDOW && !IsWindow(window)) return MMSYSERR_INVALPARAM;
    if (!IsPlayable(*pwfx)) return WAVERR_BADFORMAT;

    Outputs& outputs = Outputs::Get();
    const std::shared_ptr<WaveDriver> driver = outputs.Driver();
    if (!driver) return MMSYSERR_NODRIVER;
    const HWAVEOUT handle = outputs.NewHandle();
    auto output = std::make_shared<WaveOutput>(handle, window);
    const MMRESULT result = output->Open(*driver, *pwfx);
    if (result != MMSYSERR_NOERROR) return result;
    outputs.Add(handle, std::move(output));
    *phwo = handle;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT hwo) {
    const MMRESULT result = OnOutput(hwo, &WaveOutput::Close);
    if (result == MMSYSERR_NOERROR) Outputs::Get().Remove(hwo);
    return result;
}

MMRESULT waveOutPause(HWAVEOUT hwo) {
    return OnOutput(hwo, &WaveOutput::Pause);
}

MMRESULT waveOutRestart(HWAVEOUT hwo) {
    return OnOutput(hwo, &WaveOutput::Restart);
}

MMRESULT waveOutReset(HWAVEOUT hwo) {
    return OnOutput(hwo, &WaveOutput::Reset);
}

MMRESULT waveOutPrepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh) {
    return OnHeader(hwo, pwh, cbwh, &WaveOutput::Prepare);
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh) {
    return OnHeader(hwo, pwh, cbwh, &WaveOutput::Unprepare);
}

MMRESULT waveOutWrite(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh) {
    return OnHeader(hwo, pwh, cbwh, &WaveOutput::Write);
}
