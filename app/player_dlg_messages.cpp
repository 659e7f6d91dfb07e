// SPDX-License-Identifier: MIT
// The main window's messages: opening them, and going from one to the next.
#include "app/media_decisions.h"
#include "app/player_dlg.h"
#include "platform/framework/afxcmn.h"
#include "res/resource.h"

namespace {

constexpr LPCTSTR kFileFilter = "Trivelle Message Files (*.trv)|*.trv||";
constexpr LPCTSTR kOpenTitle = "Open Trivelle Message...";

CString LoadText(UINT nID) {
    CString strText;
    strText.LoadString(nID);
    return strText;
}

CString FileName(const CString& strPath) {
    return strPath.Mid(strPath.ReverseFind('/') + 1);
}

}  // namespace

void CPlayerDlg::OpenMessages(const std::vector<CString>& files) {
    m_queue.Set(CPlayQueue::MessagesAmong(files));
    if (!m_queue.Current().IsEmpty()) OpenCurrent();
}

void CPlayerDlg::OpenFiles(const std::vector<CString>& files) {
    if (m_nModal == 0) OpenMessages(files);
}

void CPlayerDlg::OpenCurrent() {
    const HWND hWnd = m_hWnd;
    const CString strPath = m_queue.Current();
    const BOOL bFullScreen = m_pFullScreen != nullptr;
    LeaveFullScreen();

    // The panel reports a missing sound device in a message box of its own.
    ++m_nModal;
    const BOOL bOpen = m_pPanel->Open(strPath);
    if (!IsWindow(hWnd)) return;
    --m_nModal;

    m_bOpen = bOpen;
    if (m_bOpen) {
        OnStop();
        SetTitle(LoadText(IDS_APP_TITLE) + " - " + FileName(strPath));
        m_pSession->Opened();
        OnPlayPause();
        // The next of a queue goes on where the last one was shown.
        if (bFullScreen) OnFullScreen();
        return;
    }

    // Nothing is open any more, so the button must not go on offering Pause.
    m_pSession->Opened();
    m_bPlaying = FALSE;
    ShowPlaying(FALSE);
    CString strText;
    strText.Format(IDS_CANNOT_OPEN_FILE, static_cast<LPCTSTR>(strPath));
    ++m_nModal;
    MessageBox(strText, LoadText(IDS_APP_TITLE), MB_ICONERROR);
    if (!IsWindow(hWnd)) return;
    --m_nModal;
    if (!m_bOpen) ResetTitle();
}

void CPlayerDlg::OnFileOpen() {
    const HWND hWnd = m_hWnd;
    CFileDialog dlg(TRUE, "", "", 0, kFileFilter, this);
    dlg.m_ofn.lpstrTitle = kOpenTitle;
    dlg.m_ofn.Flags |= OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_READONLY | OFN_ALLOWMULTISELECT;
    const CString strFolder = m_queue.LastFolder();
    dlg.m_ofn.lpstrInitialDir = strFolder;
    ++m_nModal;
    const int nResult = dlg.DoModal();
    if (!IsWindow(hWnd)) return;
    --m_nModal;
    if (nResult == IDOK) OpenMessages(dlg.GetPathNames());
}

void CPlayerDlg::OnFileClose() {
    if (!m_bOpen) return;
    LeaveFullScreen();
    OnStop();
    m_bOpen = FALSE;
    m_pPanel->Close();
    m_queue.Set({});
    ResetTitle();
    m_pSession->Opened();
}

void CPlayerDlg::GoToMessage(int nStep, BOOL bForOthers) {
    const HWND hWnd = m_hWnd;
    if (m_nModal != 0) return;
    const MediaStatus status = MediaStatusOf(m_pPanel->GetState());
    const CString strPath = nStep > 0 ? m_queue.Next() : m_queue.Previous();
    if (strPath.IsEmpty()) {
        if (bForOthers && status == MediaStatus::Playing) OnStop();
        return;
    }
    OpenCurrent();
    if (!IsWindow(hWnd) || !m_bOpen) return;
    if (status == MediaStatus::Paused) {
        OnPlayPause();
        m_pPanel->SeekTo(0);
    } else if (status == MediaStatus::Stopped && bForOthers) {
        OnStop();
    }
}

void CPlayerDlg::OnNextMessage() {
    GoToMessage(1, FALSE);
}

void CPlayerDlg::OnPreviousMessage() {
    GoToMessage(-1, FALSE);
}

LRESULT CPlayerDlg::OnPlayOn(WPARAM, LPARAM) {
    const HWND hWnd = m_hWnd;
    // Meanwhile a person may have chosen something else.
    if (m_bPlaying || !m_queue.PlaysOn()) return 0;
    m_queue.Next();
    OpenCurrent();
    if (IsWindow(hWnd) && !m_bOpen && m_queue.PlaysOn()) PostMessage(WM_PLAY_ON);
    return 0;
}

// As if they had been chosen in the dialog.
void CPlayerDlg::OnDropFiles(HDROP hDrop) {
    std::vector<CString> files;
    for (UINT i = 0; i < DragQueryFileCount(hDrop); ++i) files.push_back(DragQueryFile(hDrop, i));
    OpenFiles(files);
}
