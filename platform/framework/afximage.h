// SPDX-License-Identifier: MIT
// A picture to be saved or put on the clipboard. UI thread.
#pragma once

#include "platform/framework/afxgdi.h"

using HRESULT = long;
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = -1;

inline constexpr UINT CF_BITMAP = 2;

class CImage {
public:
    CImage() = default;
    ~CImage();
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;

    // All black; bitsPerPixel: only 32. FALSE for an empty or absurd size.
    BOOL Create(int width, int height, int bitsPerPixel);
    // Draws into it until ReleaseDC. Difference from the framework: a CDC, not a handle.
    CDC* GetDC();
    void ReleaseDC();
    // Writes it as a PNG file, whatever the name's ending. An existing file is replaced once the new one is
    // whole; after E_FAIL everything is as it was.
    HRESULT Save(LPCTSTR fileName) const;

    const CBitmap& Bitmap() const { return m_bitmap; }

private:
    CBitmap m_bitmap;
    CDC m_dc;
    CBitmap* m_previous = nullptr;
};

// format: only CF_BITMAP. Differences from the framework: the picture is copied and stays the caller's, it
// replaces what the clipboard held, and the clipboard need not be opened and closed.
BOOL SetClipboardData(UINT format, const CImage& image);
