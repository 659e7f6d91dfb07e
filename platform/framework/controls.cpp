// SPDX-License-Identifier: MIT
#include "platform/framework/afxcmn.h"
#include "platform/framework/unsupported.h"
#include "platform/framework/window.h"

BEGIN_MESSAGE_MAP(CButton, CWnd)
ON_MESSAGE(WM_DRAWITEM, OnReflectedDrawItem)
END_MESSAGE_MAP()

LRESULT CButton::OnReflectedDrawItem(WPARAM, LPARAM lParam) {
    DrawItem(reinterpret_cast<DRAWITEMSTRUCT*>(lParam));
    return TRUE;
}

void CSliderCtrl::SetRange(int minimum, int maximum, BOOL redraw) {
    SendMessage(TBM_SETRANGEMIN, 0, minimum);
    SendMessage(TBM_SETRANGEMAX, static_cast<WPARAM>(redraw), maximum);
}

CToolTipCtrl::~CToolTipCtrl() {
    DestroyToolTipCtrl();
}

BOOL CToolTipCtrl::Create(CWnd* parent) {
    if (m_parent != nullptr || parent == nullptr || parent->GetSafeHwnd() == nullptr) return FALSE;
    m_parent = parent->GetSafeHwnd();
    return TRUE;
}

void CToolTipCtrl::DestroyToolTipCtrl() {
    if (m_parent == nullptr) return;
    if (Toolkit() != nullptr) Toolkit()->HideTip();
    m_parent = nullptr;
    m_hasTool = false;
}

void CToolTipCtrl::SetDelayTime(UINT which, int milliseconds) {
    if (which == TTDT_INITIAL) m_initial = milliseconds;
    if (which == TTDT_AUTOPOP) m_autoPop = milliseconds;
    if (which == TTDT_RESHOW) m_reshow = milliseconds;
}

void CToolTipCtrl::Activate(BOOL active) {
    m_active = active != FALSE;
}

BOOL CToolTipCtrl::AddTool(CWnd*, LPCTSTR text, const RECT* rect, UINT_PTR) {
    if (m_parent == nullptr || m_hasTool) return FALSE;
    m_hasTool = true;
    m_rect = *rect;
    m_text = text;
    return TRUE;
}

void CToolTipCtrl::UpdateTipText(LPCTSTR text, CWnd*, UINT_PTR) {
    m_text = text;
}

void CToolTipCtrl::RelayEvent(const MSG* message) {
    NativeToolkit* toolkit = Toolkit();
    if (toolkit == nullptr || !m_active || !m_hasTool || message->hwnd != m_parent) return;
    switch (message->message) {
        case WM_MOUSEMOVE: {
            if (m_rect.PtInRect(afx::PointOf(message->lParam)) != FALSE)
                toolkit->OfferTip(m_parent, m_text.Str(), {m_initial, m_reshow, m_autoPop});
            else
                toolkit->HideTip();
            break;
        }
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
        case WM_LBUTTONDBLCLK:
        case WM_KEYDOWN:
            toolkit->HideTip();
            break;
        default:
            break;
    }
}

CFileDialog::CFileDialog(BOOL openFile, LPCTSTR defaultExtension, LPCTSTR fileName, DWORD flags,
                         LPCTSTR filter, CWnd* parent)
    : m_ofn{flags, "", ""}, m_openFile(openFile), m_fileName(fileName), m_filter(filter), m_parent(parent) {
    if (*defaultExtension != '\0') Unsupported("file dialog", "with an extension given");
    if (openFile != FALSE && *fileName != '\0') Unsupported("file dialog", "with a name given");
}

int CFileDialog::DoModal() {
    std::vector<std::string> filters;
    const std::string& text = m_filter.Str();
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('|', start);
        if (end == start || end == std::string::npos) break;
        filters.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    const HWND owner = m_parent == nullptr ? nullptr : m_parent->GetSafeHwnd();
    const auto chosen =
        Toolkit()->ChooseFiles(owner, m_ofn.lpstrTitle, filters,
                               {m_openFile == FALSE, (m_ofn.Flags & OFN_ALLOWMULTISELECT) != 0,
                                m_ofn.lpstrInitialDir, m_fileName.Str()});
    m_paths.assign(chosen.begin(), chosen.end());
    if (m_paths.empty()) return IDCANCEL;
    return IDOK;
}
