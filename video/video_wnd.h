// The window that shows decoded pictures at a steady pace.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "platform/framework/afxwin.h"
#include "platform/framework/mmtimer.h"

// Told about the pictures of a CVideoWnd.
class CVideoWndClient {
public:
    virtual ~CVideoWndClient() = default;
    // After each picture shown, on the pacing thread, which holds no lock. It must not wait for the UI
    // thread, which may be waiting in Pause or Stop for this call to return.
    virtual void OnFrameShown() {}
};

// Pictures are width x height pixels of 3 bytes in the order B, G, R, rows without gaps, the bottom row
// first. One other thread (the producer) queues them; a pacing thread of the window's own takes one per tick
// of a periodic timer and draws it without waiting for the UI thread. A tick that finds the queue empty
// leaves the last picture; a tick that comes while a picture is being drawn is lost. The first picture is
// shown one period after Play.
//
// Unless it says otherwise, an operation belongs to the UI thread. None reports an error but QueueFrame.
// Apart from the constructor nothing allocates per picture.
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
    // Copies the picture into the queue. FALSE when nCapacity - 1 pictures wait already. Producer's thread.
    BOOL QueueFrame(const BYTE* pPicture);
    // Pictures that wait. Any thread.
    int GetQueuedCount() const { return m_nCount.load(std::memory_order_acquire); }

    // Starts showing the queue. Does nothing while playing.
    void Play();
    // Stops showing; what waits stays queued. Returns when the pacing thread has ended, so nothing is drawn
    // afterwards.
    void Pause();
    // Pauses and drops what waits. The producer must not be queueing.
    void Stop();
    // Makes the window black.
    void Clear();

    // Shows the oldest waiting picture, if there is one. The pacing thread calls it; others only while
    // paused.
    void ShowNextFrame();

private:
    struct PacingParams {
        const std::atomic<int>* pRunning;
        CVideoWnd* pWindow;
    };

    void CreateFrameBitmap();
    static void TimerProc(UINT nTimerId, UINT nMessage, DWORD_PTR dwUser, DWORD_PTR, DWORD_PTR);
    static UINT PacingThreadProc(LPVOID pParams);

    CEvent m_evTick;  // auto-reset; pulsed per tick, set to end the pacing thread
    std::atomic<int> m_bRunning = 0;
    CWnd* m_pParent;
    CVideoWndClient* m_pClient;
    int m_nWidth;
    int m_nHeight;
    int m_nFramesPerSecond;
    int m_nPictureBytes;
    std::vector<std::unique_ptr<BYTE[]>> m_slots;
    int m_nCapacity;
    int m_nRead = 0;   // moved by the pacing thread alone
    int m_nWrite = 0;  // moved by the producer alone
    std::atomic<int> m_nCount = 0;
    BYTE* m_pDisplayBits = nullptr;  // the bitmap's pixels; null when it could not be made
    std::unique_ptr<CBitmap> m_pBitmap;
    BITMAPINFOHEADER m_bmih = {};
    CDC m_dcFrame;  // has the bitmap selected, so that showing a picture makes no context
    PacingParams m_params;
    CWinThread* m_pThread = nullptr;  // while playing
    MMTIMERID m_nTimer = 0;           // while playing
};
