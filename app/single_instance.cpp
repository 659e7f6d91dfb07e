#include "app/single_instance.h"

namespace {

constexpr const char* kGuardName = "Ombrela Message Player SingleInstance Mutex";

}  // namespace

CSingleInstance::CSingleInstance() = default;

BOOL CSingleInstance::Acquire() {
    m_pGuard = std::make_unique<NamedGuard>(kGuardName, DisplayName());
    switch (m_pGuard->Acquire()) {
        case NamedGuard::Result::First:
        case NamedGuard::Result::Unguarded:
            return TRUE;
        case NamedGuard::Result::Replaced:
            return FALSE;
        case NamedGuard::Result::Superseded:
            break;
    }
    m_bReplaced = TRUE;
    return FALSE;
}

BOOL CSingleInstance::IsReplaced() {
    if (m_pGuard->TakeCloseRequest()) m_bReplaced = TRUE;
    return m_bReplaced;
}

void CSingleInstance::CloseOnRequest(HWND hWnd) {
    m_pWatch = std::make_unique<CloseWatch>(*m_pGuard, [hWnd] { ::PostMessage(hWnd, WM_CLOSE, 0, 0); });
}
