// SPDX-License-Identifier: MIT
#include "platform/framework/afxicon.h"

#include "platform/framework/handle_table.h"
#include "platform/framework/image.h"
#include "platform/framework/resources.h"
#include "platform/framework/surface.h"
#include "platform/framework/winuser.h"

namespace {

HandleTable<Image, HICON> g_images;

}  // namespace

HICON LoadImage(UINT id, UINT type) {
    const int size = GetSystemMetrics(SM_CXICON);
    auto image = type == IMAGE_CURSOR ? resources::LoadCursor(id, size) : resources::LoadIcon(id, size);
    return image.has_value() ? g_images.Add(std::make_shared<Image>(std::move(*image))) : nullptr;
}

BOOL DestroyIcon(HICON icon) {
    return g_images.Remove(icon) == nullptr ? FALSE : TRUE;
}

BOOL DestroyCursor(HCURSOR cursor) {
    return DestroyIcon(cursor);
}

const Image* IconImage(HICON icon) {
    return g_images.Find(icon).get();
}

BOOL GetIconInfo(HICON icon, ICONINFO* info) {
    const Image* image = IconImage(icon);
    if (image == nullptr) return FALSE;
    *info = {TRUE, static_cast<DWORD>(image->hotX), static_cast<DWORD>(image->hotY),
             new Surface(image->width, image->height), new Surface(image->width, image->height)};
    return TRUE;
}

BOOL DeleteObject(HBITMAP bitmap) {
    delete bitmap;
    return bitmap == nullptr ? FALSE : TRUE;
}
