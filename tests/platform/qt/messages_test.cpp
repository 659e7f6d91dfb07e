// SPDX-License-Identifier: MIT
// Messages and timers, events and threads.
#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/framework/afxcmn.h"
#include "platform/framework/mmtimer.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"

namespace {

constexpr UINT kAsk = WM_USER + 1;

// A top-level window to hang children into.
class Host : public CDialog {
public:
    Host() { Create(IDD_VOLUME); }
    std::vector<UINT> heard;

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT OnAsk(WPARAM w, LPARAM l) {
        heard.push_back(static_cast<UINT>(w));
        return static_cast<LRESULT>(w) + l;
    }
    void OnTimer(UINT_PTR id) { heard.push_back(static_cast<UINT>(id)); }
};

BEGIN_MESSAGE_MAP(Host, CDialog)
ON_MESSAGE(kAsk, OnAsk)
ON_WM_TIMER()
END_MESSAGE_MAP()

TEST(Messages, PostedOnesKeepTheirOrder) {
    Host host;
    std::thread other([&] {
        for (UINT i = 0; i < 5000; ++i) host.PostMessage(kAsk, i, 0);  // more than the queue starts with
    });
    EXPECT_TRUE(ui_test::PumpUntil([&] { return host.heard.size() == 5000; }));
    other.join();
    for (UINT i = 0; i < host.heard.size(); ++i) ASSERT_EQ(host.heard[i], i);
}

TEST(Messages, ForADestroyedWindowAreDropped) {
    Host host;
    const HWND handle = host.m_hWnd;
    EXPECT_TRUE(host.PostMessage(kAsk, 1, 0));
    host.DestroyWindow();
    ui_test::Pump();
    EXPECT_TRUE(host.heard.empty());
    EXPECT_FALSE(PostMessage(handle, kAsk, 1, 0));
    Host next;
    EXPECT_NE(next.m_hWnd, handle) << "handles are never reused";
}

TEST(Messages, TimersRunUntilKilledOrTheWindowGoes) {
    Host host;
    host.SetTimer(3, 10);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return host.heard.size() >= 3; }));
    EXPECT_TRUE(host.KillTimer(3));
    const std::size_t after = host.heard.size();
    ui_test::PumpFor(60);
    EXPECT_EQ(host.heard.size(), after);
    EXPECT_FALSE(host.KillTimer(3));
}

// Whoever waits is let through once for each signal; a pulse that nobody waits for is lost.
TEST(Events, APulseLetsThroughOnlyWhoWaits) {
    CEvent event;
    event.PulseEvent();
    std::atomic<int> through{0};
    std::thread waiter([&] {
        for (int i = 0; i < 3; ++i) {
            event.Lock();
            ++through;
        }
    });
    EXPECT_TRUE(watch::Eventually([] { return watch::OthersSleep(); }, std::chrono::seconds(10)));
    EXPECT_EQ(through, 0);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(watch::Eventually([] { return watch::OthersSleep(); }, std::chrono::seconds(10)));
        if (i == 2)
            event.SetEvent();
        else
            event.PulseEvent();
        EXPECT_TRUE(watch::Eventually([&] { return through == i; }, std::chrono::seconds(10)));
    }
    waiter.join();
}

TEST(Threads, AreWaitedForOrDeleteThemselves) {
    std::atomic<bool> ran{false};
    const auto proc = [](LPVOID flag) -> UINT {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        *static_cast<std::atomic<bool>*>(flag) = true;
        return 0;
    };
    CWinThread* thread = AfxBeginThread(proc, &ran, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    thread->m_bAutoDelete = FALSE;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(ran) << "suspended";
    thread->ResumeThread();
    EXPECT_EQ(WaitForSingleObject(thread->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ran);
    delete thread;
    const int threads = watch::ThreadCount();
    ran = false;
    AfxBeginThread(proc, &ran);
    EXPECT_TRUE(
        watch::Eventually([&] { return ran && watch::ThreadCount() == threads; }, std::chrono::seconds(10)));
}

// A callback that takes longer than a period loses the calls in between; the others stay on the beat.
TEST(MultimediaTimer, KeepsItsBeatAndDropsWhatIsOverdue) {
    using watch::Clock;
    struct Record {
        Clock::time_point start = Clock::now();
        std::array<double, 64> at;
        std::atomic<std::size_t> calls = 0;
    } record;
    const auto callback = [](UINT, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR) {
        auto* r = reinterpret_cast<Record*>(user);
        if (r->calls == r->at.size()) return;
        r->at[r->calls] = watch::Ms(Clock::now() - r->start);
        if (++r->calls == 2) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    const auto user = reinterpret_cast<DWORD_PTR>(&record);
    const auto run = [&](UINT delay, UINT period, std::size_t calls) {
        const MMTIMERID timer = timeSetEventAfter(delay, period, 1, callback, user, TIME_PERIODIC);
        ASSERT_NE(timer, 0U);
        EXPECT_TRUE(watch::Eventually([&] { return record.calls >= calls; }, std::chrono::seconds(10)));
        EXPECT_EQ(timeKillEvent(timer), 0U);
    };
    run(90, 20, 5);
    const std::size_t calls = record.calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(record.calls, calls) << "no call after the end";
    // Calls 1 and 2 at 90 and 110; those of 130 and 150 are lost; the next one comes at 170.
    EXPECT_GE(record.at[0], 90.0);
    EXPECT_GE(record.at[1], 110.0);
    for (std::size_t i = 2; i < calls; ++i) EXPECT_GE(record.at[i], 130.0 + 20.0 * static_cast<double>(i));
    // The first call does not wait for a period.
    run(0, 60000, calls + 1);
    EXPECT_EQ(timeSetEvent(0, 1, nullptr, 0, TIME_PERIODIC), 0U);
}

// Every thread to come asks for a stack that no address space has.
TEST(Threads, ThatCannotStartAreReported) {
    pthread_attr_t normal;
    pthread_getattr_default_np(&normal);
    pthread_attr_t endless = normal;
    pthread_attr_setstacksize(&endless, std::size_t{1} << 47U);
    ASSERT_EQ(pthread_setattr_default_np(&endless), 0);
    EXPECT_EQ(timeSetEvent(
                  20, 1, [](UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) {}, 0, TIME_PERIODIC),
              0U);
    EXPECT_EQ(AfxBeginThread([](LPVOID) -> UINT { return 0; }, nullptr), nullptr);
    pthread_setattr_default_np(&normal);
    pthread_attr_destroy(&normal);
}

}  // namespace
