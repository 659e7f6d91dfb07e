// SPDX-License-Identifier: MIT
#include "app/saving_dlg.h"

#include <exception>

#include "platform/framework/afxmt.h"
#include "res/resource.h"
#include "tools/export/message_file.h"
#include "tools/export/save_message.h"

namespace {

constexpr UINT_PTR kStateTimer = 1;
constexpr UINT kStateTimerMs = 100;

struct Cancelled {};

}  // namespace

BEGIN_MESSAGE_MAP(CSavingDlg, CDialog)
ON_WM_TIMER()
END_MESSAGE_MAP()

CSavingDlg::CSavingDlg(CWnd* pParent) : m_hParent(pParent->GetSafeHwnd()) {
    Create(IDD_SAVING, pParent);
}

CSavingDlg::~CSavingDlg() {
    m_bCancelled = true;
    delete m_pThread;
    DestroyWindow();
}

void CSavingDlg::DoDataExchange(CDataExchange* pDX) {
    CDialog::DoDataExchange(pDX);
    DDX_Control(pDX, IDC_SAVING_STATE, m_state);
}

BOOL CSavingDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    SetTimer(kStateTimer, kStateTimerMs);
    return TRUE;
}

BOOL CSavingDlg::Start(const CString& strMessage, const CString& strPath) {
    m_message = strMessage;
    m_path = strPath;
    if (tools::FindSaveForm(tools::EndingOf(m_path)) == nullptr) return FALSE;
    m_pThread = AfxBeginThread(SavingThreadProc, this, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    if (m_pThread == nullptr) return FALSE;
    m_pThread->m_bAutoDelete = FALSE;
    if (m_pThread->ResumeThread() == kThreadNotStarted) return FALSE;
    ShowState();
    ShowWindow(SW_SHOW);
    return TRUE;
}

// The thread looks at it at least ten times a second.
void CSavingDlg::OnCancel() {
    m_bCancelled = true;
}

void CSavingDlg::OnTimer(UINT_PTR) {
    ShowState();
}

void CSavingDlg::ShowState() {
    CString strState;
    strState.Format(IDS_SAVING, m_path.substr(m_path.rfind('/') + 1).c_str(), m_nPercent.load());
    m_state.SetWindowText(strState);
}

UINT CSavingDlg::SavingThreadProc(LPVOID pParam) {
    auto* const pDlg = static_cast<CSavingDlg*>(pParam);
    try {
        pDlg->Save();
    } catch (const Cancelled&) {
        // What was asked for.
    } catch (const std::exception& error) {
        pDlg->m_failure = error.what();
    }
    ::PostMessage(pDlg->m_hParent, WM_SAVING_ENDED, 0, 0);
    return 0;
}

void CSavingDlg::Save() {
    tools::MessageFile message(m_message);
    tools::SoundRequest request;
    request.output = m_path;
    request.form = tools::FindSaveForm(tools::EndingOf(m_path));
    request.replace.force = true;  // the file dialog has asked
    const auto watch = [this](double share) {
        if (m_bCancelled) throw Cancelled();
        m_nPercent = static_cast<int>(share * 100);
    };
    if (request.form->HasPictures()) {
        tools::SaveFilm(message, request, watch);
    } else {
        tools::SaveSound(message, request, watch);
    }
}
