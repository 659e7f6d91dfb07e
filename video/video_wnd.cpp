// SPDX-License-Identifier: MIT
#include "video/video_wnd.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

constexpr int kBytesPerPixel = 3;
constexpr UINT kTimerResolutionMs = 1;

// Rows of a bitmap take whole groups of four bytes.
std::size_t BitmapRowBytes(int width) {
    return (static_cast<std::size_t>(width) * kBytesPerPixel + 3U) & ~std::size_t{3};
}

}  // namespace

BEGIN_MESSAGE_MAP(CVideoWnd, CWnd)
ON_MESSAGE(WM_DPICHANGED_AFTERPARENT, OnScaleChanged)
END_MESSAGE_MAP()

CVideoWnd::CVideoWnd(CWnd* pParent, CVideoWndClient* pClient, int nWidth, int nHeight, int nFramesPerSecond,
                     int nCapacity)
    : m_pParent(pParent),
      m_pClient(pClient),
      m_nWidth(nWidth),
      m_nHeight(nHeight),
      m_nFramesPerSecond(nFramesPerSecond),
      m_nPictureBytes(nWidth * nHeight * kBytesPerPixel),
      m_nCapacity(nCapacity - 1),
      m_params{&m_bRunning, this} {
    m_slots.resize(static_cast<std::size_t>(nCapacity - 1));
    // Not set to zero: a message of speech alone never touches these four megabytes.
    for (Slot& slot : m_slots)
        slot.pixels = std::make_unique_for_overwrite<BYTE[]>(static_cast<std::size_t>(m_nPictureBytes));

    // The black ground is what Clear leaves, and what shows before the first picture.
    const CBrush black(RGB(0, 0, 0));
    const CString className = AfxRegisterWndClass(0, &black);
    CreateEx(0, className, "", WS_CHILD, CRect(0, 0, nWidth, nHeight), m_pParent, 0);
    SetAccessibleName("Picture");
    ShowWindow(SW_SHOW);
    CreateFrameBitmap();
}

CVideoWnd::~CVideoWnd() {
    Pause();
    DestroyWindow();
}

void CVideoWnd::CreateFrameBitmap() {
    m_bmih.biSize = sizeof(BITMAPINFOHEADER);
    m_bmih.biWidth = m_nWidth;
    m_bmih.biHeight = m_nHeight;
    m_bmih.biPlanes = 1;
    m_bmih.biBitCount = 24;
    m_bmih.biCompression = BI_RGB;
    m_bmih.biSizeImage = static_cast<DWORD>(m_nPictureBytes);

    void* bits = nullptr;
    const HBITMAP hBitmap = CreateDIBSection(&m_bmih, DIB_RGB_COLORS, &bits);
    m_pBitmap = std::make_unique<CBitmap>();
    if (m_pBitmap->Attach(hBitmap)) {
        m_pDisplayBits = static_cast<BYTE*>(bits);
        CClientDC dc(this);
        m_dcFrame.CreateCompatibleDC(&dc);
        m_dcFrame.SelectObject(m_pBitmap.get());
    }

    m_bDrops = m_pDisplayBits == nullptr;

    // A child without border: the outer rectangle of this client size is the same.
    MoveWindow(CRect(0, 0, m_nWidth, m_nHeight));
    CenterWindow();
}

void CVideoWnd::SetFrameRate(int nFramesPerSecond) {
    if (m_bRunning.load() != 0) return;
    m_nFramesPerSecond = nFramesPerSecond;
}

void CVideoWnd::SetSpeed(int nPercent) {
    if (m_bRunning.load() != 0) return;
    if (m_nNextTickMs > 0) m_nNextTickMs = m_nNextTickMs * m_nSpeed / nPercent;
    m_nSpeed = nPercent;
}

BYTE* CVideoWnd::GetFreeFrame() {
    if (m_bDrops || m_nCount.load(std::memory_order_acquire) == m_nCapacity) return nullptr;
    return m_slots[static_cast<std::size_t>(m_nWrite)].pixels.get();
}

BOOL CVideoWnd::QueueFrame(int nNumber) {
    if (m_bDrops) return TRUE;
    if (m_nCount.load(std::memory_order_acquire) == m_nCapacity) return FALSE;
    m_slots[static_cast<std::size_t>(m_nWrite)].number = nNumber;
    m_nWrite = (m_nWrite + 1) % m_nCapacity;
    // Only now may the pacing thread see the picture.
    m_nCount.fetch_add(1, std::memory_order_acq_rel);
    return TRUE;
}

BOOL CVideoWnd::Play() {
    if (m_bRunning.load() != 0) return TRUE;
    m_bRunning = 1;
    m_evTick.ResetEvent();
    m_bFirstTick = true;
    const BOOL bPaced = StartPacing();
    m_bDrops = !bPaced || m_pDisplayBits == nullptr;
    if (!bPaced) Pause();
    return bPaced;
}

BOOL CVideoWnd::StartPacing() {
    timeBeginPeriod(kTimerResolutionMs);
    const int nDelay = m_nNextTickMs < 0 ? PeriodMs() : m_nNextTickMs;
    m_nextTick = std::chrono::steady_clock::now() + std::chrono::milliseconds(nDelay);
    m_pThread = AfxBeginThread(PacingThreadProc, &m_params, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    if (m_pThread == nullptr) return FALSE;
    m_pThread->m_bAutoDelete = FALSE;  // Pause waits for its end
    if (m_pThread->ResumeThread() == kThreadNotStarted) return FALSE;
    m_nTimer = timeSetEventAfter(static_cast<UINT>(nDelay), static_cast<UINT>(PeriodMs()), kTimerResolutionMs,
                                 TimerProc, reinterpret_cast<DWORD_PTR>(this), TIME_PERIODIC);
    return m_nTimer != 0;
}

void CVideoWnd::Pause() {
    if (m_bRunning.load() == 0) return;
    m_bRunning = 0;
    timeKillEvent(m_nTimer);
    m_nTimer = 0;
    timeEndPeriod(kTimerResolutionMs);
    const auto now = std::chrono::steady_clock::now();
    if (m_pThread != nullptr) {
        // A pulse would be lost on a thread that has seen the flag set but does not wait yet; a set event
        // stays.
        m_evTick.SetEvent();
        WaitForSingleObject(m_pThread->m_hThread, INFINITE);
        delete m_pThread;
        m_pThread = nullptr;
    }
    // A tick that was due while the threads ended, and showed nothing, comes with the next Play.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_nextTick - now).count();
    m_nNextTickMs = static_cast<int>(std::clamp<std::int64_t>(left, 0, PeriodMs()));
}

void CVideoWnd::Stop() {
    Pause();
    m_nNextTickMs = -1;
    m_bDrops = m_pDisplayBits == nullptr;
    const CSingleLock lock(&m_showLock);
    m_nRead = 0;
    m_nDue = -1;
    m_nWrite = 0;
    m_nCount = 0;
}

void CVideoWnd::Clear() {
    {
        const CSingleLock lock(&m_showLock);
        m_bBlack = TRUE;
    }
    InvalidateRect(nullptr, TRUE);
    // At once, so that a late erase can never take away the first picture of the next Play.
    UpdateWindow();
}

void CVideoWnd::ShowNextFrame() {
    {
        const CSingleLock lock(&m_showLock);
        if (m_bDrops || m_nCount.load(std::memory_order_acquire) == 0) return;
        ShowOldest();
    }
    if (m_pClient != nullptr) m_pClient->OnFrameShown();
}

void CVideoWnd::ShowUpTo(int nNumber) {
    m_nDue = nNumber;
    ShowLate();
}

void CVideoWnd::ShowLate() {
    {
        const CSingleLock lock(&m_showLock);
        const auto slot = [this](int nAhead) -> const Slot& {
            return m_slots[static_cast<std::size_t>((m_nRead + nAhead) % m_nCapacity)];
        };
        if (m_bDrops) return;
        while (m_nCount.load(std::memory_order_acquire) > 1 && slot(1).number <= m_nDue) RemoveOldest();
        if (m_nCount.load(std::memory_order_acquire) == 0 || slot(0).number > m_nDue) return;
        ShowOldest();
    }
    if (m_pClient != nullptr) m_pClient->OnFrameShown();
}

// With m_showLock held.
void CVideoWnd::ShowOldest() {
    CopyToBitmap(m_slots[static_cast<std::size_t>(m_nRead)].pixels.get());
    RemoveOldest();
    m_bBlack = FALSE;
    DrawFrame();
}

void CVideoWnd::DrawFrame() {
    CClientDC dc(this);
    m_dcFrame.SetMapMode(dc.GetMapMode());
    dc.BitBlt(0, 0, m_nWidth, m_nHeight, &m_dcFrame, 0, 0, SRCCOPY);
}

// The window's picture is new and black.
LRESULT CVideoWnd::OnScaleChanged(WPARAM, LPARAM) {
    const CSingleLock lock(&m_showLock);
    if (!m_bBlack) DrawFrame();
    return 0;
}

// The producer may write the slot again from here on.
void CVideoWnd::RemoveOldest() {
    m_nRead = (m_nRead + 1) % m_nCapacity;
    m_nCount.fetch_sub(1, std::memory_order_acq_rel);
}

void CVideoWnd::CopyToBitmap(const BYTE* pPicture) {
    const std::size_t rowBytes = static_cast<std::size_t>(m_nWidth) * kBytesPerPixel;
    const std::size_t bitmapRowBytes = BitmapRowBytes(m_nWidth);
    for (int y = 0; y < m_nHeight; ++y) {
        std::memcpy(m_pDisplayBits + static_cast<std::size_t>(y) * bitmapRowBytes, pPicture, rowBytes);
        pPicture += rowBytes;
    }
}

// The first tick may find the pacing thread not waiting yet: it is kept. Later ones are not.
void CVideoWnd::TimerProc(UINT, UINT, DWORD_PTR dwUser, DWORD_PTR, DWORD_PTR) {
    auto& window = *reinterpret_cast<CVideoWnd*>(dwUser);
    if (window.m_bFirstTick.exchange(false))
        window.m_evTick.SetEvent();
    else
        window.m_evTick.PulseEvent();
}

// Ticks during a drawing are lost.
void CVideoWnd::AfterTick() {
    const auto now = std::chrono::steady_clock::now();
    do m_nextTick += std::chrono::milliseconds(PeriodMs());
    while (m_nextTick <= now);
}

UINT CVideoWnd::PacingThreadProc(LPVOID pParams) {
    const auto& params = *static_cast<const PacingParams*>(pParams);
    while (params.pRunning->load() != 0) {
        params.pWindow->m_evTick.Lock(INFINITE);
        if (params.pRunning->load() == 0) break;
        params.pWindow->ShowNextFrame();
        params.pWindow->AfterTick();
    }
    return 0;
}
