// SPDX-License-Identifier: MIT
#include "app/save_as.h"

#include "tools/export/save_form.h"

namespace {

constexpr const char* kPictureEnding = "png";

CString FilterEntry(const char* pszAbout, const char* pszEnding) {
    return CString(pszAbout) + "|*." + pszEnding + "|";
}

}  // namespace

CString SaveAsFilter() {
    CString strFilter;
    for (const tools::SaveForm& form : tools::SaveForms())
        strFilter = strFilter + FilterEntry(form.about, form.ending);
    return strFilter + FilterEntry("PNG, this picture", kPictureEnding) + "|";
}

CString SaveAsName(const CString& strMessage) {
    CString strName = strMessage.Mid(strMessage.ReverseFind('/') + 1);
    const int nPoint = strName.ReverseFind('.');
    if (nPoint > 0) strName = CString(strName.Str().substr(0, static_cast<std::size_t>(nPoint)));
    return strName + "." + tools::SaveForms().front().ending;
}

BOOL IsPictureName(const CString& strPath) {
    CString strEnding = strPath.Mid(strPath.ReverseFind('.') + 1);
    strEnding.MakeLower();
    return strEnding == kPictureEnding;
}

BOOL CapturePicture(CWnd* pWnd, CImage& image) {
    if (pWnd == nullptr) return FALSE;
    CRect rect;
    pWnd->GetClientRect(rect);
    if (!image.Create(rect.Width(), rect.Height(), 32)) return FALSE;
    CClientDC dc(pWnd);
    const BOOL bCopied = image.GetDC()->BitBlt(0, 0, rect.Width(), rect.Height(), &dc, 0, 0, SRCCOPY);
    image.ReleaseDC();
    return bCopied;
}
