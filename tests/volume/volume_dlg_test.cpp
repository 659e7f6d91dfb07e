// SPDX-License-Identifier: MIT
// The volume dialog on a simulated mixer, with the toolkit's real sliders and boxes.
#include "volume/volume_dlg.h"

#include <QSlider>
#include <QTest>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/simulated_sound.h"
#include "tests/support/test_files.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::Modal;
using ui_test::Pump;
using ui_test::WithModal;

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
    int Checked(int id) { return static_cast<CButton*>(m_dlg->GetDlgItem(id))->GetCheck(); }
    void Command(int id) { SendMessage(m_dlg->GetSafeHwnd(), WM_COMMAND, static_cast<WPARAM>(id), 0); }
    // Volumes as the sliders show them, and the boxes.
    std::tuple<int, int, int, int> Shown() {
        return {65535 - Slider(IDC_MASTER_VOLUME).GetPos(), Checked(IDC_MASTER_MUTE),
                65535 - Slider(IDC_WAVE_VOLUME).GetPos(), Checked(IDC_WAVE_MUTE)};
    }
    // How many of ten rows of the meter are lit.
    int LitTenths() {
        CWnd* meter = m_dlg->GetDlgItem(IDC_LEVEL_METER);
        meter->UpdateWindow();
        CRect rect;
        meter->GetClientRect(rect);
        const CClientDC dc(meter);
        int rows = 0;
        for (int y = 0; y < rect.Height(); ++y) rows += dc.GetPixel(1, y) != RGB(0xC0, 0xC0, 0xC0) ? 1 : 0;
        return (rows * 10 + rect.Height() / 2) / rect.Height();
    }

    Parent m_parent;
    std::unique_ptr<CVolumeDlg> m_dlg;
};

TEST_F(VolumeDlg, ShowsWhatTheMixerHasSwitchesItsMutesOffAndFollowsOtherPrograms) {
    m_mixer->SetName("Built-in Audio");
    m_mixer->Change(kMasterMute, 1);
    m_mixer->Change(kWaveMute, 1);
    Make();
    EXPECT_FALSE(m_dlg->IsWindowVisible());
    EXPECT_EQ(ui_test::TextOf(*m_dlg->GetDlgItem(IDC_MIXER_NAME)), "Built-in Audio");
    EXPECT_EQ(Shown(), std::tuple(40000, 0, 50000, 0));
    EXPECT_EQ(m_mixer->Value(kMasterMute) + m_mixer->Value(kWaveMute), 0U);
    for (const char* name : {"Master Volume", "Master Volume, Mute", "Speakers Volume",
                             "Speakers Volume, Mute", "Speakers Level"})
        EXPECT_TRUE(ui_test::HasControlNamed(name)) << name;

    const unsigned writes = m_mixer->Writes();
    for (const bool visible : {false, true}) {
        if (visible) m_dlg->Show();
        m_mixer->Change(kMasterVolume, visible ? 65535 : 0);
        m_mixer->Change(kMasterMute, visible ? 1 : 0);
        m_mixer->Change(kWaveVolume, visible ? 7 : 65528);
        m_mixer->Change(kWaveMute, visible ? 0 : 1);
        Pump();
        EXPECT_EQ(Shown(), visible ? std::tuple(65535, 1, 7, 0) : std::tuple(0, 0, 65528, 1));
    }
    EXPECT_EQ(m_mixer->Writes(), writes) << "what is only followed is not written back";

    m_mixer->SetResult(MMSYSERR_NODRIVER);
    m_mixer->Change(kMasterVolume, 1);
    m_mixer->Change(kWaveMute, 1);
    ui_test::PumpFor(120);
    EXPECT_EQ(Shown(), std::tuple(65535, 1, 7, 0)) << "a read that fails leaves what is shown";
}

TEST_F(VolumeDlg, WhatIsMissingIsDisabledAndStaysUntouched) {
    constexpr int kControls[] = {IDC_MASTER_VOLUME, IDC_MASTER_MUTE, IDC_WAVE_VOLUME, IDC_WAVE_MUTE,
                                 IDC_LEVEL_METER};
    // The wave output's meter as it lies elsewhere, one of the five in turn, then all.
    for (const unsigned missing : {1U, 2U, 4U, 8U, 16U, 32U, 62U}) {
        SCOPED_TRACE(missing);
        m_mixer->SetMissing(missing);
        Make();
        for (unsigned i = 0; i < 5; ++i) {
            const bool gone = (missing >> (i + 1) & 1U) != 0 || (i == 4 && missing == 1);
            EXPECT_EQ(m_dlg->GetDlgItem(kControls[i])->IsWindowEnabled() != FALSE, !gone) << i;
        }
        m_dlg->Show();
        ui_test::PumpFor(60);
        // An id that no control has, and 0, which a control that was not found has.
        for (const LPARAM id : {99, 0}) SendMessage(m_dlg->GetSafeHwnd(), MM_MIXM_CONTROL_CHANGE, 0, id);
        EXPECT_EQ(Checked(IDC_MASTER_MUTE) + Checked(IDC_WAVE_MUTE), 0);
    }
}

TEST_F(VolumeDlg, TheTopOfASliderIsLoudestTheKeysGoThatWayAndTheBoxesMute) {
    Make();
    m_dlg->Show();
    const std::pair<Qt::Key, int> keys[] = {// and the direction of the volume; 2 all the way
                                            {Qt::Key_Up, 1},        {Qt::Key_Down, -1}, {Qt::Key_PageUp, 1},
                                            {Qt::Key_PageDown, -1}, {Qt::Key_Left, 1},  {Qt::Key_Right, -1},
                                            {Qt::Key_Home, 2},      {Qt::Key_End, -2}};
    for (const auto& [slider, control] :
         {std::pair(IDC_MASTER_VOLUME, kMasterVolume), {IDC_WAVE_VOLUME, kWaveVolume}}) {
        for (const auto& [key, direction] : keys) {
            m_mixer->Change(control, 30000);
            Pump();
            QTest::keyClick(WidgetOf(Slider(slider).m_hWnd), key);
            const DWORD value = m_mixer->Value(control);
            const bool all = direction == 2 ? value == 65535 : direction != -2 || value == 0;
            EXPECT_TRUE(all && (value > 30000) == (direction > 0) && value != 30000)
                << key << " leads to " << value;
        }
    }
    // Dragged, it writes as it goes.
    auto* master = qobject_cast<QSlider*>(WidgetOf(Slider(IDC_MASTER_VOLUME).m_hWnd));
    master->setSliderDown(true);
    master->setSliderPosition(111);
    EXPECT_EQ(m_mixer->Value(kMasterVolume), 111U);
    EXPECT_EQ(m_mixer->Value(kWaveVolume), 0U) << "the other slider stays";

    for (const auto& [box, control] : {std::pair(IDC_MASTER_MUTE, kMasterMute), {IDC_WAVE_MUTE, kWaveMute}}) {
        for (const unsigned muted : {1U, 0U}) {
            const unsigned writes = m_mixer->Writes();
            QTest::mouseClick(WidgetOf(m_dlg->GetDlgItem(box)->m_hWnd), Qt::LeftButton, {}, QPoint(6, 8));
            EXPECT_EQ(m_mixer->Writes(), writes + 1);
            EXPECT_EQ(m_mixer->Value(control), muted);
            EXPECT_EQ(m_mixer->Value(kMasterMute) + m_mixer->Value(kWaveMute), muted);
        }
    }
}

TEST_F(VolumeDlg, TheMeterRunsWhileTheDialogIsShownWhichItsCloseBoxEnds) {
    Make();
    const auto reads_grow = [&](int milliseconds) {
        const unsigned before = m_mixer->Reads();
        return ui_test::PumpUntil([&] { return m_mixer->Reads() > before; }, milliseconds);
    };
    EXPECT_FALSE(reads_grow(150));
    m_mixer->Change(kWavePeak, static_cast<DWORD>(-32768));
    m_dlg->Show();
    EXPECT_TRUE(m_dlg->IsWindowVisible());
    EXPECT_TRUE(reads_grow(5000));
    EXPECT_GE(LitTenths(), 9) << "the lowest reading is as loud as can be";
    m_mixer->Change(kWavePeak, 16384);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return std::abs(LitTenths() - 5) <= 1; })) << LitTenths();
    m_mixer->Change(kWavePeak, 0);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return LitTenths() == 0; })) << LitTenths();
    m_dlg->Hide();
    EXPECT_FALSE(reads_grow(150));
    EXPECT_EQ(m_parent.m_nClosed, 0);

    m_dlg->Show();
    SendMessage(m_dlg->GetSafeHwnd(), WM_SYSCOMMAND, SC_CLOSE, 0);
    Pump();
    EXPECT_EQ(m_parent.m_nClosed, 1);
    EXPECT_TRUE(IsWindow(m_dlg->GetSafeHwnd()));
    EXPECT_FALSE(m_dlg->IsWindowVisible());
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

TEST_F(VolumeDlg, WithoutAMixerTheVolumeProgramOrABoxTakesItsPlace) {
    m_mixer->SetCount(0);
    Programs programs;
    programs.Add("pavucontrol");
    Make();
    EXPECT_EQ(programs.Started(), "pavucontrol ");
    m_dlg->Show();
    EXPECT_EQ(programs.Started(), "pavucontrol ");
    EXPECT_FALSE(m_dlg->IsWindowVisible());

    programs.Remove("pavucontrol");
    bool made = false;
    const Modal box = WithModal([&] {
        m_dlg = std::make_unique<CVolumeDlg>(&m_parent);
        m_dlg->Create();
        made = true;
        Pump();
    });
    EXPECT_TRUE(made) << "the box comes after the start";
    EXPECT_EQ(box.text, "Windows Audio Volume Controls were not found.");
    // The player may end under it.
    WithModal([&] { m_dlg->Show(); }, [&](const Modal&) { m_dlg.reset(); });
}

}  // namespace
