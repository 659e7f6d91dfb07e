// SPDX-License-Identifier: MIT
// The message panel: opens, plays, pauses, stops and closes one message at a time, and moves in it.
#pragma once

#include <cstdint>
#include <memory>

#include "audio/play_speed.h"
#include "audio/wave_client.h"
#include "audio/wave_device.h"
#include "codec/message_reader.h"
#include "controls/position_bar.h"
#include "controls/waveform_wnd.h"
#include "platform/framework/afxwin.h"
#include "playback/message_source.h"
#include "playback/panel_state.h"
#include "video/video_wnd.h"

// Sent by the message panel to the main window when a message has been played to its end.
inline constexpr UINT WM_PLAYBACK_ENDED = WM_USER + 201;
// Sent by the message panel to the main window when it has paused by itself (wParam FALSE), since a call has
// begun or headphones were unplugged, and when it plays on after the call (wParam TRUE).
inline constexpr UINT WM_PLAYBACK_INTERRUPTED = WM_USER + 206;
// Sent by it to the main window when the position has changed by more than playing on.
inline constexpr UINT WM_POSITION_JUMPED = WM_USER + 207;
// The same, when the message's length has become known.
inline constexpr UINT WM_LENGTH_KNOWN = WM_USER + 208;

// A modeless dialog that lives in the main window's frame and deletes itself when its window is destroyed,
// a message that plays included.
//
// There is one clock: the position, which counts the sound that has been heard, in frames of 20 ms from the
// message's start. Elapsed time, position bar, waveform and pictures all follow it. A message has ended when
// everything has been read and the sound has run dry. When the sound device could not be opened, pictures
// run at their own rate, the position stands still, and the end of the message is not detected. Position and
// length are the message's time at every speed.
//
// UI thread only. No operation but Open waits for the message's file. Play, Pause, Stop and Close report
// nothing and do nothing when there is nothing to do. What went wrong meanwhile is told in a message box,
// once for each message opened; under a box the message may be closed and the panel destroyed.
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

    // Goes to a frame, limited to those that the message has: the sound goes on from exactly there, and the
    // picture that is due is shown at once, also while paused. A message that is stopped is paused there.
    void SeekTo(int nFrame);
    // The same, from where the message stands.
    void SeekBy(int nFrames);
    // Pauses and goes so many pictures on, or back; in a message of speech alone, tenths of a second.
    void StepPicture(int nPictures);
    // One of kSpeeds, for this and all later messages. Changes nothing when there is no memory.
    void SetSpeed(int nSpeed);
    int GetSpeed() const { return m_nSpeed; }
    // Frames played; 0 when nothing is open.
    int GetPosition() const;
    // Frames that the message has, as far as is known.
    int GetLength() const;

    // The window that shows the picture or the trace, null when nothing is open. It draws on other threads
    // too.
    CWnd* GetPictureWindow() const;
    PanelState GetState() const { return m_state; }
    BOOL IsVideo() const { return m_nViewMode == kVideo; }

    void ShowVolumeControls(BOOL bShow);

    // What the panel shows.
    enum ViewMode { kNoMessage = 0, kVoice = 1, kVideo = 2 };
    void SetViewMode(int nMode);
    // The window of the pictures; null while none are shown.
    CWnd* GetPicture() const { return m_nViewMode == kVideo ? m_pVideo : nullptr; }

    void OnBlockPlayed(int nSamples) override;
    void OnCallBegins() override;
    void OnCallEnds() override;
    void OnUnplugged() override;
    // On whatever thread shows the picture.
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
    afx_msg LRESULT OnReaderGoesOn(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnLateSpeech(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnIndexBuilt(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnTraceRead(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnBarDragged(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnBarReleased(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnBarDragCancelled(WPARAM wParam, LPARAM lParam);
    afx_msg LRESULT OnBarMoveBy(WPARAM wParam, LPARAM lParam);

private:
    std::shared_ptr<MessageSource> ReadHeader(std::FILE* pFile);
    BOOL StartReader();
    BOOL HasMessage() const { return m_pSource != nullptr; }

    // Goes on to the next state and does what that asks for. After an End the main window may have done
    // anything: nothing of the panel is touched afterwards.
    void Handle(PanelEvent event);
    void Interrupt(PanelEvent event);
    void Start();
    void StartPictures();
    void ShowDuePicture();
    void Hold();
    void Rewind();
    void Move();
    void End();
    void Release();
    static void NotifyMainWindow(UINT nMessage);
    void DropQueued();
    int PictureToShow(int nFrame) const;

    int64_t Frame() const { return m_nSamplesPlayed / kSpeechFrameSamples; }
    BOOL ShowElapsed();  // whether it has changed
    void ShowWaiting();
    // One box for each message opened: the panel may be gone afterwards.
    void ReportFault(UINT nTextID);
    void ReportFault(const CString& strText);

    CPositionBar m_positionBar;
    CStatic m_pictureFrame;  // parent of waveform, wave device and renderer
    CStatic m_totalCaption;
    CStatic m_total;
    CStatic m_currentCaption;
    CStatic m_current;
    CWaveformWnd* m_pWaveform = nullptr;
    CWaveDevice* m_pWaveDevice = nullptr;
    CVideoWnd* m_pVideo = nullptr;
    int m_nViewMode = -1;
    std::shared_ptr<MessageSource> m_pSource;  // the open message
    PanelState m_state = PanelState::NoMessage;
    // The position. Within, it is kept in samples of the message: a block played stands for one frame at
    // normal speed only.
    int64_t m_nSamplesPlayed = 0;
    int m_nSpeed = kNormalSpeed;
    int m_nSeekFrame = 0;         // what Move goes to
    BOOL m_bDragging = FALSE;     // the bar's head is held
    BOOL m_bDragResumes = FALSE;  // the message plays on once it is let go
    int m_nDragFrom = 0;
    int m_nTenths = -1;  // of the elapsed text, so many to a minute as it has frames; -1: none
    MessageEnd m_end = MessageEnd::None;  // why there is no more to read
    int m_nBlocksSinceEnd = 0;
    BOOL m_bWaiting = FALSE;  // the elapsed text says that the file is waited for
    BOOL m_bFaultTold = FALSE;
};
