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
      m_nSampleRate(nSampleRate),
      m_written(static_cast<std::size_t>(kSoundBlockSlots * nBlockLength)),
      m_converter(m_written, nBlockLength, nSampleRate),
      m_buffers(static_cast<std::size_t>(kSoundBlockSlots * nBlockLength)) {
    for (int i = 0; i < kSoundBlockSlots; ++i)
        m_blocks[static_cast<std::size_t>(i)].header.lpData = reinterpret_cast<char*>(SamplesOf(i).data());

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
    for (Block& block : m_blocks) waveOutUnprepareHeader(m_hWaveOut, &block.header, sizeof block.header);
    waveOutClose(m_hWaveOut);
    m_hWaveOut = nullptr;
    m_bOpen = FALSE;
}

void CWaveDevice::Write(const void* pBlock) {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || CountQueued() == kMaxQueuedBlocks) return;
    m_bNoMore = FALSE;
    m_written.Write({static_cast<const std::int16_t*>(pBlock), static_cast<std::size_t>(m_nBlockLength)});
    MakeBlocks();
    if (!m_bPaused && CountQueued() > m_nStartThreshold) StartOutput();
}

void CWaveDevice::EndOfSound() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen) return;
    m_bNoMore = TRUE;
    MakeBlocks();
    if (!m_bPaused) StartOutput();
}

int CWaveDevice::GetQueuedCount() {
    const CSingleLock lock(&m_lock);
    return m_bOpen ? CountQueued() : 0;
}

BOOL CWaveDevice::IsRunning() {
    const CSingleLock lock(&m_lock);
    return m_bOpen && m_bRunning;
}

int CWaveDevice::CountQueued() const {
    return static_cast<int>((m_written.End() - m_nHeard + m_nBlockLength - 1) / m_nBlockLength);
}

void CWaveDevice::Pause() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || m_bPaused) return;
    m_bPaused = TRUE;
    m_bRunning = FALSE;
    m_nStale += m_nMade;
    waveOutReset(m_hWaveOut);
    waveOutPause(m_hWaveOut);
}

void CWaveDevice::Resume() {
    const CSingleLock lock(&m_lock);
    if (!m_bOpen || !m_bPaused) return;
    for (int i = m_nReadIndex; i != m_nWriteIndex; i = NextIndex(i)) SendToDriver(i);
    if (m_bNoMore || CountQueued() > m_nStartThreshold + 1) StartOutput();
    m_bPaused = FALSE;
}

void CWaveDevice::Flush() {
    const CSingleLock lock(&m_lock);
    if (m_bOpen && m_bPaused) EmptyRing();
}

BOOL CWaveDevice::SetSpeed(int nSpeed) {
    const CSingleLock lock(&m_lock);
    if (nSpeed == m_converter.Speed()) return TRUE;
    if (!m_converter.Prepare()) return FALSE;
    if (!m_bOpen) EmptyRing();

    const int nTakenBack = TakeBack();
    m_nMade -= nTakenBack;
    m_nWriteIndex = (m_nWriteIndex - nTakenBack + kSoundBlockSlots) % kSoundBlockSlots;
    // What would have sounded next; it is made now where all that had been made sounds already. What is
    // paused begins anew.
    const Block& next = m_blocks[static_cast<std::size_t>(m_nWriteIndex)];
    if (nTakenBack == 0) MakeBlock();
    const std::span<const std::int16_t> tail =
        SamplesOf(m_nWriteIndex).first(next.header.dwBufferLength / sizeof(std::int16_t));
    m_converter.Begin(nSpeed, next.nFrom, m_bPaused ? tail.first(0) : tail);
    MakeBlocks();
    if (m_bNoMore && !m_bPaused) StartOutput();
    return TRUE;
}

// Returns how many of the blocks made, from the last one on, the driver does not have any more.
int CWaveDevice::TakeBack() {
    if (m_bPaused) return m_nMade;
    UINT nBlocks = 0;
    waveOutTakeBack(m_hWaveOut, &nBlocks);
    return static_cast<int>(nBlocks);
}

void CWaveDevice::EmptyRing() {
    m_written.Empty();
    m_nHeard = 0;
    m_converter.Begin(m_converter.Speed(), 0, {});
    m_nReadIndex = 0;
    m_nWriteIndex = 0;
    m_nMade = 0;
    m_bRunning = FALSE;
    m_bNoMore = FALSE;
}

std::span<std::int16_t> CWaveDevice::SamplesOf(int nIndex) {
    const auto nLength = static_cast<std::size_t>(m_nBlockLength);
    return std::span(m_buffers).subspan(static_cast<std::size_t>(nIndex) * nLength, nLength);
}

// The block at the write index. FALSE, and an empty one, when too little is written.
BOOL CWaveDevice::MakeBlock() {
    const CSpeedConverter::Block made = m_converter.Next(SamplesOf(m_nWriteIndex), m_bNoMore != FALSE);
    Block& block = m_blocks[static_cast<std::size_t>(m_nWriteIndex)];
    block.header.dwBufferLength = static_cast<DWORD>(made.nLength * m_nBytesPerSample);
    block.nFrom = made.nFrom;
    block.nSamples = made.nSamples;
    return made.nLength != 0;
}

// As many as what is written suffices for. While paused they wait for Resume.
void CWaveDevice::MakeBlocks() {
    while (m_nMade < kMaxQueuedBlocks && MakeBlock()) {
        ++m_nMade;
        if (!m_bPaused) SendToDriver(m_nWriteIndex);
        m_nWriteIndex = NextIndex(m_nWriteIndex);
    }
}

void CWaveDevice::SendToDriver(int nIndex) {
    WAVEHDR& header = m_blocks[static_cast<std::size_t>(nIndex)].header;
    waveOutPrepareHeader(m_hWaveOut, &header, sizeof header);
    waveOutWrite(m_hWaveOut, &header, sizeof header);
}

void CWaveDevice::StartOutput() {
    if (m_bRunning || m_nMade == 0) return;
    m_bRunning = TRUE;
    waveOutRestart(m_hWaveOut);
}

// The header named by the notification is not looked at: blocks finish in the order of the ring.
LRESULT CWaveDevice::OnWaveOutDone(WPARAM wParam, LPARAM) {
    int nSamples = 0;
    {
        const CSingleLock lock(&m_lock);
        // An output closed meanwhile has left notifications behind; its handle never comes again.
        if (!m_bOpen || reinterpret_cast<HWAVEOUT>(wParam) != m_hWaveOut) return 0;
        if (m_nStale > 0) {
            --m_nStale;
            return 0;
        }
        // Never so while the driver keeps to one notification per block.
        if (m_bPaused || m_nMade == 0) return 0;
        Block& block = m_blocks[static_cast<std::size_t>(m_nReadIndex)];
        waveOutUnprepareHeader(m_hWaveOut, &block.header, sizeof block.header);
        nSamples = block.nSamples;
        m_nHeard += nSamples;
        m_nReadIndex = NextIndex(m_nReadIndex);
        --m_nMade;
        MakeBlocks();
        if (m_nMade == 0) {
            m_bRunning = FALSE;
            waveOutPause(m_hWaveOut);
        }
    }
    // The client may do anything now, closing the device included.
    if (m_pClient != nullptr) m_pClient->OnBlockPlayed(nSamples);
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
