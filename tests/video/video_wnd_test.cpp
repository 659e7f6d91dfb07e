// SPDX-License-Identifier: MIT
#include "video/video_wnd.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <thread>

#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"

// timeSetEventAfter as the renderer calls it comes here first (the linker's --wrap).
MMTIMERID TimerItself(UINT, UINT, UINT, TIMECALLBACK, DWORD_PTR,
                      UINT) __asm__("__real__Z17timeSetEventAfterjjjPFvjjmmmEmj");
MMTIMERID TimerOrNone(UINT, UINT, UINT, TIMECALLBACK, DWORD_PTR,
                      UINT) __asm__("__wrap__Z17timeSetEventAfterjjjPFvjjmmmEmj");

namespace {
bool g_noTimer = false;
}

MMTIMERID TimerOrNone(UINT delay, UINT period, UINT resolution, TIMECALLBACK callback, DWORD_PTR user,
                      UINT flags) {
    return g_noTimer ? 0 : TimerItself(delay, period, resolution, callback, user, flags);
}

namespace {

using namespace std::chrono_literals;
using ui_test::PixelOf;
using watch::Clock;

constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr int kWidth = 8;
constexpr int kHeight = 6;
using Picture = std::array<BYTE, kWidth * kHeight * 3>;

// A picture of one colour that tells its number.
COLORREF ColorOf(int number) {
    return RGB(static_cast<unsigned>(number) & 0xFFU, 0x40, static_cast<unsigned>(number) >> 8U);
}
Picture MakePicture(int number) {
    Picture picture;
    for (std::size_t i = 0; i < picture.size(); i += 3) {
        picture[i] = static_cast<BYTE>(number >> 8);
        picture[i + 1] = 0x40;
        picture[i + 2] = static_cast<BYTE>(number);
    }
    return picture;
}

// Notes when each picture was shown.
class Client : public CVideoWndClient {
public:
    void OnFrameShown() override {
        const auto now = Clock::now();
        {
            const std::scoped_lock lock(m_mutex);
            m_times.push_back(now);
        }
        if (m_times.size() == 1) std::this_thread::sleep_for(m_firstTakes);
    }
    std::vector<Clock::time_point> Times() {
        const std::scoped_lock lock(m_mutex);
        return m_times;
    }
    bool WaitFor(std::size_t count, std::chrono::milliseconds timeout = 20s) {
        return watch::Eventually([&] { return Times().size() >= count; }, timeout);
    }
    std::chrono::milliseconds m_firstTakes{0};

private:
    std::mutex m_mutex;
    std::vector<Clock::time_point> m_times;
};

class VideoWnd : public testing::Test {
protected:
    static void Queue(CVideoWnd& video, int from, int to) {
        for (int i = from; i <= to; ++i) ASSERT_NO_FATAL_FAILURE(QueuePicture(video, MakePicture(i), i));
    }
    template <class T>
    static void QueuePicture(CVideoWnd& video, const T& picture, int number) {
        BYTE* frame = video.GetFreeFrame();
        ASSERT_NE(frame, nullptr) << number;
        std::copy(picture.begin(), picture.end(), frame);
        ASSERT_TRUE(video.QueueFrame(number)) << number;
    }
    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    Client m_client;
};

TEST_F(VideoWnd, IsBlackAndCentredUntilTheFirstPicture) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    video.UpdateWindow();
    video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, 3, 3), kBlack);
    CRect area;
    m_host.GetClientRect(area);
    CPoint origin;
    video.ClientToScreen(&origin);
    m_host.ScreenToClient(&origin);
    EXPECT_EQ(origin.x, area.Width() / 2 - kWidth / 2);
    EXPECT_EQ(origin.y, area.Height() / 2 - kHeight / 2);
}

TEST_F(VideoWnd, TheFirstRowIsTheBottomLineAtEveryWidth) {
    for (const int width : {1, 2, 3, 4, 5, 320}) {
        constexpr int height = 3;
        std::vector<BYTE> picture(static_cast<std::size_t>(width) * height * 3);
        for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<BYTE>(i * 7 + 1);
        CVideoWnd video(&m_host, nullptr, width, height, 5, 20);
        ASSERT_NO_FATAL_FAILURE(QueuePicture(video, picture, 0));
        video.ShowNextFrame();
        for (int row = 0; row < height; ++row) {
            for (int x = 0; x < width; ++x) {
                const BYTE* bgr = &picture[static_cast<std::size_t>(row * width + x) * 3];
                ASSERT_EQ(PixelOf(video, x, height - 1 - row), RGB(bgr[2], bgr[1], bgr[0]))
                    << "width " << width << ", row " << row << ", x " << x;
            }
        }
    }
}

// Faults: a paused picture lost when the scale changes, or black that comes back as the picture before.
TEST_F(VideoWnd, AnotherScaleShowsWhatWasSeen) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    Queue(video, 1, 1);
    video.ShowNextFrame();
    for (const int percent : {200, 150, 100}) {
        SetContentScale(percent);
        EXPECT_EQ(PixelOf(video, kWidth - 1, kHeight - 1), ColorOf(1)) << percent;
    }
    video.Clear();
    SetContentScale(200);
    EXPECT_EQ(PixelOf(video, 0, 0), kBlack);
    SetContentScale(100);
}

TEST_F(VideoWnd, QueueHoldsOneLessThanItsSlotsAndStopEmptiesIt) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    Queue(video, 1, 19);
    EXPECT_EQ(video.GetFreeFrame(), nullptr);
    EXPECT_FALSE(video.QueueFrame(20));
    video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(1));
    Queue(video, 20, 20);
    EXPECT_EQ(video.GetFreeFrame(), nullptr);
    EXPECT_FALSE(video.QueueFrame(21));
    for (int i = 2; i <= 10; ++i) video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, kWidth - 1, kHeight - 1), ColorOf(10));
    EXPECT_EQ(video.GetQueuedCount(), 10);

    video.Stop();
    video.Clear();
    EXPECT_EQ(video.GetQueuedCount(), 0);
    Queue(video, 50, 50);
    EXPECT_EQ(PixelOf(video, 0, 0), kBlack);
    for (int i = 0; i < 2; ++i) {
        video.ShowNextFrame();
        EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(50)) << "an empty queue leaves the last picture";
    }
}

TEST_F(VideoWnd, ShowsTheNewestPictureThatIsDueAndDropsThoseBeforeIt) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    Queue(video, 3, 10);
    Queue(video, 14, 16);  // numbers may leave gaps
    const struct {
        int due, shown, left;
    } steps[] = {{2, -1, 11}, {3, 3, 10}, {3, 3, 10}, {7, 7, 6}, {13, 10, 3}, {20, 16, 0}, {21, 16, 0}};
    for (const auto& step : steps) {
        video.ShowUpTo(step.due);
        EXPECT_EQ(video.GetQueuedCount(), step.left) << step.due;
        EXPECT_EQ(PixelOf(video, 0, 0), step.shown < 0 ? kBlack : ColorOf(step.shown)) << step.due;
    }
    // Fault: one that is queued after its time waits for the next report, which its place in the queue holds
    // up.
    Queue(video, 20, 22);
    video.ShowLate();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(21));
    video.Stop();
    Queue(video, 0, 0);
    video.ShowLate();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(21)) << "due before the stop";
}

TEST_F(VideoWnd, EachRateHasItsPeriodAndTheFirstPictureComesOnePeriodAfterPlay) {
    const std::array<std::chrono::milliseconds, 5> periods = {1000ms, 500ms, 333ms, 250ms, 200ms};
    std::array<Client, 5> clients;
    std::array<std::unique_ptr<CVideoWnd>, 5> videos;
    std::array<Clock::time_point, 5> starts;
    const watch::Lateness lateness;
    for (std::size_t i = 0; i < 5; ++i) {
        videos[i] = std::make_unique<CVideoWnd>(&m_host, &clients[i], kWidth, kHeight, 9, 20);
        videos[i]->SetFrameRate(static_cast<int>(i) + 1);
        Queue(*videos[i], 1, 3);
        starts[i] = Clock::now();
        videos[i]->Play();
        videos[i]->SetFrameRate(50);  // ignored while playing
    }
    for (std::size_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(clients[i].WaitFor(2)) << "rate " << i + 1;
        const auto shown = clients[i].Times();
        for (std::size_t k = 0; k < 2; ++k) {
            const auto due = starts[i] + (k + 1) * periods[i];
            EXPECT_GE(shown[k], due - 1ms) << "rate " << i + 1 << ", picture " << k + 1;
            EXPECT_LT(watch::Ms(shown[k] - due), 100 + 4 * lateness.WorstMs())
                << "rate " << i + 1 << ", picture " << k + 1;
        }
    }
}

// Twelve pauses within four periods: what is played counts, not how often it was interrupted.
TEST_F(VideoWnd, APauseKeepsThePhase) {
    CVideoWnd video(&m_host, &m_client, kWidth, kHeight, 2, 20);
    Queue(video, 1, 10);
    double least = 0;  // of the time that it has played, in ms
    double most = 0;
    const watch::Lateness lateness;
    for (int i = 0; i < 12; ++i) {
        const auto before = Clock::now();
        video.Play();
        const auto from = Clock::now();
        std::this_thread::sleep_for(180ms);
        // What starting and ending a timer's thread takes is lost.
        least += watch::Ms(Clock::now() - from) - 10 - 2 * lateness.WorstMs();
        video.Pause();
        most += watch::Ms(Clock::now() - before);
        std::this_thread::sleep_for(30ms);
        const auto shown = static_cast<double>(m_client.Times().size());
        EXPECT_GT(shown, least / 500 - 1) << i;
        // A pause rounds what is left of the period to a whole millisecond.
        EXPECT_LE(shown, (most + i + 1) / 500) << i;
    }
}

TEST_F(VideoWnd, ATickDuringADrawingIsLostAndNeverMadeUp) {
    CVideoWnd video(&m_host, &m_client, kWidth, kHeight, 5, 20);
    m_client.m_firstTakes = 500ms;  // from the tick at 200 ms past those at 400 and 600
    Queue(video, 1, 10);
    const watch::Lateness lateness;
    const auto start = Clock::now();
    video.Play();
    ASSERT_TRUE(m_client.WaitFor(3));
    video.Pause();
    const auto shown = m_client.Times();
    EXPECT_GE(shown[1] - start, 799ms);
    EXPECT_GE(shown[2] - start, 999ms);
    EXPECT_LT(watch::Ms(shown[2] - start), 1150 + 4 * lateness.WorstMs());
}

TEST_F(VideoWnd, PicturesThatCannotBeShownNeverFillTheQueue) {
    // A picture without any area has no bitmap.
    CVideoWnd empty(&m_host, &m_client, 0, kHeight, 100, 3);
    EXPECT_FALSE(empty.HasBitmap());
    CVideoWnd video(&m_host, &m_client, kWidth, kHeight, 100, 3);
    g_noTimer = true;
    EXPECT_FALSE(video.Play());
    g_noTimer = false;
    for (CVideoWnd* dropping : {&empty, &video}) {
        for (int i = 0; i < 9; ++i) {
            EXPECT_EQ(dropping->GetFreeFrame(), nullptr);
            EXPECT_TRUE(dropping->QueueFrame(i));
        }
        EXPECT_EQ(dropping->GetQueuedCount(), 0);
        dropping->ShowNextFrame();
    }
    EXPECT_TRUE(m_client.Times().empty());
    EXPECT_TRUE(video.Play()) << "tried again";
    Queue(video, 1, 1);
    EXPECT_TRUE(m_client.WaitFor(1));
}

}  // namespace
