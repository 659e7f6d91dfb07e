// SPDX-License-Identifier: MIT
#include "app/about_dlg.h"

#include "res/resource.h"

CAboutDlg::CAboutDlg(CWnd* pParent) : CDialog(IDD_ABOUTBOX, pParent) {}
