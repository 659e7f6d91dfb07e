// SPDX-License-Identifier: MIT
#include "volume/volume_dlg.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/shell/start_program.h"
#include "res/resource.h"

namespace {

constexpr UINT_PTR kMeterTimer = 1;
constexpr UINT kMeterPeriod = 50;

// Posted by the window to itself: no volume program could be started while the player was starting.
constexpr UINT WM_NO_VOLUME_PROGRAM = WM_USER + 102;

// WinExec's results up to this one are failures.
constexpr UINT kLastExecError = 31;

// What stands in for the volume program of string 7 where that cannot be run, first come first served: the
// mixers of the sound server, then the desktops' own sound settings.
constexpr LPCTSTR kVolumePrograms[] = {
    "pavucontrol-qt",
    "pavucontrol",
    "gnome-control-center sound",
    "systemsettings kcm_pulseaudio",
    "cinnamon-settings sound",
    "mate-volume-control",
};

// What assistive programs call the controls; the headings on the dialog belong to no control.
constexpr struct {
    int nID;
    LPCTSTR pszName;
} kAccessibleNames[] = {
    {IDC_MASTER_VOLUME, "Master Volume"}, {IDC_MASTER_MUTE, "Master Volume, Mute"},
    {IDC_WAVE_VOLUME, "Speakers Volume"}, {IDC_WAVE_MUTE, "Speakers Volume, Mute"},
    {IDC_LEVEL_METER, "Speakers Level"},
};

// Starts the first volume program that there is.
BOOL StartVolumeProgram(int nCmdShow) {
    CString strCommand;
    strCommand.LoadString(IDS_VOLUME_PROGRAM);
    if (WinExec(strCommand, static_cast<UINT>(nCmdShow)) > kLastExecError) return TRUE;
    return std::any_of(std::begin(kVolumePrograms), std::end(kVolumePrograms), [=](LPCTSTR command) {
        return WinExec(command, static_cast<UINT>(nCmdShow)) > kLastExecError;
    });
}

// A reading's size; the meter's range ends at that of the lowest bound.
int Magnitude(LONG lLevel) {
    return lLevel == std::numeric_limits<LONG>::min() ? std::numeric_limits<int>::max() : std::abs(lLevel);
}

}  // namespace

BEGIN_MESSAGE_MAP(CVolumeDlg, CDialog)
ON_WM_TIMER()
ON_WM_VSCROLL()
ON_WM_CLOSE()
ON_MESSAGE(MM_MIXM_CONTROL_CHANGE, OnMixerChange)
ON_BN_CLICKED(IDC_MASTER_MUTE, OnMasterMute)
ON_BN_CLICKED(IDC_WAVE_MUTE, OnWaveMute)
ON_BN_CLICKED(IDC_SYSTEM_VOLUME, RunSystemVolumeControl)
ON_MESSAGE(WM_NO_VOLUME_PROGRAM, OnNoVolumeProgram)
END_MESSAGE_MAP()

CVolumeDlg::CVolumeDlg(CWnd* pParent) : CDialog(IDD_VOLUME, pParent), m_pParent(pParent) {}

CVolumeDlg::~CVolumeDlg() {
    KillTimer(kMeterTimer);
    delete m_pMixer;
}

BOOL CVolumeDlg::Create() {
    return CDialog::Create(IDD_VOLUME, m_pParent);
}

void CVolumeDlg::DoDataExchange(CDataExchange* pDX) {
    CDialog::DoDataExchange(pDX);
    DDX_Control(pDX, IDC_MASTER_VOLUME, m_sliderMaster);
    DDX_Control(pDX, IDC_MASTER_MUTE, m_checkMasterMute);
    DDX_Control(pDX, IDC_WAVE_VOLUME, m_sliderWave);
    DDX_Control(pDX, IDC_LEVEL_METER, m_meter);
    DDX_Control(pDX, IDC_WAVE_MUTE, m_checkWaveMute);
    DDX_Control(pDX, IDC_MIXER_NAME, m_staticName);
}

BOOL CVolumeDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    for (const auto& name : kAccessibleNames) GetDlgItem(name.nID)->SetAccessibleName(name.pszName);

    m_pMixer = new CMixer(this);
    if (!m_pMixer->Open(0)) {
        m_bMixerAvailable = FALSE;
        // The player is still starting: the program must not take the focus from its window, and a box here
        // would keep the message that the player was started with from playing.
        if (!StartVolumeProgram(SW_SHOWNOACTIVATE)) PostMessage(WM_NO_VOLUME_PROGRAM);
        return FALSE;
    }

    ShowName();
    if (m_pMixer->FindMasterVolume()) {
        m_sliderMaster.SetRange(static_cast<int>(m_pMixer->GetMasterVolumeMin()),
                                static_cast<int>(m_pMixer->GetMasterVolumeMax()), FALSE);
        ShowMasterVolume();
    } else {
        m_sliderMaster.EnableWindow(FALSE);
    }
    if (m_pMixer->FindMasterMute()) {
        ShowMasterMute();
    } else {
        m_checkMasterMute.EnableWindow(FALSE);
    }
    if (m_pMixer->FindWaveVolume()) {
        m_sliderWave.SetRange(static_cast<int>(m_pMixer->GetWaveVolumeMin()),
                              static_cast<int>(m_pMixer->GetWaveVolumeMax()), FALSE);
        ShowWaveVolume();
    } else {
        m_sliderWave.EnableWindow(FALSE);
    }
    if (m_pMixer->FindWavePeakMeter()) {
        m_meter.SetRange(0, std::max(Magnitude(m_pMixer->GetPeakMin()), Magnitude(m_pMixer->GetPeakMax())));
    } else {
        m_meter.EnableWindow(FALSE);
    }
    if (m_pMixer->FindWaveMute()) {
        ShowWaveMute();
    } else {
        m_checkWaveMute.EnableWindow(FALSE);
    }

    // A player that was started is to be heard. The notifications of these two clear the boxes.
    m_pMixer->SetMasterMute(FALSE);
    m_pMixer->SetWaveMute(FALSE);
    return TRUE;
}

void CVolumeDlg::Show() {
    if (!m_bMixerAvailable) {
        RunSystemVolumeControl();
        return;
    }
    ShowWindow(SW_SHOW);
    SetTimer(kMeterTimer, kMeterPeriod);
}

void CVolumeDlg::Hide() {
    if (!m_bMixerAvailable) return;
    ShowWindow(SW_HIDE);
    KillTimer(kMeterTimer);
}

void CVolumeDlg::OnTimer(UINT_PTR nIDEvent) {
    LONG lLevel = 0;
    if (nIDEvent == kMeterTimer && m_pMixer->GetPeakLevel(lLevel)) m_meter.SetPos(Magnitude(lLevel));
}

void CVolumeDlg::OnVScroll(UINT nSBCode, UINT nPos, CScrollBar* pScrollBar) {
    const HWND hBar = pScrollBar == nullptr ? nullptr : pScrollBar->GetSafeHwnd();
    if (hBar != nullptr && hBar == m_sliderMaster.GetSafeHwnd()) {
        m_pMixer->SetMasterVolume(m_pMixer->GetMasterVolumeMax() -
                                  static_cast<DWORD>(m_sliderMaster.GetPos()));
    } else if (hBar != nullptr && hBar == m_sliderWave.GetSafeHwnd()) {
        m_pMixer->SetWaveVolume(m_pMixer->GetWaveVolumeMax() - static_cast<DWORD>(m_sliderWave.GetPos()));
    }
    CDialog::OnVScroll(nSBCode, nPos, pScrollBar);
}

void CVolumeDlg::OnClose() {
    Hide();
    m_pParent->SendMessage(WM_VOLUME_CLOSED);
}

LRESULT CVolumeDlg::OnMixerChange(WPARAM, LPARAM lParam) {
    const auto dwId = static_cast<DWORD>(lParam);
    if (m_pMixer->HasMasterVolume() && dwId == m_pMixer->GetMasterVolumeId()) {
        // Another default output announces itself by its controls.
        ShowName();
        ShowMasterVolume();
    } else if (m_pMixer->HasMasterMute() && dwId == m_pMixer->GetMasterMuteId()) {
        ShowMasterMute();
    } else if (m_pMixer->HasWaveVolume() && dwId == m_pMixer->GetWaveVolumeId()) {
        ShowWaveVolume();
    } else if (m_pMixer->HasWaveMute() && dwId == m_pMixer->GetWaveMuteId()) {
        ShowWaveMute();
    }
    return 0;
}

void CVolumeDlg::OnMasterMute() {
    m_pMixer->SetMasterMute(m_checkMasterMute.GetCheck() != 0);
}

void CVolumeDlg::OnWaveMute() {
    m_pMixer->SetWaveMute(m_checkWaveMute.GetCheck() != 0);
}

void CVolumeDlg::RunSystemVolumeControl() {
    if (!StartVolumeProgram(SW_SHOW)) OnNoVolumeProgram(0, 0);
}

LRESULT CVolumeDlg::OnNoVolumeProgram(WPARAM, LPARAM) {
    CString strText;
    CString strTitle;
    strText.LoadString(IDS_NO_VOLUME_PROGRAM);
    strTitle.LoadString(IDS_APP_TITLE);
    MessageBox(strText, strTitle, MB_OK | MB_ICONERROR);
    return 0;
}

void CVolumeDlg::ShowName() {
    CString strName;
    CString strShown;
    if (!m_pMixer->GetName(strName)) return;
    m_staticName.GetWindowText(strShown);
    if (!(strName == strShown)) m_staticName.SetWindowText(strName);
}

// A vertical slider has its lowest position on top, where the loudest volume belongs.
void CVolumeDlg::ShowMasterVolume() {
    DWORD dwValue = 0;
    if (!m_pMixer->GetMasterVolume(dwValue)) return;
    m_sliderMaster.SetPos(static_cast<int>(m_pMixer->GetMasterVolumeMax() - dwValue));
}

void CVolumeDlg::ShowWaveVolume() {
    DWORD dwValue = 0;
    if (!m_pMixer->GetWaveVolume(dwValue)) return;
    m_sliderWave.SetPos(static_cast<int>(m_pMixer->GetWaveVolumeMax() - dwValue));
}

void CVolumeDlg::ShowMasterMute() {
    BOOL bMute = FALSE;
    if (m_pMixer->GetMasterMute(bMute)) m_checkMasterMute.SetCheck(bMute ? 1 : 0);
}

void CVolumeDlg::ShowWaveMute() {
    BOOL bMute = FALSE;
    if (m_pMixer->GetWaveMute(bMute)) m_checkWaveMute.SetCheck(bMute ? 1 : 0);
}
