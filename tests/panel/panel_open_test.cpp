// Opening: headers, texts, views, and whatever is not a message.
#include <sys/stat.h>

#include <fstream>

#include "res/resource.h"
#include "tests/panel/player_fixture.h"

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
        ASSERT_TRUE(m_main->panel->Open(m_folder.Path("m.trv")));
        EXPECT_EQ(Text(IDC_TOTAL), text) << count;
        EXPECT_EQ(Text(IDC_CURRENT), "00 mins, 0.0 secs ");
        m_main->panel->Stop();
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
    m_main->panel->Close();
    ExpectNoMessage();
    m_main->panel->Close();
    ExpectNoMessage();
}

TEST_F(PanelOpen, RefusesWhatIsNoMessageAndClosesTheOneBefore) {
    const std::string file = m_folder.Path("m.trv");
    const auto write = [&](std::string bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    };
    using namespace std::string_literals;
    const std::pair<const char*, std::function<std::string()>> cases[] = {
        {"absent", [&] { return m_folder.Path("absent.trv"); }},
        {"empty path", [] { return ""s; }},
        {"empty", [&] { return write(""); }},
        {"seven bytes", [&] { return write("TRV01.0"); }},
        {"lower case", [&] { return write("trv01.01\0\0\0\0\0"s); }},
        {"other version", [&] { return write("TRV01.02\0\0\0\0\0"s); }},
        {"no rate", [&] { return write("TRV01.01"); }},
        {"rate 6", [&] { return write("TRV01.01\6\0\0\0\0"s); }},
        {"rate 255", [&] { return write("TRV01.01\xFF\0\0\0\0"s); }},
        {"no count", [&] { return write("TRV01.01\0"s); }},
        {"cut count", [&] { return write("TRV01.01\3\0\0\0"s); }},
        {"directory",
         [&] {
             mkdir(m_folder.Path("folder.trv").c_str(), 0700);
             return m_folder.Path("folder.trv");
         }},
        {"pipe without a writer",
         [&] {
             mkfifo(m_folder.Path("pipe.trv").c_str(), 0600);
             return m_folder.Path("pipe.trv");
         }},
        {"device", [] { return "/dev/zero"s; }},
    };
    const int threads = Threads();
    for (const auto& [name, path] : cases) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(Open(MessageBuilder(3, 500).Picture().Speech(50), "good.trv"));
        m_main->panel->Play();
        ASSERT_TRUE(Hear(5));
        EXPECT_FALSE(m_main->panel->Open(path()));
        ExpectNoMessage();
        EXPECT_EQ(Threads(), threads) << "a reader or a pacing thread is left";
        // Nothing is open, so these do nothing.
        m_main->panel->Play();
        m_main->panel->Pause();
        m_main->panel->Stop();
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
    const HeadlessToolkit::Box& box = m_toolkit.boxes.front();
    EXPECT_EQ(box.text,
              "Cannot open audio device.\nNote that if you are connected with Trivelle,\n"
              "the audio device is captured by Trivelle.");
    EXPECT_EQ(box.caption, "Trivelle Message Player");
    EXPECT_TRUE(box.error);

    m_main->panel->Play();
    const HWND renderer = ChildOfFrame(2);
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return Pixel(renderer, 160, 120) != 0; }));
    WaitForReader();
    m_toolkit.FireTimers();
    EXPECT_EQ(Text(IDC_CURRENT), "") << "nothing is heard, so no time passes";
    EXPECT_EQ(m_main->ended, 0);
    m_main->panel->Close();
    ExpectNoMessage();

    // The next message finds a device again.
    m_sound->SetOpenResult(MMSYSERR_NOERROR);
    ASSERT_TRUE(Open(message));
    m_main->panel->Play();
    EXPECT_TRUE(HearToTheEnd());
}

TEST_F(PanelOpen, ClosedWhileTheBoxIsUp) {
    m_sound->SetOpenResult(MMSYSERR_NODRIVER);
    m_toolkit.duringBox = [this] { m_main->panel->Close(); };
    EXPECT_FALSE(Open(MessageBuilder(0, 10).Speech(1)));
    ExpectNoMessage();

    m_toolkit.duringBox = [this] { m_main->DestroyWindow(); };
    EXPECT_FALSE(Open(MessageBuilder(0, 10).Speech(1)));
    EXPECT_EQ(m_main->panel, nullptr);
}

}  // namespace
