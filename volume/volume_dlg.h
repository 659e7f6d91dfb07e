// SPDX-License-Identifier: MIT
// The "Audio Volume Controls" window: two volume sliders with mute boxes, a level meter, the mixer's name,
// and a button that starts the desktop's own volume program.
//
// UI thread only. A modeless dialog that is made once, hidden, and shown and hidden on request; its owner
// deletes it, and the owner's window may be destroyed while the error box is up.
#pragma once

#include "controls/level_meter.h"
#include "platform/framework/afxcmn.h"
#include "platform/framework/afxwin.h"
#include "volume/mixer.h"

// Sent to the dialog's parent when a person closes the dialog with its close box; the wave device passes it
// on to the main window.
inline constexpr UINT WM_VOLUME_CLOSED = WM_USER + 101;

class CVolumeDlg : public CDialog {
public:
    // The parent gets WM_VOLUME_CLOSED when the person closes the window. Not owned.
    explicit CVolumeDlg(CWnd* pParent);
    ~CVolumeDlg() override;

    // Makes the window, opens the mixer and switches its mutes off.
    BOOL Create();
    // Shows the window; without a mixer the desktop's own volume program is started instead.
    void Show();
    void Hide();

protected:
    DECLARE_MESSAGE_MAP()
    void DoDataExchange(CDataExchange* pDX) override;
    BOOL OnInitDialog() override;

    afx_msg void OnTimer(UINT_PTR nIDEvent);
    afx_msg void OnVScroll(UINT nSBCode, UINT nPos, CScrollBar* pScrollBar);
    afx_msg void OnClose();
    afx_msg LRESULT OnMixerChange(WPARAM wParam, LPARAM lParam);
    afx_msg void OnMasterMute();
    afx_msg void OnWaveMute();
    afx_msg void RunSystemVolumeControl();
    afx_msg LRESULT OnNoVolumeProgram(WPARAM wParam, LPARAM lParam);

private:
    void ShowName();
    void ShowMasterVolume();
    void ShowMasterMute();
    void ShowWaveVolume();
    void ShowWaveMute();

    CSliderCtrl m_sliderMaster;
    CButton m_checkMasterMute;
    CSliderCtrl m_sliderWave;
    CLevelMeter m_meter;
    CButton m_checkWaveMute;
    CStatic m_staticName;
    CWnd* m_pParent;
    CMixer* m_pMixer = nullptr;
    BOOL m_bMixerAvailable = TRUE;
};
