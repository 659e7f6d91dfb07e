// SPDX-License-Identifier: MIT
// Keeps the desktop from blanking the screen.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <optional>

// Asks the desktop's screen saver, and where there is none the desktop portal. Nothing waits for an answer;
// an inhibition that is granted when it is no longer wanted is released at once, and so is one that is in
// force when the object goes. UI thread.
class ScreenInhibitor : public QObject {
public:
    explicit ScreenInhibitor(const QString& application) : m_application(application) {}
    ~ScreenInhibitor() override;
    ScreenInhibitor(const ScreenInhibitor&) = delete;
    ScreenInhibitor& operator=(const ScreenInhibitor&) = delete;

    // What is wanted before is asked for then.
    void SetBus(const QDBusConnection& bus);
    void Inhibit(bool inhibit);

private:
    void Step();
    void AskScreenSaver();
    void AskPortal();
    void Granted(const QDBusMessage& release);

    QString m_application;
    std::optional<QDBusConnection> m_bus;
    bool m_wanted = false;
    bool m_asking = false;
    std::optional<QDBusMessage> m_release;  // what ends the inhibition that is in force
};
