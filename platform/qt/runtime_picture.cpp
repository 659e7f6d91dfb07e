// SPDX-License-Identifier: MIT
#include "platform/shell/runtime_picture.h"

#include <QImage>
#include <QTemporaryFile>

namespace {

class TemporaryPicture : public RuntimePicture {
public:
    explicit TemporaryPicture(const QString& pattern) : m_file(pattern) {}
    std::string Path() const override { return m_file.fileName().toStdString(); }
    bool Write(const QImage& image) { return m_file.open() && image.save(&m_file, "PNG") && m_file.flush(); }

private:
    QTemporaryFile m_file;
};

}  // namespace

std::unique_ptr<RuntimePicture> WriteRuntimePicture(const std::uint8_t* pixels, int width, int height) {
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty()) return nullptr;
    const QImage image(pixels, width, height, qsizetype{3} * width, QImage::Format_BGR888);
    auto picture = std::make_unique<TemporaryPicture>(folder + QStringLiteral("/trvplayer-XXXXXX.png"));
    if (!picture->Write(image.mirrored())) return nullptr;
    return picture;
}
