// SPDX-License-Identifier: MIT
// The mixer on a sound server of the test's own, with pactl as the other program.
#include <cmath>
#include <numbers>

#include "tests/platform/sound/pulse_fixture.h"

namespace {

using namespace std::chrono_literals;

const std::vector<std::string> kSinkVolume{"get-sink-volume", "test"};
const std::vector<std::string> kStreams{"list", "sink-inputs"};

class PulseMixer : public PulseSound {
protected:
    void OpenWave() { ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR); }
};

TEST_F(PulseMixer, TheSpeakersAreTheDefaultSink) {
    Start();
    EXPECT_EQ(Name(), "Null Output");
    for (int percent = 10; percent <= 90; percent += 40) {
        Pactl({"set-sink-volume", "test", std::to_string(percent) + "%"});
        ASSERT_TRUE(Announced(kMasterVolume)) << percent;
        EXPECT_NEAR(Value(kMasterVolume), 655.35 * percent, 1);
    }
    Pactl({"set-sink-mute", "test", "1"});
    ASSERT_TRUE(Announced(kMasterMute));
    EXPECT_EQ(Value(kMasterMute), 1U);
    EXPECT_EQ(Set(kMasterMute, 0), MMSYSERR_NOERROR);
    EXPECT_TRUE(Announced(kMasterMute)) << "one's own change";
    EXPECT_TRUE(EventuallySays({"get-sink-mute", "test"}, {"no"}));

    for (const DWORD value : {0U, 1U, 32767U, 32768U, 40001U, 65534U, 65535U}) {
        Set(kMasterVolume, value);
        const std::string there = std::to_string(std::lround(value * (65536.0 / 65535.0))) + " / ";
        ASSERT_TRUE(EventuallySays(kSinkVolume, {there})) << there;
        End();
        Connect();
        EXPECT_EQ(Value(kMasterVolume), value) << "after coming back";
    }
}

TEST_F(PulseMixer, TheBalanceStaysWhenTheVolumeMovesThroughZero) {
    StartWithNewDefault("two", "2");
    Pactl({"set-sink-volume", "two", "80%", "40%"});
    ASSERT_TRUE(Eventually([] { return Value(kMasterVolume) / 10 == 5242; })) << "the loudest channel's";
    const std::vector<std::string> volume{"get-sink-volume", "two"};
    for (const DWORD value : {26214U, 1U, 0U, 52428U}) {
        Set(kMasterVolume, value);
        const std::string percent = " " + std::to_string(std::lround(value / 655.35)) + "% ";
        EXPECT_TRUE(EventuallySays(volume, {percent})) << percent;
    }
    EXPECT_TRUE(EventuallySays(volume, {" 80% ", " 40% "}));
}

TEST_F(PulseMixer, ASliderBeingDraggedIsNeverThrownBack) {
    Start();
    OpenWave();
    ASSERT_TRUE(EventuallySays(kStreams, {"Sink Input"}));
    for (DWORD value = 65000; value > 20000; value -= 450) {
        Set(kMasterVolume, value);
        Set(kWaveVolume, value);
        for (int look = 0; look < 4; ++look) {
            std::this_thread::sleep_for(1ms);
            ASSERT_EQ(Value(kMasterVolume), value);
            ASSERT_EQ(Value(kWaveVolume), value);
        }
    }
}

TEST_F(PulseMixer, TheWaveOutputKeepsVolumeAndSinkWithoutAStreamAndBetweenRuns) {
    Start();
    AddSink("headset");
    EXPECT_EQ(Value(kWaveVolume), 65535U);
    Set(kWaveVolume, 26214);
    Set(kWaveMute, 1);
    EXPECT_TRUE(Announced(kWaveMute));
    OpenWave();
    EXPECT_TRUE(
        EventuallySays(kStreams, {" 40% ", "Mute: yes", "application.name = \"Trivelle Message Player\""}));
    for (const PostedMessage& posted : m_posted.Take())
        EXPECT_NE(posted.lParam, static_cast<LPARAM>(kWaveVolume)) << "no jump when the stream starts";
    const std::string stream = Stream();
    Pactl({"set-sink-input-volume", stream, "70%"});
    EXPECT_TRUE(Announced(kWaveVolume));
    Pactl({"set-sink-input-mute", stream, "0"});
    EXPECT_TRUE(Announced(kWaveMute));
    EXPECT_NEAR(Value(kWaveVolume), 45875, 1);

    // The speakers are those that the stream is on.
    ASSERT_TRUE(MoveStream("headset"));
    EXPECT_TRUE(Eventually([] { return Name() == "headset"; }));
    Set(kMasterVolume, 32768);
    EXPECT_TRUE(EventuallySays({"get-sink-volume", "headset"}, {" 50% "}));
    EXPECT_TRUE(EventuallySays(kSinkVolume, {" 100% "}));
    CloseWave();
    EXPECT_TRUE(Eventually([] { return Name() == "Null Output"; }));
    EXPECT_NEAR(Value(kWaveVolume), 45875, 1) << "without the stream";
    Set(kWaveVolume, 30000);
    std::this_thread::sleep_for(100ms);

    End();
    Connect();
    EXPECT_EQ(Value(kWaveVolume), 30000U) << "the next run";
    OpenWave();
    EXPECT_TRUE(EventuallySays(kStreams, {" 46% "}));
    EXPECT_TRUE(Eventually([] { return Name() == "headset"; })) << "the remembered sink";
    EXPECT_EQ(Value(kWaveVolume), 30000U);
}

TEST_F(PulseMixer, TheMeterFollowsTheToneAndIsThereOnlyWhileRead) {
    Start();
    std::vector<std::int16_t> samples(kBlockSamples * 50);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(
            std::lround(16000 * std::sin(static_cast<double>(i) * 0.25 * std::numbers::pi)));
    Blocks tone(samples);
    const auto play = [&] {
        waveOutReset(m_handle);
        for (std::size_t i = 0; i < tone.Count(); ++i) tone.Write(m_handle, i);
    };
    const auto meters = [] { return Pactl({"list", "short", "source-outputs"}); };
    // Looks at the meter as often as the dialog does.
    const auto comes_near = [](double level) {
        return watch::Eventually([=] { return std::abs(Value(kWavePeak) - level) <= level / 80; }, 10s,
                                 [] { std::this_thread::sleep_for(50ms); });
    };
    EXPECT_EQ(Value(kWavePeak), 0U) << "no stream";
    OpenWave();
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(meters(), "");
    play();
    EXPECT_TRUE(comes_near(16000)) << Value(kWavePeak);
    EXPECT_NE(meters(), "");
    Set(kWaveVolume, 32768);
    play();
    EXPECT_TRUE(comes_near(16000 / 8.0)) << "half of the way is an eighth of the amplitude";
    waveOutReset(m_handle);
    EXPECT_TRUE(comes_near(0)) << "silence";
    CloseWave();
    EXPECT_EQ(Value(kWavePeak), 0U);
    OpenWave();
    play();
    EXPECT_TRUE(Eventually([&] {
        Value(kWavePeak);
        return meters().find("float") != std::string::npos;
    })) << "a meter on the new stream";
    EXPECT_TRUE(Eventually([&] { return meters().empty(); })) << "closed when nobody reads";
    CloseWave();  // while its blocks still live
}

TEST_F(PulseMixer, AServerThatReturnsIsFoundByReadingTheMeter) {
    Start();
    m_server->Kill();
    DWORD value = 0;
    EXPECT_TRUE(Eventually([&] { return Read(kMasterVolume, value) == MMSYSERR_NODRIVER; }));
    value = 77;
    EXPECT_EQ(Read(kWavePeak, value), MMSYSERR_NOERROR);
    EXPECT_EQ(value, 0U) << "nothing sounds";
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    m_server = std::make_unique<PrivateServer>();
    m_posted.Take();
    EXPECT_TRUE(Eventually([&] {
        Value(kWavePeak);
        return Read(kMasterVolume, value) == MMSYSERR_NOERROR;
    }));
    EXPECT_TRUE(Announced(kMasterVolume));
    EXPECT_EQ(Value(kMasterVolume), 65535U);
}

TEST_F(PulseMixer, FollowsTheDefaultSink) {
    // The other sink is as loud: its name alone is news.
    const std::string elsewhere = StartWithNewDefault("elsewhere");
    EXPECT_TRUE(Announced(kMasterVolume));
    EXPECT_EQ(Value(kMasterVolume), 65535U);

    // The default goes away, then the last sink does.
    Pactl({"unload-module", elsewhere});
    m_server->RemoveSink();
    if (PrivateServer::IsPipeWire()) {
        // That server has a sink at any time.
        EXPECT_TRUE(Eventually([] { return Name() == "Dummy Output"; }));
        return;
    }
    DWORD value = 77;
    EXPECT_TRUE(Eventually([&] { return Read(kMasterVolume, value) == MMSYSERR_NODRIVER; }));
    EXPECT_EQ(Set(kMasterVolume, 1), MMSYSERR_NODRIVER);
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    AddSink("third");
    EXPECT_TRUE(Eventually([&] { return Read(kMasterVolume, value) == MMSYSERR_NOERROR; }));
}

}  // namespace
