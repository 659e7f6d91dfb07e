// SPDX-License-Identifier: MIT
// Paths of any bytes and their file URIs (RFC 8089). The toolkit's own URLs hold text, and lose names that
// are not UTF-8.
#pragma once

#include <QByteArray>
#include <optional>
#include <string>
#include <vector>

QByteArray FileUri(const std::string& path);
// Nothing for another scheme or computer, and for a path that is not absolute or holds a zero byte.
std::optional<std::string> PathOfFileUri(const QByteArray& uri);
// The first `most` paths of a text/uri-list (RFC 2483); what is no local file is left out.
std::vector<std::string> PathsOfUriList(const QByteArray& list, std::size_t most);
