// SPDX-License-Identifier: MIT
// The looks of STATIC controls: a line of text, a picture, or an etched line.
#include <utility>

#include "platform/framework/afxicon.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

namespace {

// Two device pixels wide.
void DrawEtchedLine(Surface& surface, bool horizontal) {
    const CRect whole(0, 0, surface.width(), surface.height());
    CRect line(0, 0, horizontal ? whole.right : 1, horizontal ? 1 : whole.bottom);
    surface.Fill(line, GetSysColor(COLOR_BTNSHADOW), whole);
    line.OffsetRect(horizontal ? 0 : 1, horizontal ? 1 : 0);
    surface.Fill(line, GetSysColor(COLOR_BTNHIGHLIGHT), whole);
}

void DrawPicture(Surface& surface, const Window& window) {
    const SurfaceScale& scale = surface.scale();
    const CPoint size(scale.Length(window.picture->width), scale.Length(window.picture->height));
    Image scaled;
    const Image* image = &*window.picture;
    if (size.x != image->width) {
        auto icon = window.StaticType() == SS_ICON ? LoadIconOfSize(window.pictureId, size.x) : std::nullopt;
        scaled = icon.has_value() ? std::move(*icon) : Toolkit()->ScaleImage(*image, size.x, size.y);
        image = &scaled;
    }
    surface.Blend(0, 0, image->pixels.data(), image->width, image->height,
                  CRect(0, 0, surface.width(), surface.height()));
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
            DrawEtchedLine(*window.surface, window.StaticType() == SS_ETCHEDHORZ);
            break;
        case SS_ICON:
        case SS_BITMAP:
            if (window.picture.has_value()) DrawPicture(*window.surface, window);
            break;
        default:
            if (!window.text.empty()) DrawLines(dc, window, client);
    }
}

}  // namespace windows
