// SPDX-License-Identifier: MIT
// The main window's states, titles and buttons, with the real panel and a simulated sound card.
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QListWidget>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "app/player_app.h"
#include "app/player_dlg.h"
#include "platform/framework/drop_files.h"
#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/simulated_sound.h"
#include "tests/support/test_files.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::HasControlNamed;
using ui_test::Modal;
using ui_test::Pump;
using ui_test::WithModal;

constexpr const char* kTitle = "Trivelle Message Player";
constexpr const char* kVoiceTitle = "Trivelle Message Player - greeting-voice.trv";
constexpr const char* kVideoTitle = "Trivelle Message Player - greeting-video.trv";

class PlayerDlg : public testing::Test, protected SimulatedSound {
protected:
    void SetUp() override {
        // The main window of the test before has ended the message loop: only a loop that was run is over
        // that.
        QTimer::singleShot(0, [] { QCoreApplication::exit(); });
        QApplication::exec();
        Show();
        Pump();
    }
    void TearDown() override {
        if (IsWindow(m_hWnd)) m_pDlg->DestroyWindow();
        Pump();
    }

    void Show() {
        m_pDlg = new CPlayerDlg;
        m_hWnd = m_pDlg->GetSafeHwnd();
        ASSERT_TRUE(IsWindow(m_hWnd));
        m_app.m_pMainWnd = m_pDlg;
        m_pDlg->ShowWindow(SW_SHOW);
    }
    void Open(const std::string& path) { m_pDlg->OpenMessage(CString(path)); }
    void Command(UINT id) { SendMessage(m_hWnd, WM_COMMAND, id, 0); }
    // Lets the sound run on, a block at a time; the reader refills the queue whenever one is counted back.
    void Play(int milliseconds) {
        for (; milliseconds > 0; milliseconds -= 20) {
            Pump();
            std::this_thread::yield();
            m_sound->Advance(20);
            Pump();
        }
    }
    // Whether sound is heard. The reader fills the queue up to where the card starts; from then on it is.
    bool Sounds(int attempts) {
        const std::size_t before = m_sound->HeardCount();
        for (int i = 0; i < attempts && m_sound->HeardCount() == before; ++i) {
            Play(20);
            ui_test::PumpFor(5);
        }
        return m_sound->HeardCount() > before;
    }
    std::string Title() const { return ui_test::TextOf(*m_pDlg); }
    // What button 1000 offers.
    static std::string Face() {
        const bool play = HasControlNamed("Play");
        return play == HasControlNamed("Pause") ? "neither or both" : play ? "Play" : "Pause";
    }

    CPlayerApp m_app;
    CPlayerDlg* m_pDlg = nullptr;
    HWND m_hWnd = nullptr;
};

TEST_F(PlayerDlg, EachWayToEachState) {
    const std::map<char, std::function<void()>> steps = {
        {'v', [&] { Open(Sample("greeting-voice.trv")); }},
        {'w', [&] { Open(Sample("greeting-video.trv")); }},
        {'x', [&] { WithModal([&] { Open("/gone.trv"); }); }},
        {'p', [&] { Command(ID_PLAY_PLAYPAUSE); }},
        {'P', [&] { Command(IDC_PLAY_PAUSE); }},
        {'s', [&] { Command(ID_PLAY_STOP); }},
        {'S', [&] { Command(IDC_STOP); }},
        {'c', [&] { Command(ID_FILE_CLOSE); }},
        {'e', [&] { SendMessage(m_hWnd, WM_PLAYBACK_ENDED, 0, 0); }},
        {'b', [&] { m_sound->Interrupt(WOM_CALL_BEGINS), Pump(); }},
        {'n', [&] { m_sound->Interrupt(WOM_CALL_ENDS), Pump(); }},
        {'u', [&] { m_sound->Interrupt(WOM_UNPLUGGED), Pump(); }},
    };
    const struct {
        const char* name;
        const char* steps;
        const char* title;
        bool plays;
    } cases[] = {
        {"empty: nothing to play, stop or close", "psc", kTitle, false},
        {"opened", "v", kVoiceTitle, true},
        {"paused", "wp", kVideoTitle, false},
        {"resumed by the button", "vpP", kVoiceTitle, true},
        {"stopped", "vS", kVoiceTitle, false},
        {"ended", "ve", kVoiceTitle, false},
        {"another message", "vw", kVideoTitle, true},
        {"closed: Play/Pause is dead", "vcp", kTitle, false},
        {"a missing one while one plays: Play/Pause is dead", "vxp", kTitle, false},
        {"opened after a missing one", "xv", kVoiceTitle, true},
        {"a call", "vb", kVoiceTitle, false},
        {"after the call", "wbn", kVideoTitle, true},
        {"played and paused by the button meanwhile", "vbppn", kVoiceTitle, false},
        {"unplugged", "wu", kVideoTitle, false},
        {"unplugged during a call", "vbun", kVoiceTitle, false},
        {"unplugged while paused", "vpup", kVoiceTitle, true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        for (const char step : std::string(test.steps)) steps.at(step)();
        EXPECT_EQ(Title(), test.title);
        EXPECT_EQ(Face(), test.plays ? "Pause" : "Play");
        EXPECT_EQ(Sounds(test.plays ? 1000 : 20), test.plays);
        Command(ID_FILE_CLOSE);
    }
}

TEST_F(PlayerDlg, TheTitleNamesWhatFollowsTheLastSlash) {
    const TestFolder folder;
    for (const char* name : {"hello.trv", "with\\backslash.trv", "two words.trv", "grüße.trv"}) {
        std::filesystem::copy_file(Sample("greeting-voice.trv"), folder.Path(name));
        Open(folder.Path(name));
        EXPECT_EQ(Title(), std::string(kTitle) + " - " + name);
    }
}

TEST_F(PlayerDlg, AFailureNamesThePath) {
    const Modal box = WithModal([&] { Open("/%s%n.trv"); });  // a path is data, not a format
    EXPECT_EQ(box.title, kTitle);
    EXPECT_EQ(box.text, "Cannot open file /%s%n.trv.");
}

TEST_F(PlayerDlg, WithoutASoundCardItPlaysAllTheSame) {
    m_sound->SetOpenResult(MMSYSERR_ALLOCATED);
    const Modal box = WithModal([&] { Open(Sample("greeting-video.trv")); });
    EXPECT_EQ(box.title, kTitle);
    EXPECT_EQ(box.text,
              "Cannot open audio device.\nNote that if you are connected with Trivelle,\nthe audio device is "
              "captured by Trivelle.");
    EXPECT_EQ(Title(), kVideoTitle);
    EXPECT_EQ(Face(), "Pause");
}

TEST_F(PlayerDlg, WithoutAMixerTheNamedMessagePlaysBeforeTheBoxComes) {
    // The one that is up made its volume dialog already; its end is not the application's.
    m_app.m_pMainWnd = nullptr;
    m_pDlg->DestroyWindow();
    m_mixer->SetCount(0);
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/no/volume/program", 1);
    Show();
    Open(Sample("greeting-voice.trv"));
    const Modal box = WithModal([] { Pump(); },
                                [&](const Modal& up) {
                                    EXPECT_EQ(Title(), kVoiceTitle);
                                    EXPECT_EQ(Face(), "Pause");
                                    EXPECT_TRUE(Sounds(1000));
                                    up.close();
                                });
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
    setenv("PATH", path.c_str(), 1);
}

TEST_F(PlayerDlg, TheOpenDialogChoosesAMessageOrNothing) {
    const auto choose = [](const Modal&) {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        const auto* types = dialog->findChild<QComboBox*>("fileTypeCombo");
        ASSERT_NE(types, nullptr);
        EXPECT_EQ(types->currentText(), "Trivelle Message Files (*.trv)");
        dialog->selectFile(QString::fromStdString(Sample("greeting-voice.trv")));
        dialog->metaObject()->invokeMethod(dialog, "accept");
    };
    EXPECT_EQ(WithModal([&] { Command(ID_FILE_OPEN); }, choose).title, "Open Trivelle Message...");
    EXPECT_EQ(Title(), kVoiceTitle);
    WithModal([&] { Command(ID_FILE_OPEN); });
    EXPECT_EQ(Title(), kVoiceTitle);
    EXPECT_EQ(Face(), "Pause");
}

// The toolkit's own list has no names that are not UTF-8.
TEST_F(PlayerDlg, TheOpenDialogAlsoHasNamesOfOtherEncodings) {
    const TestFolder folder;
    for (const char* name : {"caf\xE9.trv", "gr\xFC\xDF.TRV", "caf\xE9.txt", "gr\xC3\xBC\xC3\x9F.trv"})
        std::filesystem::copy(Sample("greeting-voice.trv"), folder.Path(name));
    Open(folder.Path("gr\xC3\xBC\xC3\x9F.trv"));
    WithModal([&] { Command(ID_FILE_OPEN); },
              [](const Modal&) {
                  QWidget* dialog = QApplication::activeModalWidget();
                  auto* names = dialog->findChild<QListWidget*>();
                  ASSERT_EQ(names->count(), 2);
                  names->item(1)->setSelected(true);
                  names->itemActivated(names->item(1));
              });
    EXPECT_EQ(Title(), std::string(kTitle) + " - gr\xFC\xDF.TRV");
}

TEST_F(PlayerDlg, TheVolumeButtonTogglesWithTheDialog) {
    const std::string open = "Open Audio Volume Controls";
    const std::string close = "Close Audio Volume Controls";
    EXPECT_TRUE(HasControlNamed(open));
    Command(IDC_VOLUME);
    EXPECT_TRUE(HasControlNamed(close));
    EXPECT_FALSE(HasControlNamed(open));
    SendMessage(m_hWnd, WM_VOLUME_CLOSED, 0, 0);
    EXPECT_TRUE(HasControlNamed(open));
    EXPECT_FALSE(HasControlNamed(close));
}

// Only what has a role and a name, in one level below the frame.
TEST_F(PlayerDlg, AssistiveProgramsSeeAFrameOfNamedThings) {
    Open(Sample("greeting-video.trv"));
    Pump();
    QAccessibleInterface* frame = QAccessible::queryAccessibleInterface(WidgetOf(m_hWnd)->window());
    EXPECT_EQ(frame->role(), QAccessible::Window);
    EXPECT_EQ(frame->text(QAccessible::Name).toStdString(), kVideoTitle);
    std::string names;
    std::vector<QAccessible::Role> roles;
    for (int i = 0; i < frame->childCount(); ++i) {
        QAccessibleInterface* child = frame->child(i);
        EXPECT_EQ(child->parent(), frame);
        EXPECT_EQ(frame->indexOfChild(child), i);
        if (child->state().invisible || child->role() == QAccessible::MenuBar) continue;
        roles.push_back(child->role());
        names += child->text(QAccessible::Name).toStdString() + "|";
        if (names.ends_with("10.4 secs |")) {
            EXPECT_EQ(child->relations().value(0).first, frame->child(i - 1)) << "named by its caption";
        }
        if (child->role() == QAccessible::Slider) {
            EXPECT_EQ(child->valueInterface()->maximumValue().toDouble(), 10.4);
            EXPECT_EQ(child->text(QAccessible::Value), "0:00 of 0:10");
        }
    }
    EXPECT_EQ(names,
              "Pause|Stop|Open Audio Volume Controls|Position|Picture|Total:|00 mins, 10.4 secs |Current:||");
    using enum QAccessible::Role;
    EXPECT_EQ(roles, (std::vector<QAccessible::Role>{Button, Button, Button, Slider, Graphic, StaticText,
                                                     StaticText, StaticText, StaticText}));
    frame->child(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(ui_test::PumpUntil([&] { return Face() == "Play"; }));
}

TEST_F(PlayerDlg, KeysChangeThePlayersOwnVolumeAndTheDialogFollows) {
    CMixer mixer(nullptr);
    ASSERT_TRUE(mixer.Open(0) && mixer.FindWaveVolume() && mixer.FindWaveMute());
    mixer.SetWaveVolume(30000);
    Command(IDC_VOLUME);
    QWidget* focused = WidgetOf(m_pDlg->GetDlgItem(IDC_STOP)->GetSafeHwnd());
    QSlider* shown = nullptr;
    for (QWidget* widget : QApplication::allWidgets())
        if (auto* slider = qobject_cast<QSlider*>(widget);
            slider && slider->accessibleName() == "Speakers Volume")
            shown = slider;
    ASSERT_NE(shown, nullptr);
    DWORD volume = 0;
    for (const auto& [key, expected] :
         {std::pair(Qt::Key_Up, 33277U), {Qt::Key_9, 30000U}, {Qt::Key_Down, 26723U}}) {
        QTest::keyClick(focused, key);
        Pump();
        EXPECT_TRUE(mixer.GetWaveVolume(volume));
        EXPECT_EQ(volume, expected);
        EXPECT_EQ(shown->value(), static_cast<int>(expected));
    }
    BOOL mute = FALSE;
    QTest::keyClick(focused, Qt::Key_M);
    EXPECT_TRUE(mixer.GetWaveMute(mute) && mute);
}

TEST_F(PlayerDlg, KeysMoveInTheMessageWhereverTheFocusIs) {
    Open(Sample("greeting-video.trv"));
    const auto widgets = QApplication::allWidgets();
    const auto bar = std::find_if(widgets.begin(), widgets.end(), [](const QWidget* widget) {
        return widget->accessibleName() == "Position";
    });
    ASSERT_NE(bar, widgets.end());
    const auto at = [&] {
        return QAccessible::queryAccessibleInterface(*bar)->valueInterface()->currentValue().toDouble();
    };
    Command(ID_PLAY_PLAYPAUSE);
    QWidget* const button = WidgetOf(m_pDlg->GetDlgItem(IDC_STOP)->GetSafeHwnd());
    for (const auto& [focused, key, seconds] : {std::tuple(*bar, Qt::Key_Right, 5.0),
                                                {button, Qt::Key_Right, 10.0},
                                                {*bar, Qt::Key_Left, 5.0},
                                                {button, Qt::Key_PageUp, 3.96},
                                                {*bar, Qt::Key_Home, 0.0},
                                                {*bar, Qt::Key_PageDown, 1.04}}) {
        QTest::keyClick(focused, key);
        EXPECT_NEAR(at(), seconds, 0.021);
    }
    Command(ID_PLAY_PLAYPAUSE);
    QTest::keyClick(*bar, Qt::Key_Period);
    EXPECT_EQ(Face(), "Play") << "a step pauses";
    QTest::keyClick(*bar, Qt::Key_Space);
    EXPECT_EQ(Face(), "Pause");
}

TEST_F(PlayerDlg, TheTitleShowsASpeedThatIsNotTheMessages) {
    const auto steps = [this](std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key key : keys) QTest::keyClick(WidgetOf(m_hWnd), key);
        return Title();
    };
    Open(Sample("greeting-voice.trv"));
    EXPECT_EQ(steps({Qt::Key_BracketRight}), kVoiceTitle + std::string(" (1.25\u00D7)"));
    Open(Sample("greeting-video.trv"));
    EXPECT_EQ(Title(), kVideoTitle + std::string(" (1.25\u00D7)"));
    EXPECT_EQ(steps({Qt::Key_BracketLeft, Qt::Key_BracketLeft}), kVideoTitle + std::string(" (0.75\u00D7)"));
    Command(ID_FILE_CLOSE);
    EXPECT_EQ(Title(), kTitle + std::string(" (0.75\u00D7)"));
    EXPECT_EQ(steps({Qt::Key_Backspace}), kTitle);
}

// Faults: a size that runs away or is not taken back; a whole screen without a picture; a key or a double
// click that does not lead in or out; Space that presses a button which nobody sees; a picture left over the
// window.
TEST_F(PlayerDlg, TheContentsHaveASizeOfTheirOwnAndThePictureTheWholeScreen) {
    QWidget* window = WidgetOf(m_hWnd)->window();
    const int width = window->width();
    for (int i = 0; i < 20; ++i) Command(ID_VIEW_LARGER);
    EXPECT_EQ(window->width(), width * 3);
    Command(ID_VIEW_SMALLER);
    EXPECT_EQ(window->width(), width * 11 / 4);
    Command(ID_VIEW_ORIGINAL_SIZE);
    Command(ID_VIEW_SMALLER);
    EXPECT_EQ(window->width(), width);

    const auto full = [&] { return window->isFullScreen(); };
    Open(Sample("greeting-voice.trv"));
    Command(ID_VIEW_FULL_SCREEN);
    EXPECT_FALSE(full());
    Open(Sample("greeting-video.trv"));
    QWidget* picture = nullptr;
    for (QWidget* widget : window->findChildren<QWidget*>())
        if (widget->accessibleName() == "Picture") picture = widget;
    ASSERT_NE(picture, nullptr);
    WidgetOf(m_pDlg->GetDlgItem(IDC_STOP)->GetSafeHwnd())->setFocus();
    QTest::mouseDClick(picture, Qt::LeftButton);
    EXPECT_TRUE(full());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(Face(), "Play");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(full());
    Command(ID_VIEW_FULL_SCREEN);
    EXPECT_TRUE(full());
    Open(Sample("greeting-video.trv"));
    EXPECT_TRUE(full()) << "the next one";
    Open(Sample("greeting-voice.trv"));
    EXPECT_FALSE(full()) << "nothing to show";
    Open(Sample("greeting-video.trv"));
    Command(ID_VIEW_FULL_SCREEN);
    Command(ID_FILE_CLOSE);
    EXPECT_FALSE(full());
    EXPECT_EQ(window->width(), width);
}

TEST_F(PlayerDlg, SystemCommandsButMaximizeAreTheWindows) {
    for (const UINT command : {SC_MAXIMIZE, SC_MINIMIZE, SC_RESTORE}) {
        SendMessage(m_hWnd, WM_SYSCOMMAND, command, 0);
        Pump();
        EXPECT_EQ(m_pDlg->IsIconic() != FALSE, command == SC_MINIMIZE);
    }
    SendMessage(m_hWnd, WM_SYSCOMMAND, SC_CLOSE, 0);
    Pump();
    EXPECT_FALSE(IsWindow(m_hWnd));
}

TEST_F(PlayerDlg, ExitClosesWhatPlays) {
    Open(Sample("greeting-video.trv"));
    Play(500);
    Command(ID_FILE_EXIT);
    Pump();
    EXPECT_FALSE(IsWindow(m_hWnd));
    EXPECT_FALSE(m_sound->IsOpen());
}

TEST_F(PlayerDlg, EnterAndEscapeReachNoWindow) {
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE, WPARAM{'X'}}) {
        MSG message{m_hWnd, WM_KEYDOWN, key, 0};
        EXPECT_EQ(m_app.PreTranslateMessage(&message) != FALSE, key != 'X');
    }
}

TEST_F(PlayerDlg, ADroppedMessageOpensAsIfChosen) {
    const auto drop = [&](std::vector<std::string> paths) {
        const DroppedFiles files{std::move(paths)};
        SendMessage(m_hWnd, WM_DROPFILES, reinterpret_cast<WPARAM>(&files), 0);
    };
    drop({});
    drop({Sample("greeting-voice.trv"), Sample("greeting-video.trv")});
    EXPECT_EQ(Title(), kVoiceTitle);
    EXPECT_EQ(Face(), "Pause");
    WithModal([&] { Open("/gone.trv"); },
              [&](const Modal& box) {
                  drop({Sample("greeting-video.trv")});
                  EXPECT_NE(Title(), kVideoTitle);
                  box.close();
              });
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
        {"cannot open", [&] { Open("/gone.trv"); }},
        {"no sound card",
         [&] {
             m_sound->SetOpenResult(MMSYSERR_NODRIVER);
             Open(Sample("greeting-video.trv"));
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

}  // namespace
