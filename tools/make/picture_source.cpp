// SPDX-License-Identifier: MIT
#include "tools/make/picture_source.h"

#include <QColorSpace>
#include <QImage>
#include <QImageReader>
#include <QString>
#include <algorithm>
#include <cstddef>

#include "tools/tool_error.h"

namespace tools {
namespace {

// Room for a picture of 250 million pixels.
constexpr int kAllocationMegabytes = 1024;

QSize FittingSize(QSize size) {
    const QSize fitted = size.scaled(kPictureWidth, kPictureHeight, Qt::KeepAspectRatio);
    return fitted.expandedTo(QSize(1, 1));
}

}  // namespace

void LoadPicture(const std::string& path, std::span<uint8_t, kPictureBytes> bgr) {
    QImageReader::setAllocationLimit(kAllocationMegabytes);
    QImageReader reader(QString::fromLocal8Bit(path.c_str()));
    reader.setAutoTransform(true);
    reader.setDecideFormatFromContent(true);
    QImage image;
    if (!reader.read(&image)) {
        throw ToolError(path + ": cannot be read as a picture: " + reader.errorString().toStdString());
    }
    const QColorSpace srgb(QColorSpace::SRgb);
    if (image.colorSpace().isValid() && image.colorSpace() != srgb) image.convertToColorSpace(srgb);

    // Premultiplied colours are those that transparency leaves on a black ground.
    const QImage fitted =
        image.convertToFormat(QImage::Format_ARGB32_Premultiplied)
            .scaled(FittingSize(image.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (fitted.isNull()) throw ToolError(path + ": cannot be scaled");

    std::fill(bgr.begin(), bgr.end(), uint8_t{0});
    const int left = (kPictureWidth - fitted.width()) / 2;
    const int top = (kPictureHeight - fitted.height()) / 2;
    for (int y = 0; y < fitted.height(); ++y) {
        const auto* const pixels = reinterpret_cast<const QRgb*>(fitted.constScanLine(y));
        const int row = kPictureHeight - 1 - (top + y);
        uint8_t* out = bgr.data() + static_cast<std::ptrdiff_t>(row * kPictureWidth + left) * 3;
        for (int x = 0; x < fitted.width(); ++x) {
            *out++ = static_cast<uint8_t>(qBlue(pixels[x]));
            *out++ = static_cast<uint8_t>(qGreen(pixels[x]));
            *out++ = static_cast<uint8_t>(qRed(pixels[x]));
        }
    }
}

}  // namespace tools
