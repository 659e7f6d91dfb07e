// SPDX-License-Identifier: MIT
// The About box.
#pragma once

#include "platform/framework/afxwin.h"

class CAboutDlg : public CDialog {
public:
    explicit CAboutDlg(CWnd* pParent);
};
