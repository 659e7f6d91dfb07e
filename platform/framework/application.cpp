// SPDX-License-Identifier: MIT
// The application object and its message filter.
#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

namespace {

CWinApp* g_app = nullptr;

}  // namespace

CWinApp::CWinApp() {
    g_app = this;
}

CWinApp::~CWinApp() {
    g_app = nullptr;
}

CWinApp* AfxGetApp() {
    return g_app;
}

CWnd* AfxGetMainWnd() {
    return g_app == nullptr ? nullptr : g_app->m_pMainWnd;
}

void CWinApp::SetAppID(LPCTSTR id) {
    Toolkit()->SetAppId(id);
}

int CWinApp::Run() {
    if (m_pMainWnd != nullptr) Toolkit()->Run();
    return ExitInstance();
}

BOOL CWinApp::PreTranslateMessage(MSG* message) {
    for (const Window* window = windows::Find(message->hwnd); window != nullptr; window = window->parent)
        if (window->object != nullptr && window->object->PreTranslateMessage(message) != FALSE) return TRUE;
    return FALSE;
}

void CWinApp::ParseCommandLine(CCommandLineInfo& info) const {
    for (int i = 1; i < m_argc; ++i)
        if (m_argv[i][0] != '-' && m_argv[i][0] != '\0') info.m_fileNames.emplace_back(m_argv[i]);
}
