// SPDX-License-Identifier: MIT
// The window that shows decoded pictures at a steady pace.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "platform/framework/afxwin.h"
#include "platform/framework/mmtimer.h"

// Told about the pictures of a CVideoWnd, on the pacing thread or on that of whoever has one shown, with no
// lock held. The call may not wait for the UI thread, which may be waiting in Pause or Stop for it to return.
class CVideoWndClient {
public:
    virtual ~CVideoWndClient() = default;
    // After each picture shown.
    virtual void OnFrameShown() {}
};

// Pictures are width x height pixels of 3 bytes in the order B, G, R, rows without gaps, the bottom row
// first. One other thread (the producer) queues them, numbered upwards. Where something else is the clock,
// its owner shows them with ShowUpTo. Where nothing is, Play lets a pacing thread of the window's own draw
// the oldest at each tick of a periodic timer, without waiting for the UI thread. A tick that finds nothing
// to show leaves the last picture; a tick that comes while a picture is being drawn is lost. From the start
// the first tick comes one period after Play; after a Pause, Play waits for what was left of the period.
//
// Where the pictures have no bitmap, or nothing could be started to pace them, they are dropped as they come,
// so that the producer never waits for them.
//
// Unless it says otherwise, an operation belongs to the UI thread. Apart from the constructor nothing
// allocates per picture.
class CVideoWnd : public CWnd {
public:
    // Makes the window, black, as a visible child of pParent and centred in it, and room for nCapacity - 1
    // waiting pictures (nCapacity: 2 or more). pClient may be null; it must outlive the playing.
    // nFramesPerSecond: 1 or more.
    CVideoWnd(CWnd* pParent, CVideoWndClient* pClient, int nWidth, int nHeight, int nFramesPerSecond,
              int nCapacity);
    // Pauses first if need be. The producer must have ended.
    ~CVideoWnd() override;

    // Pictures per second, 1 or more. Takes effect at the next Play; ignored while playing.
    void SetFrameRate(int nFramesPerSecond);
    // How fast that is played, in per cent, above 0. While paused, what is left of the period shrinks or
    // grows with it; ignored while playing.
    void SetSpeed(int nPercent);
    // Where the producer writes the picture that it queues next; its own until then or until a Stop. Null
    // when nCapacity - 1 pictures wait already, and where they are dropped. Producer's thread.
    BYTE* GetFreeFrame();
    // Queues what was written there. FALSE when nCapacity - 1 pictures wait already. Producer's thread.
    BOOL QueueFrame(int nNumber);
    // Pictures that wait. Any thread.
    int GetQueuedCount() const { return m_bDrops ? 0 : m_nCount.load(std::memory_order_acquire); }

    // Whether there is a bitmap to show pictures in.
    BOOL HasBitmap() const { return m_pDisplayBits != nullptr; }

    // Starts showing the queue. FALSE, and stopped, when the system has no timer or no thread left. Does
    // nothing while playing.
    BOOL Play();
    // Stops showing; what waits stays queued. Returns when the pacing thread has ended, so no tick draws
    // afterwards.
    void Pause();
    // Pauses and drops what waits. The producer must not be queueing.
    void Stop();
    // Makes the window black.
    void Clear();

    // What a tick does: shows the oldest picture. Any thread.
    void ShowNextFrame();
    // Shows the newest picture that waits and has this number or one below; those before it are dropped. Any
    // thread.
    void ShowUpTo(int nNumber);
    // The same with the number of the latest ShowUpTo since the last Stop: for the producer, who may have
    // queued a picture after its time. Any thread.
    void ShowLate();

private:
    struct PacingParams {
        const std::atomic<int>* pRunning;
        CVideoWnd* pWindow;
    };

    DECLARE_MESSAGE_MAP()
    afx_msg LRESULT OnScaleChanged(WPARAM wParam, LPARAM lParam);
    void CreateFrameBitmap();
    int PeriodMs() const { return (1000 / m_nFramesPerSecond * 100 + m_nSpeed / 2) / m_nSpeed; }
    BOOL StartPacing();
    void DrawFrame();
    void ShowOldest();
    void RemoveOldest();
    void CopyToBitmap(const BYTE* pPicture);
    static void TimerProc(UINT nTimerId, UINT nMessage, DWORD_PTR dwUser, DWORD_PTR, DWORD_PTR);
    void AfterTick();
    static UINT PacingThreadProc(LPVOID pParams);

    CEvent m_evTick;  // auto-reset; pulsed per tick, set at the first one and to end the pacing thread
    std::atomic<bool> m_bFirstTick = false;  // still to come since Play
    std::atomic<int> m_bRunning = 0;
    CWnd* m_pParent;
    CVideoWndClient* m_pClient;
    int m_nWidth;
    int m_nHeight;
    int m_nFramesPerSecond;
    int m_nSpeed = 100;
    int m_nPictureBytes;
    struct Slot {
        std::unique_ptr<BYTE[]> pixels;
        int number = 0;
    };
    std::vector<Slot> m_slots;
    int m_nCapacity;              // how many may wait, and slots
    CCriticalSection m_showLock;  // one showing at a time: guards m_nRead and the bitmap
    int m_nRead = 0;
    int m_nWrite = 0;  // moved by the producer alone
    std::atomic<int> m_nCount = 0;
    std::atomic<int> m_nDue = -1;        // of the latest ShowUpTo
    BOOL m_bBlack = TRUE;                // no picture is seen; guarded by m_showLock
    std::atomic<BOOL> m_bDrops = FALSE;  // pictures cannot be shown
    BYTE* m_pDisplayBits = nullptr;      // the bitmap's pixels; null when it could not be made
    std::unique_ptr<CBitmap> m_pBitmap;
    BITMAPINFOHEADER m_bmih = {};
    CDC m_dcFrame;  // has the bitmap selected, so that showing a picture makes no context
    PacingParams m_params;
    CWinThread* m_pThread = nullptr;                   // while playing
    MMTIMERID m_nTimer = 0;                            // while playing
    int m_nNextTickMs = -1;                            // from Play to its first tick; -1: a period
    std::chrono::steady_clock::time_point m_nextTick;  // the pacing thread's while there is one
};
