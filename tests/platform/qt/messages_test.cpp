// Messages: maps, posting and sending across threads, timers, life and death of windows.
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
    std::thread::id thread;
    bool destroyOnTimer = false;
    std::vector<std::string>* log = nullptr;

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT OnAsk(WPARAM w, LPARAM l) {
        heard.push_back(static_cast<UINT>(w));
        thread = std::this_thread::get_id();
        return static_cast<LRESULT>(w) + l;
    }
    void OnTimer(UINT_PTR id) {
        heard.push_back(static_cast<UINT>(id));
        if (destroyOnTimer) DestroyWindow();
    }
    void OnDestroy() {
        if (log != nullptr) log->push_back("host destroy");
        CDialog::OnDestroy();
    }
    void PostNcDestroy() override {
        if (log != nullptr) log->push_back("host gone");
    }
};

BEGIN_MESSAGE_MAP(Host, CDialog)
ON_MESSAGE(kAsk, OnAsk)
ON_WM_TIMER()
ON_WM_DESTROY()
END_MESSAGE_MAP()

class Child : public CWnd {
public:
    explicit Child(CWnd* parent) {
        CreateEx(0, AfxRegisterWndClass(0), "", WS_CHILD, CRect(0, 0, 9, 9), parent, 5);
    }
    std::vector<std::string>* log = nullptr;
    void PostNcDestroy() override {
        log->push_back("child gone");
        delete this;
    }
};

TEST(Messages, PostedOnesKeepTheirOrderAndSentOnesWaitForTheUiThread) {
    Host host;
    LRESULT answer = 0;
    std::atomic<bool> done{false};
    std::thread other([&] {
        for (UINT i = 0; i < 5000; ++i) host.PostMessage(kAsk, i, 0);  // more than the ring starts with
        answer = host.SendMessage(kAsk, 5000, 7);
        done = true;
    });
    ASSERT_TRUE(ui_test::PumpUntil([&] { return done.load(); }));
    other.join();
    EXPECT_EQ(answer, 5007);
    EXPECT_EQ(host.thread, std::this_thread::get_id());
    ASSERT_EQ(host.heard.size(), 5001U);
    for (UINT i = 0; i <= 5000; ++i) ASSERT_EQ(host.heard[i], i);
}

TEST(Messages, ForADestroyedWindowAreDroppedAndReleaseTheSender) {
    Host host;
    const HWND handle = host.m_hWnd;
    EXPECT_TRUE(host.PostMessage(kAsk, 1, 0));
    std::atomic<bool> asking{false};
    std::atomic<LRESULT> answer{-1};
    std::thread sender([&] {
        asking = true;
        answer = SendMessage(handle, kAsk, 1, 0);
    });
    while (!asking) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    host.DestroyWindow();
    EXPECT_TRUE(ui_test::PumpUntil([&] { return answer.load() != -1; }));
    sender.join();
    EXPECT_EQ(answer, 0);
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

TEST(Windows, ChildrenGoFirstAndEachObjectHearsOfItOnce) {
    std::vector<std::string> log;
    Host host;
    host.log = &log;
    auto* child = new Child(&host);
    child->log = &log;
    host.DestroyWindow();
    EXPECT_EQ(log, (std::vector<std::string>{"host destroy", "child gone", "host gone"}));
}

TEST(Windows, AMessageBoxEndsWithItsOwner) {
    Host host;
    host.ShowWindow(SW_SHOW);
    host.destroyOnTimer = true;
    host.SetTimer(9, 50);
    EXPECT_EQ(host.MessageBox("text", "caption", MB_ICONERROR), IDOK);
    EXPECT_EQ(host.m_hWnd, nullptr);
}

TEST(Events, APulseLetsThroughOnlyWhoWaits) {
    CEvent event;
    event.PulseEvent();
    EXPECT_FALSE(event.Lock(10)) << "nobody waited, so the pulse is lost";
    std::atomic<int> through{0};
    std::thread waiter([&] {
        if (event.Lock(5000) != FALSE) ++through;
    });
    // The pulse is lost until the thread waits, so it is given until it is heard.
    while (through == 0) {
        event.PulseEvent();
        std::this_thread::yield();
    }
    waiter.join();
    EXPECT_FALSE(event.Lock(0));
    event.SetEvent();
    EXPECT_TRUE(event.Lock(0));
    EXPECT_FALSE(event.Lock(0)) << "auto-reset";
}

TEST(Threads, AreWaitedForWhenTheyWereMadeSo) {
    static std::atomic<bool> ran;
    ran = false;
    CWinThread* thread = AfxBeginThread(
        [](LPVOID) -> UINT {
            Sleep(30);
            ran = true;
            return 0;
        },
        nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    thread->m_bAutoDelete = FALSE;
    Sleep(5);
    EXPECT_FALSE(ran);
    thread->ResumeThread();
    EXPECT_EQ(WaitForSingleObject(thread->m_hThread, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(thread->m_hThread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ran);
    delete thread;
}

// A callback that takes longer than a period loses the calls in between; the others stay on the beat, which a
// delay of the first call moves.
TEST(MultimediaTimer, KeepsItsBeatAndDropsWhatIsOverdue) {
    using watch::Clock;
    struct Record {
        Clock::time_point start = Clock::now();
        std::array<double, 64> at;
        std::atomic<std::size_t> calls = 0;
    };
    const auto callback = [](UINT, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR) {
        auto* r = reinterpret_cast<Record*>(user);
        if (r->calls == r->at.size()) return;
        r->at[r->calls] = watch::Ms(Clock::now() - r->start);
        if (++r->calls == 2) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    for (const UINT delay : {20U, 90U}) {
        SCOPED_TRACE(delay);
        Record record;
        const auto user = reinterpret_cast<DWORD_PTR>(&record);
        const MMTIMERID timer = delay == 20 ? timeSetEvent(20, 1, callback, user, TIME_PERIODIC)
                                            : timeSetEventAfter(delay, 20, 1, callback, user, TIME_PERIODIC);
        ASSERT_NE(timer, 0U);
        EXPECT_TRUE(watch::Eventually([&] { return record.calls >= 5; }, std::chrono::seconds(10)));
        EXPECT_EQ(timeKillEvent(timer), 0U);
        const std::size_t calls = record.calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(record.calls, calls) << "no call after the end";
        EXPECT_NE(timeKillEvent(timer), 0U);
        // Calls 1 and 2 at 0 and 20 from the first one; those of 40 and 60 are lost; the next one comes
        // at 80.
        EXPECT_GE(record.at[0], delay);
        EXPECT_GE(record.at[1], delay + 20.0);
        for (std::size_t i = 2; i < calls; ++i)
            EXPECT_GE(record.at[i], delay + 80.0 + 20.0 * static_cast<double>(i - 2));
    }
    // The first call does not wait for a period.
    Record record;
    const MMTIMERID timer =
        timeSetEventAfter(0, 60000, 1, callback, reinterpret_cast<DWORD_PTR>(&record), TIME_PERIODIC);
    EXPECT_TRUE(watch::Eventually([&] { return record.calls == 1; }, std::chrono::seconds(10)));
    EXPECT_EQ(timeKillEvent(timer), 0U);
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
