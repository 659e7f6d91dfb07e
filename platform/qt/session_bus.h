// SPDX-License-Identifier: MIT
// The connection to the desktop's session bus.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

// Lets the program start first and then connects on a thread of its own; `ready` is called from the message
// loop, never where there is no bus. The connection is closed with the object. One at a time; UI thread.
class SessionBus : public QObject {
public:
    explicit SessionBus(std::function<void(const QDBusConnection&)> ready);
    ~SessionBus() override;
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

private:
    // What the thread that connects reports to; it may outlive this object.
    struct Reply {
        std::mutex mutex;
        SessionBus* bus = nullptr;
    };
    void Connect();
    void Connected();

    std::function<void(const QDBusConnection&)> m_ready;
    std::shared_ptr<Reply> m_reply = std::make_shared<Reply>();
    std::thread m_thread;
    std::future<void> m_ended;
};
