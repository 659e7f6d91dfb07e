// SPDX-License-Identifier: MIT
// Contexts that draw on a window: they borrow its picture and have it shown when they end.
#include "platform/framework/afxgdi.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

CClientDC::CClientDC(CWnd* window) : m_hWnd(window == nullptr ? nullptr : window->GetSafeHwnd()) {
    if (auto surface = windows::SurfaceOf(m_hWnd)) {
        const CRect whole(0, 0, surface->width(), surface->height());
        AttachSurface(std::move(surface), whole);
    }
}

CClientDC::~CClientDC() {
    windows::SurfaceDrawn(m_hWnd);
}

CPaintDC::CPaintDC(CWnd* window) : CPaintDC(window == nullptr ? nullptr : window->GetSafeHwnd()) {}

CPaintDC::CPaintDC(HWND window) : m_ps{FALSE, {0, 0, 0, 0}}, m_hWnd(window) {
    Window* record = windows::Find(m_hWnd);
    if (record == nullptr) return;
    bool erased = false;
    const CRect area = windows::BeginPaint(*record, &erased);
    m_ps.rcPaint = area;
    m_ps.fErase = erased ? FALSE : TRUE;
    AttachSurface(record->surface, record->surface->scale().Device(area));
}

CPaintDC::~CPaintDC() {
    windows::SurfaceDrawn(m_hWnd);
}
