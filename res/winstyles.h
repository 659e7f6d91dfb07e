// SPDX-License-Identifier: MIT
// Window and control styles that player.rc uses. Only for the resource compiler: C++ code has them from the
// framework's headers.
#pragma once

#define WS_POPUP 0x80000000
#define WS_CHILD 0x40000000
#define WS_VISIBLE 0x10000000
#define WS_CAPTION 0x00C00000
#define WS_BORDER 0x00800000
#define WS_SYSMENU 0x00080000
#define WS_MINIMIZEBOX 0x00020000
#define WS_TABSTOP 0x00010000
#define WS_EX_STATICEDGE 0x00020000
#define WS_EX_APPWINDOW 0x00040000

#define DS_3DLOOK 0x0004
#define DS_SETFONT 0x0040
#define DS_MODALFRAME 0x0080

#define SS_LEFT 0x0000
#define SS_CENTER 0x0001
#define SS_RIGHT 0x0002
#define SS_ICON 0x0003
#define SS_BITMAP 0x000E
#define SS_ETCHEDHORZ 0x0010
#define SS_ETCHEDVERT 0x0011
#define SS_NOPREFIX 0x0080
#define SS_CENTERIMAGE 0x0200
#define SS_SUNKEN 0x1000

#define BS_PUSHBUTTON 0x0000
#define BS_DEFPUSHBUTTON 0x0001
#define BS_AUTOCHECKBOX 0x0003
#define BS_ICON 0x0040

#define TBS_VERT 0x0002
#define TBS_BOTH 0x0008

#define IDOK 1
#define IDCANCEL 2
