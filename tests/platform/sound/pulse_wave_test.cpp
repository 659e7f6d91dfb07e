// SPDX-License-Identifier: MIT
// Wave output on a sound server of the test's own: what its monitor records, and when blocks are done.
#include <cstdio>
#include <span>

#include "tests/platform/sound/pulse_fixture.h"

namespace {

using namespace std::chrono_literals;
using watch::Clock;
using watch::Lateness;
using watch::Ms;

// Whether `wanted`, which has no silence, is at a place of a recording but for this much silence at most.
bool IsAt(std::span<const std::int16_t> place, const std::vector<std::int16_t>& wanted, std::size_t silence) {
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (place[i] == wanted[i]) continue;
        if (place[i] != 0 || silence-- == 0) return false;
    }
    return true;
}

// Where `wanted` stands in `recording` as it is, at or after `from`; -1 when it does not.
std::ptrdiff_t FindWhole(const std::vector<std::int16_t>& recording, const std::vector<std::int16_t>& wanted,
                         std::ptrdiff_t from = 0) {
    const auto found = std::search(recording.begin() + from, recording.end(), wanted.begin(), wanted.end());
    return found == recording.end() ? -1 : found - recording.begin();
}

// A turn of 128 samples that PipeWire's graph misses on a busy machine is silent in a recording, and nothing
// moves: two may be.
std::ptrdiff_t FindIn(const std::vector<std::int16_t>& recording, const std::vector<std::int16_t>& wanted,
                      std::ptrdiff_t from = 0) {
    if (const std::ptrdiff_t whole = FindWhole(recording, wanted, from); whole >= 0) return whole;
    const std::size_t silence = std::min(std::size_t{2} * 128, wanted.size() / 2);
    const auto last =
        static_cast<std::ptrdiff_t>(recording.size()) - static_cast<std::ptrdiff_t>(wanted.size());
    for (std::ptrdiff_t at = from; PrivateServer::IsPipeWire() && at <= last; ++at)
        if (IsAt(std::span(recording).subspan(static_cast<std::size_t>(at)), wanted, silence)) return at;
    return -1;
}

// What a server plays of sound that ends: PipeWire keeps what is less than its quantum until more comes.
std::vector<std::int16_t> Played(std::vector<std::int16_t> samples) {
    if (PrivateServer::IsPipeWire()) samples.resize(samples.size() - kBlockSamples);
    return samples;
}

class PulseWave : public PulseSound {
protected:
    // Without the mixer's notifications.
    void Start() {
        PulseSound::Start();
        mixerClose(m_mixer);
        m_posted.Take();
    }

    // The blocks from `first` on are in the recording sample for sample, and each was done when it was heard.
    void ExpectDoneWhenHeard(const MonitorRecording& recording, std::size_t first,
                             const std::vector<PostedMessage>& done, const Lateness& lateness) {
        const std::vector<std::int16_t> wanted = Played(m_blocks.Samples(first, first + done.size()));
        if (wanted.empty()) return;
        const std::ptrdiff_t start = FindIn(recording.Samples(), wanted);
        ASSERT_GE(start, 0) << "not sample for sample, from block " << first;
        std::vector<double> late;
        for (std::size_t i = 0; i < done.size(); ++i) {
            ASSERT_EQ(done[i].lParam, reinterpret_cast<LPARAM>(&m_blocks.Header(first + i)));
            if ((i + 1) * kBlockSamples > wanted.size()) break;  // what the server keeps was not heard
            const std::size_t end = static_cast<std::size_t>(start) + (i + 1) * kBlockSamples;
            late.push_back(Ms(done[i].when - recording.HeardAt(end)));
        }
        std::sort(late.begin(), late.end());
        std::printf("blocks done after they were heard: %.1f to %.1f ms, threads %.1f ms late\n",
                    late.front(), late.back(), lateness.WorstMs());
        // PipeWire hands a recording over later than it is heard, by a quantum or two of its own and of the
        // recorder.
        const double margin = 3 * lateness.WorstMs();
        EXPECT_GE(late.front(), (PrivateServer::IsPipeWire() ? -60 : -5) - margin);
        EXPECT_LE(late[late.size() * 9 / 10], 40 + margin) << "nine in ten";
    }

    // Whether the output is told so in time; everything told before is taken.
    bool Told(DWORD what) {
        return Eventually([this, what] {
            const std::vector<PostedMessage> told = m_posted.Take();
            return std::any_of(told.begin(), told.end(), [&](const PostedMessage& message) {
                return message.message == MM_WOM_INTERRUPT && message.lParam == LPARAM{what} &&
                       message.wParam == reinterpret_cast<WPARAM>(m_handle);
            });
        });
    }

    // The blocks that a recording has whole, in their order.
    std::vector<std::size_t> BlocksIn(const MonitorRecording& recording) const {
        const std::vector<std::int16_t> heard = recording.Samples();
        std::vector<std::size_t> blocks;
        for (std::size_t i = 0; i < m_blocks.Count(); ++i)
            if (FindWhole(heard, m_blocks.Samples(i, i + 1)) >= 0) blocks.push_back(i);
        return blocks;
    }
};

TEST_F(PulseWave, TheMonitorHearsEverySampleAndBlocksAreDoneWhenHeard) {
    Start();
    MonitorRecording recording;
    const Lateness lateness;
    OpenPaused();
    Write(0, 100);
    std::this_thread::sleep_for(100ms);
    EXPECT_TRUE(m_posted.Take().empty());
    waveOutRestart(m_handle);
    std::size_t written = 0;
    // After the first stretch the output is left running dry, as happens between the last block's end and the
    // pause that answers it.
    for (const std::size_t count : {std::size_t{100}, std::size_t{5}, std::size_t{1}, std::size_t{22}}) {
        if (written != 0) Write(written, written + count);
        ASSERT_TRUE(m_posted.WaitFor(count)) << written;
        const std::vector<PostedMessage> done = m_posted.Take();
        std::this_thread::sleep_for(120ms);
        ExpectDoneWhenHeard(recording, written, done, lateness);
        written += count;
    }
}

// Pausing as the player does it: blocks whose notification has not been taken up when the output is reset are
// written once more, and what is posted afterwards counts for nothing.
TEST_F(PulseWave, PauseLosesNothingAndRepeatsSixtyMillisecondsAtMost) {
    Start();
    MonitorRecording recording;
    const Lateness lateness;
    OpenPaused();
    Write(0, 150);
    waveOutRestart(m_handle);
    std::vector<std::size_t> resumed{0};
    for (const std::size_t blocks : {std::size_t{13}, std::size_t{27}, std::size_t{37}}) {
        ASSERT_TRUE(m_posted.WaitFor(blocks));
        std::this_thread::sleep_for(std::chrono::milliseconds(blocks % 20));
        resumed.push_back(resumed.back() + m_posted.Take().size());
        waveOutReset(m_handle);
        waveOutPause(m_handle);
        std::this_thread::sleep_for(150ms);
        m_posted.Take();
        Write(resumed.back(), 150);
        waveOutRestart(m_handle);
    }
    ASSERT_TRUE(m_posted.WaitFor(150 - resumed.back()));
    std::this_thread::sleep_for(100ms);

    const std::vector<std::int16_t> heard = recording.Samples();
    std::ptrdiff_t at = 0;
    for (std::size_t i = 0; i < resumed.size(); ++i) {
        const std::size_t counted = i + 1 < resumed.size() ? resumed[i + 1] : 150;
        at = FindIn(heard, Played(m_blocks.Samples(resumed[i], counted)), at);
        ASSERT_GE(at, 0) << "something of stretch " << i << " was not heard";
        const std::vector<std::int16_t> rest = m_blocks.Samples(resumed[i], 150);
        const auto end = std::mismatch(heard.begin() + at, heard.end(), rest.begin(), rest.end()).first;
        at += static_cast<std::ptrdiff_t>((counted - resumed[i]) * kBlockSamples);
        const double repeated = static_cast<double>(end - heard.begin() - at) / 8;
        std::printf("heard after what counted as played, stretch %zu: %.1f ms\n", i, repeated);
        EXPECT_LE(repeated, 60 + 3 * lateness.WorstMs());
    }
}

TEST_F(PulseWave, WhatIsTakenBackIsReplacedWithoutAGap) {
    Start();
    MonitorRecording recording;
    OpenPaused();
    Write(0, 100);
    waveOutRestart(m_handle);
    std::vector<std::int16_t> wanted;
    std::size_t first = 0;  // of the blocks that play now
    std::size_t last = 100;
    std::size_t queued = 100;
    for (const std::size_t next : {std::size_t{110}, std::size_t{180}}) {
        ASSERT_TRUE(m_posted.WaitFor(15));
        UINT taken = 0;
        ASSERT_EQ(waveOutTakeBack(m_handle, &taken), MMSYSERR_NOERROR);
        const std::vector<std::int16_t> kept = m_blocks.Samples(first, last - taken);
        wanted.insert(wanted.end(), kept.begin(), kept.end());
        queued -= taken + m_posted.Take().size();
        std::printf("blocks still to be heard: %zu\n", queued);
        EXPECT_LE(queued, 12U);
        queued += 60;
        Write(next, next + 60);
        first = next;
        last = next + 60;
    }
    ASSERT_TRUE(m_posted.WaitFor(queued));
    std::this_thread::sleep_for(100ms);
    const std::vector<std::int16_t> rest = m_blocks.Samples(first, last);
    wanted.insert(wanted.end(), rest.begin(), rest.end());
    EXPECT_GE(FindIn(recording.Samples(), Played(wanted)), 0);
}

TEST_F(PulseWave, AServerThatStopsAnsweringHoldsNobodyUp) {
    Start();
    OpenPaused();
    Write(0, 150);
    waveOutRestart(m_handle);
    ASSERT_TRUE(m_posted.WaitFor(3));
    m_server->Freeze();
    const Lateness lateness;
    std::this_thread::sleep_for(100ms);

    int calls = 0;
    int slow = 0;
    const auto timed = [&](auto call) {
        const Clock::time_point before = Clock::now();
        call();
        ++calls;
        if (Ms(Clock::now() - before) > 20 + lateness.WorstMs()) ++slow;
    };
    for (int round = 0; round < 100; ++round) {
        timed([this] { waveOutReset(m_handle); });
        timed([this] { waveOutPause(m_handle); });
        for (std::size_t i = 0; i < 250; ++i) timed([&, this] { m_blocks.Write(m_handle, i); });
        timed([this] { waveOutRestart(m_handle); });
        timed([round] { Set(kMasterVolume, static_cast<DWORD>(round)); });
        timed([] { Value(kWavePeak); });
    }
    timed([this] { CloseWave(); });
    // A loaded machine may take the processor away now and then; a call that waits for the server would show
    // every time.
    EXPECT_LE(slow, calls / 1000) << "of " << calls;

    const Clock::time_point before = Clock::now();
    EXPECT_EQ(OpenVoice(m_handle), MMSYSERR_NODRIVER);
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    EXPECT_LT(Ms(Clock::now() - before), 2500 + 4 * lateness.WorstMs()) << "a second each";

    m_server->Thaw();
    m_posted.Take();
    ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
    Write(0, 5);
    EXPECT_TRUE(m_posted.WaitFor(5));
}

TEST_F(PulseWave, SoundReturnsByItselfWithTheServer) {
    Start();
    const Lateness lateness;
    OpenPaused();
    Write(0, m_blocks.Count());
    waveOutRestart(m_handle);
    ASSERT_TRUE(m_posted.WaitFor(10));
    const Clock::time_point killed = Clock::now();
    m_server->Kill();
    ASSERT_TRUE(m_posted.WaitFor(60)) << "whoever plays is held up";
    EXPECT_NEAR(Ms(Clock::now() - killed), 50 * 20, 300 + 4 * lateness.WorstMs())
        << "not at the pace of the sound";
    m_server = std::make_unique<PrivateServer>();
    std::size_t first = 0;
    {
        MonitorRecording recording;
        const std::size_t done = m_posted.Take().size();
        ASSERT_TRUE(m_posted.WaitFor(30));
        std::this_thread::sleep_for(100ms);
        const std::vector<std::size_t> heard = BlocksIn(recording);
        ASSERT_GE(heard.size(), 20U);
        first = heard.front();
        EXPECT_LE(static_cast<double>(first), static_cast<double>(done) + 8 + lateness.WorstMs() / 20)
            << "not where the message was";
        EXPECT_GE(heard.size(), heard.back() + 1 - first) << "with gaps";
    }

    // While paused it comes back too, and Play finds it there.
    waveOutReset(m_handle);
    waveOutPause(m_handle);
    m_server->Kill();
    std::this_thread::sleep_for(100ms);
    m_server = std::make_unique<PrivateServer>();
    ASSERT_TRUE(EventuallySays({"list", "sink-inputs"}, {"application.name = \"Trivelle Message Player\""}));
    MonitorRecording recording;
    m_posted.Take();
    Write(0, 40);
    waveOutRestart(m_handle);
    ASSERT_TRUE(m_posted.WaitFor(40));
    std::this_thread::sleep_for(100ms);
    EXPECT_GE(FindIn(recording.Samples(), Played(m_blocks.Samples(0, 40))), 0);
}

TEST_F(PulseWave, ASinkThatGoesIsToldUnlikeAMoveFromOneToAnother) {
    Start();
    const std::string headset = AddSink("headset");
    OpenPaused();
    Write(0, WAVEOUT_MAX_BLOCKS);  // a move that is overlooked takes a second
    waveOutRestart(m_handle);
    for (const char* sink : {"headset", "test", "headset"}) {
        ASSERT_TRUE(MoveStream(sink));
        ASSERT_TRUE(m_posted.WaitFor(20));
        for (const PostedMessage& message : m_posted.Take())
            ASSERT_EQ(message.message, MM_WOM_DONE) << "moved to " << sink;
    }
    const Clock::time_point unloaded = Clock::now();
    Pactl({"unload-module", headset});
    EXPECT_TRUE(Told(WOM_UNPLUGGED));
    std::printf("told within %.1f ms of the other program's start\n", Ms(Clock::now() - unloaded));
    EXPECT_TRUE(m_posted.WaitFor(10)) << "whoever plays decides";
}

TEST_F(PulseWave, ACallAsksForSilenceAndLeavesTheRememberedMuteAlone) {
    Start();
    OpenPaused();
    if (PrivateServer::IsPipeWire()) {
        // It asks nobody, and a role would displace what it remembers.
        EXPECT_TRUE(EventuallySays({"list", "sink-inputs"}, {"application.id"}));
        EXPECT_EQ(Pactl({"list", "sink-inputs"}).find("media.role"), std::string::npos);
        return;
    }
    Pactl({"load-module", "module-role-cork"});
    Write(0, 250);
    waveOutRestart(m_handle);
    ASSERT_TRUE(m_posted.WaitFor(10));
    {
        const ChildProcess call({"pacat", "--playback", "--raw", "--property=media.role=phone", "/dev/zero"});
        ASSERT_TRUE(Told(WOM_CALL_BEGINS));
        waveOutReset(m_handle);
        waveOutPause(m_handle);
        EXPECT_TRUE(EventuallySays({"list", "sink-inputs"}, {"Corked: yes", "Mute: yes"}));
        Set(kWaveVolume, 26214);
        EXPECT_TRUE(EventuallySays({"list", "sink-inputs"}, {" 40% "}));
    }
    ASSERT_TRUE(Told(WOM_CALL_ENDS));
    Write(0, 20);
    waveOutRestart(m_handle);
    EXPECT_TRUE(m_posted.WaitFor(20));
    CloseWave();
    EXPECT_TRUE(Eventually([] { return Pactl({"list", "sink-inputs"}).empty(); }));
    EXPECT_TRUE(Eventually([] { return Value(kWaveMute) == 0 && Value(kWaveVolume) == 26214; }));
}

TEST_F(PulseWave, ASinkThatGoesTakesNoOutputWithIt) {
    Start();
    HWAVEOUT other = nullptr;
    ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
    ASSERT_EQ(OpenVoice(other), MMSYSERR_NOERROR);
    Write(0, 500);
    for (std::size_t i = 500; i < 510; ++i) m_blocks.Write(other, i);
    ASSERT_TRUE(m_posted.WaitFor(20));
    m_posted.Take();
    m_server->RemoveSink();
    ASSERT_TRUE(Told(WOM_UNPLUGGED));
    ASSERT_TRUE(m_posted.WaitFor(10));
    AddSink("test");
    const MonitorRecording recording;
    // PipeWire moves the stream some time after the sink is there.
    EXPECT_TRUE(Eventually([&] { return BlocksIn(recording).size() >= 10; }));
    waveOutReset(other);
    EXPECT_EQ(waveOutClose(other), MMSYSERR_NOERROR);
}

}  // namespace
