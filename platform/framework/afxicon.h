// SPDX-License-Identifier: MIT
// Icons and cursors.
#pragma once

#include <optional>
#include <vector>

#include "platform/framework/afxgdi.h"
#include "platform/framework/image.h"
#include "platform/framework/wintypes.h"

inline constexpr UINT IMAGE_ICON = 1;
inline constexpr UINT IMAGE_CURSOR = 2;

// Loads an icon (32 x 32) or a cursor from the program's resources; null when there is none. The caller
// releases it with DestroyIcon or DestroyCursor. UI thread. Difference from the framework: module, size and
// flags are not asked for, as there is one of each.
HICON LoadImage(UINT id, UINT type);
BOOL DestroyIcon(HICON icon);
BOOL DestroyCursor(HCURSOR cursor);

struct ICONINFO {
    BOOL fIcon;
    DWORD xHotspot;  // an icon's hot spot is its middle
    DWORD yHotspot;
    HBITMAP hbmMask;  // both bitmaps are the caller's to release with DeleteObject
    HBITMAP hbmColor;
};
// FALSE for an unknown handle.
BOOL GetIconInfo(HICON icon, ICONINFO* info);
BOOL DeleteObject(HBITMAP bitmap);

// The image behind a handle, null for an unknown one. Owned by the handle.
const Image* IconImage(HICON icon);
// The same in an edge length of so many device pixels, until the next call with another; UI thread where that
// is not the icon's own.
const Image* IconImage(HICON icon, int size);
// Every picture of the icon in its own size, the smallest first, as the desktop shows it in various places.
std::vector<Image> IconImages(HICON icon);
// A picture of the resources, nearest in size and scaled to it; nothing when there is none. UI thread.
std::optional<Image> LoadIconOfSize(unsigned id, int size);

// Makes it the cursor over the window that is handling WM_SETCURSOR; returns the one before. Difference from
// the framework: it is that window's until the window sets another, wherever the pointer is.
HCURSOR SetCursor(HCURSOR cursor);
