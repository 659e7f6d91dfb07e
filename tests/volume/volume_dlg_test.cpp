// The volume dialog on a simulated mixer, with the toolkit's real sliders and boxes.
#include <unistd.h>

#include <QApplication>
#include <QSlider>
#include <QTest>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/sound/simulated_mixer_driver.h"
#include "playback/player_messages.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "volume/volume_dlg.h"

namespace {

using ui_test::Modal;
using ui_test::Pump;
using ui_test::WithModal;
using Driver = SimulatedMixerDriver;

// Stands for the wave device's window.
class Parent : public CDialog {
public:
    Parent() { Create(IDD_PLAYER_DIALOG); }
    int m_nClosed = 0;

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT OnVolumeClosed(WPARAM, LPARAM) {
        ++m_nClosed;
        return 0;
    }
};

BEGIN_MESSAGE_MAP(Parent, CDialog)
ON_MESSAGE(WM_VOLUME_CLOSED, OnVolumeClosed)
END_MESSAGE_MAP()

// A folder that is the whole PATH, with volume programs that write down that they were started.
class Programs {
public:
    Programs()
        : m_folder(std::filesystem::temp_directory_path() / ("trv-volume-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(m_folder);
        setenv("PATH", m_folder.c_str(), 1);
    }
    ~Programs() {
        setenv("PATH", m_before.c_str(), 1);
        std::filesystem::remove_all(m_folder);
    }
    void Add(const std::string& name) {
        const auto path = m_folder / name;
        std::ofstream(path) << "#!/bin/sh\necho \"" << name << " $*\" >>" << (m_folder / "started") << "\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    void Remove(const std::string& name) { std::filesystem::remove(m_folder / name); }
    // What the next one started was, with its words.
    std::string Started() {
        std::string line;
        for (int i = 0; i < 500 && line.empty(); ++i) {
            std::ifstream file(m_folder / "started");
            std::getline(file, line);
            if (line.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::filesystem::remove(m_folder / "started");
        return line;
    }
    bool NoneStarted() const { return !std::filesystem::exists(m_folder / "started"); }

private:
    std::filesystem::path m_folder;
    std::string m_before = std::getenv("PATH");
};

class VolumeDlg : public testing::Test {
protected:
    VolumeDlg() { SetMixerDriver(m_driver); }
    ~VolumeDlg() override {
        m_dlg.reset();
        SetMixerDriver(nullptr);
    }

    void Make() {
        m_dlg = std::make_unique<CVolumeDlg>(&m_parent);
        m_dlg->Create();
        Pump();
    }
    CSliderCtrl& Slider(int id) { return *static_cast<CSliderCtrl*>(m_dlg->GetDlgItem(id)); }
    CButton& Box(int id) { return *static_cast<CButton*>(m_dlg->GetDlgItem(id)); }
    bool Enabled(int id) { return m_dlg->GetDlgItem(id)->IsWindowEnabled() != FALSE; }
    std::string Text(int id) {
        CString text;
        m_dlg->GetDlgItem(id)->GetWindowText(text);
        return text.Str();
    }
    // The toolkit's slider that stands for a volume, in the dialog that is shown.
    QSlider* SliderAt(int volume) {
        for (QWidget* widget : QApplication::allWidgets()) {
            auto* slider = qobject_cast<QSlider*>(widget);
            if (slider != nullptr && slider->isVisible() && slider->value() == volume) return slider;
        }
        return nullptr;
    }
    // How many rows of the meter are lit.
    int LitRows() {
        CWnd* meter = m_dlg->GetDlgItem(IDC_LEVEL_METER);
        meter->UpdateWindow();
        CRect rect;
        meter->GetClientRect(rect);
        const CClientDC dc(meter);
        int rows = 0;
        for (int y = 0; y < rect.Height(); ++y) rows += dc.GetPixel(1, y) != RGB(0xC0, 0xC0, 0xC0) ? 1 : 0;
        return rows;
    }

    std::shared_ptr<Driver> m_driver = std::make_shared<Driver>();
    Parent m_parent;
    std::unique_ptr<CVolumeDlg> m_dlg;
};

TEST_F(VolumeDlg, ShowsWhatTheMixerHasAndSwitchesItsMutesOff) {
    m_driver->SetName("Built-in Audio");
    m_driver->Change(Driver::kMasterMute, 1);
    m_driver->Change(Driver::kWaveMute, 1);
    Make();
    EXPECT_FALSE(m_dlg->IsWindowVisible());
    EXPECT_EQ(Text(IDC_MIXER_NAME), "Built-in Audio");
    EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), 65535 - 40000);
    EXPECT_EQ(Slider(IDC_WAVE_VOLUME).GetPos(), 65535 - 50000);
    EXPECT_EQ(m_driver->Value(Driver::kMasterMute), 0U);
    EXPECT_EQ(m_driver->Value(Driver::kWaveMute), 0U);
    EXPECT_EQ(Box(IDC_MASTER_MUTE).GetCheck(), 0);
    EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), 0);
    for (const char* name : {"Master Volume", "Master Volume, Mute", "Speakers Volume",
                             "Speakers Volume, Mute", "Speakers Level"})
        EXPECT_TRUE(ui_test::HasControlNamed(name)) << name;
}

TEST_F(VolumeDlg, WhatIsMissingIsDisabledAndStaysUntouched) {
    constexpr int kControls[] = {IDC_MASTER_VOLUME, IDC_MASTER_MUTE, IDC_WAVE_VOLUME, IDC_WAVE_MUTE,
                                 IDC_LEVEL_METER};
    struct Case {
        const char* name;
        void (*make)(Driver&);
        unsigned enabled;
    };
    constexpr Case kCases[] = {
        {"no master volume", [](Driver& d) { d.RemoveControl(Driver::kMasterVolume); }, 0b11110},
        {"no master mute", [](Driver& d) { d.RemoveControl(Driver::kMasterMute); }, 0b11101},
        {"no wave volume", [](Driver& d) { d.RemoveControl(Driver::kWaveVolume); }, 0b11011},
        {"no wave mute", [](Driver& d) { d.RemoveControl(Driver::kWaveMute); }, 0b10111},
        {"wave output elsewhere", [](Driver& d) { d.DisconnectWaveFromSpeakers(); }, 0b01111},
        {"no lines", [](Driver& d) { d.RemoveLine(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS); }, 0b00000},
    };
    for (const Case& test : kCases) {
        SCOPED_TRACE(test.name);
        m_driver = std::make_shared<Driver>();
        test.make(*m_driver);
        SetMixerDriver(m_driver);
        Make();
        for (unsigned i = 0; i < std::size(kControls); ++i)
            EXPECT_EQ(Enabled(kControls[i]), (test.enabled >> i & 1U) != 0) << kControls[i];
        m_dlg->Show();
        QTest::qWait(120);
        // An id that no control has, and 0, which a control that was not found has.
        for (const LPARAM id : {99, 0}) SendMessage(m_dlg->GetSafeHwnd(), MM_MIXM_CONTROL_CHANGE, 0, id);
        EXPECT_EQ(Box(IDC_MASTER_MUTE).GetCheck() + Box(IDC_WAVE_MUTE).GetCheck(), 0);
    }
}

TEST_F(VolumeDlg, FollowsOtherProgramsShownOrHidden) {
    Make();
    for (const bool shown : {false, true, false}) {
        if (shown) {
            m_dlg->Show();
        } else {
            m_dlg->Hide();
        }
        const DWORD volume = shown ? 65535 : 0;
        m_driver->Change(Driver::kMasterVolume, volume);
        m_driver->Change(Driver::kWaveVolume, volume + (shown ? 0U : 7U));
        m_driver->Change(Driver::kMasterMute, shown ? 1 : 0);
        m_driver->Change(Driver::kWaveMute, shown ? 0 : 1);
        Pump();
        EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), shown ? 0 : 65535);
        EXPECT_EQ(Slider(IDC_WAVE_VOLUME).GetPos(), shown ? 0 : 65535 - 7);
        EXPECT_EQ(Box(IDC_MASTER_MUTE).GetCheck(), shown ? 1 : 0);
        EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), shown ? 0 : 1);
    }
    const unsigned writes = m_driver->Writes();
    m_driver->Change(Driver::kMasterVolume, 12345);
    Pump();
    EXPECT_EQ(m_driver->Writes(), writes) << "what is only followed is not written back";
}

TEST_F(VolumeDlg, AReadThatFailsLeavesWhatIsShown) {
    Make();
    m_driver->SetReadResult(MMSYSERR_NODRIVER);
    m_driver->Change(Driver::kMasterVolume, 1);
    m_driver->Change(Driver::kWaveMute, 1);
    m_dlg->Show();
    QTest::qWait(120);
    EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), 65535 - 40000);
    EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), 0);
    EXPECT_EQ(LitRows(), 0);
}

TEST_F(VolumeDlg, TheTopOfASliderIsLoudestAndTheKeysGoThatWay) {
    Make();
    m_dlg->Show();
    QSlider* master = SliderAt(40000);
    QSlider* wave = SliderAt(50000);
    ASSERT_TRUE(master != nullptr && wave != nullptr);
    const struct {
        Qt::Key key;
        int direction;  // of the volume; 2 all the way
    } keys[] = {{Qt::Key_Up, 1},        {Qt::Key_Down, -1}, {Qt::Key_PageUp, 1},
                {Qt::Key_PageDown, -1}, {Qt::Key_Home, 2},  {Qt::Key_End, -2}};
    for (QSlider* slider : {master, wave}) {
        const DWORD control = slider == master ? Driver::kMasterVolume : Driver::kWaveVolume;
        for (const auto& [key, direction] : keys) {
            m_driver->Change(control, 30000);
            Pump();
            QTest::keyClick(slider, key);
            const DWORD value = m_driver->Value(control);
            const bool all = direction == 2 ? value == 65535 : direction != -2 || value == 0;
            EXPECT_TRUE(all && (value > 30000) == (direction > 0) && value != 30000)
                << key << " gives " << value;
        }
    }
    // Dragged, it writes as it goes.
    master->setSliderDown(true);
    master->setSliderPosition(111);
    EXPECT_EQ(m_driver->Value(Driver::kMasterVolume), 111U);
    master->setSliderDown(false);
    EXPECT_EQ(m_driver->Value(Driver::kWaveVolume), 0U) << "the other slider stays";
}

TEST_F(VolumeDlg, TheBoxesMute) {
    Make();
    const struct {
        int box;
        DWORD control;
    } boxes[] = {{IDC_MASTER_MUTE, Driver::kMasterMute}, {IDC_WAVE_MUTE, Driver::kWaveMute}};
    for (const auto& [box, control] : boxes) {
        for (const int check : {1, 0}) {
            Box(box).SetCheck(check);
            SendMessage(m_dlg->GetSafeHwnd(), WM_COMMAND, static_cast<WPARAM>(box), 0);
            EXPECT_EQ(m_driver->Value(control), static_cast<DWORD>(check));
            EXPECT_EQ(
                m_driver->Value(control == Driver::kMasterMute ? Driver::kWaveMute : Driver::kMasterMute),
                0U);
        }
    }
}

TEST_F(VolumeDlg, TheMeterRunsExactlyWhileTheDialogIsShown) {
    Make();
    const auto reads_grow = [&] {
        const unsigned before = m_driver->Reads();
        QTest::qWait(150);
        return m_driver->Reads() > before;
    };
    EXPECT_FALSE(reads_grow());
    m_driver->Change(Driver::kWavePeak, static_cast<DWORD>(-32768));
    m_dlg->Show();
    EXPECT_TRUE(reads_grow());
    const int full = LitRows();
    CRect rect;
    m_dlg->GetDlgItem(IDC_LEVEL_METER)->GetClientRect(rect);
    EXPECT_GT(full, rect.Height() * 8 / 10) << "the lowest reading is as loud as can be";
    m_driver->Change(Driver::kWavePeak, 16384);
    QTest::qWait(120);
    EXPECT_NEAR(LitRows(), full / 2, full / 10 + 1);
    m_driver->Change(Driver::kWavePeak, 0);
    QTest::qWait(120);
    EXPECT_EQ(LitRows(), 0);
    m_dlg->Hide();
    EXPECT_FALSE(reads_grow());
}

TEST_F(VolumeDlg, ItsCloseBoxHidesItAndTellsTheParent) {
    Make();
    m_dlg->Show();
    EXPECT_TRUE(m_dlg->IsWindowVisible());
    m_dlg->Hide();
    EXPECT_EQ(m_parent.m_nClosed, 0);
    m_dlg->Show();
    SendMessage(m_dlg->GetSafeHwnd(), WM_SYSCOMMAND, SC_CLOSE, 0);
    Pump();
    EXPECT_EQ(m_parent.m_nClosed, 1);
    EXPECT_TRUE(IsWindow(m_dlg->GetSafeHwnd()));
    EXPECT_FALSE(m_dlg->IsWindowVisible());
    m_dlg->Show();
    EXPECT_TRUE(m_dlg->IsWindowVisible());
}

TEST_F(VolumeDlg, TheFirstVolumeProgramThatThereIsIsStarted) {
    Programs programs;
    Make();
    const char* const order[] = {"SndVol32.exe", "pavucontrol-qt", "pavucontrol", "gnome-control-center"};
    for (const char* name : order) programs.Add(name);
    for (const char* name : order) {
        SendMessage(m_dlg->GetSafeHwnd(), WM_COMMAND, IDC_SYSTEM_VOLUME, 0);
        const std::string words = std::string(name) == "gnome-control-center" ? " sound" : " ";
        EXPECT_EQ(programs.Started(), name + words);
        programs.Remove(name);
    }
    const Modal box = WithModal([&] { SendMessage(m_dlg->GetSafeHwnd(), WM_COMMAND, IDC_SYSTEM_VOLUME, 0); });
    EXPECT_EQ(box.title, "Trivelle Message Player");
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
}

TEST_F(VolumeDlg, WithoutAMixerTheVolumeProgramTakesItsPlace) {
    m_driver->SetCount(0);
    Programs programs;
    programs.Add("pavucontrol");
    Make();
    EXPECT_EQ(programs.Started(), "pavucontrol ");
    m_dlg->Show();
    EXPECT_EQ(programs.Started(), "pavucontrol ");
    EXPECT_FALSE(m_dlg->IsWindowVisible());
    m_dlg->Hide();
    EXPECT_TRUE(programs.NoneStarted());
}

TEST_F(VolumeDlg, WithoutMixerAndProgramTheBoxComesAfterTheStart) {
    m_driver->SetOpenResult(MMSYSERR_NODRIVER);
    const Programs programs;
    bool made = false;
    const Modal box = WithModal([&] {
        m_dlg = std::make_unique<CVolumeDlg>(&m_parent);
        m_dlg->Create();
        made = true;
        Pump();
    });
    EXPECT_TRUE(made);
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
    // The player may end under it.
    WithModal([&] { m_dlg->Show(); }, [&](const Modal&) { m_dlg.reset(); });
}

}  // namespace
