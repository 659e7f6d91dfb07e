// SPDX-License-Identifier: MIT
// Message maps: tables that bind window messages to handlers.
//
// A map is written as in the framework (DECLARE_MESSAGE_MAP in the class, BEGIN_MESSAGE_MAP … END_MESSAGE_MAP
// beside its code). Each entry carries a small function that takes the message's parameters apart and calls
// the handler, so that a handler with the wrong signature does not compile.
#pragma once

#include "platform/framework/afxtypes.h"
#include "platform/framework/winuser.h"

class CWnd;
// The bar that a scroll message names. Difference from the framework: any window, as the message may come
// from a trackbar.
using CScrollBar = CWnd;
// Files dropped on a window; valid while WM_DROPFILES is handled.
using HDROP = const struct DroppedFiles*;

#define afx_msg

struct AFX_MSGMAP_ENTRY {
    UINT message;
    UINT code;  // WM_COMMAND: the notification code
    UINT id;    // WM_COMMAND: the control or command id
    LRESULT (*invoke)(CWnd* window, WPARAM wParam, LPARAM lParam);
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* base;  // null at the root
    const AFX_MSGMAP_ENTRY* entries;
    int count;
};

// Menu and accelerator commands come with code 0, as BN_CLICKED does.
inline constexpr UINT CN_COMMAND = 0;

namespace afx {

// The window behind a handle carried by a message, null for none (CWnd::FromHandle without its header).
CWnd* WindowFromMessage(LPARAM handle);

// The position that a mouse message carries.
inline CPoint PointOf(LPARAM lp) {
    const auto at = static_cast<DWORD_PTR>(lp);
    return CPoint(static_cast<std::int16_t>(LOWORD(at)), static_cast<std::int16_t>(HIWORD(at)));
}

template <class C>
struct ClassOf;
template <class C, class R, class... A>
struct ClassOf<R (C::*)(A...)> {
    using type = C;
};

template <auto Handler>
auto* Target(CWnd* window) {
    return static_cast<typename ClassOf<decltype(Handler)>::type*>(window);
}

template <auto H>
LRESULT CallVoid(CWnd* w, WPARAM, LPARAM) {
    (Target<H>(w)->*H)();
    return 0;
}
template <auto H>
LRESULT CallParams(CWnd* w, WPARAM wp, LPARAM lp) {
    return (Target<H>(w)->*H)(wp, lp);
}
template <auto H>
LRESULT CallSize(CWnd* w, WPARAM wp, LPARAM lp) {
    const auto size = static_cast<DWORD_PTR>(lp);
    (Target<H>(w)->*H)(static_cast<UINT>(wp), LOWORD(size), HIWORD(size));
    return 0;
}
template <auto H>
LRESULT CallTimer(CWnd* w, WPARAM wp, LPARAM) {
    (Target<H>(w)->*H)(static_cast<UINT_PTR>(wp));
    return 0;
}
template <auto H>
LRESULT CallScroll(CWnd* w, WPARAM wp, LPARAM lp) {
    (Target<H>(w)->*H)(LOWORD(wp), HIWORD(wp), WindowFromMessage(lp));
    return 0;
}
template <auto H>
LRESULT CallSysCommand(CWnd* w, WPARAM wp, LPARAM lp) {
    (Target<H>(w)->*H)(static_cast<UINT>(wp), lp);
    return 0;
}
template <auto H>
LRESULT CallMouse(CWnd* w, WPARAM wp, LPARAM lp) {
    (Target<H>(w)->*H)(static_cast<UINT>(wp), PointOf(lp));
    return 0;
}
// The position is one on the screen.
template <auto H>
LRESULT CallWheel(CWnd* w, WPARAM wp, LPARAM lp) {
    return (Target<H>(w)->*H)(LOWORD(wp), static_cast<std::int16_t>(HIWORD(wp)), PointOf(lp));
}
// The key, how often it counts, and bits that say more about it (KF_…).
template <auto H>
LRESULT CallKey(CWnd* w, WPARAM wp, LPARAM lp) {
    const auto detail = static_cast<DWORD_PTR>(lp);
    (Target<H>(w)->*H)(static_cast<UINT>(wp), LOWORD(detail), HIWORD(detail));
    return 0;
}
template <auto H>
LRESULT CallWindowLParam(CWnd* w, WPARAM, LPARAM lp) {
    (Target<H>(w)->*H)(WindowFromMessage(lp));
    return 0;
}
template <auto H>
LRESULT CallWindowWParam(CWnd* w, WPARAM wp, LPARAM) {
    (Target<H>(w)->*H)(WindowFromMessage(static_cast<LPARAM>(wp)));
    return 0;
}
template <auto H>
LRESULT CallSetCursor(CWnd* w, WPARAM wp, LPARAM lp) {
    const auto detail = static_cast<DWORD_PTR>(lp);
    return (Target<H>(w)->*H)(WindowFromMessage(static_cast<LPARAM>(wp)), LOWORD(detail), HIWORD(detail));
}
template <auto H>
LRESULT CallIcon(CWnd* w, WPARAM, LPARAM) {
    return reinterpret_cast<LRESULT>((Target<H>(w)->*H)());
}
template <auto H>
LRESULT CallDrop(CWnd* w, WPARAM wp, LPARAM) {
    (Target<H>(w)->*H)(reinterpret_cast<HDROP>(wp));
    return 0;
}

}  // namespace afx

#define DECLARE_MESSAGE_MAP()                          \
protected:                                             \
    static const AFX_MSGMAP* GetThisMessageMap();      \
    const AFX_MSGMAP* GetMessageMap() const override { \
        return GetThisMessageMap();                    \
    }

#define BEGIN_MESSAGE_MAP(theClass, baseClass)        \
    const AFX_MSGMAP* theClass::GetThisMessageMap() { \
        using ThisClass = theClass;                   \
        using TheBaseClass = baseClass;               \
        static constexpr AFX_MSGMAP_ENTRY entries[] = {
// The closing entry never matches: no message has this number.
#define END_MESSAGE_MAP()                                                                       \
    { 0xFFFFFFFFU, 0, 0, nullptr }                                                              \
    }                                                                                           \
    ;                                                                                           \
    static const AFX_MSGMAP map = {TheBaseClass::GetThisMessageMap(), entries,                  \
                                   static_cast<int>(sizeof(entries) / sizeof(entries[0]) - 1)}; \
    return &map;                                                                                \
    }

#define ON_MESSAGE(message, handler) {message, 0, 0, &afx::CallParams<&ThisClass::handler>},
#define ON_COMMAND(commandId, handler) \
    {WM_COMMAND, CN_COMMAND, commandId, &afx::CallVoid<&ThisClass::handler>},
#define ON_BN_CLICKED(controlId, handler) \
    {WM_COMMAND, BN_CLICKED, controlId, &afx::CallVoid<&ThisClass::handler>},
#define ON_WM_PAINT() {WM_PAINT, 0, 0, &afx::CallVoid<&ThisClass::OnPaint>},
#define ON_WM_CLOSE() {WM_CLOSE, 0, 0, &afx::CallVoid<&ThisClass::OnClose>},
#define ON_WM_DESTROY() {WM_DESTROY, 0, 0, &afx::CallVoid<&ThisClass::OnDestroy>},
#define ON_WM_SIZE() {WM_SIZE, 0, 0, &afx::CallSize<&ThisClass::OnSize>},
#define ON_WM_TIMER() {WM_TIMER, 0, 0, &afx::CallTimer<&ThisClass::OnTimer>},
#define ON_WM_VSCROLL() {WM_VSCROLL, 0, 0, &afx::CallScroll<&ThisClass::OnVScroll>},
#define ON_WM_SYSCOMMAND() {WM_SYSCOMMAND, 0, 0, &afx::CallSysCommand<&ThisClass::OnSysCommand>},
#define ON_WM_MOUSEMOVE() {WM_MOUSEMOVE, 0, 0, &afx::CallMouse<&ThisClass::OnMouseMove>},
#define ON_WM_LBUTTONDOWN() {WM_LBUTTONDOWN, 0, 0, &afx::CallMouse<&ThisClass::OnLButtonDown>},
#define ON_WM_LBUTTONUP() {WM_LBUTTONUP, 0, 0, &afx::CallMouse<&ThisClass::OnLButtonUp>},
#define ON_WM_LBUTTONDBLCLK() {WM_LBUTTONDBLCLK, 0, 0, &afx::CallMouse<&ThisClass::OnLButtonDblClk>},
#define ON_WM_MOUSEWHEEL() {WM_MOUSEWHEEL, 0, 0, &afx::CallWheel<&ThisClass::OnMouseWheel>},
#define ON_WM_KEYDOWN() {WM_KEYDOWN, 0, 0, &afx::CallKey<&ThisClass::OnKeyDown>},
#define ON_WM_CAPTURECHANGED() \
    {WM_CAPTURECHANGED, 0, 0, &afx::CallWindowLParam<&ThisClass::OnCaptureChanged>},
#define ON_WM_SETFOCUS() {WM_SETFOCUS, 0, 0, &afx::CallWindowWParam<&ThisClass::OnSetFocus>},
#define ON_WM_KILLFOCUS() {WM_KILLFOCUS, 0, 0, &afx::CallWindowWParam<&ThisClass::OnKillFocus>},
#define ON_WM_SETCURSOR() {WM_SETCURSOR, 0, 0, &afx::CallSetCursor<&ThisClass::OnSetCursor>},
#define ON_WM_QUERYDRAGICON() {WM_QUERYDRAGICON, 0, 0, &afx::CallIcon<&ThisClass::OnQueryDragIcon>},
#define ON_WM_DROPFILES() {WM_DROPFILES, 0, 0, &afx::CallDrop<&ThisClass::OnDropFiles>},
