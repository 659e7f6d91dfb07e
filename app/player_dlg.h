// SPDX-License-Identifier: MIT
// The player's main window: menu, three icon buttons and the frame that holds the message panel.
//
// UI thread only. Created with new; the object deletes itself when its window is destroyed, which a newer
// instance, the close box or Alt+F4 can bring about inside any modal call made from here. After such a call
// no member is touched before IsWindow has said that the window still exists.
#pragma once

#include <memory>

#include "app/saving_dlg.h"
#include "controls/icon_button.h"
#include "platform/framework/afxwin.h"
#include "playback/message_panel.h"
#include "volume/mixer.h"
#include "volume/volume_dlg.h"

class CPlayerDlg : public CDialog {
public:
    // Creates the window too; m_hWnd tells whether that worked.
    CPlayerDlg();
    ~CPlayerDlg() override;

    // Opens the message and plays it. A file that is no message is reported in a message box, and nothing is
    // open afterwards. The window may be gone when this returns.
    void OpenMessage(const CString& strPath);

    // Turns the keys of key_table.h, wherever the focus is in this window, into its commands, and a double
    // click on the picture into that for the whole screen, which Escape ends.
    BOOL PreTranslateMessage(MSG* pMsg) override;

protected:
    DECLARE_MESSAGE_MAP()
    void DoDataExchange(CDataExchange* pDX) override;
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void PostNcDestroy() override;

    afx_msg void OnSysCommand(UINT nID, LPARAM lParam);
    afx_msg void OnPaint();
    afx_msg HCURSOR OnQueryDragIcon();
    afx_msg void OnClose();
    afx_msg void OnFileOpen();
    afx_msg void OnFileClose();
    afx_msg void OnFileSaveAs();
    afx_msg void OnCopyPicture();
    afx_msg void OnFileExit();
    afx_msg void OnPlayPause();
    afx_msg void OnStop();
    template <UINT nCommand>
    afx_msg void OnMove() {
        Move(nCommand);
    }
    afx_msg void OnPreviousPicture();
    afx_msg void OnNextPicture();
    afx_msg void OnLouder();
    afx_msg void OnQuieter();
    afx_msg void OnMute();
    afx_msg void OnSlower();
    afx_msg void OnFaster();
    afx_msg void OnNormalSpeed();
    afx_msg void OnLarger();
    afx_msg void OnSmaller();
    afx_msg void OnOriginalSize();
    afx_msg void OnFullScreen();
    afx_msg void OnHelpAbout();
    afx_msg void OnVolume();
    afx_msg LRESULT OnPlaybackEnded(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnPlaybackInterrupted(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnVolumeClosed(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnSavingEnded(WPARAM wParam, LPARAM lParam);
    afx_msg void OnDropFiles(HDROP hDrop);

private:
    void ShowPlaying(BOOL bPlaying);
    void ShowVolumeLatched(BOOL bLatched);
    void SetTitle(const CString& strTitle);
    void ShowTitle();
    void ResetTitle();
    void ChangeSpeed(int nSpeed);
    void Move(UINT nCommand);
    void StepPicture(int nPictures);
    void ScaleTo(int nPercent);
    void LeaveFullScreen();
    BOOL OpenMixer();
    void ChangeVolume(BOOL bLouder);
    void Save(const CString& strMessage, const CString& strPath);
    void ReportUnsaved(const CString& strReason);

    CIconButton m_btnPlayPause;
    CIconButton m_btnStop;
    CIconButton m_btnVolume;
    HICON m_hIcon;
    BOOL m_bOpen = FALSE;
    BOOL m_bPlaying = FALSE;
    BOOL m_bVolumeShown = FALSE;
    CString m_strTitle;                 // without the speed
    int m_nScale = 100;                 // size of the windows' contents, in per cent
    CWnd* m_pFullScreen = nullptr;      // the picture, while it has the whole screen
    CMessagePanel* m_pPanel = nullptr;  // deletes itself with its window
    CStatic m_panelFrame;
    CString m_strMessage;                   // the open one's path
    std::unique_ptr<CSavingDlg> m_pSaving;  // while a message is being saved
    CMixer m_mixer{
        nullptr};           // opened when a key first asks for it; the volume dialog has its own and follows
    BOOL m_bModal = FALSE;  // a modal call from here is under way
};
