// SPDX-License-Identifier: MIT
// The rule that only the newest player runs on a display.
#pragma once

#include <memory>

#include "platform/framework/afxwin.h"
#include "platform/shell/named_guard.h"

// UI thread only. Part of the application object, so that it is made before the program's entry and outlives
// the toolkit, whose message loop reads the guard.
class CSingleInstance {
public:
    CSingleInstance();

    // TRUE when no other player ran. FALSE when one did: it has been asked to close and has gone, unless it
    // took more than two seconds.
    BOOL Acquire();

    // Whether a still newer player has asked this one to close, so that it should not show itself any more.
    BOOL IsSuperseded();

    // From here on a newer player's request posts WM_CLOSE to the window.
    void CloseOnRequest(HWND hWnd);

private:
    std::unique_ptr<NamedGuard> m_pGuard;
    BOOL m_bSuperseded = FALSE;
};
