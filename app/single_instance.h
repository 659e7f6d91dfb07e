// The rule that only the newest player runs on a display.
#pragma once

#include <memory>

#include "platform/framework/afxwin.h"
#include "platform/shell/close_watch.h"
#include "platform/shell/single_instance.h"

// UI thread only. Made before the program's entry, as part of the application object.
class CSingleInstance {
public:
    CSingleInstance();

    // TRUE when no other player ran. FALSE when one did: it has been asked to close and has gone, unless it
    // took more than two seconds.
    BOOL Acquire();

    // Whether a still newer player has asked this one to close, so that it should not show itself any more.
    BOOL IsReplaced();

    // From here on a newer player's request posts WM_CLOSE to the window.
    void CloseOnRequest(HWND hWnd);

private:
    std::unique_ptr<NamedGuard> m_pGuard;
    std::unique_ptr<CloseWatch> m_pWatch;  // goes before the guard that it reads
    BOOL m_bReplaced = FALSE;
};
