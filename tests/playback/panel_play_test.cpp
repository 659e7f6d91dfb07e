// SPDX-License-Identifier: MIT
// Playing to the end, with every interruption; what is heard is compared sample for sample.
#include "res/resource.h"
#include "tests/playback/player_fixture.h"

namespace {

using PanelPlay = PlayerTest;

std::vector<int16_t> Part(const std::vector<int16_t>& samples, int fromBlock, int toBlock) {
    return {samples.begin() + fromBlock * kSpeechFrameSamples,
            samples.begin() + toBlock * kSpeechFrameSamples};
}

TEST_F(PanelPlay, EveryMessageIsHeardWholeEndsAndPlaysAgain) {
    const auto voice = [] { return MessageBuilder(0, 100); };
    const auto video = [] { return MessageBuilder(5, 100); };
    const std::vector<uint8_t> oversized = {1, 0x01, 0x40};
    const std::pair<const char*, MessageBuilder> cases[] = {
        {"voice", voice().Speech(30)},
        {"longer than the queue", voice().Speech(60)},
        {"ten frames", voice().Speech(1)},
        {"twenty frames", voice().Speech(2)},
        {"thirty frames", voice().Speech(3)},
        {"video", video().Picture().Speech(2).Picture().Speech(2)},
        {"stray bytes", voice().Bytes({7}).Speech(1).Bytes({2, 255, 9}).Speech(2).Bytes({3})},
        {"picture in a voice message", voice().Speech(1).Picture().Speech(2)},
        {"picture cut", video().Speech(3).Picture().CutBy(1)},
        {"length cut", video().Speech(3).Bytes({1, 5})},
        {"oversized length", video().Speech(3).Bytes(oversized)},
        {"negative length", video().Speech(3).Bytes({1, 0xFF, 0xFF, 0, 0, 0})},
        {"empty picture", video().Speech(3).Bytes({1, 0, 0}).Speech(1)},
    };
    for (const auto& [name, message] : cases) {
        SCOPED_TRACE(name);
        m_sound->ForgetHeard();
        m_main->ended = 0;
        ASSERT_TRUE(Open(message));
        for (int play = 1; play <= 2; ++play) {
            Panel().Play();
            ASSERT_TRUE(HearToTheEnd());
            EXPECT_EQ(m_main->ended, play);
            EXPECT_EQ(Text(IDC_CURRENT), "");
            EXPECT_EQ(m_sound->Heard(), message.Samples(play));
        }
    }

    // What follows an oversized length, and a block that is cut, is not played.
    for (auto message : {voice().Speech(3).Bytes(oversized).Speech(1), voice().Speech(4).CutBy(1)}) {
        m_sound->ForgetHeard();
        ASSERT_TRUE(Open(message));
        Panel().Play();
        ASSERT_TRUE(HearToTheEnd());
        EXPECT_EQ(m_sound->Heard(), Part(message.Samples(), 0, 30));
    }
}

TEST_F(PanelPlay, TimeFollowsTheSoundHeard) {
    ASSERT_TRUE(Open(MessageBuilder(0, 3010).Speech(301)));
    Panel().Play();
    EXPECT_EQ(Text(IDC_CURRENT), "");
    const std::pair<int, const char*> cases[] = {
        {1, "00 mins, 0.0 secs "},     {50, "00 mins, 1.0 secs "},   {1500, "00 mins, 30.0 secs "},
        {2999, "00 mins, 60.0 secs "}, {3000, "01 mins, 0.0 secs "},
    };
    int heard = 0;
    for (const auto& [blocks, text] : cases) {
        ASSERT_TRUE(Hear(blocks - heard));
        heard = blocks;
        EXPECT_EQ(Text(IDC_CURRENT), text) << blocks;
    }
}

TEST_F(PanelPlay, PauseHoldsSoundThatDrains) {
    for (const int left : {50, 22, 21, 5, 1}) {
        SCOPED_TRACE(left);
        m_sound->ForgetHeard();
        m_main->ended = 0;
        const MessageBuilder message = MessageBuilder(0, 100).Speech(10);
        ASSERT_TRUE(Open(message));
        Panel().Play();
        WaitForReader();
        ASSERT_TRUE(Hear(100 - left));
        const std::string time = Text(IDC_CURRENT);
        Panel().Pause();
        m_sound->Advance(3000);
        HeadlessToolkit::PumpFor(10);
        EXPECT_EQ(BlocksHeard(), 100 - left);
        EXPECT_EQ(Text(IDC_CURRENT), time);
        EXPECT_EQ(m_main->ended, 0);
        Panel().Play();
        ASSERT_TRUE(HearToTheEnd());
        EXPECT_EQ(m_sound->Heard(), message.Samples());
    }
}

// Silence takes the sound's place, so that the clock goes on.
TEST_F(PanelPlay, StretchesWithoutSpeechAreFilledWithSilence) {
    const auto pictures = [](MessageBuilder message, int count) {
        for (int i = 0; i < count; ++i) message.Picture();
        return message;
    };
    // Frames of silence within and after the speech. Speech lags at most 16 pictures of 10 frames behind.
    const struct {
        const char* name;
        MessageBuilder message;
        int before, at, after;
    } cases[] = {
        {"as far behind as may be", pictures(MessageBuilder(5, 0), 16).Speech(2), 0, 0, 150},
        {"one more", pictures(MessageBuilder(5, 0), 17).Speech(2), 0, 10, 150},
        {"within", pictures(MessageBuilder(5, 0).Speech(3), 22).Speech(3), 30, 30, 140},
        {"outlasts by a period", pictures(MessageBuilder(5, 0).Speech(1), 2), 0, 0, 0},
        {"outlasts by more", pictures(MessageBuilder(5, 0).Speech(1), 5), 10, 0, 50},
        {"no speech", pictures(MessageBuilder(5, 0), 3), 0, 0, 40},
        {"no speech, long", pictures(MessageBuilder(5, 0), 40), 0, 0, 410},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_sound->ForgetHeard();
        m_main->ended = 0;
        ASSERT_TRUE(Open(c.message));
        Panel().Play();
        ASSERT_TRUE(HearToTheEnd());
        std::vector<int16_t> expected = c.message.Samples();
        const auto silence = [](int frames) {
            return std::vector<int16_t>(size_t(frames) * kSpeechFrameSamples);
        };
        const std::vector<int16_t> within = silence(c.at);
        expected.insert(expected.begin() + c.before * kSpeechFrameSamples, within.begin(), within.end());
        const std::vector<int16_t> after = silence(c.after);
        expected.insert(expected.end(), after.begin(), after.end());
        EXPECT_EQ(m_sound->Heard().size() / kSpeechFrameSamples, expected.size() / kSpeechFrameSamples);
        EXPECT_EQ(m_sound->Heard(), expected);
    }
    ASSERT_TRUE(Open(MessageBuilder(0, 0)));
    Panel().Play();
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return m_main->ended == 2; }))
        << "an empty message ends at once";
}

}  // namespace
