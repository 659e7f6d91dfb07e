// The waveOut functions on the simulated driver: results, order, what is heard when.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "platform/sound/mmsystem.h"
#include "platform/sound/simulated_wave_driver.h"
#include "platform/sound/wave_clock.h"
#include "tests/platform/sound/fake_message_queue.h"
#include "tests/platform/sound/wave_blocks.h"

namespace {

class WaveOut : public testing::Test {
protected:
    WaveOut() {
        SetWaveDriver(m_driver);
        TakePosted();
    }

    ~WaveOut() override {
        if (m_handle != nullptr) {
            waveOutReset(m_handle);
            waveOutClose(m_handle);
        }
        SetWaveDriver(nullptr);
    }

    void Open() { ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR); }

    std::shared_ptr<SimulatedWaveDriver> m_driver = std::make_shared<SimulatedWaveDriver>();
    HWAVEOUT m_handle = nullptr;
    Blocks m_blocks;
};

std::vector<WAVEHDR*> DoneHeaders(HWAVEOUT handle) {
    std::vector<WAVEHDR*> headers;
    for (const PostedMessage& posted : TakePosted()) {
        EXPECT_EQ(posted.msg.message, MM_WOM_DONE);
        EXPECT_EQ(posted.msg.wParam, reinterpret_cast<WPARAM>(handle));
        headers.push_back(reinterpret_cast<WAVEHDR*>(posted.msg.lParam));
    }
    return headers;
}

TEST_F(WaveOut, OpenRefusesWhatItCannotPlay) {
    const WAVEFORMATEX good = VoiceFormat();
    WAVEFORMATEX stereo = good, eight_bits = good, no_rate = good, not_pcm = good, bytes_disagree = good;
    stereo.nChannels = 2;
    eight_bits.wBitsPerSample = 8;
    no_rate.nSamplesPerSec = 0;
    not_pcm.wFormatTag = 49;
    bytes_disagree.nAvgBytesPerSec = 8000;
    const auto window = reinterpret_cast<DWORD_PTR>(kWindow);
    const struct {
        const char* what;
        MMRESULT expected;
        WAVEFORMATEX format;
        UINT device;
        DWORD_PTR window;
        DWORD flags;
    } cases[] = {
        {"stereo", WAVERR_BADFORMAT, stereo, WAVE_MAPPER, window, CALLBACK_WINDOW},
        {"8 bits", WAVERR_BADFORMAT, eight_bits, WAVE_MAPPER, window, CALLBACK_WINDOW},
        {"no rate", WAVERR_BADFORMAT, no_rate, WAVE_MAPPER, window, CALLBACK_WINDOW},
        {"not PCM", WAVERR_BADFORMAT, not_pcm, WAVE_MAPPER, window, CALLBACK_WINDOW},
        {"bytes disagree", WAVERR_BADFORMAT, bytes_disagree, WAVE_MAPPER, window, CALLBACK_WINDOW},
        {"device 1", MMSYSERR_BADDEVICEID, good, 1, window, CALLBACK_WINDOW},
        {"function callback", MMSYSERR_INVALFLAG, good, WAVE_MAPPER, window, 0x30000},
        {"no such window", MMSYSERR_INVALPARAM, good, WAVE_MAPPER, 12345, CALLBACK_WINDOW},
    };
    for (const auto& c : cases) {
        HWAVEOUT handle = nullptr;
        EXPECT_EQ(waveOutOpen(&handle, c.device, &c.format, c.window, 0, c.flags), c.expected) << c.what;
        EXPECT_EQ(handle, nullptr) << c.what;
    }
    m_driver->SetOpenResult(MMSYSERR_ALLOCATED);
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_ALLOCATED);
    SetWaveDriver(nullptr);
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_NODRIVER);
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(WaveOut, HandlesAreNeverReusedAndEndWithClose) {
    Open();
    const HWAVEOUT first = m_handle;
    ASSERT_EQ(waveOutClose(first), MMSYSERR_NOERROR);
    Open();
    EXPECT_NE(m_handle, first);

    WAVEHDR& header = m_blocks.Header(0);
    const MMRESULT results[] = {waveOutClose(first),
                                waveOutPause(first),
                                waveOutRestart(first),
                                waveOutReset(first),
                                waveOutPrepareHeader(first, &header, sizeof header),
                                waveOutUnprepareHeader(first, &header, sizeof header),
                                waveOutWrite(first, &header, sizeof header),
                                waveOutPause(nullptr)};
    for (const MMRESULT result : results) EXPECT_EQ(result, MMSYSERR_INVALHANDLE);
}

TEST_F(WaveOut, HeadersMustBePreparedForTheHandleAndNotQueued) {
    Open();
    WAVEHDR& header = m_blocks.Header(0);
    const UINT size = sizeof header;
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED);
    EXPECT_EQ(waveOutPrepareHeader(m_handle, nullptr, size), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &header, size - 1), MMSYSERR_INVALPARAM);
    WAVEHDR odd = header;
    odd.dwBufferLength = 319;
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &odd, size), MMSYSERR_INVALPARAM);

    EXPECT_EQ(waveOutPrepareHeader(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(header.dwFlags, WHDR_PREPARED | WHDR_INQUEUE);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutUnprepareHeader(m_handle, &header, size), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutClose(m_handle), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutReset(m_handle), MMSYSERR_NOERROR);
    EXPECT_EQ(header.dwFlags, WHDR_PREPARED | WHDR_DONE);
    EXPECT_EQ(waveOutClose(m_handle), MMSYSERR_NOERROR);

    Open();
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED) << "prepared for the old handle";
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED) << "unprepared";
}

TEST_F(WaveOut, BlocksAreDoneInOrderWhenTheirLastSampleIsHeard) {
    Open();
    waveOutPause(m_handle);
    for (std::size_t i = 0; i < 5; ++i) m_blocks.Write(m_handle, i);
    m_driver->Advance(1000);
    EXPECT_TRUE(TakePosted().empty()) << "paused";

    waveOutRestart(m_handle);
    const std::pair<unsigned, std::vector<std::size_t>> steps[] = {
        {19, {}}, {1, {0}}, {39, {1}}, {1, {2}}, {1000, {3, 4}}};
    for (const auto& [ms, done] : steps) {
        m_driver->Advance(ms);
        std::vector<WAVEHDR*> expected;
        for (const std::size_t i : done) expected.push_back(&m_blocks.Header(i));
        EXPECT_EQ(DoneHeaders(m_handle), expected);
    }

    // The second that passed with nothing to play must not be taken off the next block.
    m_blocks.Write(m_handle, 5);
    m_driver->Advance(19);
    EXPECT_TRUE(TakePosted().empty());
    m_driver->Advance(1);
    EXPECT_EQ(DoneHeaders(m_handle).size(), 1U);
    EXPECT_EQ(m_driver->Heard(), m_blocks.Samples(0, 6));
}

TEST_F(WaveOut, ResetHandsEveryBlockBackOnceAndTheNextPlaysFromItsStart) {
    Open();
    for (std::size_t i = 0; i < 4; ++i) m_blocks.Write(m_handle, i);
    m_driver->Advance(30);
    waveOutReset(m_handle);
    EXPECT_EQ(DoneHeaders(m_handle), (std::vector<WAVEHDR*>{&m_blocks.Header(0), &m_blocks.Header(1),
                                                            &m_blocks.Header(2), &m_blocks.Header(3)}));
    EXPECT_TRUE(m_driver->IsRunning());
    for (std::size_t i = 1; i < 4; ++i) m_blocks.Write(m_handle, i);
    m_driver->Advance(60);
    EXPECT_EQ(DoneHeaders(m_handle).size(), 3U);

    std::vector<std::int16_t> heard = m_blocks.Samples(0, 1);
    const std::vector<std::int16_t> half = m_blocks.Samples(1, 2);
    const std::vector<std::int16_t> again = m_blocks.Samples(1, 4);
    heard.insert(heard.end(), half.begin(), half.begin() + 80);
    heard.insert(heard.end(), again.begin(), again.end());
    EXPECT_EQ(m_driver->Heard(), heard);
}

TEST_F(WaveOut, HoldsFiveHundredAndTwelveBlocksAndRefusesTheNext) {
    Blocks many(WAVEOUT_MAX_BLOCKS + 1);
    Open();
    for (std::size_t i = 0; i < WAVEOUT_MAX_BLOCKS; ++i)
        ASSERT_EQ(many.Write(m_handle, i), MMSYSERR_NOERROR) << i;
    EXPECT_EQ(many.Write(m_handle, WAVEOUT_MAX_BLOCKS), MMSYSERR_NOMEM);
    EXPECT_EQ(many.Header(WAVEOUT_MAX_BLOCKS).dwFlags & WHDR_INQUEUE, 0U);
    m_driver->Advance(20);
    EXPECT_EQ(many.Write(m_handle, WAVEOUT_MAX_BLOCKS), MMSYSERR_NOERROR);
    waveOutReset(m_handle);
    EXPECT_EQ(DoneHeaders(m_handle).size(), WAVEOUT_MAX_BLOCKS + 1);
    waveOutClose(m_handle);
    m_handle = nullptr;
}

TEST_F(WaveOut, ServersMayBeSlowHangAndGo) {
    Open();
    for (std::size_t i = 0; i < 3; ++i) m_blocks.Write(m_handle, i);
    m_driver->SetSpeed(50);
    m_driver->Advance(40);
    m_driver->SetSpeed(0);
    m_driver->Advance(1000);
    EXPECT_EQ(DoneHeaders(m_handle).size(), 1U);
    m_driver->SetSpeed(100);
    m_driver->FailMidPlay();
    m_driver->Advance(40);
    EXPECT_EQ(DoneHeaders(m_handle).size(), 2U) << "the clock goes on";
    EXPECT_EQ(m_driver->Heard(), m_blocks.Samples(0, 1)) << "but nothing is heard";
    waveOutClose(m_handle);
    Open();
    m_blocks.Write(m_handle, 1);
    m_driver->Advance(20);
    EXPECT_EQ(m_driver->Heard(), m_blocks.Samples(0, 2)) << "a server again";
}

// The clock's thread and the thread that resets post at the same time: every block is still notified once
// and in its turn.
TEST_F(WaveOut, NotificationsKeepTheirOrderAcrossThreads) {
    Blocks many(400);
    Open();
    for (int round = 0; round < 50; ++round) {
        for (std::size_t i = 0; i < 400; ++i) many.Write(m_handle, i);
        std::thread clock([this] {
            for (int i = 0; i < 100; ++i) m_driver->Advance(30);
        });
        waveOutReset(m_handle);
        clock.join();
        const std::vector<WAVEHDR*> done = DoneHeaders(m_handle);
        ASSERT_EQ(done.size(), 400U);
        for (std::size_t i = 0; i < 400; ++i) ASSERT_EQ(done[i], &many.Header(i)) << i;
    }
    waveOutClose(m_handle);
    m_handle = nullptr;
}

TEST(WaveClock, LongRunsNeitherOverflowNorDrift) {
    WaveClock clock(16000);
    constexpr std::uint64_t kDay = 86'400'000'000ULL;
    clock.Restart(kDay);
    clock.Write(kDay, 400 * 86400 * std::uint64_t{16000});
    EXPECT_EQ(clock.Heard(kDay + 62), 0U) << "less than a sample";
    EXPECT_EQ(clock.Heard(kDay + 125), 2U);
    EXPECT_EQ(clock.Heard(366 * kDay), 365 * 86400 * std::uint64_t{16000});
    clock.Pause(366 * kDay);
    clock.Restart(500 * kDay);
    EXPECT_EQ(clock.Heard(500 * kDay + 1'000'000), (365 * 86400 + 1) * std::uint64_t{16000});
}

}  // namespace
