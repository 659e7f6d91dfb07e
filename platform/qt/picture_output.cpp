// SPDX-License-Identifier: MIT
// Pictures that leave the program: as files and over the clipboard.
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QSaveFile>

#include "platform/qt/qt_toolkit.h"

namespace {

// Shares the pixels.
QImage Wrap(const Image& image) {
    return QImage(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height,
                  image.width * static_cast<int>(sizeof(std::uint32_t)), QImage::Format_RGB32);
}

}  // namespace

bool QtToolkit::SavePicture(const std::string& path, const Image& image) {
    QSaveFile file(QString::fromStdString(path));
    return file.open(QIODevice::WriteOnly) && Wrap(image).save(&file, "PNG") && file.commit();
}

void QtToolkit::CopyPicture(const Image& image) {
    QGuiApplication::clipboard()->setImage(Wrap(image).copy());
}
