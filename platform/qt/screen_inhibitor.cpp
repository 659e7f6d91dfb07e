// SPDX-License-Identifier: MIT
#include "platform/qt/screen_inhibitor.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString kSaver = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString kPortal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kReason = QStringLiteral("A video message is playing");
constexpr uint kPortalIdle = 8;

}  // namespace

ScreenInhibitor::~ScreenInhibitor() {
    if (m_release.has_value()) m_bus->send(*m_release);
}

void ScreenInhibitor::SetBus(const QDBusConnection& bus) {
    m_bus = bus;
    Step();
}

void ScreenInhibitor::Inhibit(bool inhibit) {
    m_wanted = inhibit;
    Step();
}

void ScreenInhibitor::Step() {
    if (!m_bus.has_value() || m_asking || m_wanted == m_release.has_value()) return;
    if (m_wanted) {
        AskScreenSaver();
        return;
    }
    m_bus->send(*m_release);
    m_release.reset();
}

void ScreenInhibitor::AskScreenSaver() {
    m_asking = true;
    QDBusMessage call = QDBusMessage::createMethodCall(kSaver, kSaverPath, kSaver, QStringLiteral("Inhibit"));
    call << m_application << kReason;
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError()) {
            AskPortal();
            return;
        }
        QDBusMessage release =
            QDBusMessage::createMethodCall(kSaver, kSaverPath, kSaver, QStringLiteral("UnInhibit"));
        release << reply.value();
        Granted(release);
    });
}

void ScreenInhibitor::AskPortal() {
    QDBusMessage call = QDBusMessage::createMethodCall(
        kPortal, kPortalPath, QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    call << QString() << kPortalIdle << QVariantMap{{QStringLiteral("reason"), kReason}};
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        // Where there is nobody to ask, the next message that plays asks anew.
        m_asking = false;
        if (reply.isError()) return;
        Granted(QDBusMessage::createMethodCall(kPortal, reply.value().path(),
                                               QStringLiteral("org.freedesktop.portal.Request"),
                                               QStringLiteral("Close")));
    });
}

void ScreenInhibitor::Granted(const QDBusMessage& release) {
    m_asking = false;
    m_release = release;
    Step();
}
