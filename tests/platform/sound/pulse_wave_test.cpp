// Wave output on a sound server of the test's own: what its monitor records, and when blocks are done.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "platform/sound/mixer_driver.h"
#include "platform/sound/mmsystem.h"
#include "platform/sound/system_sound.h"
#include "platform/sound/wave_driver.h"
#include "tests/platform/sound/fake_message_queue.h"
#include "tests/platform/sound/private_server.h"
#include "tests/platform/sound/wave_blocks.h"
#include "tests/support/watch.h"

namespace {

using namespace std::chrono_literals;
using watch::Clock;
using watch::Ms;

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
        SetMixerDriver(nullptr);
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

    // The blocks from `first` on are in the recording sample for sample, and each was done when it was heard.
    void ExpectDoneWhenHeard(const MonitorRecording& recording, std::size_t first,
                             const std::vector<PostedMessage>& done) {
        const std::vector<std::int16_t> wanted = m_blocks.Samples(first, first + done.size());
        const std::ptrdiff_t start = FindIn(recording.Samples(), wanted);
        ASSERT_GE(start, 0) << "not sample for sample, from block " << first;
        std::vector<double> late;
        for (std::size_t i = 0; i < done.size(); ++i) {
            ASSERT_EQ(done[i].msg.lParam, reinterpret_cast<LPARAM>(&m_blocks.Header(first + i)));
            const std::size_t end = static_cast<std::size_t>(start) + (i + 1) * kBlockSamples;
            late.push_back(Ms(done[i].when - recording.HeardAt(end)));
        }
        std::sort(late.begin(), late.end());
        std::printf("blocks done after they were heard: %.1f to %.1f ms\n", late.front(), late.back());
        EXPECT_GE(late.front(), -5);
        EXPECT_LE(late[late.size() * 9 / 10], 40);
        EXPECT_LE(late.back(), 250) << "even on a busy machine";
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
    ASSERT_TRUE(WaitForPosted(100));
    const std::vector<PostedMessage> done = TakePosted();
    std::this_thread::sleep_for(100ms);
    ExpectDoneWhenHeard(recording, 0, done);
}

// Pausing as the player does it: blocks whose notification has not been taken up when the output is reset are
// written once more, and what is posted afterwards counts for nothing.
TEST_F(PulseWave, PauseLosesNothingAndRepeatsSixtyMillisecondsAtMost) {
    StartServer();
    UseSystemSound();
    MonitorRecording recording;
    OpenPaused();
    Write(0, 150);
    waveOutRestart(m_handle);
    std::vector<std::size_t> resumed{0};
    for (const std::size_t blocks : {std::size_t{13}, std::size_t{27}, std::size_t{37}}) {
        ASSERT_TRUE(WaitForPosted(blocks));
        std::this_thread::sleep_for(std::chrono::milliseconds(blocks % 20));
        resumed.push_back(resumed.back() + TakePosted().size());
        waveOutReset(m_handle);
        waveOutPause(m_handle);
        std::this_thread::sleep_for(150ms);
        TakePosted();
        Write(resumed.back(), 150);
        waveOutRestart(m_handle);
    }
    ASSERT_TRUE(WaitForPosted(150 - resumed.back()));
    std::this_thread::sleep_for(100ms);

    const std::vector<std::int16_t> heard = recording.Samples();
    std::ptrdiff_t at = 0;
    for (std::size_t i = 0; i < resumed.size(); ++i) {
        const std::size_t counted = i + 1 < resumed.size() ? resumed[i + 1] : 150;
        at = FindIn(heard, m_blocks.Samples(resumed[i], counted), at);
        ASSERT_GE(at, 0) << "something of stretch " << i << " was not heard";
        const std::vector<std::int16_t> rest = m_blocks.Samples(resumed[i], 150);
        const auto end = std::mismatch(heard.begin() + at, heard.end(), rest.begin(), rest.end()).first;
        at += static_cast<std::ptrdiff_t>((counted - resumed[i]) * kBlockSamples);
        const std::ptrdiff_t repeated = end - heard.begin() - at;
        std::printf("heard after what counted as played, stretch %zu: %.1f ms\n", i,
                    static_cast<double>(repeated) / 8);
        EXPECT_LE(repeated, 60 * 8);
    }
}

// A sink that takes back what it has not played yet: its monitor has passed that on already, so the times of
// the notifications are what there is to look at.
TEST_F(PulseWave, PositionsFollowASinkThatRewinds) {
    StartServer(PrivateServer::Sink::kRewinds);
    UseSystemSound();
    OpenPaused();
    // Such a null sink has made two seconds of silence before it meets its first stream, and plays that
    // first.
    waveOutRestart(m_handle);
    Write(0, 1);
    ASSERT_TRUE(WaitForPosted(1));
    waveOutPause(m_handle);
    for (int round = 0; round < 3; ++round) {
        Write(0, 100);
        std::this_thread::sleep_for(50ms);
        TakePosted();
        const Clock::time_point restart = Clock::now();
        waveOutRestart(m_handle);
        ASSERT_TRUE(WaitForPosted(50));
        const std::vector<PostedMessage> done = TakePosted();
        const double first = Ms(done[0].when - restart);
        const double pace = Ms(done[49].when - done[0].when);
        std::printf("first block done after %.1f ms, 49 more in %.1f ms\n", first, pace);
        EXPECT_GE(first, 20);
        EXPECT_LE(first, 120);
        EXPECT_NEAR(pace, 49 * 20, 80);
        waveOutReset(m_handle);
        waveOutPause(m_handle);
    }
}

TEST_F(PulseWave, PositionsStayRightAcrossUnderruns) {
    StartServer();
    UseSystemSound();
    MonitorRecording recording;
    OpenPaused();
    waveOutRestart(m_handle);
    std::size_t written = 0;
    for (const std::size_t count : {std::size_t{5}, std::size_t{1}, std::size_t{22}}) {
        // Left running dry, as happens between the last block's end and the pause that answers it.
        Write(written, written + count);
        ASSERT_TRUE(WaitForPosted(count)) << written;
        const std::vector<PostedMessage> done = TakePosted();
        std::this_thread::sleep_for(120ms);
        ExpectDoneWhenHeard(recording, written, done);
        written += count;
    }
}

TEST_F(PulseWave, AServerThatStopsAnsweringHoldsNobodyUp) {
    StartServer();
    UseSystemSound();
    OpenPaused();
    Write(0, 150);
    waveOutRestart(m_handle);
    ASSERT_TRUE(WaitForPosted(3));
    m_server->Freeze();
    std::this_thread::sleep_for(100ms);
    TakePosted();

    double worst = 0;
    int calls = 0;
    int slow = 0;
    const auto timed = [&](auto call) {
        const Clock::time_point before = Clock::now();
        call();
        const double took = Ms(Clock::now() - before);
        worst = std::max(worst, took);
        ++calls;
        if (took > 20) ++slow;
    };
    for (int round = 0; round < 100; ++round) {
        timed([this] { waveOutReset(m_handle); });
        timed([this] { waveOutPause(m_handle); });
        for (std::size_t i = 0; i < m_blocks.Count(); ++i) timed([&, this] { m_blocks.Write(m_handle, i); });
        timed([this] { waveOutRestart(m_handle); });
    }
    timed([this] { waveOutReset(m_handle); });
    timed([this] { waveOutClose(m_handle); });
    std::printf("worst of %d calls on a stopped server: %.2f ms, %d of them over 20 ms\n", calls, worst,
                slow);
    // A loaded machine may take the processor away now and then; a call that waits for the server would show
    // every time.
    EXPECT_LE(slow, calls / 1000);
    EXPECT_LT(worst, 200);
    m_handle = nullptr;

    const Clock::time_point before = Clock::now();
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_NODRIVER);
    const double refused = Ms(Clock::now() - before);
    std::printf("waveOutOpen on a stopped server gives up after %.0f ms\n", refused);
    EXPECT_LT(refused, 1200);

    m_server->Thaw();
    TakePosted();
    ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
    Write(0, 5);
    EXPECT_TRUE(WaitForPosted(5));
}

TEST_F(PulseWave, AServerKilledInMidPlayLeavesASilentOutputAndTheNextOneSounds) {
    StartServer();
    UseSystemSound();
    OpenPaused();
    Write(0, 60);
    waveOutRestart(m_handle);
    ASSERT_TRUE(WaitForPosted(10));
    const Clock::time_point killed = Clock::now();
    m_server->Kill();
    ASSERT_TRUE(WaitForPosted(60)) << "whoever plays is held up";
    const double rest = Ms(Clock::now() - killed);
    EXPECT_NEAR(rest, 50 * 20, 300) << "not at the pace of the sound";
    EXPECT_EQ(waveOutPause(m_handle), MMSYSERR_NOERROR);
    Write(60, 70);
    EXPECT_EQ(waveOutRestart(m_handle), MMSYSERR_NOERROR);
    EXPECT_TRUE(WaitForPosted(65));
    EXPECT_EQ(waveOutReset(m_handle), MMSYSERR_NOERROR);
    EXPECT_TRUE(WaitForPosted(70));
    EXPECT_EQ(waveOutClose(m_handle), MMSYSERR_NOERROR);
    TakePosted();

    m_handle = nullptr;
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_NODRIVER);
    EXPECT_LT(Ms(Clock::now() - before), 400) << "no server is told at once";

    StartServer();
    MonitorRecording recording;
    OpenPaused();
    Write(0, 30);
    waveOutRestart(m_handle);
    ASSERT_TRUE(WaitForPosted(30));
    std::this_thread::sleep_for(100ms);
    EXPECT_GE(FindIn(recording.Samples(), m_blocks.Samples(0, 30)), 0);
}

TEST_F(PulseWave, TwoOutputsAndAStreamThatTheServerEnds) {
    StartServer();
    UseSystemSound();
    HWAVEOUT other = nullptr;
    ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
    ASSERT_EQ(OpenVoice(other), MMSYSERR_NOERROR);
    Write(0, 10);
    for (std::size_t i = 20; i < 30; ++i) m_blocks.Write(other, i);
    ASSERT_TRUE(WaitForPosted(20));
    TakePosted();
    Write(0, 10);
    // Unloading the sink takes the streams with it; both outputs go on by the clock.
    Pactl({"unload-module", "module-null-sink"});
    for (std::size_t i = 20; i < 30; ++i) m_blocks.Write(other, i);
    EXPECT_TRUE(WaitForPosted(20));
    waveOutReset(other);
    EXPECT_EQ(waveOutClose(other), MMSYSERR_NOERROR);
}

TEST_F(PulseWave, OpeningIsQuickAndPlayingCostsLittle) {
    StartServer();
    const Clock::time_point start = Clock::now();
    UseSystemSound();
    const Clock::time_point connecting = Clock::now();
    OpenPaused();
    const Clock::time_point opened = Clock::now();
    waveOutReset(m_handle);
    waveOutClose(m_handle);
    const Clock::time_point before = Clock::now();
    OpenPaused();
    std::printf("UseSystemSound %.2f ms, first open %.2f ms, next open %.2f ms\n", Ms(connecting - start),
                Ms(opened - connecting), Ms(Clock::now() - before));
    EXPECT_LT(Ms(connecting - start), 100);
    EXPECT_LT(Ms(opened - start), 500);

    Write(0, 200);
    const double playing = watch::ProcessorMs();
    waveOutRestart(m_handle);
    ASSERT_TRUE(WaitForPosted(150));
    const double used = (watch::ProcessorMs() - playing) / 3000 * 100;
    waveOutReset(m_handle);
    waveOutPause(m_handle);
    std::this_thread::sleep_for(100ms);
    const double idle = watch::ProcessorMs();
    std::this_thread::sleep_for(1s);
    const double idleUsed = (watch::ProcessorMs() - idle) / 1000 * 100;
    std::printf("processor: playing %.2f %%, paused %.3f %% of a core\n", used, idleUsed);
    EXPECT_LT(used, 5);
    EXPECT_LT(idleUsed, 0.5);
}
}  // namespace
