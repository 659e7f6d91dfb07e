// SPDX-License-Identifier: MIT
#include "playback/message_panel.h"

#include <algorithm>
#include <limits>

#include "codec/vdec.h"
#include "platform/shell/regular_file.h"
#include "playback/index_thread.h"
#include "playback/reader_thread.h"
#include "res/resource.h"

namespace {

constexpr int kStartThreshold = 20;   // blocks
constexpr int kDefaultFrameRate = 5;  // pictures per second, until a message says
constexpr signed char kQuality = 3;
constexpr int kLead = 88;  // frames of the position bar's band
constexpr int kFramesPerSecond = 50;
constexpr int kFramesPerTenth = kFramesPerSecond / 10;
constexpr int kFramesPerMinute = 60 * kFramesPerSecond;
CString LoadText(UINT nTextID) {
    CString strText;
    strText.LoadString(nTextID);
    return strText;
}

CString FormatTime(int nMinutes, double seconds) {
    CString strTime;
    strTime.Format(IDS_TIME_FORMAT, nMinutes, seconds);
    return strTime;
}

}  // namespace

BEGIN_MESSAGE_MAP(CMessagePanel, CDialog)
ON_WM_DESTROY()
ON_WM_TIMER()
ON_MESSAGE(WM_READER_ENDED, OnReaderEnded)
ON_MESSAGE(WM_READER_GOES_ON, OnReaderGoesOn)
ON_MESSAGE(WM_LATE_SPEECH, OnLateSpeech)
ON_MESSAGE(WM_INDEX_BUILT, OnIndexBuilt)
ON_MESSAGE(WM_TRACE_READ, OnTraceRead)
ON_MESSAGE(WM_POSITION_DRAGGED, OnBarDragged)
ON_MESSAGE(WM_POSITION_RELEASED, OnBarReleased)
ON_MESSAGE(WM_POSITION_DRAG_CANCELLED, OnBarDragCancelled)
ON_MESSAGE(WM_POSITION_MOVE_BY, OnBarMoveBy)
END_MESSAGE_MAP()

CMessagePanel::CMessagePanel(CWnd* pParent) {
    Create(IDD_MESSAGE_PANEL, pParent);
}

CMessagePanel::~CMessagePanel() = default;

void CMessagePanel::DoDataExchange(CDataExchange* pDX) {
    CDialog::DoDataExchange(pDX);
    DDX_Control(pDX, IDC_POSITION_BAR, m_positionBar);
    DDX_Control(pDX, IDC_PICTURE_FRAME, m_pictureFrame);
    DDX_Control(pDX, IDC_TOTAL_CAPTION, m_totalCaption);
    DDX_Control(pDX, IDC_TOTAL, m_total);
    DDX_Control(pDX, IDC_CURRENT_CAPTION, m_currentCaption);
    DDX_Control(pDX, IDC_CURRENT, m_current);
}

BOOL CMessagePanel::OnInitDialog() {
    CDialog::OnInitDialog();

    CRect rect;
    m_pictureFrame.GetClientRect(rect);
    m_pWaveform = new CWaveformWnd;
    m_pWaveform->Create(WS_CHILD, rect, &m_pictureFrame, 0);
    m_pWaveform->SetBackgroundColor(RGB(0, 0, 0));
    m_pWaveform->SetGridColor(RGB(0x1F, 0x1F, 0x1F));
    m_pWaveform->SetPlotColor(RGB(0, 0xFF, 0));
    m_pWaveform->SetShift(2);
    m_pWaveform->SetRange(0.0F, 2.0F, TRUE);

    m_pWaveDevice = new CWaveDevice(&m_pictureFrame, this, CWaveDevice::kPlay, kSpeechFrameSamples,
                                    kStartThreshold, sizeof(int16_t), kSpeechSampleRate);
    m_pVideo =
        new CVideoWnd(&m_pictureFrame, this, kPictureWidth, kPictureHeight, kDefaultFrameRate, kPictureSlots);
    return TRUE;
}

void CMessagePanel::ShowPanel() {
    CenterWindow();
    ShowWindow(SW_SHOW);
    UpdateWindow();
    SetViewMode(kNoMessage);
}

void CMessagePanel::SetViewMode(int nMode) {
    if (nMode == m_nViewMode) return;
    m_nViewMode = nMode;
    const int nCmdShow = nMode == kNoMessage ? SW_HIDE : SW_SHOW;
    CWnd* const controls[] = {&m_positionBar, &m_pictureFrame,   &m_totalCaption,
                              &m_total,       &m_currentCaption, &m_current};
    for (CWnd* pControl : controls) pControl->ShowWindow(nCmdShow);
    m_pWaveform->ShowWindow(nMode == kVoice ? SW_SHOW : SW_HIDE);
    m_pVideo->ShowWindow(nMode == kVideo ? SW_SHOW : SW_HIDE);
    UpdateWindow();
}

BOOL CMessagePanel::Open(const CString& strPath) {
    Handle(PanelEvent::Close);
    const std::shared_ptr<MessageSource> pSource = ReadHeader(OpenRegularFile(strPath));
    if (pSource == nullptr) return FALSE;
    m_pSource = pSource;

    const float fTotal = static_cast<float>(pSource->nFrameCount) * 0.02F;
    const int nMinutes = static_cast<int>(fTotal) / 60;
    m_total.SetWindowText(
        FormatTime(nMinutes, static_cast<double>(fTotal - static_cast<float>(60 * nMinutes))));
    // At once, so that a late erase takes no picture away.
    m_pVideo->Clear();
    m_positionBar.SetRange(GetLength());
    m_positionBar.SetLead(kLead);
    m_nSamplesPlayed = 0;
    ShowElapsed();
    m_bFaultTold = FALSE;

    pSource->outputs.bSound = m_pWaveDevice->Open();
    if (m_nViewMode == kVideo) {
        m_pVideo->SetFrameRate(pSource->nVideoRate);
        vdec_init();
        vdec_set_quality(kQuality);
    }
    if (pSource->hSpeech == nullptr || !StartReader()) {
        Release();
        return FALSE;
    }
    Handle(PanelEvent::Opened);

    // Last of all, because the window goes on living under the box: this message may be closed, and the panel
    // destroyed, before the box is.
    const HWND hWnd = m_hWnd;
    if (!pSource->outputs.bSound)
        MessageBox(LoadText(IDS_NO_AUDIO_DEVICE), LoadText(IDS_APP_TITLE), MB_ICONERROR);
    if (!IsWindow(hWnd) || m_pSource != pSource) return FALSE;
    if (m_nViewMode == kVideo && !m_pVideo->HasBitmap()) ReportFault(IDS_NO_PICTURES);
    return IsWindow(hWnd) && m_pSource == pSource;
}

// Null when pFile, which may be null, is no message. Also shows the view of the message's kind, as soon as
// that is known.
std::shared_ptr<MessageSource> CMessagePanel::ReadHeader(std::FILE* pFile) {
    if (pFile == nullptr) return nullptr;
    BYTE nRate = 0;
    DWORD nCount = 0;
    if (ReadMessageKind(pFile, nRate) == MessageHeaderError::None) {
        SetViewMode(nRate == 0 ? kVoice : kVideo);
        if (ReadMessageFrameCount(pFile, nCount) == MessageHeaderError::None)
            return std::make_shared<MessageSource>(pFile, nRate, nCount);
    }
    std::fclose(pFile);
    SetViewMode(kNoMessage);
    return nullptr;
}

BOOL CMessagePanel::StartReader() {
    MessageOutputs& outputs = m_pSource->outputs;
    outputs.hPanel = m_hWnd;
    // Without sound nothing would ever take the level values out again.
    outputs.pWaveform = m_nViewMode == kVoice && outputs.bSound ? m_pWaveform : nullptr;
    outputs.pWaveDevice = m_pWaveDevice;
    outputs.pVideo = m_pVideo;
    m_pVideo->SetSpeed(m_nSpeed);
    outputs.noSound.SetSpeed(m_nSpeed, RealTimePace::Clock::now());
    m_pSource->gate.Move(WholeMessage(m_pSource->nVideoRate), FALSE);

    auto pForThread = std::make_unique<std::shared_ptr<MessageSource>>(m_pSource);
    if (AfxBeginThread(ReaderThreadProc, pForThread.get()) == nullptr) return FALSE;
    pForThread.release();
    StartIndexing(m_pSource);
    return TRUE;
}

CWnd* CMessagePanel::GetPictureWindow() const {
    if (!HasMessage()) return nullptr;
    return m_nViewMode == kVideo ? static_cast<CWnd*>(m_pVideo) : m_pWaveform;
}

void CMessagePanel::ShowVolumeControls(BOOL bShow) {
    m_pWaveDevice->ShowVolumeControls(bShow);
}

BOOL CMessagePanel::ShowElapsed() {
    const auto nFrame = static_cast<int>(Frame());
    // Four of five blocks leave the rounded tenths as they are.
    const int nMinutes = nFrame / kFramesPerMinute;
    const int nRest = nFrame % kFramesPerMinute;
    const int nTenths = nMinutes * kFramesPerMinute + (nRest + kFramesPerTenth / 2) / kFramesPerTenth;
    if (nTenths == m_nTenths && !m_bWaiting) return FALSE;
    m_nTenths = nTenths;
    m_bWaiting = FALSE;
    m_current.SetWindowText(FormatTime(nMinutes, static_cast<double>(nRest) / kFramesPerSecond));
    return TRUE;
}

void CMessagePanel::ShowWaiting() {
    m_bWaiting = TRUE;
    m_current.SetWindowText(LoadText(IDS_WAITING_FOR_FILE));
}

void CMessagePanel::ReportFault(UINT nTextID) {
    ReportFault(LoadText(nTextID));
}

void CMessagePanel::ReportFault(const CString& strText) {
    if (m_bFaultTold) return;
    m_bFaultTold = TRUE;
    MessageBox(strText, LoadText(IDS_APP_TITLE), MB_ICONERROR);
}

void CMessagePanel::OnOK() {
    DestroyWindow();
}

void CMessagePanel::OnCancel() {
    DestroyWindow();
}

// The windows inside the frame are about to go: nothing may play in them any more.
void CMessagePanel::OnDestroy() {
    Close();
    CDialog::OnDestroy();
}

void CMessagePanel::PostNcDestroy() {
    delete m_pWaveDevice;
    delete m_pVideo;
    delete m_pWaveform;
    delete this;
}
