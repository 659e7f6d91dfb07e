// SPDX-License-Identifier: MIT
#include "platform/qt/session_bus.h"

#include <QFileInfo>
#include <QTimer>
#include <chrono>
#include <system_error>
#include <utility>

namespace {

// A connection apart from the toolkit's own, which others may close.
const QString kConnection = QStringLiteral("trvplayer");
// By then the window is there and a message sounds.
constexpr int kAfterStartMs = 400;
constexpr std::chrono::milliseconds kPatience{1000};

// Where nothing says so, the library would start a bus.
bool HasAddress() {
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus")));
}

}  // namespace

SessionBus::SessionBus(std::function<void(const QDBusConnection&)> ready) : m_ready(std::move(ready)) {
    m_reply->bus = this;
    if (HasAddress()) QTimer::singleShot(kAfterStartMs, this, [this] { Connect(); });
}

// At the program's end what the library keeps is taken down, so a thread that is inside it has to be out of
// it; but for a bus that does not answer, whose thread sleeps until the process has gone.
SessionBus::~SessionBus() {
    {
        const std::scoped_lock lock(m_reply->mutex);
        m_reply->bus = nullptr;
    }
    if (!m_thread.joinable()) return;
    if (m_ended.wait_for(kPatience) == std::future_status::ready) {
        m_thread.join();
        QDBusConnection::disconnectFromBus(kConnection);
    } else {
        m_thread.detach();
    }
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
    std::packaged_task<void()> task(connect);
    m_ended = task.get_future();
    try {
        m_thread = std::thread(std::move(task));
    } catch (const std::system_error&) {
        // As without a bus.
    }
}

void SessionBus::Connected() {
    m_ready(QDBusConnection(kConnection));
}
