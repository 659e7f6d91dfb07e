// SPDX-License-Identifier: MIT
// The looks of STATIC controls: a line of text, a picture, or an etched line.
#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

namespace {

void DrawEtchedLine(CDC& dc, const CRect& client, bool horizontal) {
    const COLORREF shadow = GetSysColor(COLOR_BTNSHADOW);
    const COLORREF highlight = GetSysColor(COLOR_BTNHIGHLIGHT);
    if (horizontal) {
        dc.FillSolidRect(0, 0, client.right, 1, shadow);
        dc.FillSolidRect(0, 1, client.right, 1, highlight);
    } else {
        dc.FillSolidRect(0, 0, 1, client.bottom, shadow);
        dc.FillSolidRect(1, 0, 1, client.bottom, highlight);
    }
}

// Several lines are set one under the other; a text of one line is left to its style.
void DrawLines(CDC& dc, const Window& window, const CRect& client) {
    const COLORREF color = GetSysColor(window.enabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
    CRect line = client;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = window.text.find('\n', start);
        const std::string part = window.text.substr(start, end - start);
        dc.DrawText(part, line, window.style, color);
        if (end == std::string::npos) return;
        start = end + 1;
        line.top += Toolkit()->TextExtent("X").cy;
    }
}

}  // namespace

namespace windows {

void PaintStatic(Window& window) {
    const CRect client = window.ClientRect();
    CPaintDC dc(window.handle);
    dc.FillSolidRect(&client, window.Ground().value_or(GetSysColor(COLOR_BTNFACE)));
    switch (window.StaticType()) {
        case SS_ETCHEDHORZ:
        case SS_ETCHEDVERT:
            DrawEtchedLine(dc, client, window.StaticType() == SS_ETCHEDHORZ);
            break;
        case SS_ICON:
        case SS_BITMAP:
            if (window.picture.has_value()) {
                const Image& image = *window.picture;
                window.surface->Blend(0, 0, image.pixels.data(), image.width, image.height, client);
            }
            break;
        default:
            if (!window.text.empty()) DrawLines(dc, window, client);
    }
}

}  // namespace windows
