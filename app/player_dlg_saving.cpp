// SPDX-License-Identifier: MIT
// The main window's commands that save the message or copy its picture.
#include "app/player_dlg.h"
#include "app/save_as.h"
#include "platform/framework/afxcmn.h"
#include "res/resource.h"

namespace {

constexpr LPCTSTR kSaveTitle = "Save As";

}  // namespace

// One at a time. Playing goes on under the dialogs.
void CPlayerDlg::OnFileSaveAs() {
    if (!m_bOpen || m_pSaving != nullptr) return;
    const HWND hWnd = m_hWnd;
    const CString strMessage = m_queue.Current();
    const CString strFilter = SaveAsFilter();
    CFileDialog dlg(FALSE, "", SaveAsName(strMessage), OFN_OVERWRITEPROMPT, strFilter, this);
    dlg.m_ofn.lpstrTitle = kSaveTitle;
    ++m_nModal;
    const int nResult = dlg.DoModal();
    if (!IsWindow(hWnd)) return;
    --m_nModal;
    if (nResult == IDOK && m_pSaving == nullptr) Save(strMessage, dlg.GetPathName());
}

void CPlayerDlg::Save(const CString& strMessage, const CString& strPath) {
    if (IsPictureName(strPath)) {
        CImage image;
        if (!CapturePicture(m_pPanel->GetPictureWindow(), image)) return;
        if (image.Save(strPath) != S_OK) ReportUnsaved(strPath);
        return;
    }
    m_pSaving = std::make_unique<CSavingDlg>(this);
    if (m_pSaving->Start(strMessage, strPath)) return;
    m_pSaving.reset();
    ReportUnsaved(strPath);
}

LRESULT CPlayerDlg::OnSavingEnded(WPARAM, LPARAM) {
    if (m_pSaving == nullptr) return 0;
    const CString strFailure = m_pSaving->GetFailure();
    m_pSaving.reset();
    if (!strFailure.IsEmpty()) ReportUnsaved(strFailure);
    return 0;
}

// The window may be gone afterwards.
void CPlayerDlg::ReportUnsaved(const CString& strReason) {
    const HWND hWnd = m_hWnd;
    CString strText;
    CString strTitle;
    strText.Format(IDS_CANNOT_SAVE, static_cast<LPCTSTR>(strReason));
    strTitle.LoadString(IDS_APP_TITLE);
    ++m_nModal;
    MessageBox(strText, strTitle, MB_ICONERROR);
    if (IsWindow(hWnd)) --m_nModal;
}

void CPlayerDlg::OnCopyPicture() {
    CImage image;
    if (CapturePicture(m_pPanel->GetPictureWindow(), image)) SetClipboardData(CF_BITMAP, image);
}
