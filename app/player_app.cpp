// SPDX-License-Identifier: MIT
#include "app/player_app.h"

#include <iterator>
#include <string>
#include <vector>

#include "app/player_dlg.h"
#include "codec/message_format.h"
#include "platform/framework/resources.h"
#include "platform/shell/file_type.h"
#include "res/resource.h"

namespace {

constexpr LPCTSTR kExtension = ".trv";

}  // namespace

CPlayerApp::CPlayerApp() = default;
CPlayerApp::~CPlayerApp() = default;

BOOL CPlayerApp::InitInstance() {
    Enable3dControls();
    CString strCompany;
    strCompany.LoadString(IDS_REGISTRY_KEY);
    SetRegistryKey(strCompany);
    m_strAppName.LoadString(IDS_APP_TITLE);
    SetAppID("com.trivelle.MessagePlayer");
    RegisterFileType();

    CCommandLineInfo info;
    ParseCommandLine(info);
    std::vector<CString> messages = info.m_fileNames;
    std::erase_if(messages, [](const CString& strPath) { return !CPlayQueue::IsMessage(strPath); });

    m_instance.Acquire();
    if (m_instance.IsSuperseded()) return FALSE;

    auto* pDlg = new CPlayerDlg;
    m_pMainWnd = pDlg;
    m_instance.CloseOnRequest(pDlg->GetSafeHwnd());
    pDlg->ShowWindow(m_nCmdShow);
    pDlg->UpdateWindow();

    if (!messages.empty()) pDlg->OpenMessages(messages);
    return TRUE;
}

void CPlayerApp::RegisterFileType() {
    FileType type;
    type.extension = kExtension;
    type.identifier = "Trivelle.Message";
    type.description = "Trivelle Compressed Message";
    type.magic = std::string(std::begin(kMessageMagic), std::end(kMessageMagic));
    type.program = m_strExecutablePath.Str();
    CString strTitle;
    strTitle.LoadString(IDS_APP_TITLE);
    type.program_name = strTitle.Str();
    type.installed_entry = "com.trivelle.MessagePlayer.desktop";
    if (const auto drawing = resources::Find(resources::kRawData, IDR_PLAYER_SVG)) type.icon = *drawing;
    ::RegisterFileType(type);
}

BOOL CPlayerApp::PreTranslateMessage(MSG* pMsg) {
    // Windows see them, but the desktop's controls must not act on them.
    const BOOL bKept =
        pMsg->message == WM_KEYDOWN && (pMsg->wParam == VK_ESCAPE || pMsg->wParam == VK_RETURN);
    return CWinApp::PreTranslateMessage(pMsg) || bKept;
}
