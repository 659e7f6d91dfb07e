// SPDX-License-Identifier: MIT
// The player's main window: menu, three icon buttons and the frame that holds the message panel.
//
// UI thread only. Created with new; the object deletes itself when its window is destroyed, which a newer
// instance, the close box or Alt+F4 can bring about inside any modal call made from here. After such a call
// no member is touched before IsWindow has said that the window still exists.
#pragma once

#include <memory>
#include <vector>

#include "app/media_session.h"
#include "app/play_queue.h"
#include "app/saving_dlg.h"
#include "app/wave_volume.h"
#include "controls/icon_button.h"
#include "platform/framework/afxwin.h"
#include "playback/message_panel.h"
#include "volume/volume_dlg.h"

// Posted to the window by itself when its queue goes on.
inline constexpr UINT WM_PLAY_ON = WM_USER + 402;

class CPlayerDlg : public CDialog {
public:
    // Creates the window too; m_hWnd tells whether that worked.
    CPlayerDlg();
    ~CPlayerDlg() override;

    // Opens the message, or the first of several, which are played one after the other. A file that is no
    // message is reported in a message box, and nothing is open afterwards. The window may be gone when this
    // returns.
    void OpenMessages(const std::vector<CString>& files);
    void OpenMessage(const CString& strPath) { OpenMessages({strPath}); }
    // The same for what other programs ask, which while a box or a dialog is up is nothing, as no other input
    // is taken then either.
    void OpenFiles(const std::vector<CString>& files);
    // To the next message (1) or the previous one (-1); one that is paused leads to one that is. At the end
    // of the queue, or the folder, nothing happens. Other programs expect of a stopped player that it remains
    // so, and of one that has none left that it stops. The window may be gone when this returns.
    void GoToMessage(int nStep, BOOL bForOthers);

    // One of kSpeeds.
    void ChangeSpeed(int nSpeed);

    CMessagePanel& Panel() { return *m_pPanel; }
    CPlayQueue& Queue() { return m_queue; }
    CWaveVolume& Volume() { return m_volume; }

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
    afx_msg void OnDestroy();
    afx_msg void OnFileOpen();
    afx_msg void OnFileClose();
    afx_msg void OnFileSaveAs();
    afx_msg void OnCopyPicture();
    afx_msg void OnFileExit();
    afx_msg void OnPlayPause();
    afx_msg void OnStop();
    afx_msg void OnNextMessage();
    afx_msg void OnPreviousMessage();
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
    afx_msg LRESULT OnPlayOn(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnPositionJumped(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnMediaChanged(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnVolumeClosed(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnSavingEnded(WPARAM wParam, LPARAM lParam);
    afx_msg void OnDropFiles(HDROP hDrop);

private:
    void ShowPlaying(BOOL bPlaying);
    void ShowVolumeLatched(BOOL bLatched);
    void SetTitle(const CString& strTitle);
    void ShowTitle();
    void ResetTitle();
    void Move(UINT nCommand);
    void StepPicture(int nPictures);
    void ScaleTo(int nPercent);
    void LeaveFullScreen();
    void Save(const CString& strMessage, const CString& strPath);
    void ReportUnsaved(const CString& strReason);
    // Opens and plays the queue's current message.
    void OpenCurrent();

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
    CPlayQueue m_queue;
    std::unique_ptr<CSavingDlg> m_pSaving;  // while a message is being saved
    CWaveVolume m_volume{this};
    std::unique_ptr<CMediaSession> m_pSession;
    int m_nModal = 0;  // modal calls from here that are under way, one within the other
};
