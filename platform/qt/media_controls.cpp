// SPDX-License-Identifier: MIT
#include "platform/shell/media_controls.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "platform/qt/file_uri.h"
#include "platform/qt/media_properties.h"
#include "platform/qt/screen_inhibitor.h"
#include "platform/qt/session_bus.h"
#include "platform/qt/toolkit.h"

namespace {

const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kMetadata = QStringLiteral("Metadata");
const QString kPosition = QStringLiteral("Position");

// How long an answer waits for a picture that is being made.
constexpr int kPatienceMs = 500;

QString ErrorName(const char* name) {
    return QStringLiteral("org.freedesktop.DBus.Error.") + QLatin1String(name);
}

// The object that other programs call. Replies to a command go first, since the command may end the player.
class MediaObject : public QDBusVirtualObject {
public:
    MediaObject(const MediaIdentity& identity, MediaClient& client, HWND window)
        : m_identity(identity),
          m_client(&client),
          m_window(window),
          m_inhibitor(QString::fromStdString(identity.name)),
          m_bus([this](const QDBusConnection& bus) { Connected(bus); }) {
        m_settle.setSingleShot(true);
        m_settle.setInterval(0);
        connect(&m_settle, &QTimer::timeout, this, [this] { Settle(); });
        m_patience.setSingleShot(true);
        m_patience.setInterval(kPatienceMs);
        connect(&m_patience, &QTimer::timeout, this, [this] { Settle(); });
    }

    QString introspect(const QString&) const override { return media::Introspection(); }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;

    void Changed() { m_settle.start(); }
    void Jumped() {
        if (!m_asked) return;
        QDBusMessage signal =
            QDBusMessage::createSignal(media::kPath, media::kPlayer, QStringLiteral("Seeked"));
        signal << qlonglong{m_client->Position()};
        m_connection->send(signal);
    }
    // The client goes; the object itself may be in the middle of a call.
    void Leave() {
        m_client = nullptr;
        m_inhibitor.Inhibit(false);
        if (m_connection.has_value()) m_connection->unregisterObject(media::kPath);
        deleteLater();
    }

private:
    // A method, the types of what it takes, and what it does.
    struct Method {
        const char* interface;
        const char* name;
        const char* signature;
        void (MediaObject::*handle)(const QDBusMessage& message);
    };
    static const Method kMethods[];

    void Connected(const QDBusConnection& bus);
    void Settle();
    MediaState Asked();
    bool AwaitsPicture(const MediaState& state) const {
        return state.picture_awaited && m_patience.isActive();
    }
    void Announce(const MediaState& state);

    void Reply(const QDBusMessage& message, const QVariantList& values = {}) {
        if (message.isReplyRequired()) m_connection->send(message.createReply(values));
    }
    void Fail(const QDBusMessage& message, const char* error, const QString& text) {
        if (message.isReplyRequired()) m_connection->send(message.createErrorReply(ErrorName(error), text));
    }

    template <MediaCommand command>
    void Obey(const QDBusMessage& message) {
        Reply(message);
        m_client->Command(command);
    }
    void Raise(const QDBusMessage& message);
    void Seek(const QDBusMessage& message);
    void SetPosition(const QDBusMessage& message);
    void OpenUri(const QDBusMessage& message);
    void Get(const QDBusMessage& message);
    void GetAll(const QDBusMessage& message);
    void Set(const QDBusMessage& message);

    const MediaIdentity m_identity;
    MediaClient* m_client;
    HWND m_window;
    std::optional<QDBusConnection> m_connection;
    ScreenInhibitor m_inhibitor;
    SessionBus m_bus;
    bool m_asked = false;     // by any program so far
    unsigned m_pictured = 0;  // the track whose picture is wanted
    QVariantMap m_announced;
    QTimer m_settle;
    QTimer m_patience;
    std::vector<QDBusMessage> m_waiting;  // calls that wait for the picture
};

constexpr const char* kRootName = "org.mpris.MediaPlayer2";
constexpr const char* kPlayerName = "org.mpris.MediaPlayer2.Player";
constexpr const char* kPropertiesName = "org.freedesktop.DBus.Properties";

const MediaObject::Method MediaObject::kMethods[] = {
    {kRootName, "Raise", "", &MediaObject::Raise},
    {kRootName, "Quit", "", &MediaObject::Obey<MediaCommand::Quit>},
    {kPlayerName, "Next", "", &MediaObject::Obey<MediaCommand::Next>},
    {kPlayerName, "Previous", "", &MediaObject::Obey<MediaCommand::Previous>},
    {kPlayerName, "Pause", "", &MediaObject::Obey<MediaCommand::Pause>},
    {kPlayerName, "PlayPause", "", &MediaObject::Obey<MediaCommand::PlayPause>},
    {kPlayerName, "Stop", "", &MediaObject::Obey<MediaCommand::Stop>},
    {kPlayerName, "Play", "", &MediaObject::Obey<MediaCommand::Play>},
    {kPlayerName, "Seek", "x", &MediaObject::Seek},
    {kPlayerName, "SetPosition", "ox", &MediaObject::SetPosition},
    {kPlayerName, "OpenUri", "s", &MediaObject::OpenUri},
    {kPropertiesName, "Get", "ss", &MediaObject::Get},
    {kPropertiesName, "GetAll", "s", &MediaObject::GetAll},
    {kPropertiesName, "Set", "ssv", &MediaObject::Set},
};

void MediaObject::Connected(const QDBusConnection& bus) {
    m_connection = bus;
    m_inhibitor.SetBus(bus);
    if (!m_connection->registerVirtualObject(media::kPath, this)) return;
    // Queued: an older player may hold the name for a moment.
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << media::kRoot + '.' + QString::fromStdString(m_identity.bus_name) << 0U;
    m_connection->asyncCall(request);
}

bool MediaObject::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    if (m_client == nullptr || message.type() != QDBusMessage::MethodCallMessage) return false;
    // A call need not name the interface.
    const auto* const method =
        std::find_if(std::begin(kMethods), std::end(kMethods), [&](const Method& candidate) {
            return message.member() == QLatin1String(candidate.name) &&
                   (message.interface().isEmpty() ||
                    message.interface() == QLatin1String(candidate.interface));
        });
    if (method == std::end(kMethods)) return false;
    if (!m_asked) {
        m_asked = true;
        m_announced = media::PlayerProperties(m_identity, m_client->State(), m_client->Volume());
    }
    if (message.signature() != QLatin1String(method->signature))
        Fail(message, "InvalidArgs", QStringLiteral("It takes other arguments."));
    else
        (this->*method->handle)(message);
    return true;
}

void MediaObject::Raise(const QDBusMessage& message) {
    Reply(message);
    QWidget* widget = WidgetOf(m_window);
    if (widget == nullptr) return;
    QWidget* top = widget->window();
    top->setWindowState(top->windowState() & ~Qt::WindowMinimized);
    top->raise();
    top->activateWindow();
}

void MediaObject::Seek(const QDBusMessage& message) {
    Reply(message);
    m_client->SeekBy(message.arguments().at(0).toLongLong());
}

void MediaObject::SetPosition(const QDBusMessage& message) {
    Reply(message);
    const unsigned track = m_client->State().track;
    const QString wanted = message.arguments().at(0).value<QDBusObjectPath>().path();
    if (track != 0 && wanted == media::TrackPath(m_identity, track))
        m_client->SeekTo(message.arguments().at(1).toLongLong());
}

void MediaObject::OpenUri(const QDBusMessage& message) {
    const auto path = PathOfFileUri(message.arguments().at(0).toString().toUtf8());
    if (!path.has_value()) {
        Fail(message, "InvalidArgs", QStringLiteral("Only files of this computer are opened."));
        return;
    }
    Reply(message);
    m_client->OpenFile(*path);
}

// What a program that asks is answered, and from now on told.
MediaState MediaObject::Asked() {
    MediaState state = m_client->State();
    if (state.track == 0 || state.track == m_pictured) return state;
    m_pictured = state.track;
    m_client->WantPicture();
    state = m_client->State();
    if (state.picture_awaited) m_patience.start();
    return state;
}

void MediaObject::Get(const QDBusMessage& message) {
    const QString interface = message.arguments().at(0).toString();
    const QString name = message.arguments().at(1).toString();
    QVariantMap all;
    if (interface == media::kRoot) {
        all = media::RootProperties(m_identity);
    } else if (interface == media::kPlayer && name == kPosition) {
        all.insert(kPosition, qlonglong{m_client->Position()});
    } else if (interface == media::kPlayer) {
        const MediaState state = name == kMetadata ? Asked() : m_client->State();
        if (name == kMetadata && AwaitsPicture(state)) {
            m_waiting.push_back(message);
            return;
        }
        all = media::PlayerProperties(m_identity, state, m_client->Volume());
    }
    if (const auto found = all.constFind(name); found != all.constEnd())
        Reply(message, {QVariant::fromValue(QDBusVariant(*found))});
    else
        Fail(message, "UnknownProperty", QStringLiteral("There is no such property."));
}

void MediaObject::GetAll(const QDBusMessage& message) {
    const QString interface = message.arguments().at(0).toString();
    if (interface == media::kRoot) {
        Reply(message, {media::RootProperties(m_identity)});
        return;
    }
    if (interface != media::kPlayer) {
        Fail(message, "UnknownInterface", QStringLiteral("There is no such interface."));
        return;
    }
    const MediaState state = Asked();
    if (AwaitsPicture(state)) {
        m_waiting.push_back(message);
        return;
    }
    QVariantMap all = media::PlayerProperties(m_identity, state, m_client->Volume());
    all.insert(kPosition, qlonglong{m_client->Position()});
    Reply(message, {all});
}

void MediaObject::Set(const QDBusMessage& message) {
    const QString name = message.arguments().at(1).toString();
    const QVariant value = message.arguments().at(2).value<QDBusVariant>().variant();
    const bool rate = name == QLatin1String("Rate");
    if (message.arguments().at(0).toString() != media::kPlayer ||
        (!rate && name != QLatin1String("Volume"))) {
        Fail(message, "PropertyReadOnly", QStringLiteral("Only Rate and Volume can be set."));
        return;
    }
    if (value.metaType() != QMetaType::fromType<double>() || std::isnan(value.toDouble())) {
        Fail(message, "InvalidArgs", QStringLiteral("It is set to a number of type d."));
        return;
    }
    Reply(message);
    if (rate)
        m_client->SetRate(value.toDouble());
    else
        m_client->SetVolume(value.toDouble());
}

void MediaObject::Settle() {
    if (m_client == nullptr) return;
    const MediaState state = m_asked ? Asked() : m_client->State();
    m_inhibitor.Inhibit(state.video && state.status == MediaStatus::Playing);
    if (!m_asked) return;
    Announce(state);
    if (AwaitsPicture(state)) return;
    for (const QDBusMessage& message : std::exchange(m_waiting, {}))
        (void)handleMessage(message, *m_connection);
}

void MediaObject::Announce(const MediaState& state) {
    QVariantMap now = media::PlayerProperties(m_identity, state, m_client->Volume());
    if (AwaitsPicture(state)) now.remove(kMetadata);
    QVariantMap changes;
    for (auto property = now.constBegin(); property != now.constEnd(); ++property) {
        if (m_announced.value(property.key()) == *property) continue;
        changes.insert(property.key(), *property);
        m_announced.insert(property.key(), *property);
    }
    if (changes.isEmpty()) return;
    QDBusMessage signal =
        QDBusMessage::createSignal(media::kPath, kProperties, QStringLiteral("PropertiesChanged"));
    signal << media::kPlayer << changes << QStringList();
    m_connection->send(signal);
}

class QtMediaControls : public MediaControls {
public:
    QtMediaControls(const MediaIdentity& identity, MediaClient& client, HWND window)
        : m_object(new MediaObject(identity, client, window)) {}
    ~QtMediaControls() override { m_object->Leave(); }
    QtMediaControls(const QtMediaControls&) = delete;
    QtMediaControls& operator=(const QtMediaControls&) = delete;

    void Changed() override { m_object->Changed(); }
    void Jumped() override { m_object->Jumped(); }

private:
    MediaObject* m_object;  // deletes itself
};

}  // namespace

std::unique_ptr<MediaControls> StartMediaControls(const MediaIdentity& identity, MediaClient& client,
                                                  HWND window) {
    return std::make_unique<QtMediaControls>(identity, client, window);
}
