// The volume dialog on a simulated mixer, with the toolkit's real sliders and boxes.
#include <QSlider>
#include <QTest>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/simulated_sound.h"
#include "tests/support/test_files.h"
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
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_VOLUME_CLOSED) ++m_nClosed;
        return CDialog::WindowProc(message, wParam, lParam);
    }
};

// A folder that is the whole PATH, with volume programs that write down that they were started.
class Programs {
public:
    Programs() { setenv("PATH", m_folder.Path().c_str(), 1); }
    ~Programs() { setenv("PATH", m_before.c_str(), 1); }
    void Add(const std::string& name) {
        const std::string path = m_folder.Path(name);
        std::ofstream(path) << "#!/bin/sh\necho \"" << name << " $*\" >>" << m_started << "\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    void Remove(const std::string& name) { std::filesystem::remove(m_folder.Path(name)); }
    // What the next one started was, with its words.
    std::string Started() {
        std::string line;
        ui_test::PumpUntil([&] { return std::getline(std::ifstream(m_started), line) && !line.empty(); });
        std::filesystem::remove(m_started);
        return line;
    }
    bool NoneStarted() const { return !std::filesystem::exists(m_started); }

private:
    TestFolder m_folder;
    std::string m_started = m_folder.Path("started");
    std::string m_before = std::getenv("PATH");
};

class VolumeDlg : public testing::Test, protected SimulatedSound {
protected:
    void Make() {
        m_dlg = std::make_unique<CVolumeDlg>(&m_parent);
        m_dlg->Create();
        Pump();
    }
    CSliderCtrl& Slider(int id) { return *static_cast<CSliderCtrl*>(m_dlg->GetDlgItem(id)); }
    CButton& Box(int id) { return *static_cast<CButton*>(m_dlg->GetDlgItem(id)); }
    // Presses a key on a slider of the toolkit.
    void Press(int id, Qt::Key key) { QTest::keyClick(WidgetOf(Slider(id).m_hWnd), key); }
    void Command(int id) { SendMessage(m_dlg->GetSafeHwnd(), WM_COMMAND, static_cast<WPARAM>(id), 0); }
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

    Parent m_parent;
    std::unique_ptr<CVolumeDlg> m_dlg;
};

TEST_F(VolumeDlg, ShowsWhatTheMixerHasAndSwitchesItsMutesOff) {
    m_mixer->SetName("Built-in Audio");
    m_mixer->Change(Driver::kMasterMute, 1);
    m_mixer->Change(Driver::kWaveMute, 1);
    Make();
    EXPECT_FALSE(m_dlg->IsWindowVisible());
    EXPECT_EQ(ui_test::TextOf(*m_dlg->GetDlgItem(IDC_MIXER_NAME)), "Built-in Audio");
    EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), 65535 - 40000);
    EXPECT_EQ(Slider(IDC_WAVE_VOLUME).GetPos(), 65535 - 50000);
    EXPECT_EQ(m_mixer->Value(Driver::kMasterMute), 0U);
    EXPECT_EQ(m_mixer->Value(Driver::kWaveMute), 0U);
    EXPECT_EQ(Box(IDC_MASTER_MUTE).GetCheck(), 0);
    EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), 0);
    for (const char* name : {"Master Volume", "Master Volume, Mute", "Speakers Volume",
                             "Speakers Volume, Mute", "Speakers Level"})
        EXPECT_TRUE(ui_test::HasControlNamed(name)) << name;
}

TEST_F(VolumeDlg, WhatIsMissingIsDisabledAndStaysUntouched) {
    constexpr int kControls[] = {IDC_MASTER_VOLUME, IDC_MASTER_MUTE, IDC_WAVE_VOLUME, IDC_WAVE_MUTE,
                                 IDC_LEVEL_METER};
    constexpr DWORD kIds[] = {Driver::kMasterVolume, Driver::kMasterMute, Driver::kWaveVolume,
                              Driver::kWaveMute, Driver::kWavePeak};
    // One of the five in turn, then the wave output's meter as it lies elsewhere, then all.
    for (unsigned missing = 0; missing < 7; ++missing) {
        SCOPED_TRACE(missing);
        SetMixerDriver(m_mixer = std::make_shared<Driver>());
        if (missing < 5) m_mixer->RemoveControl(kIds[missing]);
        if (missing == 5) m_mixer->DisconnectWaveFromSpeakers();
        if (missing == 6) m_mixer->RemoveLine(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS);
        Make();
        for (unsigned i = 0; i < 5; ++i) {
            const bool gone = missing == 6 || i == std::min(missing, 4U);
            EXPECT_EQ(m_dlg->GetDlgItem(kControls[i])->IsWindowEnabled() != FALSE, !gone) << i;
        }
        m_dlg->Show();
        ui_test::PumpFor(120);
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
        m_mixer->Change(Driver::kMasterVolume, volume);
        m_mixer->Change(Driver::kWaveVolume, volume + (shown ? 0U : 7U));
        m_mixer->Change(Driver::kMasterMute, shown ? 1 : 0);
        m_mixer->Change(Driver::kWaveMute, shown ? 0 : 1);
        Pump();
        EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), shown ? 0 : 65535);
        EXPECT_EQ(Slider(IDC_WAVE_VOLUME).GetPos(), shown ? 0 : 65535 - 7);
        EXPECT_EQ(Box(IDC_MASTER_MUTE).GetCheck(), shown ? 1 : 0);
        EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), shown ? 0 : 1);
    }
    const unsigned writes = m_mixer->Writes();
    m_mixer->Change(Driver::kMasterVolume, 12345);
    Pump();
    EXPECT_EQ(m_mixer->Writes(), writes) << "what is only followed is not written back";
}

TEST_F(VolumeDlg, AReadThatFailsLeavesWhatIsShown) {
    Make();
    m_mixer->SetReadResult(MMSYSERR_NODRIVER);
    m_mixer->Change(Driver::kMasterVolume, 1);
    m_mixer->Change(Driver::kWaveMute, 1);
    m_dlg->Show();
    ui_test::PumpFor(120);
    EXPECT_EQ(Slider(IDC_MASTER_VOLUME).GetPos(), 65535 - 40000);
    EXPECT_EQ(Box(IDC_WAVE_MUTE).GetCheck(), 0);
    EXPECT_EQ(LitRows(), 0);
}

TEST_F(VolumeDlg, TheTopOfASliderIsLoudestAndTheKeysGoThatWay) {
    Make();
    m_dlg->Show();
    const struct {
        Qt::Key key;
        int direction;  // of the volume; 2 all the way
    } keys[] = {{Qt::Key_Up, 1},   {Qt::Key_Down, -1},  {Qt::Key_PageUp, 1}, {Qt::Key_PageDown, -1},
                {Qt::Key_Left, 1}, {Qt::Key_Right, -1}, {Qt::Key_Home, 2},   {Qt::Key_End, -2}};
    for (const auto& [slider, control] :
         {std::pair(IDC_MASTER_VOLUME, Driver::kMasterVolume), {IDC_WAVE_VOLUME, Driver::kWaveVolume}}) {
        for (const auto& [key, direction] : keys) {
            m_mixer->Change(control, 30000);
            Pump();
            Press(slider, key);
            const DWORD value = m_mixer->Value(control);
            const bool all = direction == 2 ? value == 65535 : direction != -2 || value == 0;
            EXPECT_TRUE(all && (value > 30000) == (direction > 0) && value != 30000)
                << key << " gives " << value;
        }
    }
    // Dragged, it writes as it goes.
    auto* master = qobject_cast<QSlider*>(WidgetOf(Slider(IDC_MASTER_VOLUME).m_hWnd));
    master->setSliderDown(true);
    master->setSliderPosition(111);
    EXPECT_EQ(m_mixer->Value(Driver::kMasterVolume), 111U);
    master->setSliderDown(false);
    EXPECT_EQ(m_mixer->Value(Driver::kWaveVolume), 0U) << "the other slider stays";
}

TEST_F(VolumeDlg, TheBoxesMute) {
    Make();
    m_dlg->Show();
    const auto click = [&](int box) {
        const unsigned writes = m_mixer->Writes();
        QTest::mouseClick(WidgetOf(Box(box).m_hWnd), Qt::LeftButton, {}, QPoint(6, 8));
        EXPECT_EQ(m_mixer->Writes(), writes + 1);
        return std::tuple(Box(box).GetCheck(), m_mixer->Value(Driver::kMasterMute),
                          m_mixer->Value(Driver::kWaveMute));
    };
    EXPECT_EQ(click(IDC_MASTER_MUTE), std::tuple(1, 1U, 0U));
    EXPECT_EQ(click(IDC_MASTER_MUTE), std::tuple(0, 0U, 0U));
    EXPECT_EQ(click(IDC_WAVE_MUTE), std::tuple(1, 0U, 1U));
    EXPECT_EQ(click(IDC_WAVE_MUTE), std::tuple(0, 0U, 0U));
}

TEST_F(VolumeDlg, TheMeterRunsExactlyWhileTheDialogIsShown) {
    Make();
    const auto reads_grow = [&](int milliseconds) {
        const unsigned before = m_mixer->Reads();
        return ui_test::PumpUntil([&] { return m_mixer->Reads() > before; }, milliseconds);
    };
    EXPECT_FALSE(reads_grow(150));
    m_mixer->Change(Driver::kWavePeak, static_cast<DWORD>(-32768));
    m_dlg->Show();
    EXPECT_TRUE(reads_grow(5000));
    const int full = LitRows();
    CRect rect;
    m_dlg->GetDlgItem(IDC_LEVEL_METER)->GetClientRect(rect);
    EXPECT_GT(full, rect.Height() * 8 / 10) << "the lowest reading is as loud as can be";
    m_mixer->Change(Driver::kWavePeak, 16384);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return std::abs(LitRows() - full / 2) <= full / 10 + 1; }))
        << LitRows();
    m_mixer->Change(Driver::kWavePeak, 0);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return LitRows() == 0; })) << LitRows();
    m_dlg->Hide();
    EXPECT_FALSE(reads_grow(150));
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
        Command(IDC_SYSTEM_VOLUME);
        const std::string words = std::string(name) == "gnome-control-center" ? " sound" : " ";
        EXPECT_EQ(programs.Started(), name + words);
        programs.Remove(name);
    }
    const Modal box = WithModal([&] { Command(IDC_SYSTEM_VOLUME); });
    EXPECT_EQ(box.title, "Trivelle Message Player");
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
}

TEST_F(VolumeDlg, WithoutAMixerTheVolumeProgramTakesItsPlace) {
    m_mixer->SetCount(0);
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
    m_mixer->SetOpenResult(MMSYSERR_NODRIVER);
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
