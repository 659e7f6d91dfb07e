// The main window's states, titles and buttons, with the real panel and a simulated sound card.
#include <unistd.h>

#include <QApplication>
#include <QFileDialog>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/framework/drop_files.h"
#include "platform/sound/simulated_mixer_driver.h"
#include "playback/player_messages.h"
#include "res/resource.h"
#include "tests/app/app_test.h"

namespace {

using app_test::HasControlNamed;
using app_test::Modal;
using app_test::Pump;
using app_test::Sample;
using app_test::WithModal;

constexpr const char* kTitle = "Trivelle Message Player";
constexpr const char* kVoiceTitle = "Trivelle Message Player - greeting-voice.trv";
constexpr const char* kVideoTitle = "Trivelle Message Player - greeting-video.trv";

class PlayerDlg : public app_test::PlayerTest {};

enum class Step { OpenVoice, OpenVideo, OpenMissing, PlayPause, ButtonPlay, Stop, ButtonStop, Close, Ended };

struct StateCase {
    const char* name;
    std::vector<Step> steps;
    const char* title;
    const char* face;
    bool sounds;  // blocks go to the sound card
};

const StateCase kStates[] = {
    {"empty", {}, kTitle, "Play", false},
    {"empty: nothing to play, stop or close",
     {Step::PlayPause, Step::Stop, Step::Close},
     kTitle,
     "Play",
     false},
    {"opened", {Step::OpenVoice}, kVoiceTitle, "Pause", true},
    {"paused", {Step::OpenVideo, Step::PlayPause}, kVideoTitle, "Play", false},
    {"resumed by the button",
     {Step::OpenVoice, Step::PlayPause, Step::ButtonPlay},
     kVoiceTitle,
     "Pause",
     true},
    {"stopped", {Step::OpenVoice, Step::ButtonStop}, kVoiceTitle, "Play", false},
    {"played again", {Step::OpenVoice, Step::Stop, Step::PlayPause}, kVoiceTitle, "Pause", true},
    {"ended", {Step::OpenVoice, Step::Ended}, kVoiceTitle, "Play", false},
    {"another message", {Step::OpenVoice, Step::OpenVideo}, kVideoTitle, "Pause", true},
    {"another message while paused",
     {Step::OpenVideo, Step::PlayPause, Step::OpenVoice},
     kVoiceTitle,
     "Pause",
     true},
    {"closed", {Step::OpenVoice, Step::Close}, kTitle, "Play", false},
    {"closed: Play/Pause is dead", {Step::OpenVoice, Step::Close, Step::PlayPause}, kTitle, "Play", false},
    {"a missing one while one plays", {Step::OpenVoice, Step::OpenMissing}, kTitle, "Play", false},
    {"a missing one: Play/Pause is dead",
     {Step::OpenVoice, Step::OpenMissing, Step::PlayPause},
     kTitle,
     "Play",
     false},
    {"opened after a missing one", {Step::OpenMissing, Step::OpenVoice}, kVoiceTitle, "Pause", true},
};

TEST_F(PlayerDlg, EachWayToEachState) {
    for (const StateCase& test : kStates) {
        SCOPED_TRACE(test.name);
        for (const Step step : test.steps) {
            switch (step) {
                case Step::OpenVoice:
                    m_pDlg->OpenMessage(CString(Sample("greeting-voice.trv")));
                    break;
                case Step::OpenVideo:
                    m_pDlg->OpenMessage(CString(Sample("greeting-video.trv")));
                    break;
                case Step::OpenMissing:
                    WithModal([&] { m_pDlg->OpenMessage("/gone.trv"); });
                    break;
                case Step::PlayPause:
                    Command(ID_PLAY_PLAYPAUSE);
                    break;
                case Step::ButtonPlay:
                    Command(IDC_PLAY_PAUSE);
                    break;
                case Step::Stop:
                    Command(ID_PLAY_STOP);
                    break;
                case Step::ButtonStop:
                    Command(IDC_STOP);
                    break;
                case Step::Close:
                    Command(ID_FILE_CLOSE);
                    break;
                case Step::Ended:
                    SendMessage(m_hWnd, WM_PLAYBACK_ENDED, 0, 0);
                    break;
            }
        }
        EXPECT_EQ(Title(), test.title);
        EXPECT_EQ(Face(), test.face);
        const std::size_t before = m_sound->HeardCount();
        // The reader fills the queue up to where the card starts, and from then on time is heard.
        for (int i = 0; i < 200 && m_sound->HeardCount() == before; ++i) {
            Play(20);
            if (test.sounds) Sleep(5);
            if (!test.sounds && i == 20) break;
        }
        EXPECT_EQ(m_sound->HeardCount() > before, test.sounds);
        Command(ID_FILE_CLOSE);
    }
}

TEST_F(PlayerDlg, AtItsEndAMessageCanBePlayedAgain) {
    m_pDlg->OpenMessage(CString(Sample("greeting-voice.trv")));
    for (int round = 0; round < 2; ++round) {
        m_sound->ForgetHeard();
        for (int i = 0; i < 20000 && Face() == "Pause"; ++i) Play(20);
        EXPECT_EQ(Face(), "Play");
        EXPECT_EQ(Title(), kVoiceTitle);
        EXPECT_GE(m_sound->HeardCount(), 540U * 160U);
        Command(ID_PLAY_PLAYPAUSE);
        EXPECT_EQ(Face(), "Pause");
    }
}

TEST_F(PlayerDlg, TheTitleNamesWhatFollowsTheLastSlash) {
    const auto folder = std::filesystem::temp_directory_path() / ("trv-title-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    for (const char* name : {"hello.trv", "with\\backslash.trv", "two words.trv", "grüße.trv"}) {
        std::filesystem::copy_file(Sample("greeting-voice.trv"), folder / name);
        m_pDlg->OpenMessage(CString((folder / name).string()));
        EXPECT_EQ(Title(), std::string(kTitle) + " - " + name);
    }
    std::filesystem::current_path(folder);
    m_pDlg->OpenMessage("hello.trv");
    EXPECT_EQ(Title(), std::string(kTitle) + " - hello.trv");
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
}

TEST_F(PlayerDlg, AFailureNamesThePath) {
    const Modal box = WithModal([&] { m_pDlg->OpenMessage("/no/such.trv"); });
    EXPECT_EQ(box.title, kTitle);
    EXPECT_EQ(box.text, "Cannot open file /no/such.trv.");
    // A path is data, not a format.
    EXPECT_EQ(WithModal([&] { m_pDlg->OpenMessage("/%s%n.trv"); }).text, "Cannot open file /%s%n.trv.");
}

TEST_F(PlayerDlg, WithoutASoundCardItPlaysAllTheSame) {
    m_sound->SetOpenResult(MMSYSERR_ALLOCATED);
    const Modal box = WithModal([&] { m_pDlg->OpenMessage(CString(Sample("greeting-video.trv"))); });
    EXPECT_EQ(box.title, kTitle);
    EXPECT_EQ(box.text,
              "Cannot open audio device.\nNote that if you are connected with Trivelle,\nthe audio device is "
              "captured by Trivelle.");
    EXPECT_EQ(Title(), kVideoTitle);
    EXPECT_EQ(Face(), "Pause");
}

TEST_F(PlayerDlg, WithoutAMixerTheNamedMessagePlaysBeforeTheBoxComes) {
    // This one made its volume dialog already; its end is not the application's.
    AfxGetApp()->m_pMainWnd = nullptr;
    m_pDlg->DestroyWindow();
    const auto mixer = std::make_shared<SimulatedMixerDriver>();
    mixer->SetCount(0);
    SetMixerDriver(mixer);
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/no/volume/program", 1);
    m_pDlg = new CPlayerDlg;
    m_hWnd = m_pDlg->GetSafeHwnd();
    AfxGetApp()->m_pMainWnd = m_pDlg;
    m_pDlg->ShowWindow(SW_SHOW);
    m_pDlg->OpenMessage(CString(Sample("greeting-voice.trv")));
    const Modal box = WithModal([] { Pump(); },
                                [&](const Modal& up) {
                                    EXPECT_EQ(Title(), kVoiceTitle);
                                    EXPECT_EQ(Face(), "Pause");
                                    for (int i = 0; i < 100 && m_sound->HeardCount() == 0; ++i) {
                                        Sleep(5);
                                        m_sound->Advance(20);
                                    }
                                    EXPECT_GT(m_sound->HeardCount(), 0U);
                                    up.close();
                                });
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
    setenv("PATH", path.c_str(), 1);
}

TEST_F(PlayerDlg, TheOpenDialogChoosesAMessageOrNothing) {
    const auto choose = [](const Modal&) {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->selectFile(QString::fromStdString(Sample("greeting-voice.trv")));
        dialog->metaObject()->invokeMethod(dialog, "accept");
    };
    EXPECT_EQ(WithModal([&] { Command(ID_FILE_OPEN); }, choose).title, "Open Trivelle Message...");
    EXPECT_EQ(Title(), kVoiceTitle);
    WithModal([&] { Command(ID_FILE_OPEN); });
    EXPECT_EQ(Title(), kVoiceTitle);
    EXPECT_EQ(Face(), "Pause");
}

TEST_F(PlayerDlg, TheVolumeButtonTogglesWithTheDialog) {
    const std::string open = "Open Audio Volume Controls";
    const std::string close = "Close Audio Volume Controls";
    EXPECT_TRUE(HasControlNamed(open));
    Command(IDC_VOLUME);
    EXPECT_TRUE(HasControlNamed(close));
    EXPECT_FALSE(HasControlNamed(open));
    Command(IDC_VOLUME);
    EXPECT_TRUE(HasControlNamed(open));
    Command(IDC_VOLUME);
    SendMessage(m_hWnd, WM_VOLUME_CLOSED, 0, 0);
    EXPECT_TRUE(HasControlNamed(open));
    EXPECT_FALSE(HasControlNamed(close));
}

TEST_F(PlayerDlg, SystemCommandsButMaximizeAreTheWindows) {
    SendMessage(m_hWnd, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
    EXPECT_FALSE(m_pDlg->IsIconic());
    SendMessage(m_hWnd, WM_SYSCOMMAND, SC_MINIMIZE, 0);
    Pump();
    EXPECT_TRUE(m_pDlg->IsIconic());
    SendMessage(m_hWnd, WM_SYSCOMMAND, SC_RESTORE, 0);
    Pump();
    EXPECT_FALSE(m_pDlg->IsIconic());
    SendMessage(m_hWnd, WM_SYSCOMMAND, SC_CLOSE, 0);
    Pump();
    EXPECT_FALSE(IsWindow(m_hWnd));
}

TEST_F(PlayerDlg, ExitClosesWhatPlays) {
    m_pDlg->OpenMessage(CString(Sample("greeting-video.trv")));
    Play(500);
    Command(ID_FILE_EXIT);
    Pump();
    EXPECT_FALSE(IsWindow(m_hWnd));
    EXPECT_FALSE(m_sound->IsOpen());
    EXPECT_EQ(AfxGetApp()->m_pMainWnd, nullptr);
}

TEST_F(PlayerDlg, EnterAndEscapeReachNoWindow) {
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE, VK_SPACE}) {
        MSG message{m_hWnd, WM_KEYDOWN, key, 0};
        EXPECT_EQ(AfxGetApp()->PreTranslateMessage(&message) != FALSE, key != VK_SPACE);
    }
    MSG other{m_hWnd, WM_COMMAND, VK_RETURN, 0};
    EXPECT_FALSE(AfxGetApp()->PreTranslateMessage(&other));
}

TEST_F(PlayerDlg, ADroppedMessageOpensAsIfChosen) {
    const auto drop = [&](std::vector<std::string> paths) {
        const DroppedFiles files{std::move(paths)};
        SendMessage(m_hWnd, WM_DROPFILES, reinterpret_cast<WPARAM>(&files), 0);
    };
    drop({});
    EXPECT_EQ(Title(), kTitle);
    drop({Sample("greeting-voice.trv"), Sample("greeting-video.trv")});
    EXPECT_EQ(Title(), kVoiceTitle);
    EXPECT_EQ(Face(), "Pause");
    WithModal([&] { m_pDlg->OpenMessage("/gone.trv"); },
              [&](const Modal& box) {
                  drop({Sample("greeting-video.trv")});
                  EXPECT_NE(Title(), kVideoTitle);
                  box.close();
              });
    EXPECT_EQ(Title(), kTitle);
    drop({Sample("greeting-video.trv")});
    EXPECT_EQ(Title(), kVideoTitle);
}

// What a newer player sends arrives whatever is up; everything that was on its way must notice.
TEST_F(PlayerDlg, ClosedUnderAModalWindowNothingTouchesIt) {
    const struct {
        const char* name;
        std::function<void()> action;
    } cases[] = {
        {"About", [&] { Command(ID_HELP_ABOUT); }},
        {"Open", [&] { Command(ID_FILE_OPEN); }},
        {"cannot open", [&] { m_pDlg->OpenMessage("/gone.trv"); }},
        {"no sound card",
         [&] {
             m_sound->SetOpenResult(MMSYSERR_NODRIVER);
             m_pDlg->OpenMessage(CString(Sample("greeting-video.trv")));
         }},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        WithModal(test.action, [&](const Modal&) { ::PostMessage(m_hWnd, WM_CLOSE, 0, 0); });
        Pump();
        EXPECT_FALSE(IsWindow(m_hWnd));
        m_sound->SetOpenResult(MMSYSERR_NOERROR);
        SetUp();
    }
}

TEST_F(PlayerDlg, ManyRoundsOfPostedCommands) {
    for (int round = 0; round < 500; ++round) {
        m_pDlg->OpenMessage(CString(Sample(round % 2 == 0 ? "greeting-voice.trv" : "greeting-video.trv")));
        const UINT commands[] = {ID_PLAY_PLAYPAUSE, ID_PLAY_PLAYPAUSE, ID_PLAY_STOP, ID_PLAY_PLAYPAUSE};
        for (const UINT command : commands) {
            ::PostMessage(m_hWnd, WM_COMMAND, command, 0);
            m_sound->Advance(30);
            if (round % 3 == 0) Pump();
        }
        if (round % 5 != 0) ::PostMessage(m_hWnd, WM_COMMAND, ID_FILE_CLOSE, 0);
        Pump();
    }
    Command(ID_FILE_CLOSE);
    EXPECT_EQ(Title(), kTitle);
    EXPECT_FALSE(m_sound->IsOpen());
}

}  // namespace
