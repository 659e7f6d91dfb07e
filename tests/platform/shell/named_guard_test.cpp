// SPDX-License-Identifier: MIT
#include "platform/shell/named_guard.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <thread>

#include "tests/platform/shell/private_folders.h"
#include "tests/support/run_program.h"
#include "tests/support/watch.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using watch::Clock;

ChildProcess Start(const std::string& display = ":1", int start_up = 0, int closing = 0) {
    return ChildProcess({GUARDED_PROGRAM, display, std::to_string(start_up), std::to_string(closing)});
}

// Whether the program has said this, and no more, within a patient time.
bool Says(const ChildProcess& process, const std::string& what) {
    return watch::Eventually([&] { return process.Out() == what; }, seconds(10));
}

std::filesystem::path SocketIn(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_socket()) return entry.path();
    }
    return {};
}

// How many of the processes still run once the rest has ended; waits until no more than one does.
std::ptrdiff_t Survivors(const std::vector<ChildProcess>& processes) {
    const auto running = [&] {
        return std::ranges::count_if(processes, [](const ChildProcess& p) { return !p.HasEnded(); });
    };
    watch::Eventually([&] { return running() <= 1; }, seconds(40));
    std::this_thread::sleep_for(milliseconds(200));
    return running();
}

// The one that was left, if any, holds the name.
void NextOneStaysAlone(std::vector<ChildProcess>& processes) {
    processes.push_back(Start());
    EXPECT_TRUE(watch::Eventually([&] { return !processes.back().Out().empty(); }, seconds(10)));
    EXPECT_EQ(1, Survivors(processes));
    EXPECT_FALSE(processes.back().HasEnded());
}

class NamedGuardTest : public testing::Test {
protected:
    PrivateFolders m_folders;
};

TEST_F(NamedGuardTest, TheNewestClosesTheOlderAndWaitsUntilItHasGone) {
    ChildProcess older = Start(":1", 0, 300);
    const ChildProcess elsewhere = Start(":2");
    ASSERT_TRUE(Says(older, "F"));
    ASSERT_TRUE(Says(elsewhere, "F"));
    const ChildProcess newer = Start();
    EXPECT_TRUE(Says(newer, "T"));
    EXPECT_EQ("FE", older.Out());
    EXPECT_EQ(0, older.Wait());
    EXPECT_FALSE(newer.HasEnded());
    EXPECT_FALSE(elsewhere.HasEnded());
}

TEST_F(NamedGuardTest, ACrashedInstanceCountsAsNone) {
    ChildProcess crashed = Start();
    ASSERT_TRUE(Says(crashed, "F"));
    crashed.Signal(SIGKILL);
    EXPECT_EQ(-SIGKILL, crashed.Wait());
    ASSERT_FALSE(SocketIn(m_folders.Root() / "run").empty());
    const ChildProcess next = Start();
    EXPECT_TRUE(Says(next, "F"));
}

TEST_F(NamedGuardTest, AnInstanceThatHangsIsWaitedForTwoSecondsAndClosesWhenItWakes) {
    ChildProcess hung = Start();
    ASSERT_TRUE(Says(hung, "F"));
    hung.Signal(SIGSTOP);
    const auto begin = Clock::now();
    const ChildProcess newer = Start();
    EXPECT_TRUE(Says(newer, "T"));
    EXPECT_GE(Clock::now() - begin, milliseconds(1900));
    hung.Signal(SIGCONT);
    EXPECT_TRUE(Says(hung, "FE"));
    EXPECT_EQ(0, hung.Wait());
    // The one that woke has not taken the name with it.
    const ChildProcess newest = Start();
    EXPECT_TRUE(Says(newest, "T"));
    EXPECT_TRUE(Says(newer, "TE"));
}

TEST_F(NamedGuardTest, SupersededBeforeItsWindowExistsAnInstanceEndsQuietly) {
    ChildProcess starting = Start(":1", 1000);
    ASSERT_TRUE(watch::Eventually([&] { return !SocketIn(m_folders.Root() / "run").empty(); }, seconds(10)));
    const ChildProcess newer = Start();
    EXPECT_TRUE(Says(newer, "T"));
    EXPECT_EQ(1, starting.Wait());
    EXPECT_EQ("", starting.Out());
}

TEST_F(NamedGuardTest, OfManyStartedAtOnceExactlyOneStays) {
    std::vector<ChildProcess> processes;
    const ChildProcess first = Start();
    ASSERT_TRUE(Says(first, "F"));
    for (int i = 0; i < 100; ++i) processes.push_back(Start(":1", i % 3 * 20, i % 5 * 10));
    EXPECT_EQ(1, Survivors(processes));
    EXPECT_TRUE(first.HasEnded());
    NextOneStaysAlone(processes);
}

// Some are killed or held up wherever they happen to be. The newest may be among the killed ones, and then
// perhaps none is left; but never two.
TEST_F(NamedGuardTest, CrashesWhileManyStartNeverLeaveTwo) {
    // A leak check that is stopped and continued can wait for its own tracer for ever.
    PrivateFolders::Set("ASAN_OPTIONS", "detect_leaks=0");
    std::vector<ChildProcess> processes;
    for (int i = 0; i < 60; ++i) {
        processes.push_back(Start(":1", i % 4 * 5));
        if (i % 3 == 2) processes.at(processes.size() - 2).Signal(SIGKILL);
        if (i % 10 == 9) processes.at(processes.size() - 3).Signal(SIGSTOP);
    }
    std::this_thread::sleep_for(milliseconds(300));
    for (const ChildProcess& process : processes) process.Signal(SIGCONT);
    EXPECT_GE(1, Survivors(processes));
    NextOneStaysAlone(processes);
}

TEST_F(NamedGuardTest, WhoeverConnectsWithoutAskingClosesNothing) {
    NamedGuard guard("name", ":1");
    ASSERT_EQ(NamedGuard::Result::First, guard.Acquire());
    const std::string path = SocketIn(m_folders.Root() / "run");
    EXPECT_EQ(std::filesystem::perms::none,
              std::filesystem::status(path).permissions() & std::filesystem::perms::others_all);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::ranges::copy(path, address.sun_path);
    const auto connected = [&] {
        const int newer = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        EXPECT_EQ(0, connect(newer, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        return newer;
    };
    // Those that stay and say nothing use up no descriptors.
    std::vector<int> silent;
    for (int i = 0; i < 300; ++i) {
        silent.push_back(connected());
        EXPECT_FALSE(guard.TakeCloseRequest());
    }
    EXPECT_LT(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}), 300 + 100);
    // Without a packet the connection just ends.
    for (const std::string& packet : {std::string(), std::string("clos"), std::string("closed"),
                                      std::string(100000, 'c'), std::string("close")}) {
        const bool request = packet == "close";
        const int newer = connected();
        if (!packet.empty()) {
            EXPECT_LT(0, send(newer, packet.data(), packet.size(), MSG_NOSIGNAL));
        }
        if (!request) close(newer);
        pollfd watch{guard.WatchFd(), POLLIN, 0};
        EXPECT_EQ(1, poll(&watch, 1, 1000));
        EXPECT_EQ(request, guard.TakeCloseRequest()) << packet;
        EXPECT_FALSE(guard.TakeCloseRequest());
        EXPECT_EQ(0, poll(&watch, 1, 0));
        if (request) close(newer);
    }
    for (const int connection : silent) close(connection);
}

TEST_F(NamedGuardTest, AFolderThatOthersCanEnterIsNotUsedAndALongOneIs) {
    const std::filesystem::path open = m_folders.MakeFolder("open");
    std::filesystem::permissions(open, std::filesystem::perms::all);
    const std::filesystem::path longer = m_folders.MakeFolder(std::string(120, 'r'));
    for (const auto& folder : {open, longer}) {
        PrivateFolders::Set("XDG_RUNTIME_DIR", folder);
        NamedGuard guard("name", m_folders.Root().string());
        EXPECT_EQ(NamedGuard::Result::First, guard.Acquire());
        EXPECT_EQ(folder == open, SocketIn(folder).empty());
    }
}

TEST_F(NamedGuardTest, TheDisplayIsTheSameForEachOfItsScreens) {
    using Case = std::array<const char*, 3>;
    for (const auto& [wayland, x11, name] : {Case{"", "", ""},
                                             {"", ":0.1", ":0"},
                                             {"", "host.domain:10.0", "host.domain:10"},
                                             {"wayland-0", ":0", "wayland-0"}}) {
        PrivateFolders::Set("WAYLAND_DISPLAY", wayland);
        PrivateFolders::Set("DISPLAY", x11);
        EXPECT_EQ(name, DisplayName());
    }
}

}  // namespace
