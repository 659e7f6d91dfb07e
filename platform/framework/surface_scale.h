// SPDX-License-Identifier: MIT
// How logical pixels, 96 to the inch, become a surface's own.
#pragma once

#include <cmath>

#include "platform/framework/afxtypes.h"

struct SurfaceScale {
    // Device pixels per logical pixel, such that the far edges of a window fall on those of its surface.
    double x = 1.0;
    double y = 1.0;
    // The same for what has a shape to keep: text and icons.
    double factor = 1.0;

    bool operator==(const SurfaceScale&) const = default;

    CPoint Device(int atX, int atY) const { return CPoint(Nearest(atX * x), Nearest(atY * y)); }
    CRect Device(const RECT& rect) const {
        return CRect(Device(rect.left, rect.top), Device(rect.right, rect.bottom));
    }
    // A length of an icon or a picture, at least one pixel.
    int Length(int logical) const { return std::max(Nearest(logical * factor), 1); }

private:
    static int Nearest(double value) { return static_cast<int>(std::floor(value + 0.5)); }
};
