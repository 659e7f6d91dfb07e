#include "platform/framework/afxicon.h"

#include <memory>
#include <unordered_map>

#include "platform/framework/image.h"
#include "platform/framework/resources.h"
#include "platform/framework/surface.h"
#include "platform/framework/winuser.h"

namespace {

std::unordered_map<HICON, std::unique_ptr<Image>> g_images;
std::uintptr_t g_lastHandle = 0x100;
// Bitmaps that GetIconInfo handed out; they come back through DeleteObject.
int g_infoBitmaps = 0;

BOOL Release(HICON handle) {
    return g_images.erase(handle) > 0 ? TRUE : FALSE;
}

}  // namespace

HICON LoadImage(UINT id, UINT type) {
    const int size = GetSystemMetrics(SM_CXICON);
    auto image = type == IMAGE_CURSOR ? resources::LoadCursor(id, size) : resources::LoadIcon(id, size);
    if (!image.has_value()) return nullptr;
    const auto handle = reinterpret_cast<HICON>(++g_lastHandle);
    g_images.emplace(handle, std::make_unique<Image>(std::move(*image)));
    return handle;
}

BOOL DestroyIcon(HICON icon) {
    return Release(icon);
}

BOOL DestroyCursor(HCURSOR cursor) {
    return Release(cursor);
}

const Image* IconImage(HICON icon) {
    const auto found = g_images.find(icon);
    return found == g_images.end() ? nullptr : found->second.get();
}

BOOL GetIconInfo(HICON icon, ICONINFO* info) {
    const Image* image = IconImage(icon);
    if (image == nullptr) return FALSE;
    info->fIcon = TRUE;
    info->xHotspot = static_cast<DWORD>(image->hot_x);
    info->yHotspot = static_cast<DWORD>(image->hot_y);
    info->hbmMask = new Surface(image->width, image->height);
    info->hbmColor = new Surface(image->width, image->height);
    g_infoBitmaps += 2;
    return TRUE;
}

// Only two kinds of bitmap are ever loose: those of GetIconInfo, and sections, which are DIBs.
BOOL DeleteObject(HBITMAP bitmap) {
    if (bitmap == nullptr) return FALSE;
    if (!bitmap->isDib()) --g_infoBitmaps;
    delete bitmap;
    return TRUE;
}

int LiveIconCount() {
    return static_cast<int>(g_images.size()) + g_infoBitmaps;
}
