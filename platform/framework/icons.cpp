// SPDX-License-Identifier: MIT
#include "platform/framework/afxicon.h"

#include "platform/framework/handle_table.h"
#include "platform/framework/image.h"
#include "platform/framework/native.h"
#include "platform/framework/resources.h"
#include "platform/framework/surface.h"
#include "platform/framework/winuser.h"

namespace {

struct Icon {
    unsigned id;
    Image image;
    Image resized;  // as last asked for in another size
};
HandleTable<Icon, HICON> g_icons;

}  // namespace

HICON LoadImage(UINT id, UINT type) {
    const int size = GetSystemMetrics(SM_CXICON);
    auto image = type == IMAGE_CURSOR ? resources::LoadCursor(id, size) : resources::LoadIcon(id, size);
    return image.has_value() ? g_icons.Add(std::make_shared<Icon>(Icon{id, std::move(*image), {}})) : nullptr;
}

BOOL DestroyIcon(HICON icon) {
    return g_icons.Remove(icon) == nullptr ? FALSE : TRUE;
}

BOOL DestroyCursor(HCURSOR cursor) {
    return DestroyIcon(cursor);
}

const Image* IconImage(HICON icon) {
    const std::shared_ptr<Icon> found = g_icons.Find(icon);
    return found == nullptr ? nullptr : &found->image;
}

const Image* IconImage(HICON icon, int size) {
    const std::shared_ptr<Icon> found = g_icons.Find(icon);
    if (found == nullptr || size == found->image.width) return found == nullptr ? nullptr : &found->image;
    if (found->resized.width != size)
        if (auto resized = LoadIconOfSize(found->id, size)) found->resized = std::move(*resized);
    return &found->resized;
}

std::vector<Image> IconImages(HICON icon) {
    std::vector<Image> images;
    const std::shared_ptr<Icon> found = g_icons.Find(icon);
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        auto image = found == nullptr ? std::nullopt : resources::LoadIcon(found->id, size);
        if (image.has_value() && image->width == size) images.push_back(std::move(*image));
    }
    return images;
}

std::optional<Image> LoadIconOfSize(unsigned id, int size) {
    auto image = resources::LoadIcon(id, size);
    if (image.has_value() && image->width != size) image = Toolkit()->ScaleImage(*image, size, size);
    return image;
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
