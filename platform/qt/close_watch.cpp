// SPDX-License-Identifier: MIT
#include "platform/shell/close_watch.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <utility>

#include "platform/shell/named_guard.h"

void WatchForClose(NamedGuard& guard, std::function<void()> on_request) {
    if (guard.WatchFd() < 0) return;
    auto* notifier =
        new QSocketNotifier(guard.WatchFd(), QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [&guard, on_request = std::move(on_request)] {
                         if (guard.TakeCloseRequest()) on_request();
                     });
}
