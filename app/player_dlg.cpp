// SPDX-License-Identifier: MIT
#include "app/player_dlg.h"

#include <algorithm>

#include "app/about_dlg.h"
#include "app/key_table.h"
#include "app/play_commands.h"
#include "res/resource.h"

namespace {

constexpr int kScaleStep = 25;  // per cent

CString LoadText(UINT nID) {
    CString strText;
    strText.LoadString(nID);
    return strText;
}

}  // namespace

BEGIN_MESSAGE_MAP(CPlayerDlg, CDialog)
ON_WM_SYSCOMMAND()
ON_WM_PAINT()
ON_WM_QUERYDRAGICON()
ON_WM_CLOSE()
ON_WM_DESTROY()
ON_COMMAND(ID_FILE_OPEN, OnFileOpen)
ON_COMMAND(ID_FILE_CLOSE, OnFileClose)
ON_COMMAND(ID_FILE_SAVE_AS, OnFileSaveAs)
ON_COMMAND(ID_EDIT_COPY, OnCopyPicture)
ON_COMMAND(ID_FILE_EXIT, OnFileExit)
ON_COMMAND(ID_PLAY_PLAYPAUSE, OnPlayPause)
ON_COMMAND(ID_PLAY_STOP, OnStop)
ON_COMMAND(ID_PLAY_NEXT_MESSAGE, OnNextMessage)
ON_COMMAND(ID_PLAY_PREVIOUS_MESSAGE, OnPreviousMessage)
ON_COMMAND(ID_PLAY_BACK_5, OnMove<ID_PLAY_BACK_5>)
ON_COMMAND(ID_PLAY_ON_5, OnMove<ID_PLAY_ON_5>)
ON_COMMAND(ID_PLAY_BACK_1, OnMove<ID_PLAY_BACK_1>)
ON_COMMAND(ID_PLAY_ON_1, OnMove<ID_PLAY_ON_1>)
ON_COMMAND(ID_PLAY_BACK_TENTH, OnMove<ID_PLAY_BACK_TENTH>)
ON_COMMAND(ID_PLAY_ON_TENTH, OnMove<ID_PLAY_ON_TENTH>)
ON_COMMAND(ID_PLAY_TO_START, OnMove<ID_PLAY_TO_START>)
ON_COMMAND(ID_PLAY_TO_END, OnMove<ID_PLAY_TO_END>)
ON_COMMAND(ID_PLAY_PREVIOUS_PICTURE, OnPreviousPicture)
ON_COMMAND(ID_PLAY_NEXT_PICTURE, OnNextPicture)
ON_COMMAND(ID_PLAY_LOUDER, OnLouder)
ON_COMMAND(ID_PLAY_QUIETER, OnQuieter)
ON_COMMAND(ID_PLAY_MUTE, OnMute)
ON_COMMAND(ID_PLAY_SLOWER, OnSlower)
ON_COMMAND(ID_PLAY_FASTER, OnFaster)
ON_COMMAND(ID_PLAY_NORMAL_SPEED, OnNormalSpeed)
ON_COMMAND(ID_VIEW_LARGER, OnLarger)
ON_COMMAND(ID_VIEW_SMALLER, OnSmaller)
ON_COMMAND(ID_VIEW_ORIGINAL_SIZE, OnOriginalSize)
ON_COMMAND(ID_VIEW_FULL_SCREEN, OnFullScreen)
ON_COMMAND(ID_HELP_ABOUT, OnHelpAbout)
ON_BN_CLICKED(IDC_PLAY_PAUSE, OnPlayPause)
ON_BN_CLICKED(IDC_STOP, OnStop)
ON_BN_CLICKED(IDC_VOLUME, OnVolume)
ON_MESSAGE(WM_PLAYBACK_ENDED, OnPlaybackEnded)
ON_MESSAGE(WM_PLAYBACK_INTERRUPTED, OnPlaybackInterrupted)
ON_MESSAGE(WM_PLAY_ON, OnPlayOn)
ON_MESSAGE(WM_POSITION_JUMPED, OnPositionJumped)
ON_MESSAGE(WM_LENGTH_KNOWN, OnMediaChanged)
ON_MESSAGE(WM_FIRST_PICTURE, OnMediaChanged)
ON_MESSAGE(MM_MIXM_CONTROL_CHANGE, OnMediaChanged)
ON_MESSAGE(WM_VOLUME_CLOSED, OnVolumeClosed)
ON_MESSAGE(WM_SAVING_ENDED, OnSavingEnded)
ON_WM_DROPFILES()
END_MESSAGE_MAP()

CPlayerDlg::CPlayerDlg() : m_hIcon(LoadImage(IDI_PLAYER, IMAGE_ICON)) {
    Create(IDD_PLAYER_DIALOG);
}

CPlayerDlg::~CPlayerDlg() {
    if (m_hIcon != nullptr) DestroyIcon(m_hIcon);
}

void CPlayerDlg::DoDataExchange(CDataExchange* pDX) {
    CDialog::DoDataExchange(pDX);
    DDX_Control(pDX, IDC_PLAY_PAUSE, m_btnPlayPause);
    DDX_Control(pDX, IDC_STOP, m_btnStop);
    DDX_Control(pDX, IDC_VOLUME, m_btnVolume);
    DDX_Control(pDX, IDC_PANEL_FRAME, m_panelFrame);
}

BOOL CPlayerDlg::OnInitDialog() {
    CDialog::OnInitDialog();

    SetIcon(m_hIcon, TRUE);
    SetIcon(m_hIcon, FALSE);
    ResetTitle();

    m_bOpen = FALSE;
    m_bPlaying = FALSE;
    m_bVolumeShown = FALSE;

    m_btnPlayPause.SetIcons(IDI_PLAY, 0);
    m_btnPlayPause.SetBtnCursor(IDC_POINTING_HAND);
    m_btnPlayPause.SetTooltipText(IDS_PLAY);
    m_btnStop.SetIcons(IDI_STOP, 0);
    m_btnStop.SetBtnCursor(IDC_POINTING_HAND);
    m_btnStop.SetTooltipText(IDS_STOP);
    m_btnVolume.SetIcons(IDI_VOLUME, 0);
    m_btnVolume.SetBtnCursor(IDC_POINTING_HAND);
    m_btnVolume.SetTooltipText(IDS_OPEN_VOLUME);

    SetCommandShortcut(ID_FILE_OPEN, "Ctrl+O");
    SetCommandShortcut(ID_FILE_CLOSE, "Ctrl+W");
    SetCommandShortcut(ID_FILE_EXIT, "Ctrl+Q");
    SetCommandShortcut(ID_EDIT_COPY, "Ctrl+C");
    SetCommandShortcut(ID_PLAY_PLAYPAUSE, "Media Play; Toggle Media Play/Pause; Media Pause");
    SetCommandShortcut(ID_PLAY_STOP, "Media Stop");
    SetCommandShortcut(ID_VIEW_LARGER, "Ctrl++; Ctrl+=");
    SetCommandShortcut(ID_VIEW_SMALLER, "Ctrl+-");
    SetCommandShortcut(ID_VIEW_ORIGINAL_SIZE, "Ctrl+0");
    SetCommandShortcut(ID_VIEW_FULL_SCREEN, "F11");
    SetCommandShortcut(ID_PLAY_NEXT_MESSAGE, ">; Media Next");
    SetCommandShortcut(ID_PLAY_PREVIOUS_MESSAGE, "<; Media Previous");
    DragAcceptFiles();

    m_pPanel = new CMessagePanel(&m_panelFrame);
    m_pPanel->ShowPanel();
    m_pSession = std::make_unique<CMediaSession>(*this);
    return TRUE;
}

void CPlayerDlg::OnOK() {
    DestroyWindow();
}

void CPlayerDlg::OnCancel() {
    DestroyWindow();
}

void CPlayerDlg::PostNcDestroy() {
    delete this;
}

void CPlayerDlg::OnDestroy() {
    m_pSession.reset();
    CDialog::OnDestroy();
}

void CPlayerDlg::OnFileExit() {
    SendMessage(WM_CLOSE);
}

void CPlayerDlg::OnClose() {
    LeaveFullScreen();
    OnStop();
    m_pPanel->Close();
    CDialog::OnClose();
}

void CPlayerDlg::OnPlayPause() {
    if (!m_bOpen) return;
    if (m_bPlaying) {
        ShowPlaying(FALSE);
        m_pPanel->Pause();
    } else {
        ShowPlaying(TRUE);
        m_pPanel->Play();
    }
    m_bPlaying = !m_bPlaying;
}

void CPlayerDlg::OnStop() {
    if (!m_bOpen) return;
    m_pPanel->Stop();
    m_bPlaying = FALSE;
    ShowPlaying(FALSE);
}

BOOL CPlayerDlg::PreTranslateMessage(MSG* pMsg) {
    if (pMsg->message == WM_LBUTTONDBLCLK && m_bOpen && m_pPanel->GetPicture() != nullptr &&
        pMsg->hwnd == m_pPanel->GetPicture()->GetSafeHwnd()) {
        OnFullScreen();
        return TRUE;
    }
    if (pMsg->message == WM_KEYDOWN && pMsg->wParam == VK_ESCAPE) LeaveFullScreen();
    if (pMsg->message == WM_KEYDOWN) {
        const UINT nModifiers = (GetKeyState(static_cast<int>(VK_SHIFT)) < 0 ? MK_SHIFT : 0) |
                                (GetKeyState(static_cast<int>(VK_CONTROL)) < 0 ? MK_CONTROL : 0);
        const CKeyCommand* pKey = FindKey(pMsg->wParam, nModifiers);
        // A button is pressed by Space, as everywhere, unless nobody sees it.
        const BOOL bButtons = pMsg->wParam == VK_SPACE && m_pFullScreen == nullptr &&
                              dynamic_cast<CButton*>(FromHandle(pMsg->hwnd)) != nullptr;
        if (pKey != nullptr && !bButtons) {
            constexpr LPARAM kHeld = 0x40000000;
            if (pKey->bRepeats || (pMsg->lParam & kHeld) == 0) SendMessage(WM_COMMAND, pKey->nCommand);
            return TRUE;
        }
    }
    return CDialog::PreTranslateMessage(pMsg);
}

void CPlayerDlg::Move(UINT nCommand) {
    if (!m_bOpen) return;
    m_pPanel->SeekTo(MoveTarget(nCommand, m_pPanel->GetPosition(), m_pPanel->GetLength()));
}

// The panel pauses for it.
void CPlayerDlg::StepPicture(int nPictures) {
    if (!m_bOpen) return;
    m_bPlaying = FALSE;
    ShowPlaying(FALSE);
    m_pPanel->StepPicture(nPictures);
}

void CPlayerDlg::OnPreviousPicture() {
    StepPicture(-1);
}

void CPlayerDlg::OnNextPicture() {
    StepPicture(1);
}

void CPlayerDlg::OnLouder() {
    m_volume.Step(TRUE);
}

void CPlayerDlg::OnQuieter() {
    m_volume.Step(FALSE);
}

void CPlayerDlg::OnMute() {
    m_volume.ToggleMute();
}

void CPlayerDlg::ChangeSpeed(int nSpeed) {
    m_pPanel->SetSpeed(nSpeed);
    ShowTitle();
    m_pSession->Changed();
}

void CPlayerDlg::OnSlower() {
    ChangeSpeed(SteppedSpeed(m_pPanel->GetSpeed(), -1));
}

void CPlayerDlg::OnFaster() {
    ChangeSpeed(SteppedSpeed(m_pPanel->GetSpeed(), 1));
}

void CPlayerDlg::OnNormalSpeed() {
    ChangeSpeed(kNormalSpeed);
}

// The panel has more to do when this returns, so the queue goes on later.
LRESULT CPlayerDlg::OnPlaybackEnded(WPARAM, LPARAM) {
    OnStop();
    if (m_queue.PlaysOn()) PostMessage(WM_PLAY_ON);
    return 0;
}

LRESULT CPlayerDlg::OnPositionJumped(WPARAM, LPARAM) {
    if (m_pSession != nullptr) m_pSession->Jumped();
    return 0;
}

LRESULT CPlayerDlg::OnMediaChanged(WPARAM, LPARAM) {
    if (m_pSession != nullptr) m_pSession->Changed();
    return 0;
}

LRESULT CPlayerDlg::OnPlaybackInterrupted(WPARAM wParam, LPARAM) {
    m_bPlaying = wParam != 0;
    ShowPlaying(m_bPlaying);
    return 0;
}

void CPlayerDlg::OnVolume() {
    m_bVolumeShown = !m_bVolumeShown;
    ShowVolumeLatched(m_bVolumeShown);
    // Without a mixer this can end in a message box: nothing is touched after it.
    m_pPanel->ShowVolumeControls(m_bVolumeShown);
}

LRESULT CPlayerDlg::OnVolumeClosed(WPARAM, LPARAM) {
    m_bVolumeShown = FALSE;
    ShowVolumeLatched(FALSE);
    return 0;
}

void CPlayerDlg::ScaleTo(int nPercent) {
    constexpr int kLeast = 100;
    constexpr int kMost = 300;
    m_nScale = std::clamp(nPercent, kLeast, kMost);
    SetContentScale(m_nScale);
}

void CPlayerDlg::OnLarger() {
    ScaleTo(m_nScale + kScaleStep);
}

void CPlayerDlg::OnSmaller() {
    ScaleTo(m_nScale - kScaleStep);
}

void CPlayerDlg::OnOriginalSize() {
    ScaleTo(100);
}

void CPlayerDlg::OnFullScreen() {
    if (m_pFullScreen != nullptr) {
        LeaveFullScreen();
        return;
    }
    if (!m_bOpen || m_pPanel->GetPicture() == nullptr) return;
    m_pFullScreen = m_pPanel->GetPicture();
    m_pFullScreen->ShowFullScreen(TRUE);
}

void CPlayerDlg::LeaveFullScreen() {
    if (m_pFullScreen == nullptr) return;
    m_pFullScreen->ShowFullScreen(FALSE);
    m_pFullScreen = nullptr;
}

void CPlayerDlg::OnHelpAbout() {
    const HWND hWnd = m_hWnd;
    CAboutDlg dlg(this);
    ++m_nModal;
    dlg.DoModal();
    if (IsWindow(hWnd)) --m_nModal;
}

void CPlayerDlg::OnSysCommand(UINT nID, LPARAM lParam) {
    if (nID != SC_MAXIMIZE) CDialog::OnSysCommand(nID, lParam);
}

void CPlayerDlg::OnPaint() {
    if (!IsIconic()) {
        CDialog::OnPaint();
        return;
    }
    CPaintDC dc(this);
    SendMessage(WM_ICONERASEBKGND, reinterpret_cast<WPARAM>(&dc));
    CRect rect;
    GetClientRect(rect);
    const int x = (rect.Width() - GetSystemMetrics(SM_CXICON) + 1) / 2;
    const int y = (rect.Height() - GetSystemMetrics(SM_CYICON) + 1) / 2;
    dc.DrawIcon(x, y, m_hIcon);
}

HCURSOR CPlayerDlg::OnQueryDragIcon() {
    return m_hIcon;
}

void CPlayerDlg::ShowPlaying(BOOL bPlaying) {
    m_btnPlayPause.SetIcons(bPlaying ? IDI_PAUSE : IDI_PLAY, 0);
    m_btnPlayPause.SetTooltipText(bPlaying ? IDS_PAUSE : IDS_PLAY);
    m_pSession->Changed();
}

void CPlayerDlg::ShowVolumeLatched(BOOL bLatched) {
    m_btnVolume.SetTooltipText(bLatched ? IDS_CLOSE_VOLUME : IDS_OPEN_VOLUME);
    m_btnVolume.SetLatched(bLatched);
}

void CPlayerDlg::SetTitle(const CString& strTitle) {
    m_strTitle = strTitle;
    ShowTitle();
}

void CPlayerDlg::ShowTitle() {
    const int nSpeed = m_pPanel == nullptr ? kNormalSpeed : m_pPanel->GetSpeed();
    CString strTitle = m_strTitle;
    if (nSpeed != kNormalSpeed)
        strTitle.Format(IDS_TITLE_AT_SPEED, static_cast<LPCTSTR>(m_strTitle),
                        static_cast<double>(nSpeed) / kNormalSpeed);
    SetWindowText(strTitle);
}

void CPlayerDlg::ResetTitle() {
    SetTitle(LoadText(IDS_APP_TITLE));
}
