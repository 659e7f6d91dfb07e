// SPDX-License-Identifier: MIT
#include "app/single_instance.h"

#include "platform/shell/close_watch.h"

namespace {

// "Ombrela" is part of the name as given: every build of the player must use the same one.
constexpr const char* kGuardName = "Ombrela Message Player SingleInstance Mutex";

}  // namespace

CSingleInstance::CSingleInstance() = default;

BOOL CSingleInstance::Acquire() {
    m_pGuard = std::make_unique<NamedGuard>(kGuardName, DisplayName());
    switch (m_pGuard->Acquire()) {
        case NamedGuard::Result::First:
        case NamedGuard::Result::Unguarded:
            return TRUE;
        case NamedGuard::Result::TookOver:
            return FALSE;
        case NamedGuard::Result::Superseded:
            break;
    }
    m_bSuperseded = TRUE;
    return FALSE;
}

BOOL CSingleInstance::IsSuperseded() {
    if (m_pGuard->TakeCloseRequest()) m_bSuperseded = TRUE;
    return m_bSuperseded;
}

void CSingleInstance::CloseOnRequest(HWND hWnd) {
    WatchForClose(*m_pGuard, [hWnd] { ::PostMessage(hWnd, WM_CLOSE, 0, 0); });
}
