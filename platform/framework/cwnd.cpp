// SPDX-License-Identifier: MIT
// CWnd: message handling and life. Geometry and painting are in cwnd_window.cpp.
#include <utility>

#include "platform/framework/afxcmn.h"
#include "platform/framework/window.h"

namespace {

// The message that is being handled, for Default(); handlers nest.
MSG g_current{};

}  // namespace

CWnd::~CWnd() {
    if (m_hWnd != nullptr) windows::Destroy(m_hWnd);
}

CWnd* CWnd::FromHandle(HWND hWnd) {
    const Window* window = windows::Find(hWnd);
    return window == nullptr ? nullptr : window->object;
}

BOOL CWnd::SubclassWindow(HWND hWnd) {
    Window* window = windows::Find(hWnd);
    if (window == nullptr || window->object != nullptr || m_hWnd != nullptr) return FALSE;
    window->object = this;
    m_hWnd = hWnd;
    PreSubclassWindow();
    return TRUE;
}

BOOL CWnd::DestroyWindow() {
    if (m_hWnd == nullptr) return FALSE;
    windows::Destroy(m_hWnd);
    return TRUE;
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP map = {nullptr, nullptr, 0};
    return &map;
}

bool CWnd::Dispatch(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    const UINT id = message == WM_COMMAND ? LOWORD(wParam) : 0;
    const UINT code = message == WM_COMMAND ? HIWORD(wParam) : 0;
    for (const AFX_MSGMAP* map = GetMessageMap(); map != nullptr; map = map->base) {
        for (int i = 0; i < map->count; ++i) {
            const AFX_MSGMAP_ENTRY& entry = map->entries[i];
            if (entry.message != message || entry.id != id || entry.code != code) continue;
            *result = entry.invoke(this, wParam, lParam);
            return true;
        }
    }
    return false;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const MSG outer = g_current;
    g_current = {m_hWnd, message, wParam, lParam};
    LRESULT result = 0;
    // A handler may delete this object: nothing of it is touched once it has run.
    if (!Dispatch(message, wParam, lParam, &result)) result = DefWindowProc(message, wParam, lParam);
    g_current = outer;
    return result;
}

LRESULT CWnd::Default() {
    return DefWindowProc(g_current.message, g_current.wParam, g_current.lParam);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_NCDESTROY) return windows::CallDefault(m_hWnd, message, wParam, lParam);
    // The last message: the object and its window part.
    if (Window* window = windows::Find(m_hWnd)) window->object = nullptr;
    const bool wasMain = AfxGetApp() != nullptr && AfxGetApp()->m_pMainWnd == this;
    m_hWnd = nullptr;
    if (wasMain) {
        AfxGetApp()->m_pMainWnd = nullptr;
        Toolkit()->Quit();
    }
    PostNcDestroy();
    return 0;
}

BOOL CWnd::PreTranslateMessage(MSG*) {
    return FALSE;
}

BOOL CWnd::UpdateData(BOOL saveAndValidate) {
    CDataExchange dx(this, saveAndValidate);
    DoDataExchange(&dx);
    return TRUE;
}

// The window that is handling the innermost message is the one whose cursor is asked for.
HCURSOR SetCursor(HCURSOR cursor) {
    static HCURSOR current = nullptr;
    if (Window* window = windows::Find(g_current.hwnd)) window->native->SetCursor(IconImage(cursor));
    return std::exchange(current, cursor);
}

namespace windows {

LRESULT Call(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Find(handle);
    if (window == nullptr) return 0;
    return window->object == nullptr ? CallDefault(handle, message, wParam, lParam)
                                     : window->object->WindowProc(message, wParam, lParam);
}

LRESULT DeliverInput(const MSG& message) {
    MSG copy = message;
    if (AfxGetApp() != nullptr && AfxGetApp()->PreTranslateMessage(&copy) != FALSE) return 0;
    return Call(message.hwnd, message.message, message.wParam, message.lParam);
}

}  // namespace windows

namespace afx {

CWnd* WindowFromMessage(LPARAM handle) {
    return CWnd::FromHandle(reinterpret_cast<HWND>(handle));
}

}  // namespace afx
