#include "video/video_wnd.h"

#include <cstring>

namespace {

constexpr int kBytesPerPixel = 3;
constexpr UINT kTimerResolutionMs = 1;

// Rows of a bitmap take whole groups of four bytes.
std::size_t BitmapRowBytes(int width) {
    return (static_cast<std::size_t>(width) * kBytesPerPixel + 3U) & ~std::size_t{3};
}

}  // namespace

CVideoWnd::CVideoWnd(CWnd* pParent, CVideoWndClient* pClient, int nWidth, int nHeight, int nFramesPerSecond,
                     int nCapacity)
    : m_pParent(pParent),
      m_pClient(pClient),
      m_nWidth(nWidth),
      m_nHeight(nHeight),
      m_nFramesPerSecond(nFramesPerSecond),
      m_nPictureBytes(nWidth * nHeight * kBytesPerPixel),
      m_nCapacity(nCapacity),
      m_params{&m_bRunning, this} {
    m_slots.resize(static_cast<std::size_t>(nCapacity));
    // Not set to zero: a message of speech alone never touches these four megabytes.
    for (auto& slot : m_slots)
        slot = std::make_unique_for_overwrite<BYTE[]>(static_cast<std::size_t>(m_nPictureBytes));

    // The black ground is what Clear leaves, and what shows before the first picture.
    const CBrush black(RGB(0, 0, 0));
    const CString className = AfxRegisterWndClass(0, &black);
    CreateEx(0, className, "", WS_CHILD, CRect(0, 0, nWidth, nHeight), pParent, 0);
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
        std::memset(m_pDisplayBits, 0, BitmapRowBytes(m_nWidth) * static_cast<std::size_t>(m_nHeight));
        CClientDC dc(this);
        m_dcFrame.CreateCompatibleDC(&dc);
        m_dcFrame.SelectObject(m_pBitmap.get());
    }

    // A child without border: the outer rectangle of this client size is the same.
    MoveWindow(CRect(0, 0, m_nWidth, m_nHeight));
    CenterWindow();
}

void CVideoWnd::SetFrameRate(int nFramesPerSecond) {
    if (m_bRunning.load() != 0) return;
    m_nFramesPerSecond = nFramesPerSecond;
}

BOOL CVideoWnd::QueueFrame(const BYTE* pPicture) {
    if (m_nCount.load(std::memory_order_acquire) == m_nCapacity - 1) return FALSE;
    std::memcpy(m_slots[static_cast<std::size_t>(m_nWrite)].get(), pPicture,
                static_cast<std::size_t>(m_nPictureBytes));
    m_nWrite = (m_nWrite + 1) % m_nCapacity;
    // Only now may the pacing thread see the picture.
    m_nCount.fetch_add(1, std::memory_order_acq_rel);
    return TRUE;
}

void CVideoWnd::Play() {
    if (m_bRunning.load() != 0) return;
    m_bRunning = 1;
    m_evTick.ResetEvent();
    m_pThread = AfxBeginThread(PacingThreadProc, &m_params, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    if (m_pThread != nullptr) {
        m_pThread->m_bAutoDelete = FALSE;  // Pause waits for its end
        m_pThread->ResumeThread();
    }
    timeBeginPeriod(kTimerResolutionMs);
    m_nTimer = timeSetEvent(static_cast<UINT>(1000 / m_nFramesPerSecond), kTimerResolutionMs, TimerProc,
                            reinterpret_cast<DWORD_PTR>(this), TIME_PERIODIC);
}

void CVideoWnd::Pause() {
    if (m_bRunning.load() == 0) return;
    m_bRunning = 0;
    timeKillEvent(m_nTimer);
    m_nTimer = 0;
    timeEndPeriod(kTimerResolutionMs);
    if (m_pThread == nullptr) return;
    // A pulse would be lost on a thread that has seen the flag set but does not wait yet; a set event stays.
    m_evTick.SetEvent();
    WaitForSingleObject(m_pThread->m_hThread, INFINITE);
    delete m_pThread;
    m_pThread = nullptr;
}

void CVideoWnd::Stop() {
    Pause();
    m_nRead = 0;
    m_nWrite = 0;
    m_nCount = 0;
}

void CVideoWnd::Clear() {
    InvalidateRect(nullptr, TRUE);
    // At once, so that a late erase can never take away the first picture of the next Play.
    UpdateWindow();
}

void CVideoWnd::ShowNextFrame() {
    if (m_nCount.load(std::memory_order_acquire) == 0) return;
    if (m_pDisplayBits != nullptr) {
        const BYTE* row = m_slots[static_cast<std::size_t>(m_nRead)].get();
        const std::size_t rowBytes = static_cast<std::size_t>(m_nWidth) * kBytesPerPixel;
        const std::size_t bitmapRowBytes = BitmapRowBytes(m_nWidth);
        for (int y = 0; y < m_nHeight; ++y) {
            std::memcpy(m_pDisplayBits + static_cast<std::size_t>(y) * bitmapRowBytes, row, rowBytes);
            row += rowBytes;
        }
    }
    m_nRead = (m_nRead + 1) % m_nCapacity;
    // Only now may the producer write the slot again.
    m_nCount.fetch_sub(1, std::memory_order_acq_rel);
    if (m_pDisplayBits == nullptr) return;

    {
        CClientDC dc(this);
        m_dcFrame.SetMapMode(dc.GetMapMode());
        dc.BitBlt(0, 0, m_nWidth, m_nHeight, &m_dcFrame, 0, 0, SRCCOPY);
    }
    if (m_pClient != nullptr) m_pClient->OnFrameShown();
}

void CVideoWnd::TimerProc(UINT, UINT, DWORD_PTR dwUser, DWORD_PTR, DWORD_PTR) {
    reinterpret_cast<CVideoWnd*>(dwUser)->m_evTick.PulseEvent();
}

UINT CVideoWnd::PacingThreadProc(LPVOID pParams) {
    const auto& params = *static_cast<const PacingParams*>(pParams);
    while (params.pRunning->load() != 0) {
        params.pWindow->m_evTick.Lock(INFINITE);
        if (params.pRunning->load() == 0) break;
        params.pWindow->ShowNextFrame();
    }
    return 0;
}
