// SPDX-License-Identifier: MIT
// What a message can be saved as, and the picture that is seen.
#pragma once

#include "platform/framework/afximage.h"
#include "platform/framework/afxwin.h"

// The forms that the file dialog offers: films, sound, and the picture as PNG.
CString SaveAsFilter();
// What the file dialog suggests for a message: its name as a film.
CString SaveAsName(const CString& strMessage);
// Whether a path asks for the picture alone.
BOOL IsPictureName(const CString& strPath);

// Copies what a window shows into an empty image. FALSE when there is no window.
BOOL CapturePicture(CWnd* pWnd, CImage& image);
