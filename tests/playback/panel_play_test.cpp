// Playing to the end, with every interruption; what is heard is compared sample for sample.
#include <set>

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

TEST_F(PanelPlay, ReadsAheadNoFurtherThanTheQueueTakes) {
    ASSERT_TRUE(Open(MessageBuilder(0, 600).Speech(60)));
    Panel().Play();
    WaitForReader();
    EXPECT_EQ(m_sound->BlocksWritten(), 240U);
    ASSERT_TRUE(Hear(1));
    WaitForReader();
    EXPECT_EQ(m_sound->BlocksWritten(), 250U);
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

TEST_F(PanelPlay, PauseHoldsEverythingAndPlayGoesOn) {
    const MessageBuilder message = MessageBuilder(0, 400).Speech(40);
    const std::vector<int16_t> all = message.Samples();
    ASSERT_TRUE(Open(message));
    Panel().Play();
    ASSERT_TRUE(Hear(100));
    Panel().Pause();
    m_sound->Advance(5000);
    HeadlessToolkit::PumpFor(20);
    EXPECT_EQ(m_sound->Heard(), Part(all, 0, 100));
    EXPECT_EQ(Text(IDC_CURRENT), "00 mins, 2.0 secs ");
    Panel().Pause();
    Panel().Play();
    Panel().Play();
    ASSERT_TRUE(Hear(50));
    EXPECT_EQ(Text(IDC_CURRENT), "00 mins, 3.0 secs ");

    // Three blocks are heard and not counted yet when Pause and Play come back to back: they come again.
    m_sound->ForgetHeard();
    WaitForReader();
    m_sound->Advance(60);
    Panel().Pause();
    Panel().Play();
    HeadlessToolkit::Pump();
    EXPECT_EQ(Text(IDC_CURRENT), "00 mins, 3.0 secs ");
    ASSERT_TRUE(HearToTheEnd());
    std::vector<int16_t> expected = Part(all, 150, 153);
    const std::vector<int16_t> rest = Part(all, 150, 400);
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(m_sound->Heard(), expected);
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

TEST_F(PanelPlay, StopThenPlayStartsOver) {
    const MessageBuilder message = MessageBuilder(0, 300).Speech(30);
    ASSERT_TRUE(Open(message));
    Panel().Play();
    ASSERT_TRUE(Hear(70));
    Panel().Pause();
    Panel().Stop();
    Panel().Stop();
    EXPECT_EQ(Text(IDC_CURRENT), "");

    // Once more with notifications still under way.
    Panel().Play();
    WaitForReader();
    m_sound->Advance(100);
    Panel().Stop();
    Panel().Play();
    ASSERT_TRUE(WaitForSound());
    HeadlessToolkit::Pump();
    EXPECT_EQ(Text(IDC_CURRENT), "");
    m_sound->ForgetHeard();
    ASSERT_TRUE(HearToTheEnd());
    EXPECT_EQ(BlocksHeard(), 300);
    EXPECT_EQ(m_main->ended, 1);
}

TEST_F(PanelPlay, AnotherMessageWhileOnePlays) {
    const MessageBuilder first = MessageBuilder(3, 400).Picture().Speech(40);
    const MessageBuilder second = MessageBuilder(0, 30).Bytes({9, 9}).Speech(3);
    for (const bool paused : {false, true}) {
        SCOPED_TRACE(paused);
        m_main->ended = 0;
        ASSERT_TRUE(Open(first, "first.trv"));
        Panel().Play();
        ASSERT_TRUE(Hear(30));
        m_sound->Advance(200);  // notifications of the first message that the second must not count
        if (paused) Panel().Pause();
        ASSERT_TRUE(Open(second, "second.trv"));
        EXPECT_EQ(Text(IDC_TOTAL), "00 mins, 0.6 secs ");
        m_sound->ForgetHeard();
        Panel().Play();
        ASSERT_TRUE(WaitForSound());
        HeadlessToolkit::PumpFor(20);
        EXPECT_EQ(m_main->ended, 0);
        EXPECT_EQ(Text(IDC_CURRENT), "");
        ASSERT_TRUE(HearToTheEnd());
        EXPECT_EQ(m_sound->Heard(), second.Samples());
        EXPECT_EQ(m_main->ended, 1);
    }
}

// A stretch of pictures without speech keeps the reader waiting while the sound runs dry.
TEST_F(PanelPlay, SoundThatRunsDryBeforeTheMessageIsReadIsNotTheEnd) {
    MessageBuilder message(5, 60);
    message.Speech(3);
    for (int i = 0; i < 22; ++i) message.Picture();
    message.Speech(3);
    ASSERT_TRUE(Open(message));
    Panel().Play();
    ASSERT_TRUE(Hear(30));
    HeadlessToolkit::PumpFor(50);
    EXPECT_EQ(m_main->ended, 0);
    ASSERT_TRUE(HearToTheEnd());
    EXPECT_EQ(m_sound->Heard(), message.Samples());
    EXPECT_EQ(m_main->ended, 1);
}

TEST_F(PanelPlay, MessageWithoutSpeechEndsToo) {
    ASSERT_TRUE(Open(MessageBuilder(0, 0)));
    Panel().Play();
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return m_main->ended == 1; }));

    ASSERT_TRUE(Open(MessageBuilder(5, 0).Picture().Picture()));
    Panel().Play();
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return !m_toolkit.Timers().empty(); }));
    // The two pictures are shown at their pace, and the end waits for them.
    std::set<COLORREF> shown;
    for (int i = 0; i < 3; ++i) {
        m_toolkit.FireTimers();
        EXPECT_EQ(m_main->ended, 1);
        // A pause puts it off.
        Panel().Pause();
        EXPECT_TRUE(m_toolkit.Timers().empty());
        Panel().Play();
        EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return !m_toolkit.Timers().empty(); }));
        shown.insert(MidPixel());
        HeadlessToolkit::PumpFor(250);
    }
    EXPECT_GE(shown.size(), 2U);
    m_toolkit.FireTimers();
    EXPECT_EQ(m_main->ended, 1);
    m_toolkit.FireTimers();
    EXPECT_EQ(m_main->ended, 2);
    EXPECT_TRUE(m_toolkit.Timers().empty());
    EXPECT_EQ(MidPixel(), 0U);
}

}  // namespace
