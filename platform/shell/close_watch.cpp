#include "platform/shell/close_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

CloseWatch::CloseWatch(NamedGuard& guard, std::function<void()> on_request)
    : m_guard(guard), m_on_request(std::move(on_request)) {
    if (m_guard.WatchFd() < 0) return;
    m_nStop = eventfd(0, EFD_CLOEXEC);
    if (m_nStop >= 0) m_thread = std::thread([this] { Run(); });
}

CloseWatch::~CloseWatch() {
    if (m_nStop < 0) return;
    eventfd_write(m_nStop, 1);
    m_thread.join();
    close(m_nStop);
}

void CloseWatch::Run() {
    pollfd watched[] = {{m_nStop, POLLIN, 0}, {m_guard.WatchFd(), POLLIN, 0}};
    for (;;) {
        if (poll(watched, std::size(watched), -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (watched[0].revents != 0) return;
        if (m_guard.TakeCloseRequest()) m_on_request();
    }
}
