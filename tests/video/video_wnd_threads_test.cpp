// The renderer with all its threads at work: what is shown is whole, in order, and only while playing.
#include <atomic>
#include <chrono>
#include <mutex>
#include <random>
#include <thread>

#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"
#include "video/video_wnd.h"

// CEvent::Lock as the renderer calls it comes here first (the linker's --wrap), so that a test can hold the
// pacing thread just before it waits.
BOOL LockItself(CEvent* event, DWORD timeout) __asm__("__real__ZN6CEvent4LockEj");
BOOL LockHeld(CEvent* event, DWORD timeout) __asm__("__wrap__ZN6CEvent4LockEj");

namespace {
std::atomic<bool> g_holdAtWait = false, g_heldAtWait = false, g_endWasLost = false;
}

BOOL LockHeld(CEvent* event, DWORD timeout) {
    if (!g_holdAtWait) return LockItself(event, timeout);
    g_heldAtWait = true;
    while (g_holdAtWait) std::this_thread::yield();
    const BOOL signalled = LockItself(event, 5000);
    if (!signalled) g_endWasLost = true;
    return signalled;
}

namespace {

using namespace std::chrono_literals;
using watch::Clock;

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr int kSlots = 20;

// Looks at each picture on the pacing thread right after it was drawn.
class Checker : public CVideoWndClient {
public:
    void OnFrameShown() override {
        if (!m_playing) m_shownWhileStopped = true;
        const CClientDC dc(m_pVideo);
        const COLORREF color = dc.GetPixel(0, 0);
        for (int y = 0; y < kHeight; y += 7) {
            for (int x = 0; x < kWidth; x += 9) {
                if (dc.GetPixel(x, y) != color) m_torn = true;
            }
        }
        const auto number = static_cast<int>(color);
        if (number <= m_last) m_outOfOrder = true;
        m_last = number;
        if (m_pVideo->GetQueuedCount() < 0 || m_pVideo->GetQueuedCount() >= kSlots) m_badCount = true;
        ++m_shown;
    }
    CVideoWnd* m_pVideo = nullptr;
    std::atomic<bool> m_playing = false;
    std::atomic<int> m_shown = 0;
    std::atomic<bool> m_torn = false, m_outOfOrder = false, m_badCount = false, m_shownWhileStopped = false;

private:
    int m_last = 0;
};

// The reader's part: numbered pictures of one colour, as fast as the queue takes them.
class Producer {
public:
    explicit Producer(CVideoWnd& video) : m_video(video), m_thread([this] { Run(); }) {}
    ~Producer() {
        m_end = true;
        m_thread.join();
    }
    // Held while the producer must not queue.
    std::mutex m_mutex;

private:
    void Run() {
        std::vector<BYTE> picture(static_cast<std::size_t>(kWidth) * kHeight * 3);
        for (int number = 1; !m_end; ++number) {
            for (std::size_t i = 0; i < picture.size(); i += 3) {
                picture[i] = static_cast<BYTE>(number >> 16);
                picture[i + 1] = static_cast<BYTE>(number >> 8);
                picture[i + 2] = static_cast<BYTE>(number);
            }
            for (bool queued = false; !queued && !m_end;) {
                {
                    const std::scoped_lock lock(m_mutex);
                    queued = m_video.QueueFrame(picture.data(), number) != FALSE;
                }
                if (!queued) std::this_thread::sleep_for(200us);
            }
        }
    }
    CVideoWnd& m_video;
    std::atomic<bool> m_end = false;
    std::thread m_thread;
};

TEST(VideoWndThreads, RandomPlayPauseStopNeverTearsReordersOrDrawsAfterwards) {
    ui_test::HostDialog host(IDD_PLAYER_DIALOG);
    Checker checker;
    CVideoWnd video(&host, &checker, kWidth, kHeight, 1000, kSlots);
    checker.m_pVideo = &video;
    auto producer = std::make_unique<Producer>(video);
    std::mt19937 random(7);
    auto longest = Clock::duration::zero();

    for (int i = 0; i < 400; ++i) {
        checker.m_playing = true;
        video.Play();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
        const bool stop = random() % 3 == 0;
        std::unique_lock<std::mutex> lock(producer->m_mutex, std::defer_lock);
        if (stop) lock.lock();
        const auto before = Clock::now();
        if (stop) {
            video.Stop();
        } else {
            video.Pause();
        }
        longest = std::max(longest, Clock::now() - before);
        checker.m_playing = false;
        if (stop) {
            EXPECT_EQ(video.GetQueuedCount(), 0);
            video.Clear();
            EXPECT_EQ(ui_test::PixelOf(video, 1, 1), RGB(0, 0, 0));
        }
        if (i % 16 == 0) ui_test::Pump();
    }
    // Once more with nothing stopping it, so that the run shows pictures on any machine.
    checker.m_playing = true;
    video.Play();
    EXPECT_TRUE(watch::Eventually([&] { return checker.m_shown >= 50; }, 10s));
    video.Pause();
    producer.reset();

    EXPECT_FALSE(checker.m_torn);
    EXPECT_FALSE(checker.m_outOfOrder);
    EXPECT_FALSE(checker.m_badCount);
    EXPECT_FALSE(checker.m_shownWhileStopped);
    EXPECT_LT(watch::Ms(longest), 200);
}

// Pause comes when the pacing thread has seen that it shall run, but does not wait for a tick yet.
TEST(VideoWndThreads, PauseBetweenThePacingThreadsLookAndItsWaitEndsItAllTheSame) {
    ui_test::HostDialog host(IDD_PLAYER_DIALOG);
    CVideoWnd video(&host, nullptr, kWidth, kHeight, 1, kSlots);
    g_holdAtWait = true;
    video.Play();
    ASSERT_TRUE(watch::Eventually([] { return g_heldAtWait.load(); }, 10s));
    std::thread release([] {
        std::this_thread::sleep_for(100ms);
        g_holdAtWait = false;
    });
    video.Pause();
    release.join();
    EXPECT_FALSE(g_endWasLost);
}

}  // namespace
