// The mixer on a sound server of the test's own, with pactl as the other program.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "platform/sound/mixer_driver.h"
#include "platform/sound/system_sound.h"
#include "platform/sound/wave_driver.h"
#include "tests/platform/sound/mixer_calls.h"
#include "tests/platform/sound/private_server.h"
#include "tests/platform/sound/wave_blocks.h"
#include "tests/support/watch.h"

namespace {

using namespace std::chrono_literals;
using watch::Clock;

bool Eventually(const std::function<bool()>& holds, std::chrono::milliseconds within = 5s) {
    return watch::Eventually(holds, within);
}

// Whether the program comes to say all the parts.
bool EventuallySays(const std::vector<std::string>& words, const std::vector<std::string>& parts) {
    return Eventually([&] {
        const std::string said = Pactl(words);
        return std::all_of(parts.begin(), parts.end(),
                           [&](const std::string& part) { return said.find(part) != std::string::npos; });
    });
}

const std::vector<std::string> kSinkVolume{"get-sink-volume", "test"};
const std::vector<std::string> kStreams{"list", "sink-inputs"};

// A second of a tone.
std::vector<std::int16_t> Tone() {
    std::vector<std::int16_t> samples(kBlockSamples * 50);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = static_cast<double>(i) * 0.25 * std::numbers::pi;
        samples[i] = static_cast<std::int16_t>(std::lround(16000 * std::sin(phase)));
    }
    return samples;
}

class PulseMixer : public testing::Test {
protected:
    PulseMixer() {
        PrivateServer::UsePrivateFolders();
        PrivateServer::ForgetVolumes();
        TakePosted();
    }

    ~PulseMixer() override { End(); }

    void Start() {
        m_server = std::make_unique<PrivateServer>();
        Connect();
    }

    // As at the start of the program.
    void Connect() {
        UseSystemSound();
        ASSERT_EQ(mixerGetNumDevs(), 1U);
        ASSERT_EQ(OpenMixer0(m_mixer), MMSYSERR_NOERROR);
        Find(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_VOLUME, m_masterVolume);
        Find(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_MUTE, m_masterMute);
        Find(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, MIXERCONTROL_CONTROLTYPE_VOLUME, m_waveVolume);
        Find(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, MIXERCONTROL_CONTROLTYPE_MUTE, m_waveMute);
        Find(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, MIXERCONTROL_CONTROLTYPE_PEAKMETER, m_peak);
    }

    // As at its end.
    void End() {
        CloseWave();
        if (m_mixer != nullptr) mixerClose(m_mixer);
        m_mixer = nullptr;
        SetWaveDriver(nullptr);
        SetMixerDriver(nullptr);
    }

    void OpenWave() { ASSERT_EQ(OpenVoice(m_wave), MMSYSERR_NOERROR); }

    void PlayTone() {
        waveOutReset(m_wave);
        for (std::size_t i = 0; i < m_tone.Count(); ++i) m_tone.Write(m_wave, i);
    }

    void CloseWave() {
        if (m_wave == nullptr) return;
        waveOutReset(m_wave);
        waveOutClose(m_wave);
        m_wave = nullptr;
    }

    DWORD Value(DWORD id) {
        DWORD value = 0xFFFFFFFF;
        GetValue(m_mixer, id, value);
        return value;
    }

    // Whether a change of the control is announced in time; everything announced is taken.
    static bool Announced(DWORD id) {
        return Eventually([id] {
            for (const PostedMessage& posted : TakePosted())
                if (posted.msg.message == MM_MIXM_CONTROL_CHANGE &&
                    posted.msg.lParam == static_cast<LPARAM>(id))
                    return true;
            return false;
        });
    }

    std::unique_ptr<PrivateServer> m_server;
    HMIXER m_mixer = nullptr;
    HWAVEOUT m_wave = nullptr;
    DWORD m_masterVolume = 0, m_masterMute = 0, m_waveVolume = 0, m_waveMute = 0, m_peak = 0;
    Blocks m_tone{Tone()};

private:
    void Find(DWORD line, DWORD type, DWORD& id) {
        MIXERLINE found;
        MIXERCONTROL control;
        ASSERT_EQ(FindLine(m_mixer, line, found), MMSYSERR_NOERROR);
        ASSERT_EQ(FindControl(m_mixer, found.dwLineID, type, control), MMSYSERR_NOERROR);
        id = control.dwControlID;
    }
};

TEST_F(PulseMixer, TheSpeakersAreTheDefaultSink) {
    Start();
    MIXERCAPS caps;
    ASSERT_EQ(mixerGetDevCaps(reinterpret_cast<UINT_PTR>(m_mixer), &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_STREQ(caps.szPname, "Null Output");

    double slowest = 0;
    for (int percent = 10; percent <= 100; percent += 10) {
        const Clock::time_point before = Clock::now();
        Pactl({"set-sink-volume", "test", std::to_string(percent) + "%"});
        if (percent == 100 && Value(m_masterVolume) == 65535) break;
        ASSERT_TRUE(Announced(m_masterVolume)) << percent;
        slowest = std::max(slowest, watch::Ms(Clock::now() - before));
        EXPECT_NEAR(Value(m_masterVolume), 655.35 * percent, 1);
    }
    std::printf("another program's change announced within %.1f ms of that program's start\n", slowest);
    EXPECT_LT(slowest, 250);
    Pactl({"set-sink-mute", "test", "1"});
    ASSERT_TRUE(Announced(m_masterMute));
    EXPECT_EQ(Value(m_masterMute), 1U);

    EXPECT_EQ(SetValue(m_mixer, m_masterMute, 0), MMSYSERR_NOERROR);
    EXPECT_TRUE(Announced(m_masterMute)) << "one's own change";
    EXPECT_TRUE(EventuallySays({"get-sink-mute", "test"}, {"no"}));
    EXPECT_EQ(SetValue(m_mixer, m_masterVolume, 32768), MMSYSERR_NOERROR);
    EXPECT_TRUE(EventuallySays(kSinkVolume, {" 50% "}));

    for (const DWORD value : {0U, 1U, 32767U, 32768U, 40001U, 65534U, 65535U}) {
        SetValue(m_mixer, m_masterVolume, value);
        const std::string there = std::to_string(std::lround(value * (65536.0 / 65535.0))) + " / ";
        ASSERT_TRUE(EventuallySays(kSinkVolume, {there})) << there;
        End();
        Connect();
        EXPECT_EQ(Value(m_masterVolume), value) << "after coming back";
    }
}

TEST_F(PulseMixer, TheBalanceStaysWhenTheVolumeMoves) {
    Start();
    Pactl({"load-module", "module-null-sink", "sink_name=two", "channels=2"});
    Pactl({"set-sink-volume", "two", "80%", "40%"});
    Pactl({"set-default-sink", "two"});
    ASSERT_TRUE(Eventually([this] { return Value(m_masterVolume) / 10 == 5242; })) << "the loudest channel's";
    SetValue(m_mixer, m_masterVolume, 26214);
    EXPECT_TRUE(EventuallySays({"get-sink-volume", "two"}, {" 40% ", " 20% "}));
}

TEST_F(PulseMixer, ASliderBeingDraggedIsNeverThrownBack) {
    Start();
    OpenWave();
    ASSERT_TRUE(EventuallySays(kStreams, {"Sink Input"}));
    for (DWORD value = 65000; value > 20000; value -= 450) {
        SetValue(m_mixer, m_masterVolume, value);
        SetValue(m_mixer, m_waveVolume, value);
        for (int look = 0; look < 4; ++look) {
            std::this_thread::sleep_for(1ms);
            ASSERT_EQ(Value(m_masterVolume), value);
            ASSERT_EQ(Value(m_waveVolume), value);
        }
    }
}

TEST_F(PulseMixer, TheWaveOutputKeepsItsVolumeWithoutAStreamAndBetweenRuns) {
    Start();
    EXPECT_EQ(Value(m_waveVolume), 65535U);
    SetValue(m_mixer, m_waveVolume, 26214);
    SetValue(m_mixer, m_waveMute, 1);
    EXPECT_TRUE(Announced(m_waveMute));
    OpenWave();
    EXPECT_TRUE(
        EventuallySays(kStreams, {" 40% ", "Mute: yes", "application.name = \"Trivelle Message Player\""}));

    const std::string streams = Pactl(kStreams);
    const std::string index =
        streams.substr(streams.find('#') + 1, streams.find('\n') - streams.find('#') - 1);
    TakePosted();
    Pactl({"set-sink-input-volume", index, "70%"});
    EXPECT_TRUE(Announced(m_waveVolume));
    Pactl({"set-sink-input-mute", index, "0"});
    EXPECT_TRUE(Announced(m_waveMute));
    EXPECT_NEAR(Value(m_waveVolume), 45875, 1);
    EXPECT_EQ(Value(m_waveMute), 0U);
    CloseWave();
    std::this_thread::sleep_for(50ms);
    EXPECT_NEAR(Value(m_waveVolume), 45875, 1) << "without the stream";
    SetValue(m_mixer, m_waveVolume, 30000);
    std::this_thread::sleep_for(100ms);

    End();
    Connect();
    EXPECT_EQ(Value(m_waveVolume), 30000U) << "the next run";
    OpenWave();
    EXPECT_TRUE(EventuallySays(kStreams, {" 46% "}));
    EXPECT_EQ(Value(m_waveVolume), 30000U);
}

TEST_F(PulseMixer, WithoutStreamRestoreTheValuesReachTheNextStream) {
    Start();
    Pactl({"unload-module", "module-stream-restore"});
    End();
    Connect();
    SetValue(m_mixer, m_waveVolume, 13107);
    SetValue(m_mixer, m_waveMute, 1);
    OpenWave();
    EXPECT_TRUE(EventuallySays(kStreams, {" 20% ", "Mute: yes"}));
    EXPECT_EQ(Value(m_waveVolume), 13107U);
}

TEST_F(PulseMixer, TheMeterFollowsTheToneAndIsThereOnlyWhileRead) {
    Start();
    EXPECT_EQ(Value(m_peak), 0U) << "no stream";
    OpenWave();
    std::this_thread::sleep_for(50ms);
    const auto meters = [] { return Pactl({"list", "short", "source-outputs"}); };
    EXPECT_EQ(meters(), "");
    // Looks at the meter as often as the dialog does.
    const auto settle = [this] {
        DWORD level = 0;
        for (int i = 0; i < 12; ++i) {
            level = Value(m_peak);
            std::this_thread::sleep_for(50ms);
        }
        return static_cast<double>(level);
    };
    PlayTone();
    EXPECT_NEAR(settle(), 16000, 200);
    EXPECT_NE(meters(), "");
    SetValue(m_mixer, m_waveVolume, 32768);
    std::this_thread::sleep_for(100ms);
    PlayTone();
    EXPECT_NEAR(settle(), 16000 / 8.0, 100) << "half of the way is an eighth of the amplitude";
    waveOutReset(m_wave);
    EXPECT_EQ(settle(), 0) << "silence";
    CloseWave();
    EXPECT_EQ(Value(m_peak), 0U);
    OpenWave();
    EXPECT_TRUE(Eventually([&] {
        Value(m_peak);
        std::this_thread::sleep_for(20ms);
        return meters().find("float") != std::string::npos;
    })) << "a meter on the new stream";
    EXPECT_TRUE(Eventually([&] { return meters().empty(); })) << "closed when nobody reads";

    PlayTone();
    const double before = watch::ProcessorMs();
    settle();
    const double used = (watch::ProcessorMs() - before) / 600 * 100;
    std::printf("processor, playing with the meter read: %.2f %% of a core\n", used);
    EXPECT_LT(used, 10);
}

TEST_F(PulseMixer, FollowsTheDefaultSink) {
    Start();
    // The other sink is as loud: its name alone is news.
    Pactl({"load-module", "module-null-sink", "sink_name=other",
           "sink_properties=device.description=Elsewhere"});
    ASSERT_EQ(Value(m_masterVolume), 65535U);
    TakePosted();
    Pactl({"set-default-sink", "other"});
    ASSERT_TRUE(Announced(m_masterVolume));
    MIXERCAPS caps;
    ASSERT_EQ(mixerGetDevCaps(reinterpret_cast<UINT_PTR>(m_mixer), &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_STREQ(caps.szPname, "Elsewhere");
    EXPECT_EQ(Value(m_masterVolume), 65535U);

    // The default goes away, then the last sink does.
    Pactl({"unload-module", "module-null-sink"});
    DWORD value = 77;
    EXPECT_TRUE(Eventually([&] { return GetValue(m_mixer, m_masterVolume, value) == MMSYSERR_NODRIVER; }));
    EXPECT_EQ(SetValue(m_mixer, m_masterVolume, 1), MMSYSERR_NODRIVER);
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    Pactl({"load-module", "module-null-sink", "sink_name=third"});
    TakePosted();
    EXPECT_TRUE(Eventually([&] { return GetValue(m_mixer, m_masterVolume, value) == MMSYSERR_NOERROR; }));
}

TEST_F(PulseMixer, AServerThatEndsStopsAnsweringOrReturns) {
    Start();
    DWORD value = 0;
    m_server->Freeze();
    double worst = 0;
    for (int i = 0; i < 200; ++i) {
        const Clock::time_point before = Clock::now();
        SetValue(m_mixer, m_masterVolume, static_cast<DWORD>(i));
        SetValue(m_mixer, m_waveMute, static_cast<DWORD>(i % 2));
        GetValue(m_mixer, m_masterVolume, value);
        GetValue(m_mixer, m_peak, value);
        worst = std::max(worst, watch::Ms(Clock::now() - before));
    }
    std::printf("worst four mixer calls on a stopped server: %.2f ms\n", worst);
    EXPECT_LT(worst, 200);

    m_server->Kill();
    EXPECT_TRUE(Eventually([&] { return GetValue(m_mixer, m_masterVolume, value) == MMSYSERR_NODRIVER; }));
    value = 77;
    EXPECT_EQ(GetValue(m_mixer, m_peak, value), MMSYSERR_NOERROR);
    EXPECT_EQ(value, 0U) << "nothing sounds";
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    m_server = std::make_unique<PrivateServer>();
    TakePosted();
    // Reading the meter, as the open dialog does, finds the server again.
    EXPECT_TRUE(Eventually(
        [&] {
            GetValue(m_mixer, m_peak, value);
            return GetValue(m_mixer, m_masterVolume, value) == MMSYSERR_NOERROR;
        },
        4s));
    EXPECT_TRUE(Announced(m_masterVolume));
    EXPECT_EQ(Value(m_masterVolume), 65535U);

    End();
    m_server->Freeze();
    UseSystemSound();
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    EXPECT_LT(watch::Ms(Clock::now() - before), 1200);
}

}  // namespace
