// SPDX-License-Identifier: MIT
// The properties and the shape of the MPRIS object, as values alone.
#pragma once

#include <QString>
#include <QVariantMap>

#include "platform/shell/media_controls.h"

namespace media {

inline const QString kPath = QStringLiteral("/org/mpris/MediaPlayer2");
inline const QString kRoot = QStringLiteral("org.mpris.MediaPlayer2");
inline const QString kPlayer = QStringLiteral("org.mpris.MediaPlayer2.Player");

QString Introspection();
// Where the track numbers stand below a path of the program's own.
QString TrackPath(const MediaIdentity& identity, unsigned track);

QVariantMap RootProperties(const MediaIdentity& identity);
// All but Position.
QVariantMap PlayerProperties(const MediaIdentity& identity, const MediaState& state, double volume);

}  // namespace media
