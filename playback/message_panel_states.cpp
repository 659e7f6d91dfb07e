// SPDX-License-Identifier: MIT
// The panel's states and places: what it carries out, and what the reader, the sound and the clock tell it.
#include <algorithm>
#include <limits>

#include "codec/queue_limits.h"
#include "codec/vdec.h"
#include "platform/framework/heap.h"
#include "playback/index_thread.h"
#include "playback/message_panel.h"
#include "playback/reader_thread.h"
#include "res/resource.h"

namespace {

constexpr int kFramesPerSecond = 50;
constexpr int kVoiceStep = kFramesPerSecond / 10;  // of StepPicture in a message of speech alone
// Blocks heard between two looks whether a file that has been read to its end has grown.
constexpr int kLookForMore = 25;

constexpr UINT_PTR kReaderTimer = 1;
constexpr UINT kReaderTimerMs = 250;
constexpr std::chrono::seconds kLongRead(1);

// What a person is told when a message has ended before its time, at a frame; nothing when it has not.
CString EndFault(MessageEnd end, int nFrame) {
    CString strFault;
    if (end != MessageEnd::ReadError && end != MessageEnd::BadLength) return strFault;
    const int nSeconds = nFrame / kFramesPerSecond;
    strFault.Format(end == MessageEnd::ReadError ? IDS_END_UNREADABLE : IDS_END_DAMAGED, nSeconds / 60,
                    nSeconds % 60);
    return strFault;
}

}  // namespace

void CMessagePanel::Play() {
    m_bDragResumes = FALSE;
    Handle(PanelEvent::Play);
}

void CMessagePanel::Pause() {
    m_bDragResumes = FALSE;
    Handle(PanelEvent::Pause);
}

void CMessagePanel::Stop() {
    Handle(PanelEvent::Stop);
}

void CMessagePanel::Close() {
    Handle(PanelEvent::Close);
}

void CMessagePanel::SeekTo(int nFrame) {
    m_nSeekFrame = std::clamp(nFrame, 0, std::max(GetLength() - 1, 0));
    Handle(PanelEvent::Seek);
}

void CMessagePanel::SeekBy(int nFrames) {
    const int64_t nFrame = int64_t{GetPosition()} + nFrames;
    SeekTo(static_cast<int>(std::clamp<int64_t>(nFrame, 0, GetLength())));
}

void CMessagePanel::StepPicture(int nPictures) {
    if (!HasMessage()) return;
    Pause();
    const int nRate = m_pSource->nVideoRate;
    if (nRate == 0) {
        SeekBy(nPictures * kVoiceStep);
        return;
    }
    const int64_t nPicture = PictureAt(Frame(), nRate) + nPictures;
    SeekTo(nPicture < 0 ? 0
                        : static_cast<int>(std::min<int64_t>(PictureDueFrame(nPicture, nRate), GetLength())));
}

void CMessagePanel::SetSpeed(int nSpeed) {
    if (nSpeed == m_nSpeed || !m_pWaveDevice->SetSpeed(nSpeed)) return;
    m_nSpeed = nSpeed;
    if (HasMessage()) {
        m_pSource->gate.Locked(
            [&] { m_pSource->outputs.noSound.SetSpeed(nSpeed, RealTimePace::Clock::now()); });
    }
    m_pVideo->Pause();
    m_pVideo->SetSpeed(m_nSpeed);
    if (IsPlaying(m_state)) StartPictures();
}

int CMessagePanel::GetPosition() const {
    return HasMessage() ? static_cast<int>(Frame()) : 0;
}

int CMessagePanel::GetLength() const {
    constexpr int64_t kMaxLength = std::numeric_limits<int>::max();
    return HasMessage() ? static_cast<int>(std::min(m_pSource->Length(), kMaxLength)) : 0;
}

void CMessagePanel::Handle(PanelEvent event) {
    const PanelStep step = Step(m_state, event);
    m_state = step.state;
    switch (step.action) {
        case PanelAction::None:
            break;
        case PanelAction::Start:
            Start();
            break;
        case PanelAction::Hold:
            Hold();
            break;
        case PanelAction::Rewind:
            Rewind();
            break;
        case PanelAction::Move:
            Move();
            break;
        case PanelAction::End:
            End();
            break;
        case PanelAction::Release:
            Release();
            break;
    }
}

void CMessagePanel::Start() {
    m_pWaveDevice->Resume();
    m_pSource->gate.Run();
    StartPictures();
}

void CMessagePanel::StartPictures() {
    SetTimer(kReaderTimer, kReaderTimerMs);
    if (m_nViewMode != kVideo) return;
    if (m_pSource->outputs.bSound) {
        ShowDuePicture();
        return;
    }
    if (m_pVideo->Play()) return;
    // Pictures are not waited for any more.
    m_pSource->OnShorterQueue();
    ReportFault(IDS_NO_PICTURES);
}

void CMessagePanel::ShowDuePicture() {
    m_pVideo->ShowUpTo(static_cast<int>(PictureAt(Frame(), m_pSource->nVideoRate)));
}

void CMessagePanel::Hold() {
    KillTimer(kReaderTimer);
    m_pSource->gate.Hold();
    m_pWaveDevice->Pause();
    m_pVideo->Pause();
    if (m_bWaiting) ShowElapsed();
    m_positionBar.ShowBand();
    m_positionBar.AnnounceValue();
}

// What is queued belongs to sound and pictures that are not played any more.
void CMessagePanel::DropQueued() {
    m_pSource->gate.Hold();
    m_pWaveDevice->Pause();
    m_pWaveDevice->Flush();
    m_pVideo->Stop();
    m_pWaveform->ClearQueue();
    m_pWaveform->Reset();
}

void CMessagePanel::Rewind() {
    m_bDragging = FALSE;
    m_bDragResumes = FALSE;
    KillTimer(kReaderTimer);
    DropQueued();
    m_pSource->gate.Move(WholeMessage(m_pSource->nVideoRate), FALSE);
    m_pVideo->Clear();
    m_nSamplesPlayed = 0;
    m_positionBar.Reset();
    m_bWaiting = FALSE;
    m_nTenths = -1;
    m_current.SetWindowText("");
}

// The picture that is due at a frame; the last one before it that the reader comes by when pictures are fewer
// than their time. -1: none.
int CMessagePanel::PictureToShow(int nFrame) const {
    const int nRate = m_pSource->nVideoRate;
    if (nRate == 0) return -1;
    const int64_t nDue = PictureAt(nFrame, nRate);
    const MessageExtent extent = m_pSource->index.Extent();
    if (extent.end == MessageEnd::None) return static_cast<int>(nDue);
    const int64_t nReadTo = int64_t{nFrame} + kMaxQueuedBlocks - kFramesPerSpeechBlock;
    const int64_t nPictures =
        nReadTo >= extent.length ? extent.pictures : m_pSource->index.PlaceForFrame(nReadTo).pictures;
    return static_cast<int>(std::min(nDue, nPictures - 1));
}

void CMessagePanel::Move() {
    DropQueued();
    const int nRate = m_pSource->nVideoRate;
    const int nPicture = PictureToShow(m_nSeekFrame);
    if (nPicture < 0) m_pVideo->Clear();
    m_nSamplesPlayed = int64_t{m_nSeekFrame} * kSpeechFrameSamples;
    m_positionBar.SetPosition(m_nSeekFrame);
    ShowElapsed();
    const int nTrace = m_pSource->outputs.pWaveform == nullptr ? 0 : m_pWaveform->GetVisibleCount();
    const MessageIndex& index = m_pSource->index;
    m_pSource->gate.Move(
        PlanSeek(nRate, m_nSeekFrame, nTrace, index.PlaceForFrame(FirstDecoded(m_nSeekFrame, nTrace)),
                 nPicture, index.PlaceForPicture(std::max(nPicture, 0))),
        TRUE);
    if (m_state == PanelState::Playing) {
        m_pWaveDevice->Resume();
        StartPictures();
    } else {
        SetTimer(kReaderTimer, kReaderTimerMs);
    }
    NotifyMainWindow(WM_POSITION_JUMPED);
}

void CMessagePanel::NotifyMainWindow(UINT nMessage) {
    if (CWnd* pMainWnd = AfxGetMainWnd()) pMainWnd->SendMessage(nMessage);
}

// The main window may do anything in answer.
void CMessagePanel::End() {
    const HWND hWnd = m_hWnd;
    const CString strFault = EndFault(m_end, GetPosition());
    Rewind();
    NotifyMainWindow(WM_PLAYBACK_ENDED);
    if (IsWindow(hWnd) && HasMessage() && !strFault.IsEmpty()) ReportFault(strFault);
}

// Also what an Open that has failed halfway leaves behind.
void CMessagePanel::Release() {
    Rewind();
    m_pSource->stopIndexing.request_stop();
    m_pSource->gate.End();
    m_pWaveDevice->Close();
    vdec_free();
    m_pSource.reset();
    m_total.SetWindowText("");
    SetViewMode(kNoMessage);
    _heapmin();
}

void CMessagePanel::OnBlockPlayed(int nSamples) {
    const int64_t nBefore = Frame();
    m_nSamplesPlayed += nSamples;
    for (int64_t nFrame = nBefore; nFrame < Frame(); ++nFrame) {
        m_positionBar.StepIt(TRUE);
        if (m_nViewMode == kVoice) m_pWaveform->ShowNextValue();
    }
    if (ShowElapsed()) m_positionBar.ShowBand();
    m_pSource->OnShorterQueue();
    if (m_nViewMode == kVideo) ShowDuePicture();
    if (m_state == PanelState::Draining && ++m_nBlocksSinceEnd % kLookForMore == 0) m_pSource->gate.Run();
    if (m_state == PanelState::Playing && !m_pWaveDevice->IsRunning()) SetTimer(kReaderTimer, kReaderTimerMs);
    if (m_pWaveDevice->GetQueuedCount() == 0) Handle(PanelEvent::RanDry);
}

void CMessagePanel::OnCallBegins() {
    Interrupt(PanelEvent::CallBegins);
}

void CMessagePanel::OnCallEnds() {
    // Silent while the bar's head is held.
    if (m_bDragging && m_state == PanelState::Interrupted)
        m_bDragResumes = TRUE;
    else
        Interrupt(PanelEvent::CallEnds);
}

void CMessagePanel::OnUnplugged() {
    Interrupt(PanelEvent::Unplugged);
}

// The main window may do anything in answer.
void CMessagePanel::Interrupt(PanelEvent event) {
    const BOOL bPlayed = IsPlaying(m_state) || m_bDragResumes;
    if (event != PanelEvent::CallEnds) m_bDragResumes = FALSE;
    Handle(event);
    const BOOL bPlays = IsPlaying(m_state) || m_bDragResumes;
    if (bPlays == bPlayed) return;
    if (CWnd* pMainWnd = AfxGetMainWnd())
        pMainWnd->SendMessage(WM_PLAYBACK_INTERRUPTED, static_cast<WPARAM>(bPlays));
}

void CMessagePanel::OnFrameShown() {
    m_pSource->OnShorterQueue();
}

LRESULT CMessagePanel::OnTraceRead(WPARAM wParam, LPARAM) {
    if (!HasMessage() || wParam != m_pSource->gate.GetMove()) return 0;
    MessageTrace trace;
    int nCount = 0;
    m_pSource->gate.Locked([&] {
        trace = m_pSource->trace;
        nCount = m_pSource->nTrace;
    });
    m_pWaveform->ShowValues(trace.data(), nCount);
    return 0;
}

// Silent while the head is held; pictures follow it.
LRESULT CMessagePanel::OnBarDragged(WPARAM wParam, LPARAM) {
    if (!HasMessage()) return 0;
    if (!m_bDragging) {
        m_bDragging = TRUE;
        m_nDragFrom = GetPosition();
        m_bDragResumes = IsPlaying(m_state);
        if (m_bDragResumes) Handle(PanelEvent::Pause);
    }
    SeekTo(static_cast<int>(wParam));
    return 0;
}

LRESULT CMessagePanel::OnBarReleased(WPARAM wParam, LPARAM) {
    m_bDragging = FALSE;
    SeekTo(static_cast<int>(wParam));
    if (m_bDragResumes) Play();
    return 0;
}

LRESULT CMessagePanel::OnBarDragCancelled(WPARAM, LPARAM) {
    return OnBarReleased(static_cast<WPARAM>(m_nDragFrom), 0);
}

LRESULT CMessagePanel::OnBarMoveBy(WPARAM, LPARAM lParam) {
    SeekBy(static_cast<int>(lParam));
    return 0;
}

// While blocks are queued, the last of them will bring the end of the message. Without any this is the place.
LRESULT CMessagePanel::OnReaderEnded(WPARAM wParam, LPARAM lParam) {
    if (!HasMessage() || wParam != m_pSource->gate.GetMove()) return 0;
    m_end = static_cast<MessageEnd>(lParam);
    if (m_state == PanelState::Playing) m_nBlocksSinceEnd = 0;
    Handle(PanelEvent::ReadAll);
    if (m_pSource->outputs.bSound && m_pWaveDevice->GetQueuedCount() == 0) Handle(PanelEvent::RanDry);
    return 0;
}

LRESULT CMessagePanel::OnReaderGoesOn(WPARAM wParam, LPARAM) {
    if (!HasMessage() || wParam != m_pSource->gate.GetMove()) return 0;
    Handle(PanelEvent::ReadMore);
    StartIndexing(m_pSource);
    return 0;
}

// What is queued is the silence, and belongs to the speech now.
LRESULT CMessagePanel::OnLateSpeech(WPARAM wParam, LPARAM) {
    if (HasMessage() && wParam == m_pSource->gate.GetMove()) SeekTo(GetPosition());
    return 0;
}

LRESULT CMessagePanel::OnIndexBuilt(WPARAM wParam, LPARAM) {
    if (!HasMessage() || wParam != m_pSource->nSerial) return 0;
    m_positionBar.SetRange(GetLength());
    NotifyMainWindow(WM_LENGTH_KNOWN);
    return 0;
}

// Looks, as long as there is nothing to play, whether that is because the file keeps the reader waiting.
void CMessagePanel::OnTimer(UINT_PTR nIDEvent) {
    if (nIDEvent != kReaderTimer) {
        CDialog::OnTimer(nIDEvent);
        return;
    }
    const auto reading = m_pSource->gate.ReadingFor();
    const BOOL bPlays =
        m_pSource->outputs.bSound ? m_pWaveDevice->IsRunning() : m_pVideo->GetQueuedCount() != 0;
    if (reading >= kLongRead && !bPlays) {
        ShowWaiting();
        return;
    }
    if (m_bWaiting) ShowElapsed();
    if (bPlays || (m_state != PanelState::Playing && reading.count() == 0)) KillTimer(kReaderTimer);
}
