// SPDX-License-Identifier: MIT
#include "platform/qt/file_uri.h"

#include <QList>

QByteArray FileUri(const std::string& path) {
    return "file://" + QByteArray::fromStdString(path).toPercentEncoding("/");
}

std::optional<std::string> PathOfFileUri(const QByteArray& uri) {
    const qsizetype colon = uri.indexOf(':');
    if (colon < 0 || uri.left(colon).toLower() != "file") return std::nullopt;
    QByteArray path = uri.mid(colon + 1);
    if (path.startsWith("//")) {
        const qsizetype slash = path.indexOf('/', 2);
        if (slash < 0) return std::nullopt;
        const QByteArray host = path.mid(2, slash - 2).toLower();
        if (!host.isEmpty() && host != "localhost") return std::nullopt;
        path = path.mid(slash);
    }
    path = QByteArray::fromPercentEncoding(path);
    if (!path.startsWith('/') || path.contains('\0')) return std::nullopt;
    return path.toStdString();
}

std::vector<std::string> PathsOfUriList(const QByteArray& list, std::size_t most) {
    std::vector<std::string> paths;
    for (qsizetype from = 0; from < list.size() && paths.size() < most;) {
        const qsizetype end = list.indexOf('\n', from);
        const qsizetype length = end < 0 ? list.size() - from : end - from;
        if (auto path = PathOfFileUri(list.mid(from, length).trimmed())) paths.push_back(std::move(*path));
        from += length + 1;
    }
    return paths;
}
