// SPDX-License-Identifier: MIT
#include <mutex>

#include "platform/framework/afximage.h"
#include "platform/framework/image.h"
#include "platform/framework/native.h"
#include "platform/framework/surface.h"
#include "platform/framework/unsupported.h"

namespace {

Image Copy(const CBitmap& bitmap) {
    const Surface& surface = *bitmap.Pixels();
    const std::scoped_lock lock(surface.mutex());
    const std::size_t count =
        static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.height());
    Image image{surface.width(), surface.height(), {surface.pixels(), surface.pixels() + count}};
    for (std::uint32_t& pixel : image.pixels) pixel |= 0xFF000000U;
    return image;
}

}  // namespace

CImage::~CImage() {
    ReleaseDC();
}

BOOL CImage::Create(int width, int height, int bitsPerPixel) {
    if (bitsPerPixel != 32) Unsupported("image of bits per pixel", static_cast<unsigned long>(bitsPerPixel));
    return m_bitmap.CreateCompatibleBitmap(nullptr, width, height);
}

CDC* CImage::GetDC() {
    m_dc.CreateCompatibleDC(nullptr);
    m_previous = m_dc.SelectObject(&m_bitmap);
    return &m_dc;
}

void CImage::ReleaseDC() {
    if (m_previous == nullptr) return;
    m_dc.SelectObject(m_previous);
    m_previous = nullptr;
    m_dc.DeleteDC();
}

HRESULT CImage::Save(LPCTSTR fileName) const {
    if (m_bitmap.Pixels() == nullptr) return E_FAIL;
    return Toolkit()->SavePicture(fileName, Copy(m_bitmap)) ? S_OK : E_FAIL;
}

BOOL SetClipboardData(UINT format, const CImage& image) {
    if (format != CF_BITMAP) Unsupported("clipboard format", format);
    if (image.Bitmap().Pixels() == nullptr) return FALSE;
    Toolkit()->CopyPicture(Copy(image.Bitmap()));
    return TRUE;
}
