// SPDX-License-Identifier: MIT
// Opening: headers, texts, views, and whatever is not a message.
#include <sys/stat.h>

#include "res/resource.h"
#include "tests/playback/player_fixture.h"

namespace {

constexpr int kControls[] = {IDC_POSITION_BAR, IDC_PICTURE_FRAME,   IDC_TOTAL_CAPTION,
                             IDC_TOTAL,        IDC_CURRENT_CAPTION, IDC_CURRENT};

class PanelOpen : public PlayerTest {
protected:
    void ExpectNoMessage() {
        for (const int control : kControls) EXPECT_FALSE(IsShown(control)) << control;
        EXPECT_EQ(Text(IDC_TOTAL), "");
        EXPECT_FALSE(m_sound->IsOpen());
    }
};

TEST_F(PanelOpen, ShowsTheTotalTimeOfTheHeader) {
    const std::pair<uint32_t, const char*> cases[] = {
        {0, "00 mins, 0.0 secs "},    {1500, "00 mins, 30.0 secs "}, {2999, "00 mins, 60.0 secs "},
        {3000, "01 mins, 0.0 secs "}, {4500, "01 mins, 30.0 secs "}, {540, "00 mins, 10.8 secs "},
        {512, "00 mins, 10.2 secs "},
    };
    for (const auto& [count, text] : cases) {
        MessageBuilder(0, count).Write(m_folder.Path("m.trv"));
        ASSERT_TRUE(Panel().Open(m_folder.Path("m.trv")));
        EXPECT_EQ(Text(IDC_TOTAL), text) << count;
        EXPECT_EQ(Text(IDC_CURRENT), "00 mins, 0.0 secs ");
        Panel().Stop();
        EXPECT_EQ(Text(IDC_CURRENT), "");
    }
    // Single precision has no seconds left here, but the count is still a message's.
    ASSERT_TRUE(Open(MessageBuilder(0, 4294967295U).Speech(1)));
    EXPECT_EQ(Text(IDC_TOTAL).substr(0, 13), "1431655 mins,");
}

TEST_F(PanelOpen, ShowsWhatTheMessageIs) {
    ExpectNoMessage();
    for (const int rate : {0, 3, 5, 0}) {
        SCOPED_TRACE(rate);
        ASSERT_TRUE(Open(MessageBuilder(rate, 10).Speech(1)));
        for (const int control : kControls) EXPECT_TRUE(IsShown(control)) << control;
        EXPECT_EQ(CWnd::FromHandle(ChildOfFrame(0))->IsWindowVisible(), rate == 0);
        EXPECT_EQ(CWnd::FromHandle(ChildOfFrame(2))->IsWindowVisible(), rate != 0);
    }
    Panel().Close();
    ExpectNoMessage();
    Panel().Close();
    ExpectNoMessage();
}

TEST_F(PanelOpen, RefusesWhatIsNoMessageAndClosesTheOneBefore) {
    const std::pair<const char*, std::vector<uint8_t>> files[] = {
        {"empty", {}},
        {"version", {'T', 'R', 'V', '0', '1', '.', '0', '2', 0, 0, 0, 0, 0}},
        {"rate", MessageBuilder(6).Data()},
        {"count", MessageBuilder(3).CutBy(1).Data()},
    };
    std::vector<std::string> paths = {"", "/dev/zero", m_folder.Path("absent"), m_folder.Path().string()};
    for (const auto& [name, bytes] : files) {
        paths.push_back(m_folder.Path(name));
        WriteBytes(paths.back(), bytes);
    }
    paths.push_back(m_folder.Path("pipe without a writer"));
    ASSERT_EQ(mkfifo(paths.back().c_str(), 0600), 0);

    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        ASSERT_TRUE(Open(MessageBuilder(3, 500).Picture().Speech(50), "good.trv"));
        Panel().Play();
        ASSERT_TRUE(Hear(5));
        EXPECT_FALSE(Panel().Open(path));
        ExpectNoMessage();
        EXPECT_TRUE(NoThreadIsLeft()) << "a reader or a pacing thread is left";
        // Nothing is open, so these do nothing.
        Panel().Play();
        Panel().Pause();
        Panel().Stop();
        ExpectNoMessage();
    }
    EXPECT_EQ(m_main->ended, 0);
    EXPECT_TRUE(m_toolkit.boxes.empty());
}

TEST_F(PanelOpen, PlaysPicturesWhenThereIsNoSoundDevice) {
    m_sound->SetOpenResult(MMSYSERR_ALLOCATED);
    MessageBuilder message(5, 30);
    for (int i = 0; i < 3; ++i) message.Picture().Speech(1);
    ASSERT_TRUE(Open(message));
    ASSERT_EQ(m_toolkit.boxes.size(), 1U);
    EXPECT_TRUE(m_toolkit.boxes.front().text.starts_with("Cannot open audio device.\n"));
    EXPECT_TRUE(m_toolkit.boxes.front().error);

    Panel().Play();
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return MidPixel() != 0; }));
    WaitForReader();
    m_toolkit.FireTimers();
    EXPECT_EQ(Text(IDC_CURRENT), "") << "nothing is heard, so no time passes";
    EXPECT_EQ(m_main->ended, 0);
    Panel().Close();
    ExpectNoMessage();

    // The next message finds a device again.
    m_sound->SetOpenResult(MMSYSERR_NOERROR);
    ASSERT_TRUE(Open(message));
    Panel().Play();
    EXPECT_TRUE(HearToTheEnd());
}

TEST_F(PanelOpen, ClosedWhileTheBoxIsUp) {
    m_sound->SetOpenResult(MMSYSERR_NODRIVER);
    m_toolkit.duringBox = [this] { Panel().Close(); };
    EXPECT_FALSE(Open(MessageBuilder(0, 10).Speech(1)));
    ExpectNoMessage();

    m_toolkit.duringBox = [this] { m_main->DestroyWindow(); };
    EXPECT_FALSE(Open(MessageBuilder(0, 10).Speech(1)));
    EXPECT_EQ(m_main->panel, nullptr);
}

}  // namespace
