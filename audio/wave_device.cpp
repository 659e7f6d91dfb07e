// SPDX-License-Identifier: MIT
#include "audio/wave_device.h"

#include <cstring>

#include "platform/framework/afxwin.h"
#include "volume/volume_dlg.h"

BEGIN_MESSAGE_MAP(CWaveDevice, CStatic)
ON_MESSAGE(MM_WOM_DONE, OnWaveOutDone)
ON_MESSAGE(MM_WOM_INTERRUPT, OnWaveOutInterrupt)
ON_MESSAGE(WM_VOLUME_CLOSED, OnVolumeClosed)
END_MESSAGE_MAP()

CWaveDevice::CWaveDevice(CWnd* pParent, CWaveClient* pClient, int nDirection, int nBlockLength,
                         int nStartThreshold, int nBytesPerSample, int nSampleRate)
    : m_pParent(pParent),
      m_pClient(pClient),
      m_nDirection(nDirection),
      m_nBlockLength(nBlockLength),
      m_nStartThreshold(nStartThreshold),
      m_nBytesPerSample(nBytesPerSample),
      m_nSampleRate(nSampleRate) {
    const std::size_t nBlockBytes = static_cast<std::size_t>(m_nBlockLength * m_nBytesPerSample);
    m_buffers.resize(kBlocks * nBlockBytes);
    for (std::size_t i = 0; i < m_headers.size(); ++i) {
        m_headers[i].lpData = m_buffers.data() + i * nBlockBytes;
        m_headers[i].dwBufferLength = static_cast<DWORD>(nBlockBytes);
    }

    CRect rect;
    m_pParent->GetClientRect(rect);
    CreateEx(0, AfxRegisterWndClass(0), "", WS_CHILD, rect, m_pParent, 0);

    m_pVolumeDlg = new CVolumeDlg(this);
    m_pVolumeDlg->Create();
}

CWaveDevice::~CWaveDevice() {
    delete m_pVolumeDlg;
    DestroyWindow();
}

BOOL CWaveDevice::Open() {
    if (!HasOutput()) return FALSE;

    WAVEFORMATEX format = {};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = 1;
    format.nSamplesPerSec = static_cast<DWORD>(m_nSampleRate);
    format.nAvgBytesPerSec = static_cast<DWORD>(m_nSampleRate * m_nBytesPerSample);
    format.nBlockAlign = static_cast<WORD>(m_nBytesPerSample);
    format.wBitsPerSample = static_cast<WORD>(8 * m_nBytesPerSample);

    // The writer may ask for the count meanwhile, and opening can take long: the lock comes afterwards.
    HWAVEOUT hWaveOut = nullptr;
    if (waveOutOpen(&hWaveOut, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(m_hWnd), 0,
                    CALLBACK_WINDOW) != MMSYSERR_NOERROR)
        return FALSE;
    waveOutPause(hWaveOut);

    const CSingleLock lock(&m_lock);
    EmptyRing();
    m_bPaused = FALSE;
    m_nStale = 0;
    m_hWaveOut = hWaveOut;
    m_bOpen = TRUE;
    return TRUE;
}

void CWaveDevice::Close() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen) return;
    waveOutReset(m_hWaveOut);
    for (WAVEHDR& header : m_headers) waveOutUnprepareHeader(m_hWaveOut, &header, sizeof header);
    waveOutClose(m_hWaveOut);
    m_hWaveOut = nullptr;
    m_bOpen = FALSE;
}

void CWaveDevice::Write(const void* pBlock) {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || m_nQueued == kMaxQueued) return;
    m_bNoMore = FALSE;
    WAVEHDR& header = m_headers[static_cast<std::size_t>(m_nWriteIndex)];
    std::memcpy(header.lpData, pBlock, header.dwBufferLength);
    ++m_nQueued;
    if (!m_bPaused) SendToDriver(m_nWriteIndex);
    m_nWriteIndex = NextIndex(m_nWriteIndex);
    if (!m_bPaused && m_nQueued > m_nStartThreshold) StartOutput();
}

void CWaveDevice::EndOfSound() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen) return;
    m_bNoMore = TRUE;
    if (!m_bPaused && m_nQueued > 0) StartOutput();
}

int CWaveDevice::GetQueuedCount() {
    const CSingleLock lock(&m_lock);
    return m_bOpen ? m_nQueued : 0;
}

void CWaveDevice::Pause() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || m_bPaused) return;
    m_bPaused = TRUE;
    m_bRunning = FALSE;
    m_nStale += m_nQueued;
    waveOutReset(m_hWaveOut);
    waveOutPause(m_hWaveOut);
}

void CWaveDevice::Resume() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || !m_bPaused) return;
    int nSent = 0;
    for (int i = m_nReadIndex; i != m_nWriteIndex; i = NextIndex(i)) {
        SendToDriver(i);
        if (++nSent > m_nStartThreshold + 1) StartOutput();
    }
    if (m_bNoMore && nSent > 0) StartOutput();
    m_bPaused = FALSE;
}

void CWaveDevice::Flush() {
    const CSingleLock lock(&m_lock);
    if (m_bOpen && m_bPaused) EmptyRing();
}

void CWaveDevice::EmptyRing() {
    m_nReadIndex = 0;
    m_nWriteIndex = 0;
    m_nQueued = 0;
    m_bRunning = FALSE;
    m_bNoMore = FALSE;
}

void CWaveDevice::SendToDriver(int nIndex) {
    WAVEHDR& header = m_headers[static_cast<std::size_t>(nIndex)];
    waveOutPrepareHeader(m_hWaveOut, &header, sizeof header);
    waveOutWrite(m_hWaveOut, &header, sizeof header);
}

void CWaveDevice::StartOutput() {
    if (m_bRunning) return;
    m_bRunning = TRUE;
    waveOutRestart(m_hWaveOut);
}

// The header named by the notification is not looked at: blocks finish in the order of the ring.
LRESULT CWaveDevice::OnWaveOutDone(WPARAM wParam, LPARAM) {
    {
        const CSingleLock lock(&m_lock);
        // An output closed meanwhile has left notifications behind; its handle never comes again.
        if (!m_bOpen || reinterpret_cast<HWAVEOUT>(wParam) != m_hWaveOut) return 0;
        if (m_nStale > 0) {
            --m_nStale;
            return 0;
        }
        // Never so while the driver keeps to one notification per block.
        if (m_bPaused || m_nQueued == 0) return 0;
        WAVEHDR& header = m_headers[static_cast<std::size_t>(m_nReadIndex)];
        waveOutUnprepareHeader(m_hWaveOut, &header, sizeof header);
        m_nReadIndex = NextIndex(m_nReadIndex);
        if (--m_nQueued == 0) {
            m_bRunning = FALSE;
            waveOutPause(m_hWaveOut);
        }
    }
    // The client may do anything now, closing the device included.
    if (m_pClient != nullptr) m_pClient->OnBlockPlayed();
    return 0;
}

LRESULT CWaveDevice::OnWaveOutInterrupt(WPARAM wParam, LPARAM lParam) {
    // Only this thread opens and closes.
    if (!m_bOpen || reinterpret_cast<HWAVEOUT>(wParam) != m_hWaveOut || m_pClient == nullptr) return 0;
    if (lParam == WOM_CALL_BEGINS) m_pClient->OnCallBegins();
    if (lParam == WOM_CALL_ENDS) m_pClient->OnCallEnds();
    if (lParam == WOM_UNPLUGGED) m_pClient->OnUnplugged();
    return 0;
}

LRESULT CWaveDevice::OnVolumeClosed(WPARAM, LPARAM) {
    if (CWnd* pMainWnd = AfxGetMainWnd()) pMainWnd->SendMessage(WM_VOLUME_CLOSED);
    return 0;
}

void CWaveDevice::ShowVolumeControls(BOOL bShow) {
    if (bShow) {
        m_pVolumeDlg->Show();
    } else {
        m_pVolumeDlg->Hide();
    }
}
