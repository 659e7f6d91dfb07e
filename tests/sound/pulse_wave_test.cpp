// Wave output on a sound server of the test's own: what its monitor records, and when blocks are done.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "platform/sound/mmsystem.h"
#include "platform/sound/system_sound.h"
#include "platform/sound/wave_driver.h"
#include "tests/sound/fake_message_queue.h"
#include "tests/sound/private_server.h"
#include "tests/sound/wave_blocks.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double Ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

// Where `wanted` stands in `recording`, at or after `from`; -1 when it does not.
std::ptrdiff_t FindIn(const std::vector<std::int16_t>& recording, const std::vector<std::int16_t>& wanted,
                      std::ptrdiff_t from = 0) {
    const auto found = std::search(recording.begin() + from, recording.end(), wanted.begin(), wanted.end());
    return found == recording.end() ? -1 : found - recording.begin();
}

class PulseWave : public testing::Test {
protected:
    PulseWave() {
        PrivateServer::UsePrivateFolders();
        TakePosted();
    }

    ~PulseWave() override {
        if (m_handle != nullptr) {
            waveOutReset(m_handle);
            waveOutClose(m_handle);
        }
        SetWaveDriver(nullptr);
    }

    void StartServer(PrivateServer::Sink sink = PrivateServer::Sink::kNoRewinds) {
        m_server = std::make_unique<PrivateServer>(sink);
    }

    // Opens the output as the player does: paused, with blocks collecting.
    void OpenPaused() {
        ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
        waveOutPause(m_handle);
    }

    void Write(std::size_t first, std::size_t last) {
        for (std::size_t i = first; i < last; ++i) ASSERT_EQ(m_blocks.Write(m_handle, i), MMSYSERR_NOERROR);
    }

    std::unique_ptr<PrivateServer> m_server;
    HWAVEOUT m_handle = nullptr;
    Blocks m_blocks{200};
};

TEST_F(PulseWave, TheMonitorHearsEverySampleAndBlocksAreDoneWhenHeard) {
    StartServer();
    UseSystemSound();
    MonitorRecording recording;
    OpenPaused();
    Write(0, 100);
    std::this_thread::sleep_for(100ms);
    EXPECT_TRUE(TakePosted().empty());
    waveOutRestart(m_handle);
    ASSERT_TRUE(WaitForPosted(100, 3s));
    const std::vector<PostedMessage> done = TakePosted();
    std::this_thread::sleep_for(100ms);

    const std::vector<std::int16_t> heard = recording.Samples();
    const std::ptrdiff_t start = FindIn(heard, m_blocks.Samples(0, 100));
    ASSERT_GE(start, 0) << "not sample for sample";
    double earliest = 1e9;
    double latest = -1e9;
    for (std::size_t i = 0; i < done.size(); ++i) {
        ASSERT_EQ(done[i].msg.lParam, reinterpret_cast<LPARAM>(&m_blocks.Header(i)));
        const std::size_t end = static_cast<std::size_t>(start) + (i + 1) * kBlockSamples;
        const double late = Ms(done[i].when - recording.HeardAt(end));
        earliest = std::min(earliest, late);
        latest = std::max(latest, late);
    }
    std::printf("block-done after the block was heard: %.1f to %.1f ms\n", earliest, latest);
    EXPECT_GE(earliest, -5);
    EXPECT_LE(latest, 40);
}

}  // namespace
