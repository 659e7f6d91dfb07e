// SPDX-License-Identifier: MIT
// Constants of the window interface, as far as the player uses them. The values are the framework's, because
// resource files and message parameters carry them.
#pragma once

#include "platform/framework/wintypes.h"

// Messages.
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_SETCURSOR = 0x0020;
inline constexpr UINT WM_ICONERASEBKGND = 0x0027;
inline constexpr UINT WM_DRAWITEM = 0x002B;
inline constexpr UINT WM_QUERYDRAGICON = 0x0037;
inline constexpr UINT WM_SETICON = 0x0080;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_SYSCOMMAND = 0x0112;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_VSCROLL = 0x0115;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_DROPFILES = 0x0233;
inline constexpr UINT WM_DPICHANGED_AFTERPARENT = 0x02E3;
inline constexpr UINT WM_USER = 0x0400;

inline constexpr WPARAM ICON_SMALL = 0;
inline constexpr WPARAM ICON_BIG = 1;
inline constexpr UINT SC_MINIMIZE = 0xF020;
inline constexpr UINT SC_MAXIMIZE = 0xF030;
inline constexpr UINT SC_CLOSE = 0xF060;
inline constexpr UINT SC_RESTORE = 0xF120;
inline constexpr UINT MK_LBUTTON = 0x0001;
inline constexpr UINT MK_SHIFT = 0x0004;
inline constexpr UINT MK_CONTROL = 0x0008;
inline constexpr int WHEEL_DELTA = 120;  // one notch
inline constexpr UINT HTCLIENT = 1;

// Letters and digits have the numbers of their capital characters.
inline constexpr WPARAM VK_BACK = 0x08;
inline constexpr WPARAM VK_RETURN = 0x0D;
inline constexpr WPARAM VK_SHIFT = 0x10;
inline constexpr WPARAM VK_CONTROL = 0x11;
inline constexpr WPARAM VK_ESCAPE = 0x1B;
inline constexpr WPARAM VK_SPACE = 0x20;
inline constexpr WPARAM VK_PRIOR = 0x21;
inline constexpr WPARAM VK_NEXT = 0x22;
inline constexpr WPARAM VK_END = 0x23;
inline constexpr WPARAM VK_HOME = 0x24;
inline constexpr WPARAM VK_LEFT = 0x25;
inline constexpr WPARAM VK_UP = 0x26;
inline constexpr WPARAM VK_RIGHT = 0x27;
inline constexpr WPARAM VK_DOWN = 0x28;
inline constexpr WPARAM VK_OEM_COMMA = 0xBC;
inline constexpr WPARAM VK_OEM_PERIOD = 0xBE;
inline constexpr WPARAM VK_OEM_4 = 0xDB;  // [
inline constexpr WPARAM VK_OEM_6 = 0xDD;  // ]

// Window styles.
inline constexpr DWORD WS_POPUP = 0x80000000U;
inline constexpr DWORD WS_CHILD = 0x40000000U;
inline constexpr DWORD WS_VISIBLE = 0x10000000U;
inline constexpr DWORD WS_DISABLED = 0x08000000U;
inline constexpr DWORD WS_CAPTION = 0x00C00000U;
inline constexpr DWORD WS_BORDER = 0x00800000U;
inline constexpr DWORD WS_SYSMENU = 0x00080000U;
inline constexpr DWORD WS_GROUP = 0x00020000U;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000U;
inline constexpr DWORD WS_TABSTOP = 0x00010000U;
inline constexpr DWORD WS_EX_STATICEDGE = 0x00020000U;
inline constexpr DWORD WS_EX_APPWINDOW = 0x00040000U;
inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;

inline constexpr DWORD DS_3DLOOK = 0x0004;
inline constexpr DWORD DS_SETFONT = 0x0040;
inline constexpr DWORD DS_MODALFRAME = 0x0080;

// Static controls. The low five bits are the type.
inline constexpr DWORD SS_LEFT = 0x0000;
inline constexpr DWORD SS_CENTER = 0x0001;
inline constexpr DWORD SS_RIGHT = 0x0002;
inline constexpr DWORD SS_ICON = 0x0003;
inline constexpr DWORD SS_BITMAP = 0x000E;
inline constexpr DWORD SS_ETCHEDHORZ = 0x0010;
inline constexpr DWORD SS_ETCHEDVERT = 0x0011;
inline constexpr DWORD SS_TYPEMASK = 0x001F;
inline constexpr DWORD SS_NOPREFIX = 0x0080;
inline constexpr DWORD SS_CENTERIMAGE = 0x0200;
inline constexpr DWORD SS_SUNKEN = 0x1000;

// Buttons. The low four bits are the type.
inline constexpr DWORD BS_PUSHBUTTON = 0x0000;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x0001;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x0003;
inline constexpr DWORD BS_OWNERDRAW = 0x000B;
inline constexpr DWORD BS_TYPEMASK = 0x000F;
inline constexpr DWORD BS_ICON = 0x0040;
inline constexpr UINT BM_GETCHECK = 0x00F0;
inline constexpr UINT BM_SETCHECK = 0x00F1;
inline constexpr UINT BM_SETSTYLE = 0x00F4;
inline constexpr UINT BN_CLICKED = 0;

// Trackbars.
inline constexpr DWORD TBS_VERT = 0x0002;
inline constexpr DWORD TBS_BOTH = 0x0008;
inline constexpr UINT TBM_GETPOS = WM_USER;
inline constexpr UINT TBM_SETPOS = WM_USER + 5;
inline constexpr UINT TBM_SETRANGEMIN = WM_USER + 7;
inline constexpr UINT TBM_SETRANGEMAX = WM_USER + 8;
inline constexpr UINT TB_THUMBPOSITION = 4;
inline constexpr UINT TB_THUMBTRACK = 5;

// Tool tips.
inline constexpr UINT TTDT_RESHOW = 1;
inline constexpr UINT TTDT_AUTOPOP = 2;
inline constexpr UINT TTDT_INITIAL = 3;

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNOACTIVATE = 4;
inline constexpr int SW_SHOW = 5;
inline constexpr int SW_MINIMIZE = 6;
inline constexpr int SW_RESTORE = 9;
inline constexpr int SW_SHOWNORMAL = 1;

inline constexpr UINT RDW_INVALIDATE = 0x0001;
inline constexpr UINT RDW_ERASE = 0x0004;
inline constexpr UINT RDW_UPDATENOW = 0x0100;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr UINT MB_OK = 0x0000;
inline constexpr UINT MB_ICONERROR = 0x0010;

inline constexpr UINT ODS_SELECTED = 0x0001;
inline constexpr UINT ODS_DISABLED = 0x0004;
inline constexpr UINT ODS_FOCUS = 0x0010;

inline constexpr int SM_CXICON = 11;
inline constexpr int SM_CYICON = 12;

inline constexpr UINT OFN_READONLY = 0x00000001;
inline constexpr UINT OFN_OVERWRITEPROMPT = 0x00000002;
inline constexpr UINT OFN_ALLOWMULTISELECT = 0x00000200;
inline constexpr UINT OFN_PATHMUSTEXIST = 0x00000800;
inline constexpr UINT OFN_FILEMUSTEXIST = 0x00001000;

// System colours.
inline constexpr int COLOR_BACKGROUND = 1;
inline constexpr int COLOR_BTNFACE = 15;
inline constexpr int COLOR_BTNSHADOW = 16;
inline constexpr int COLOR_GRAYTEXT = 17;
inline constexpr int COLOR_BTNTEXT = 18;
inline constexpr int COLOR_BTNHIGHLIGHT = 20;

// The desktop's colour of this role, read from the toolkit once per call. UI thread.
COLORREF GetSysColor(int index);
// SM_CXICON and SM_CYICON are 32; 0 for any other index.
int GetSystemMetrics(int index);
