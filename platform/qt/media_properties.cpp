// SPDX-License-Identifier: MIT
#include "platform/qt/media_properties.h"

#include <QDBusObjectPath>
#include <QStringList>

#include "platform/qt/file_uri.h"

namespace media {
namespace {

QVariantMap Metadata(const MediaIdentity& identity, const MediaState& state) {
    if (state.track == 0) return {};
    QVariantMap metadata{
        {QStringLiteral("mpris:trackid"),
         QVariant::fromValue(QDBusObjectPath(TrackPath(identity, state.track)))},
        {QStringLiteral("mpris:length"), qlonglong{state.length}},
        {QStringLiteral("xesam:title"), QString::fromStdString(state.title)},
        {QStringLiteral("xesam:artist"), QStringList()},
        {QStringLiteral("xesam:url"), QString::fromLatin1(FileUri(state.path))},
    };
    if (!state.picture.empty())
        metadata.insert(QStringLiteral("mpris:artUrl"), QString::fromLatin1(FileUri(state.picture)));
    return metadata;
}

QString StatusName(MediaStatus status) {
    switch (status) {
        case MediaStatus::Playing:
            return QStringLiteral("Playing");
        case MediaStatus::Paused:
            return QStringLiteral("Paused");
        case MediaStatus::Stopped:
            break;
    }
    return QStringLiteral("Stopped");
}

}  // namespace

QString TrackPath(const MediaIdentity& identity, unsigned track) {
    QString program = QString::fromStdString(identity.desktop_entry);
    program.replace('.', '/');
    return QStringLiteral("/%1/Track/%2").arg(program).arg(track);
}

QVariantMap RootProperties(const MediaIdentity& identity) {
    QStringList types;
    for (const std::string& type : identity.types) types << QString::fromStdString(type);
    return {
        {QStringLiteral("CanQuit"), true},
        {QStringLiteral("CanRaise"), true},
        {QStringLiteral("HasTrackList"), false},
        {QStringLiteral("Identity"), QString::fromStdString(identity.name)},
        {QStringLiteral("DesktopEntry"), QString::fromStdString(identity.desktop_entry)},
        {QStringLiteral("SupportedUriSchemes"), QStringList(QStringLiteral("file"))},
        {QStringLiteral("SupportedMimeTypes"), types},
    };
}

QVariantMap PlayerProperties(const MediaIdentity& identity, const MediaState& state, double volume) {
    const bool open = state.track != 0;
    return {
        {QStringLiteral("PlaybackStatus"), StatusName(state.status)},
        {QStringLiteral("Rate"), state.rate},
        {QStringLiteral("MinimumRate"), identity.lowest_rate},
        {QStringLiteral("MaximumRate"), identity.highest_rate},
        {QStringLiteral("Volume"), volume},
        {QStringLiteral("Metadata"), Metadata(identity, state)},
        {QStringLiteral("CanGoNext"), state.can_go_next},
        {QStringLiteral("CanGoPrevious"), state.can_go_previous},
        {QStringLiteral("CanPlay"), open},
        {QStringLiteral("CanPause"), open},
        {QStringLiteral("CanSeek"), open},
        {QStringLiteral("CanControl"), true},
    };
}

QString Introspection() {
    return QStringLiteral(R"(
<interface name="org.mpris.MediaPlayer2">
  <method name="Raise"/>
  <method name="Quit"/>
  <property name="CanQuit" type="b" access="read"/>
  <property name="CanRaise" type="b" access="read"/>
  <property name="HasTrackList" type="b" access="read"/>
  <property name="Identity" type="s" access="read"/>
  <property name="DesktopEntry" type="s" access="read"/>
  <property name="SupportedUriSchemes" type="as" access="read"/>
  <property name="SupportedMimeTypes" type="as" access="read"/>
</interface>
<interface name="org.mpris.MediaPlayer2.Player">
  <method name="Next"/>
  <method name="Previous"/>
  <method name="Pause"/>
  <method name="PlayPause"/>
  <method name="Stop"/>
  <method name="Play"/>
  <method name="Seek"><arg name="Offset" type="x" direction="in"/></method>
  <method name="SetPosition">
    <arg name="TrackId" type="o" direction="in"/>
    <arg name="Position" type="x" direction="in"/>
  </method>
  <method name="OpenUri"><arg name="Uri" type="s" direction="in"/></method>
  <signal name="Seeked"><arg name="Position" type="x"/></signal>
  <property name="PlaybackStatus" type="s" access="read"/>
  <property name="Rate" type="d" access="readwrite"/>
  <property name="MinimumRate" type="d" access="read"/>
  <property name="MaximumRate" type="d" access="read"/>
  <property name="Volume" type="d" access="readwrite"/>
  <property name="Metadata" type="a{sv}" access="read"/>
  <property name="Position" type="x" access="read">
    <annotation name="org.freedesktop.DBus.Property.EmitsChangedSignal" value="false"/>
  </property>
  <property name="CanGoNext" type="b" access="read"/>
  <property name="CanGoPrevious" type="b" access="read"/>
  <property name="CanPlay" type="b" access="read"/>
  <property name="CanPause" type="b" access="read"/>
  <property name="CanSeek" type="b" access="read"/>
  <property name="CanControl" type="b" access="read">
    <annotation name="org.freedesktop.DBus.Property.EmitsChangedSignal" value="false"/>
  </property>
</interface>
)");
}

}  // namespace media
