// SPDX-License-Identifier: MIT
// The waveOut functions on the simulated driver: results, order, what is heard when.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "platform/sound/mmsystem.h"
#include "platform/sound/wave_clock.h"
#include "tests/platform/sound/posted_messages.h"
#include "tests/platform/sound/wave_blocks.h"
#include "tests/support/simulated_sound.h"

namespace {

class WaveOut : public testing::Test, protected SimulatedSound {
protected:
    ~WaveOut() override {
        waveOutReset(m_handle);
        waveOutClose(m_handle);
    }

    void Open() { ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR); }

    // The blocks notified since the last call.
    std::vector<std::size_t> Done() {
        std::vector<std::size_t> blocks;
        for (const PostedMessage& posted : m_posted.Take()) {
            EXPECT_EQ(posted.message, MM_WOM_DONE);
            EXPECT_EQ(posted.wParam, reinterpret_cast<WPARAM>(m_handle));
            blocks.push_back(
                static_cast<std::size_t>(reinterpret_cast<WAVEHDR*>(posted.lParam) - &m_blocks.Header(0)));
        }
        return blocks;
    }

    using Numbers = std::vector<std::size_t>;

    PostedMessages m_posted;
    HWAVEOUT m_handle = nullptr;
    Blocks m_blocks{WAVEOUT_MAX_BLOCKS + 1};
};

TEST_F(WaveOut, OpenRefusesWhatItCannotPlay) {
    const WAVEFORMATEX good = VoiceFormat();
    WAVEFORMATEX stereo = good, bytes = good, no_rate = good, not_pcm = good, bytes_disagree = good;
    stereo.nChannels = 2;
    bytes.wBitsPerSample = 8;
    no_rate.nSamplesPerSec = 0;
    not_pcm.wFormatTag = 49;
    bytes_disagree.nAvgBytesPerSec = 8000;
    for (const WAVEFORMATEX& format : {stereo, bytes, no_rate, not_pcm, bytes_disagree})
        EXPECT_EQ(waveOutOpen(&m_handle, WAVE_MAPPER, &format, 0, 0, CALLBACK_NULL), WAVERR_BADFORMAT);
    EXPECT_EQ(waveOutOpen(&m_handle, 1, &good, 0, 0, CALLBACK_NULL), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(waveOutOpen(&m_handle, WAVE_MAPPER, &good, 0, 0, 0x30000), MMSYSERR_INVALFLAG);
    m_sound->SetOpenResult(MMSYSERR_ALLOCATED);
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_ALLOCATED);
    SetSoundDrivers(nullptr, nullptr);
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_NODRIVER);
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(WaveOut, HeadersMustBePreparedForTheHandleAndHandlesAreNeverReused) {
    Open();
    const HWAVEOUT first = m_handle;
    WAVEHDR& header = m_blocks.Header(0);
    const UINT size = sizeof header;
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED);
    WAVEHDR odd = header;
    odd.dwBufferLength = 319;
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &odd, size), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &header, size - 1), MMSYSERR_INVALPARAM);

    EXPECT_EQ(m_blocks.Write(m_handle, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(header.dwFlags, WHDR_PREPARED | WHDR_INQUEUE);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutUnprepareHeader(m_handle, &header, size), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutClose(m_handle), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutReset(m_handle), MMSYSERR_NOERROR);
    EXPECT_EQ(header.dwFlags, WHDR_PREPARED | WHDR_DONE);
    EXPECT_EQ(waveOutClose(m_handle), MMSYSERR_NOERROR);

    Open();
    EXPECT_NE(m_handle, first);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED) << "prepared for the old handle";
    EXPECT_EQ(waveOutPrepareHeader(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(m_handle, &header, size), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(m_handle, &header, size), WAVERR_UNPREPARED) << "unprepared";
    for (const MMRESULT result :
         {waveOutClose(first), waveOutPause(first), waveOutRestart(first), waveOutReset(first),
          waveOutWrite(first, &header, size), waveOutPause(nullptr)})
        EXPECT_EQ(result, MMSYSERR_INVALHANDLE);
}

TEST_F(WaveOut, BlocksAreDoneInOrderWhenTheirLastSampleIsHeard) {
    Open();
    waveOutPause(m_handle);
    for (std::size_t i = 0; i < 15; ++i) m_blocks.Write(m_handle, i);
    m_sound->Advance(1000);
    EXPECT_EQ(Done(), Numbers{}) << "paused";

    waveOutRestart(m_handle);
    const std::pair<unsigned, Numbers> steps[] = {
        {19, {}}, {1, {0}}, {39, {1}}, {1, {2}}, {1000, {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}}};
    for (const auto& [ms, done] : steps) {
        m_sound->Advance(ms);
        EXPECT_EQ(Done(), done);
    }

    // The second that passed with nothing to play must not be taken off the next block.
    m_blocks.Write(m_handle, 15);
    m_sound->Advance(19);
    EXPECT_EQ(Done(), Numbers{});
    m_sound->Advance(1);
    EXPECT_EQ(Done(), Numbers{15});
    EXPECT_EQ(m_sound->Heard(), m_blocks.Samples(0, 16));
}

// The clock's thread and the thread that resets post at the same time: every block is still notified once
// and in its turn.
TEST_F(WaveOut, NotificationsKeepTheirOrderAcrossThreads) {
    Open();
    for (int round = 0; round < 50; ++round) {
        for (std::size_t i = 0; i < 400; ++i) m_blocks.Write(m_handle, i);
        std::thread clock([this] {
            for (int i = 0; i < 100; ++i) m_sound->Advance(30);
        });
        waveOutReset(m_handle);
        clock.join();
        const Numbers done = Done();
        ASSERT_EQ(done.size(), 400U);
        for (std::size_t i = 0; i < 400; ++i) ASSERT_EQ(done[i], i);
    }
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
