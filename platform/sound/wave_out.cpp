// SPDX-License-Identifier: MIT
// The waveOut functions, and the open output behind a handle: header rules, queue, notifications.
#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <span>
#include <utility>

#include "platform/framework/handle_table.h"
#include "platform/sound/mmsystem.h"
#include "platform/sound/sound_drivers.h"

namespace {

constexpr DWORD kLowestRate = 1000;
constexpr DWORD kHighestRate = 192000;

class WaveOutput final : public WaveSource, public std::enable_shared_from_this<WaveOutput> {
public:
    // `window` gets the notifications; null for none.
    WaveOutput(HWAVEOUT handle, HWND window) : m_handle(handle), m_window(window) {}

    // Once, before anything else.
    MMRESULT Open(WaveDriver& driver, const WAVEFORMATEX& format) {
        return driver.Open(format, shared_from_this(), m_stream);
    }

    // Makes one of the calls below, one at a time, and posts what it has done with. MMSYSERR_INVALHANDLE once
    // the output is closed.
    template <typename... Arguments>
    MMRESULT Call(MMRESULT (WaveOutput::*call)(Arguments&...), Arguments&... arguments) {
        MMRESULT result = MMSYSERR_INVALHANDLE;
        {
            const std::scoped_lock control(m_control);
            if (m_stream) result = (this->*call)(arguments...);
        }
        Deliver();
        return result;
    }

    MMRESULT Close();
    MMRESULT Pause();
    MMRESULT Restart();
    MMRESULT Reset();
    MMRESULT Prepare(WAVEHDR& header);
    MMRESULT Unprepare(WAVEHDR& header);
    MMRESULT Write(WAVEHDR& header);
    MMRESULT TakeBack(UINT& blocks);

    // Ends the stream whatever is queued, without notifications: for the end of the program.
    void Abandon() {
        const std::scoped_lock control(m_control);
        m_stream.reset();
    }

    std::size_t Read(std::uint64_t position, void* to, std::size_t bytes) override;
    void OnHeard(std::uint64_t position) override;
    void OnInterrupted(DWORD what) override;

private:
    struct Entry {
        WAVEHDR* header;
        std::uint64_t end;  // position just past the block's last byte
    };

    Entry& At(std::size_t index) { return m_ring[index % m_ring.size()]; }
    bool IsPrepared(const WAVEHDR& header) const {
        return (header.dwFlags & WHDR_PREPARED) != 0 &&
               header.reserved == reinterpret_cast<DWORD_PTR>(m_handle);
    }
    // Marks as done what ends at `position` or before it.
    void MarkDone(std::uint64_t position);
    // Posts what is done. One thread at a time does so and takes along what others add meanwhile: that keeps
    // the order without a lock while posting.
    void Deliver();

    const HWAVEOUT m_handle;
    const HWND m_window;

    // Serialises the calls on the stream; taken before the stream's lock, which is taken before m_lock.
    std::mutex m_control;
    std::unique_ptr<WaveStream> m_stream;

    // Guards the queue and its headers' flags. A ring with running counts, posted <= done <= written: blocks
    // to be heard, before them blocks done whose notification is still due.
    std::mutex m_lock;
    std::array<Entry, WAVEOUT_MAX_BLOCKS> m_ring{};
    std::size_t m_posted = 0;
    std::size_t m_done = 0;
    std::size_t m_written = 0;
    std::uint64_t m_bytes = 0;
    bool m_delivering = false;
};

MMRESULT WaveOutput::Close() {
    {
        const std::scoped_lock lock(m_lock);
        if (m_done != m_written) return WAVERR_STILLPLAYING;
    }
    m_stream.reset();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Pause() {
    m_stream->Pause();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Restart() {
    m_stream->Restart();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Reset() {
    m_stream->Reset();
    const std::scoped_lock lock(m_lock);
    MarkDone(m_bytes);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Prepare(WAVEHDR& header) {
    if (header.lpData == nullptr || header.dwBufferLength == 0 || header.dwBufferLength % 2 != 0)
        return MMSYSERR_INVALPARAM;
    const std::scoped_lock lock(m_lock);
    if (IsPrepared(header)) return MMSYSERR_NOERROR;
    if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header.dwFlags = WHDR_PREPARED;
    header.reserved = reinterpret_cast<DWORD_PTR>(m_handle);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Unprepare(WAVEHDR& header) {
    const std::scoped_lock lock(m_lock);
    if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header.dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::Write(WAVEHDR& header) {
    {
        const std::scoped_lock lock(m_lock);
        if (!IsPrepared(header)) return WAVERR_UNPREPARED;
        if ((header.dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
        if (m_written - m_posted == m_ring.size()) return MMSYSERR_NOMEM;
        m_bytes += header.dwBufferLength;
        At(m_written++) = {&header, m_bytes};
        header.dwFlags = (header.dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    }
    m_stream->Write(m_bytes);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::TakeBack(UINT& blocks) {
    const std::uint64_t read = m_stream->TakeBack();
    {
        const std::scoped_lock lock(m_lock);
        for (blocks = 0; m_written != m_done; ++blocks) {
            WAVEHDR& newest = *At(m_written - 1).header;
            if (m_bytes - newest.dwBufferLength < read) break;
            m_bytes -= newest.dwBufferLength;
            newest.dwFlags &= ~WHDR_INQUEUE;
            --m_written;
        }
    }
    m_stream->Write(m_bytes);
    return MMSYSERR_NOERROR;
}

std::size_t WaveOutput::Read(std::uint64_t position, void* to, std::size_t bytes) {
    const std::scoped_lock lock(m_lock);
    std::size_t copied = 0;
    for (std::size_t i = m_done; i != m_written && copied != bytes; ++i) {
        const Entry& entry = At(i);
        if (entry.end <= position) continue;
        const std::uint64_t left =
            std::min<std::uint64_t>(entry.end - position, entry.header->dwBufferLength);
        const std::size_t piece = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes - copied));
        std::memcpy(static_cast<char*>(to) + copied,
                    entry.header->lpData + (entry.header->dwBufferLength - left), piece);
        copied += piece;
        position += piece;
    }
    return copied;
}

void WaveOutput::OnHeard(std::uint64_t position) {
    {
        const std::scoped_lock lock(m_lock);
        MarkDone(position);
    }
    Deliver();
}

void WaveOutput::OnInterrupted(DWORD what) {
    PostSoundMessage(m_window, MM_WOM_INTERRUPT, reinterpret_cast<WPARAM>(m_handle), LPARAM{what});
}

void WaveOutput::MarkDone(std::uint64_t position) {
    while (m_done != m_written && At(m_done).end <= position) {
        WAVEHDR& header = *At(m_done++).header;
        header.dwFlags = (header.dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
    }
}

void WaveOutput::Deliver() {
    std::unique_lock lock(m_lock);
    if (m_delivering) return;
    m_delivering = true;
    while (m_posted != m_done) {
        std::array<LPARAM, 8> headers{};
        std::size_t count = 0;
        while (m_posted != m_done && count != headers.size())
            headers[count++] = reinterpret_cast<LPARAM>(At(m_posted++).header);
        lock.unlock();
        PostSoundMessages(m_window, MM_WOM_DONE, reinterpret_cast<WPARAM>(m_handle),
                          std::span(headers).first(count));
        lock.lock();
    }
    m_delivering = false;
}

struct Outputs {
    // The streams end here, on the thread that ends the program, whoever else still holds an output.
    ~Outputs() {
        for (const HWAVEOUT handle : table.All()) table.Find(handle)->Abandon();
    }

    HandleTable<WaveOutput, HWAVEOUT> table;
};

HandleTable<WaveOutput, HWAVEOUT>& OpenOutputs() {
    static Outputs outputs;
    return outputs.table;
}

bool IsPlayable(const WAVEFORMATEX& format) {
    return format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels == 1 && format.wBitsPerSample == 16 &&
           format.nBlockAlign == 2 && format.nSamplesPerSec >= kLowestRate &&
           format.nSamplesPerSec <= kHighestRate &&
           format.nAvgBytesPerSec == format.nSamplesPerSec * format.nBlockAlign;
}

template <typename... Arguments>
MMRESULT OnOutput(HWAVEOUT handle, MMRESULT (WaveOutput::*call)(Arguments&...), Arguments&... arguments) {
    const std::shared_ptr<WaveOutput> output = OpenOutputs().Find(handle);
    return output ? output->Call(call, arguments...) : MMSYSERR_INVALHANDLE;
}

MMRESULT OnHeader(HWAVEOUT handle, WAVEHDR* header, UINT size, MMRESULT (WaveOutput::*call)(WAVEHDR&)) {
    if (header == nullptr || size < sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    return OnOutput(handle, call, *header);
}

}  // namespace

MMRESULT waveOutOpen(HWAVEOUT* phwo, UINT uDeviceID, const WAVEFORMATEX* pwfx, DWORD_PTR dwCallback,
                     DWORD_PTR /*dwInstance*/, DWORD fdwOpen) {
    if (phwo == nullptr || pwfx == nullptr) return MMSYSERR_INVALPARAM;
    if (uDeviceID != 0 && uDeviceID != WAVE_MAPPER) return MMSYSERR_BADDEVICEID;
    if (fdwOpen != CALLBACK_NULL && fdwOpen != CALLBACK_WINDOW) return MMSYSERR_INVALFLAG;
    if (!IsPlayable(*pwfx)) return WAVERR_BADFORMAT;
    const std::shared_ptr<WaveDriver> driver = CurrentWaveDriver();
    if (!driver) return MMSYSERR_NODRIVER;

    const HWAVEOUT handle = OpenOutputs().Reserve();
    const HWND window = fdwOpen == CALLBACK_WINDOW ? reinterpret_cast<HWND>(dwCallback) : nullptr;
    auto output = std::make_shared<WaveOutput>(handle, window);
    const MMRESULT result = output->Open(*driver, *pwfx);
    if (result != MMSYSERR_NOERROR) return result;
    OpenOutputs().Add(handle, std::move(output));
    *phwo = handle;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT hwo) {
    const MMRESULT result = OnOutput(hwo, &WaveOutput::Close);
    if (result == MMSYSERR_NOERROR) OpenOutputs().Remove(hwo);
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

MMRESULT waveOutTakeBack(HWAVEOUT hwo, UINT* puBlocks) {
    return puBlocks == nullptr ? MMSYSERR_INVALPARAM : OnOutput(hwo, &WaveOutput::TakeBack, *puBlocks);
}
