// SPDX-License-Identifier: MIT
#include "platform/qt/session_bus.h"

#include <QFileInfo>
#include <QTimer>
#include <system_error>
#include <thread>
#include <utility>

namespace {

// A connection apart from the toolkit's own, which others may close.
const QString kConnection = QStringLiteral("trvplayer");
// By then the window is there and a message sounds.
constexpr int kAfterStartMs = 400;

// Where nothing says so, the library would start a bus.
bool HasAddress() {
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus")));
}

}  // namespace

SessionBus::SessionBus(std::function<void(const QDBusConnection&)> ready) : m_ready(std::move(ready)) {
    if (HasAddress()) QTimer::singleShot(kAfterStartMs, this, [this] { Connect(); });
}

SessionBus::~SessionBus() {
    const std::scoped_lock lock(m_reply->mutex);
    m_reply->bus = nullptr;
    if (m_connected) QDBusConnection::disconnectFromBus(kConnection);
}

void SessionBus::Connect() {
    const auto connect = [reply = m_reply] {
        const bool connected =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnection).isConnected();
        const std::scoped_lock lock(reply->mutex);
        SessionBus* bus = reply->bus;
        if (connected && bus != nullptr)
            QMetaObject::invokeMethod(
                bus, [bus] { bus->Connected(); }, Qt::QueuedConnection);
    };
    try {
        std::thread(connect).detach();
    } catch (const std::system_error&) {
        // As without a bus.
    }
}

void SessionBus::Connected() {
    m_connected = true;
    m_ready(QDBusConnection(kConnection));
}
