#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/shell/single_instance.h"
#include "tests/platform/shell/child_process.h"
#include "tests/platform/shell/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

ChildProcess Start(const std::string& display = ":1", int start_up = 0, int closing = 0) {
    return ChildProcess({GUARDED_PROGRAM, display, std::to_string(start_up), std::to_string(closing)});
}

std::filesystem::path SocketIn(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_socket()) return entry.path();
    }
    return {};
}

// How many of the processes still run once the rest has ended; waits until no more than one does.
std::ptrdiff_t Survivors(std::vector<ChildProcess>& processes) {
    const auto running = [&] {
        return std::ranges::count_if(processes, [](ChildProcess& p) { return !p.HasEnded(); });
    };
    const auto deadline = Clock::now() + std::chrono::seconds(40);
    while (running() > 1 && Clock::now() < deadline) std::this_thread::sleep_for(milliseconds(20));
    std::this_thread::sleep_for(milliseconds(200));
    return running();
}

class SingleInstance : public testing::Test {
protected:
    PrivateFolders m_folders;
};

TEST_F(SingleInstance, TheNewestClosesTheOlderAndWaitsUntilItHasGone) {
    ChildProcess older = Start(":1", 0, 300);
    ASSERT_EQ('F', older.Read());
    ChildProcess newer = Start();
    EXPECT_EQ('R', newer.Read());
    EXPECT_EQ('E', older.Read(0));
    EXPECT_EQ(0, older.Wait());
    EXPECT_FALSE(newer.HasEnded());
}

TEST_F(SingleInstance, EachDisplayHasItsOwn) {
    ChildProcess one = Start(":1");
    ASSERT_EQ('F', one.Read());
    ChildProcess other = Start(":2");
    EXPECT_EQ('F', other.Read());
    EXPECT_FALSE(one.HasEnded());
}

TEST_F(SingleInstance, ACrashedInstanceCountsAsNone) {
    ChildProcess crashed = Start();
    ASSERT_EQ('F', crashed.Read());
    crashed.Signal(SIGKILL);
    EXPECT_EQ(-SIGKILL, crashed.Wait());
    ASSERT_FALSE(SocketIn(m_folders.Root() / "run").empty());
    const auto begin = Clock::now();
    ChildProcess next = Start();
    EXPECT_EQ('F', next.Read());
    EXPECT_LT(Clock::now() - begin, milliseconds(1000));
}

TEST_F(SingleInstance, AnInstanceThatHangsIsWaitedForTwoSecondsAndClosesWhenItWakes) {
    ChildProcess hung = Start();
    ASSERT_EQ('F', hung.Read());
    hung.Signal(SIGSTOP);
    const auto begin = Clock::now();
    ChildProcess newer = Start();
    EXPECT_EQ('R', newer.Read());
    EXPECT_GE(Clock::now() - begin, milliseconds(1900));
    EXPECT_LT(Clock::now() - begin, milliseconds(4000));
    hung.Signal(SIGCONT);
    EXPECT_EQ('E', hung.Read());
    EXPECT_EQ(0, hung.Wait());
    // The one that woke has not taken the name with it.
    ChildProcess newest = Start();
    EXPECT_EQ('R', newest.Read());
    EXPECT_EQ('E', newer.Read());
}

TEST_F(SingleInstance, ReplacedBeforeItsWindowExistsAnInstanceEndsQuietly) {
    ChildProcess starting = Start(":1", 400);
    std::this_thread::sleep_for(milliseconds(150));
    ChildProcess newer = Start();
    EXPECT_EQ('R', newer.Read());
    EXPECT_EQ(1, starting.Wait());
    EXPECT_EQ(0, starting.Read(0));
}

TEST_F(SingleInstance, OfManyStartedAtOnceExactlyOneStays) {
    std::vector<ChildProcess> processes;
    ChildProcess first = Start();
    ASSERT_EQ('F', first.Read());
    for (int i = 0; i < 100; ++i) processes.push_back(Start(":1", i % 3 * 20, i % 5 * 10));
    EXPECT_EQ(1, Survivors(processes));
    EXPECT_TRUE(first.HasEnded());
    // It holds the name: the next one finds it, and is alone afterwards.
    processes.push_back(Start());
    EXPECT_EQ('R', processes.back().Read());
    EXPECT_EQ(1, Survivors(processes));
    EXPECT_FALSE(processes.back().HasEnded());
}

// Some are killed or held up wherever they happen to be. The newest may be among the killed ones, and then
// perhaps none is left; but never two.
TEST_F(SingleInstance, CrashesWhileManyStartNeverLeaveTwo) {
    // A leak check that is stopped and continued can wait for its own tracer for ever.
    m_folders.Set("ASAN_OPTIONS", "detect_leaks=0");
    std::vector<ChildProcess> processes;
    for (int i = 0; i < 60; ++i) {
        processes.push_back(Start(":1", i % 4 * 5));
        if (i % 3 == 2) processes.at(processes.size() - 2).Signal(SIGKILL);
        if (i % 10 == 9) processes.at(processes.size() - 3).Signal(SIGSTOP);
    }
    std::this_thread::sleep_for(milliseconds(300));
    for (const ChildProcess& process : processes) process.Signal(SIGCONT);
    EXPECT_GE(1, Survivors(processes));
    processes.push_back(Start());
    EXPECT_NE(0, processes.back().Read());
    EXPECT_EQ(1, Survivors(processes));
    EXPECT_FALSE(processes.back().HasEnded());
}

TEST_F(SingleInstance, WhoeverConnectsWithoutAskingClosesNothing) {
    NamedGuard guard("name", ":1");
    ASSERT_EQ(NamedGuard::Result::First, guard.Acquire());
    const std::string path = SocketIn(m_folders.Root() / "run");
    EXPECT_EQ(std::filesystem::perms::none,
              std::filesystem::status(path).permissions() & std::filesystem::perms::others_all);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::ranges::copy(path, address.sun_path);
    struct Case {
        const char* packet;  // null: the connection ends without any
        bool request;
    };
    for (const Case& c : {Case{nullptr, false}, {"clos", false}, {"closed", false}, {"close", true}}) {
        const int socket_ = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        ASSERT_EQ(0, connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        EXPECT_FALSE(guard.TakeCloseRequest());
        if (c.packet != nullptr) {
            EXPECT_LT(0, send(socket_, c.packet, std::strlen(c.packet), MSG_NOSIGNAL));
        }
        if (!c.request) close(socket_);
        pollfd watch{guard.WatchFd(), POLLIN, 0};
        EXPECT_EQ(1, poll(&watch, 1, 1000));
        EXPECT_EQ(c.request, guard.TakeCloseRequest()) << (c.packet == nullptr ? "" : c.packet);
        EXPECT_FALSE(guard.TakeCloseRequest());
        EXPECT_EQ(0, poll(&watch, 1, 0));
        if (c.request) close(socket_);
    }
}

TEST_F(SingleInstance, AFolderThatOthersCanEnterIsNotUsed) {
    std::filesystem::permissions(m_folders.Root() / "run", std::filesystem::perms::all);
    NamedGuard guard("name", m_folders.Root().string());
    EXPECT_EQ(NamedGuard::Result::First, guard.Acquire());
    EXPECT_TRUE(SocketIn(m_folders.Root() / "run").empty());
}

TEST_F(SingleInstance, ALongRuntimeFolderServesToo) {
    const std::filesystem::path folder = m_folders.Root() / std::string(120, 'r');
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    m_folders.Set("XDG_RUNTIME_DIR", folder);
    ChildProcess older = Start();
    ASSERT_EQ('F', older.Read());
    EXPECT_FALSE(SocketIn(folder).empty());
    ChildProcess newer = Start();
    EXPECT_EQ('R', newer.Read());
    EXPECT_EQ(0, older.Wait());
}

TEST_F(SingleInstance, TheDisplayIsTheSameForEachOfItsScreens) {
    struct Case {
        const char* wayland;
        const char* x11;
        const char* name;
    };
    for (const Case& c : {Case{"", "", ""},
                          {"", ":0", ":0"},
                          {"", ":0.1", ":0"},
                          {"", "host.domain:10.0", "host.domain:10"},
                          {"wayland-0", ":0", "wayland-0"}}) {
        m_folders.Set("WAYLAND_DISPLAY", c.wayland);
        m_folders.Set("DISPLAY", c.x11);
        EXPECT_EQ(c.name, DisplayName());
    }
}

}  // namespace
