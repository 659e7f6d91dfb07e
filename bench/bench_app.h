// SPDX-License-Identifier: MIT
// The application of a benchmark that needs a window: its dialog, and how many seconds it is to take.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "platform/framework/afxcmn.h"
#include "res/player_resources.h"
#include "res/resource.h"

// TDialog::Start is called once the window is there; the program ends with the window.
template <class TDialog>
class CBenchApp : public CWinApp {
public:
    BOOL InitInstance() override {
        m_pMainWnd = &m_dialog;
        if (!m_dialog.Create(IDD_PLAYER_DIALOG)) return FALSE;
        m_dialog.Start();
        return TRUE;
    }

private:
    TDialog m_dialog;
};

// The seconds are the first word of the command line, when there is one.
inline int RunBench(int argc, char** argv, int& seconds) {
    if (argc > 1) seconds = std::max(std::atoi(argv[1]), 1);
    UsePlayerResources();
    return AfxWinMain(argc, argv);
}
