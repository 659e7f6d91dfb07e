#include "playback/message_panel.h"

#include <algorithm>
#include <limits>

#include "codec/vdec.h"
#include "platform/shell/regular_file.h"
#include "res/resource.h"

namespace {

constexpr int kStartThreshold = 20;   // blocks
constexpr int kDefaultFrameRate = 5;  // pictures per second, until a message says
constexpr signed char kQuality = 3;
constexpr int kLead = 88;  // frames of the position bar's band
constexpr float kFrameSeconds = 0.02F;
constexpr UINT_PTR kLastPictureTimer = 1;

CString FormatTime(int nMinutes, float fSeconds) {
    CString strTime;
    strTime.Format(IDS_TIME_FORMAT, nMinutes, static_cast<double>(fSeconds));
    return strTime;
}

}  // namespace

BEGIN_MESSAGE_MAP(CMessagePanel, CDialog)
ON_WM_DESTROY()
ON_WM_TIMER()
ON_MESSAGE(WM_READER_ENDED, OnReaderEnded)
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
    m_pFile = OpenRegularFile(strPath);
    if (m_pFile == nullptr) return FALSE;
    if (!ReadHeader()) {
        Release();
        return FALSE;
    }

    const float fTotal = static_cast<float>(m_nFrameCount) * kFrameSeconds;
    const int nMinutes = static_cast<int>(fTotal) / 60;
    m_total.SetWindowText(FormatTime(nMinutes, fTotal - static_cast<float>(60 * nMinutes)));
    constexpr DWORD kMaxRange = std::numeric_limits<int>::max();
    m_positionBar.SetRange(static_cast<int>(std::min(m_nFrameCount, kMaxRange)));
    m_positionBar.SetLead(kLead);
    m_nMinutes = 0;
    m_fSeconds = 0.0F;
    ShowElapsed();

    const BOOL bSound = m_pWaveDevice->Open();
    m_hSpeech = gsm_create();
    if (m_nViewMode == kVideo) {
        m_pVideo->SetFrameRate(m_nVideoRate);
        vdec_init();
        vdec_set_quality(kQuality);
    }
    if (m_hSpeech == nullptr || !StartReader(bSound)) {
        Release();
        return FALSE;
    }
    Handle(PanelEvent::Opened);
    if (bSound) return TRUE;

    // Last of all, because the window goes on living under the box: this message may be closed, and the panel
    // destroyed, before the box is.
    const HWND hWnd = m_hWnd;
    CString strText;
    CString strCaption;
    strText.LoadString(IDS_NO_AUDIO_DEVICE);
    strCaption.LoadString(IDS_APP_TITLE);
    MessageBox(strText, strCaption, MB_ICONERROR);
    return IsWindow(hWnd) && m_pFile != nullptr;
}

// Also shows the view of the message's kind, as soon as that is known.
BOOL CMessagePanel::ReadHeader() {
    if (ReadMessageKind(m_pFile, m_nVideoRate) != MessageHeaderError::None) return FALSE;
    SetViewMode(m_nVideoRate == 0 ? kVoice : kVideo);
    return ReadMessageFrameCount(m_pFile, m_nFrameCount) == MessageHeaderError::None;
}

BOOL CMessagePanel::StartReader(BOOL bSound) {
    m_reader.Reset();
    m_gate.Reset();
    m_readerParams.pPanel = this;
    // Without sound nothing would ever take the level values out again.
    m_readerParams.pWaveform = m_nViewMode == kVoice && bSound ? m_pWaveform : nullptr;
    m_readerParams.pWaveDevice = m_pWaveDevice;
    m_readerParams.hSpeech = m_hSpeech;
    m_readerParams.pVideo = m_pVideo;
    m_readerParams.ppFile = &m_pFile;
    m_readerParams.pReader = &m_reader;
    m_readerParams.pGate = &m_gate;

    // Suspended, so that it can be told to stay until Close has waited for its end.
    m_pReaderThread =
        AfxBeginThread(ReaderThreadProc, &m_readerParams, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    if (m_pReaderThread == nullptr) return FALSE;
    m_pReaderThread->m_bAutoDelete = FALSE;
    return m_pReaderThread->ResumeThread() != kThreadNotStarted;
}

void CMessagePanel::Play() {
    Handle(PanelEvent::Play);
}

void CMessagePanel::Pause() {
    Handle(PanelEvent::Pause);
}

void CMessagePanel::Stop() {
    Handle(PanelEvent::Stop);
}

void CMessagePanel::Close() {
    Handle(PanelEvent::Close);
}

void CMessagePanel::Handle(PanelEvent event) {
    const PanelStep step = Step(m_state, event);
    m_state = step.state;
    switch (step.action) {
        case PanelAction::Start:
            Start();
            break;
        case PanelAction::Hold:
            Hold();
            break;
        case PanelAction::Rewind:
            Rewind();
            break;
        case PanelAction::Release:
            Release();
            break;
        case PanelAction::End:
            Rewind();
            if (CWnd* pMainWnd = AfxGetMainWnd()) pMainWnd->SendMessage(WM_PLAYBACK_ENDED);
            break;
        case PanelAction::Move:
        case PanelAction::None:
            break;
    }
}

void CMessagePanel::Start() {
    // The device first: while it is paused it drops what the reader writes.
    m_pWaveDevice->Resume();
    m_gate.Run();
    m_pVideo->Play();
}

void CMessagePanel::Hold() {
    KillTimer(kLastPictureTimer);
    m_gate.Halt();
    m_pWaveDevice->Pause();
    m_pVideo->Pause();
}

void CMessagePanel::Rewind() {
    Hold();
    m_reader.Rewind(m_pFile);
    m_nMinutes = 0;
    m_fSeconds = 0.0F;
    m_pWaveDevice->Flush();
    m_pVideo->Stop();
    m_pVideo->Clear();
    m_positionBar.Reset();
    // What is left in the waveform's queue belongs to sound that is not heard any more.
    m_pWaveform->ClearQueue();
    m_pWaveform->Reset();
    m_strElapsed.Empty();
    m_current.SetWindowText(m_strElapsed);
}

// Also what an Open that has failed halfway leaves behind.
void CMessagePanel::Release() {
    if (m_pReaderThread != nullptr) {
        Rewind();
        m_gate.End();
        WaitForSingleObject(m_pReaderThread->m_hThread, INFINITE);
        delete m_pReaderThread;
        m_pReaderThread = nullptr;
    }
    m_pWaveDevice->Close();
    if (m_hSpeech != nullptr) {
        gsm_destroy(m_hSpeech);
        m_hSpeech = nullptr;
    }
    vdec_free();
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
    m_total.SetWindowText("");
    SetViewMode(kNoMessage);
}

void CMessagePanel::ShowVolumeControls(BOOL bShow) {
    m_pWaveDevice->ShowVolumeControls(bShow);
}

void CMessagePanel::OnBlockPlayed() {
    m_positionBar.StepIt();
    if (m_nViewMode == kVoice) m_pWaveform->ShowNextValue();
    m_fSeconds += kFrameSeconds;
    if (m_fSeconds >= 60.0F) {
        m_fSeconds -= 60.0F;
        ++m_nMinutes;
    }
    ShowElapsed();
    m_gate.OnShorterQueue([this] { return HasRoom(); });
    if (m_pWaveDevice->GetQueuedCount() == 0) Handle(PanelEvent::RanDry);
}

void CMessagePanel::OnFrameShown() {
    m_gate.OnShorterQueue([this] { return HasRoom(); });
}

// While blocks are queued, the last of them will bring the end of the message. Without any this is the place.
LRESULT CMessagePanel::OnReaderEnded(WPARAM, LPARAM) {
    if (m_gate.IsRunning()) return 0;  // it has been told to go on meanwhile
    Handle(PanelEvent::ReadAll);
    if (m_pWaveDevice->GetQueuedCount() != 0 || !m_pWaveDevice->IsOpen()) return 0;
    if (m_nViewMode == kVideo) {
        m_bLastShown = FALSE;
        SetTimer(kLastPictureTimer, static_cast<UINT>(1000 / m_nVideoRate));
    } else {
        Handle(PanelEvent::RanDry);
    }
    return 0;
}

// Comes at the pictures' pace, but not in step with them: a picture found shown may have been shown just now.
void CMessagePanel::OnTimer(UINT_PTR nIDEvent) {
    if (nIDEvent != kLastPictureTimer) {
        CDialog::OnTimer(nIDEvent);
    } else if (m_bLastShown) {
        Handle(PanelEvent::RanDry);
    } else {
        m_bLastShown = m_pVideo->GetQueuedCount() == 0;
    }
}

BOOL CMessagePanel::HasRoom() const {
    return HasRoomForRecord(m_pVideo->GetQueuedCount(), m_pWaveDevice->GetQueuedCount());
}

void CMessagePanel::ShowElapsed() {
    CString strElapsed = FormatTime(m_nMinutes, m_fSeconds);
    // Four of five blocks leave the tenths as they are.
    if (strElapsed == m_strElapsed) return;
    m_strElapsed = strElapsed;
    m_current.SetWindowText(m_strElapsed);
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
