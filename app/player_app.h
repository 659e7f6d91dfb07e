// SPDX-License-Identifier: MIT
// The application object.
#pragma once

#include "app/single_instance.h"
#include "platform/framework/afxwin.h"

class CPlayerApp : public CWinApp {
public:
    CPlayerApp();
    ~CPlayerApp() override;

    // Registers the file type, closes an older player, creates the main window and plays the message named on
    // the command line. FALSE only when a newer player has taken over meanwhile.
    BOOL InitInstance() override;
    // Keeps Enter and Escape from the player's own windows: as dialogs they would be closed by them.
    BOOL PreTranslateMessage(MSG* pMsg) override;

private:
    void RegisterFileType();

    CSingleInstance m_instance;
};
