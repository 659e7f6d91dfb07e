// One open output behind an HWAVEOUT: header rules, queue, notifications. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/framework/wintypes.h"
#include "platform/sound/mmsystem.h"
#include "platform/sound/wave_driver.h"
#include "platform/sound/wave_queue.h"

class WaveOutput : public WaveListener, public std::enable_shared_from_this<WaveOutput> {
public:
    // `window` gets the notifications; null for none.
    WaveOutput(HWAVEOUT handle, HWND window) : m_handle(handle), m_window(window) {}

    // Once, before anything else.
    MMRESULT Open(WaveDriver& driver, const WAVEFORMATEX& format);

    // The functions of the same names; the stream is gone once Close has succeeded, and what comes after it
    // gives MMSYSERR_INVALHANDLE.
    MMRESULT Close();
    MMRESULT Pause();
    MMRESULT Restart();
    MMRESULT Reset();
    MMRESULT Prepare(WAVEHDR& header);
    MMRESULT Unprepare(WAVEHDR& header);
    MMRESULT Write(WAVEHDR& header);

    // Ends the stream whatever is queued, without notifications: for the end of the program.
    void Abandon();

    void OnHeard(std::uint64_t position) override;

private:
    // Posts what is done. One thread at a time does so and takes along what others add meanwhile: that keeps
    // the order without holding a lock while posting.
    void Deliver();

    DWORD_PTR Number() const { return reinterpret_cast<DWORD_PTR>(m_handle); }
    bool IsPrepared(const WAVEHDR& header) const {
        return (header.dwFlags & WHDR_PREPARED) != 0 && header.reserved == Number();
    }

    const HWAVEOUT m_handle;
    const HWND m_window;

    std::mutex m_control;  // serialises the calls on the stream; taken before m_lock
    std::unique_ptr<WaveStream> m_stream;

    std::mutex m_lock;  // the queue and its headers' flags
    WaveQueue m_queue;
    bool m_delivering = false;
};
