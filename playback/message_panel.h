// The message panel: opens, plays, pauses, stops and closes one message at a time.
#pragma once

#include <gsm/gsm.h>

#include <cstdint>
#include <cstdio>

#include "audio/wave_client.h"
#include "audio/wave_device.h"
#include "codec/message_reader.h"
#include "controls/position_bar.h"
#include "controls/waveform_wnd.h"
#include "platform/framework/afxwin.h"
#include "playback/panel_state.h"
#include "playback/reader_gate.h"
#include "playback/reader_thread.h"
#include "video/video_wnd.h"

// Sent by the message panel to the main window when a message has been played to its end.
inline constexpr UINT WM_PLAYBACK_ENDED = WM_USER + 201;

// A modeless dialog that lives in the main window's frame and deletes itself when its window is destroyed,
// a message that plays included. What it shows follows the sound that is heard: elapsed time, position bar
// and waveform move once per block played.
//
// A message has ended when everything has been read and the sound has run dry. A video message without any
// sound ends when its last picture has stood for at least its time; when the sound device could not be
// opened, pictures run but the end of the message is not detected.
//
// UI thread only. Play, Pause, Stop and Close report nothing and do nothing when there is nothing to do; the
// last three take no longer than the reader thread needs for the record in hand.
class CMessagePanel : public CDialog, public CWaveClient, public CVideoWndClient {
public:
    // Makes the window, hidden, as a child of pParent. With new: the window owns the object.
    explicit CMessagePanel(CWnd* pParent);
    ~CMessagePanel() override;

    // Centres the panel in its parent and shows it, empty.
    void ShowPanel();

    // Closes what is open and opens the message, ready to play. FALSE, with nothing open, when it cannot be
    // opened or is no message. A sound device that cannot be opened is reported in a message box, and the
    // message stays open; the panel may be gone when this returns (FALSE).
    BOOL Open(const CString& strPath);
    void Play();
    // Also holds the sound that is still to be heard when everything has been read.
    void Pause();
    void Stop();
    void Close();

    void ShowVolumeControls(BOOL bShow);

    // What the panel shows.
    enum ViewMode { kNoMessage = 0, kVoice = 1, kVideo = 2 };
    void SetViewMode(int nMode);

    void OnBlockPlayed() override;
    // On the renderer's pacing thread.
    void OnFrameShown() override;

protected:
    DECLARE_MESSAGE_MAP()
    void DoDataExchange(CDataExchange* pDX) override;
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void PostNcDestroy() override;
    afx_msg void OnDestroy();
    afx_msg void OnTimer(UINT_PTR nIDEvent);
    afx_msg LRESULT OnReaderEnded(WPARAM wParam, LPARAM lParam);

private:
    BOOL ReadHeader();
    BOOL StartReader(BOOL bSound);
    BOOL HasRoom() const;
    // Goes on to the next state and does what that asks for. After an End the main window may have done
    // anything: nothing of the panel is touched afterwards.
    void Handle(PanelEvent event);
    void Start();
    void Hold();
    void Rewind();
    void Release();
    void ShowElapsed();

    CPositionBar m_positionBar;
    CStatic m_pictureFrame;  // parent of waveform, wave device and renderer
    CStatic m_totalCaption;
    CStatic m_total;
    CStatic m_currentCaption;
    CStatic m_current;
    CWaveformWnd* m_pWaveform = nullptr;
    CWaveDevice* m_pWaveDevice = nullptr;
    gsm m_hSpeech = nullptr;  // while a message is open
    CVideoWnd* m_pVideo = nullptr;
    int m_nViewMode = -1;
    std::FILE* m_pFile = nullptr;  // the open message
    BYTE m_nVideoRate = 0;
    DWORD m_nFrameCount = 0;
    int m_nMinutes = 0;  // time heard
    float m_fSeconds = 0.0F;
    CString m_strElapsed;
    PanelState m_state = PanelState::NoMessage;
    BOOL m_bLastShown = FALSE;  // a message without sound: its last picture has been seen to be shown
    MessageReader m_reader;     // the reader thread's while it is in a record
    CReaderGate m_gate;
    ReaderParams m_readerParams;
    CWinThread* m_pReaderThread = nullptr;  // while a message is open
};
