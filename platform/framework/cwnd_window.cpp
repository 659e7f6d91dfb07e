// SPDX-License-Identifier: MIT
// CWnd: geometry, visibility, painting, focus and capture.
#include <map>
#include <string>
#include <utility>

#include "platform/framework/afxicon.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/unsupported.h"
#include "platform/framework/window.h"

namespace {

struct WindowClass {
    bool redrawOnResize;
    std::optional<COLORREF> background;
};

std::map<std::string, WindowClass>& Classes() {
    static std::map<std::string, WindowClass> classes;
    return classes;
}

HWND g_capture = nullptr;

void SetCaptureTo(HWND window) {
    const HWND before = std::exchange(g_capture, window);
    if (before != nullptr && before != window)
        windows::Call(before, WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(window));
}

}  // namespace

LPCTSTR AfxRegisterWndClass(UINT classStyle, const CBrush* background) {
    if ((classStyle & ~(CS_HREDRAW | CS_VREDRAW)) != 0) Unsupported("style of a window class", classStyle);
    const bool redraw = (classStyle & (CS_HREDRAW | CS_VREDRAW)) != 0;
    std::string name = "Afx:" + std::to_string(classStyle);
    std::optional<COLORREF> color;
    if (background != nullptr) {
        color = background->Color();
        name += ":" + std::to_string(*color);
    }
    // Map nodes never move, so the name's text stays where it is.
    return Classes().try_emplace(name, WindowClass{redraw, color}).first->first.c_str();
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR title, DWORD style, const RECT& rect,
                    CWnd* parent, UINT id) {
    constexpr DWORD kKnown = WS_CHILD | WS_VISIBLE | WS_BORDER;
    if ((style & ~kKnown) != 0 || (style & WS_CHILD) == 0) Unsupported("style of a window", style);
    if ((exStyle & ~WS_EX_STATICEDGE) != 0) Unsupported("extended style of a window", exStyle);
    const auto found = Classes().find(className);
    if (found == Classes().end()) Unsupported("window class", className);
    Window* parentWindow = parent == nullptr ? nullptr : windows::Find(parent->m_hWnd);
    if (parentWindow == nullptr || m_hWnd != nullptr) return FALSE;
    auto window = std::make_unique<Window>();
    window->style = style;
    window->exStyle = exStyle;
    window->id = id;
    window->parent = parentWindow;
    window->rect = rect;
    window->text = title == nullptr ? "" : title;
    window->background = found->second.background;
    window->redrawOnResize = found->second.redrawOnResize;
    windows::Create(std::move(window), this);
    if ((style & WS_VISIBLE) != 0) ShowWindow(SW_SHOW);
    return TRUE;
}

BOOL CWnd::ShowWindow(int cmdShow) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return FALSE;
    const BOOL was = window->visible ? TRUE : FALSE;
    window->visible = cmdShow != SW_HIDE;
    window->native->Show(cmdShow);
    // What was invalidated while hidden is painted now.
    if (window->visible) windows::PaintSoon();
    return was;
}

BOOL CWnd::IsWindowVisible() const {
    const Window* window = windows::Find(m_hWnd);
    return window != nullptr && window->IsShown() ? TRUE : FALSE;
}

BOOL CWnd::IsIconic() const {
    const Window* window = windows::Find(m_hWnd);
    return window != nullptr && window->native->IsMinimized() ? TRUE : FALSE;
}

BOOL CWnd::EnableWindow(BOOL enable) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return FALSE;
    const BOOL wasDisabled = window->enabled ? FALSE : TRUE;
    window->enabled = enable != FALSE;
    window->native->Enable(window->enabled);
    windows::Invalidate(*window, window->ClientRect(), true);
    return wasDisabled;
}

BOOL CWnd::IsWindowEnabled() const {
    const Window* window = windows::Find(m_hWnd);
    return window != nullptr && window->enabled ? TRUE : FALSE;
}

void CWnd::MoveWindow(const RECT* rect, BOOL repaint) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return;
    const CRect before = window->ClientRect();
    window->rect = *rect;
    window->native->Place(window->rect);
    const CRect client = window->ClientRect();
    if (client.Width() != before.Width() || client.Height() != before.Height()) {
        windows::ReplaceSurface(*window);
        windows::Invalidate(*window, client, true);
        windows::Call(m_hWnd, WM_SIZE, 0, static_cast<LPARAM>(client.bottom << 16 | client.right));
    }
    if (repaint != FALSE) Invalidate();
}

void CWnd::CenterWindow() {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return;
    if (window->IsTopLevel()) {
        window->native->CenterOnScreen();
        return;
    }
    const CRect area = window->parent->ClientRect();
    CRect moved = window->rect;
    moved.OffsetRect(area.Width() / 2 - moved.Width() / 2 - moved.left,
                     area.Height() / 2 - moved.Height() / 2 - moved.top);
    MoveWindow(moved, FALSE);
}

void CWnd::GetClientRect(RECT* rect) const {
    const Window* window = windows::Find(m_hWnd);
    *rect = window == nullptr ? CRect() : window->ClientRect();
}

void CWnd::ClientToScreen(POINT* point) const {
    if (const Window* window = windows::Find(m_hWnd)) *point = window->native->ToScreen(*point);
}

void CWnd::ScreenToClient(POINT* point) const {
    if (const Window* window = windows::Find(m_hWnd)) *point = window->native->FromScreen(*point);
}

void CWnd::SetWindowText(LPCTSTR text) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr || window->text == text) return;
    window->text = text;
    window->native->SetText(window->text);
    if (window->kind == Window::Kind::kStatic) windows::Invalidate(*window, window->ClientRect(), true);
}

void CWnd::GetWindowText(CString& text) const {
    const Window* window = windows::Find(m_hWnd);
    text = window == nullptr ? CString() : CString(window->text);
}

DWORD CWnd::GetStyle() const {
    const Window* window = windows::Find(m_hWnd);
    return window == nullptr ? 0 : window->style;
}

CWnd* CWnd::GetParent() const {
    const Window* window = windows::Find(m_hWnd);
    return window == nullptr || window->parent == nullptr ? nullptr : window->parent->object;
}

CWnd* CWnd::GetOwner() const {
    const Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return nullptr;
    return window->parent != nullptr ? window->parent->object : FromHandle(window->owner);
}

CWnd* CWnd::GetDlgItem(int id) const {
    const Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return nullptr;
    for (const Window* child : window->children)
        if (child->id == static_cast<UINT>(id)) return child->object;
    return nullptr;
}

CWnd* CWnd::SetFocus() {
    CWnd* before = GetFocus();
    if (Window* window = windows::Find(m_hWnd)) window->native->SetFocus();
    return before;
}

CWnd* CWnd::GetFocus() {
    return FromHandle(Toolkit()->FocusWindow());
}

CWnd* CWnd::GetActiveWindow() {
    return FromHandle(Toolkit()->ActiveWindow());
}

CWnd* CWnd::WindowFromPoint(POINT screen) {
    return FromHandle(Toolkit()->WindowAt(screen));
}

CWnd* CWnd::SetCapture() {
    CWnd* before = GetCapture();
    SetCaptureTo(m_hWnd);
    return before;
}

CWnd* CWnd::GetCapture() {
    return FromHandle(g_capture);
}

BOOL ReleaseCapture() {
    SetCaptureTo(nullptr);
    return TRUE;
}

void CWnd::Invalidate(BOOL erase) {
    if (Window* window = windows::Find(m_hWnd))
        windows::Invalidate(*window, window->ClientRect(), erase != FALSE);
}

void CWnd::InvalidateRect(const RECT* rect, BOOL erase) {
    if (rect == nullptr) return Invalidate(erase);
    if (Window* window = windows::Find(m_hWnd)) windows::Invalidate(*window, *rect, erase != FALSE);
}

BOOL CWnd::RedrawWindow(const RECT* rect, UINT flags) {
    if ((flags & ~(RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW)) != 0)
        Unsupported("way of redrawing a window", flags);
    if ((flags & RDW_INVALIDATE) != 0) InvalidateRect(rect, (flags & RDW_ERASE) != 0 ? TRUE : FALSE);
    if ((flags & RDW_UPDATENOW) != 0) UpdateWindow();
    return TRUE;
}

void CWnd::UpdateWindow() {
    windows::PaintNow(m_hWnd);
}

UINT_PTR CWnd::SetTimer(UINT_PTR id, UINT milliseconds) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr) return 0;
    window->native->StartTimer(id, milliseconds);
    return id;
}

BOOL CWnd::KillTimer(UINT_PTR id) {
    Window* window = windows::Find(m_hWnd);
    return window != nullptr && window->native->StopTimer(id) ? TRUE : FALSE;
}

HICON CWnd::SetIcon(HICON icon, BOOL bigIcon) {
    return reinterpret_cast<HICON>(
        SendMessage(WM_SETICON, bigIcon != FALSE ? ICON_BIG : ICON_SMALL, reinterpret_cast<LPARAM>(icon)));
}

void CWnd::SetCommandShortcut(UINT commandId, LPCTSTR shortcuts) {
    if (Window* window = windows::Find(m_hWnd)) window->native->SetShortcut(commandId, shortcuts);
}

void CWnd::SetAccessibleName(LPCTSTR name) {
    if (Window* window = windows::Find(m_hWnd)) window->native->SetAccessibleName(name);
}

void CWnd::AnnounceValue() {
    if (m_hWnd != nullptr && Toolkit() != nullptr) Toolkit()->AnnounceValue(m_hWnd);
}

void CWnd::ShowFullScreen(BOOL full) {
    Window* window = windows::Find(m_hWnd);
    if (window == nullptr || window->parent == nullptr) return;
    window->native->ShowFullScreen(full != FALSE);
    windows::Rescale();
}

void SetContentScale(int percent) {
    Toolkit()->SetContentScale(percent / 100.0);
    for (const HWND handle : windows::All()) {
        const Window* window = windows::Find(handle);
        window->native->Place(window->rect);
    }
    windows::Rescale();
}

void CWnd::DragAcceptFiles(BOOL accept) {
    if (Window* window = windows::Find(m_hWnd)) window->native->AcceptDrops(accept != FALSE);
}

int CWnd::MessageBox(LPCTSTR text, LPCTSTR caption, UINT type) {
    if ((type & ~MB_ICONERROR) != MB_OK) Unsupported("type of a message box", type);
    Toolkit()->MessageBox(m_hWnd, text, caption, (type & MB_ICONERROR) != 0);
    return IDOK;
}

short GetKeyState(int key) {
    const auto code = static_cast<WPARAM>(key);
    if (code != VK_SHIFT && code != VK_CONTROL) Unsupported("key to ask for", code);
    return Toolkit()->IsKeyHeld(code) ? -0x8000 : 0;
}

COLORREF GetSysColor(int index) {
    return Toolkit() == nullptr ? 0 : Toolkit()->SystemColor(index);
}

int GetSystemMetrics(int index) {
    return index == SM_CXICON || index == SM_CYICON ? 32 : 0;
}
