#include "video/video_wnd.h"

#include <array>
#include <chrono>
#include <mutex>
#include <thread>

#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"

namespace {

using namespace std::chrono_literals;
using ui_test::IsScribbled;
using ui_test::PixelOf;
using ui_test::Scribble;
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
class Times : public CVideoWndClient {
public:
    void OnFrameShown() override {
        const auto now = Clock::now();
        {
            const std::scoped_lock lock(m_mutex);
            m_times.push_back(now);
        }
        if (m_times.size() == 1) std::this_thread::sleep_for(m_firstTakes);
    }
    std::vector<Clock::time_point> Get() {
        const std::scoped_lock lock(m_mutex);
        return m_times;
    }
    bool WaitFor(std::size_t count, std::chrono::milliseconds timeout = 20s) {
        return watch::Eventually([&] { return Get().size() >= count; }, timeout);
    }
    std::chrono::milliseconds m_firstTakes{0};

private:
    std::mutex m_mutex;
    std::vector<Clock::time_point> m_times;
};

class VideoWnd : public testing::Test {
protected:
    void QueueNumbers(CVideoWnd& video, int from, int to) {
        for (int i = from; i <= to; ++i) ASSERT_TRUE(video.QueueFrame(MakePicture(i).data())) << i;
    }
    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    Times m_times;
};

TEST_F(VideoWnd, IsBlackAndCentredUntilTheFirstPicture) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    video.UpdateWindow();
    EXPECT_EQ(PixelOf(video, 0, 0), kBlack);
    video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, 3, 3), kBlack);
    EXPECT_EQ(video.GetQueuedCount(), 0);

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
        ASSERT_TRUE(video.QueueFrame(picture.data()));
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

TEST_F(VideoWnd, QueueHoldsOneLessThanItsSlotsAndKeepsOrder) {
    CVideoWnd video(&m_host, nullptr, kWidth, kHeight, 5, 20);
    QueueNumbers(video, 1, 19);
    EXPECT_FALSE(video.QueueFrame(MakePicture(20).data()));
    EXPECT_EQ(video.GetQueuedCount(), 19);
    video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(1));
    QueueNumbers(video, 20, 20);
    EXPECT_FALSE(video.QueueFrame(MakePicture(21).data()));
    for (int i = 2; i <= 20; ++i) {
        video.ShowNextFrame();
        ASSERT_EQ(PixelOf(video, kWidth - 1, kHeight - 1), ColorOf(i));
        ASSERT_EQ(video.GetQueuedCount(), 20 - i);
    }
    video.ShowNextFrame();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(20)) << "an empty queue leaves the last picture";
    EXPECT_EQ(video.GetQueuedCount(), 0);
}

TEST_F(VideoWnd, StopDropsWhatWaitsAndClearIsBlackForGood) {
    CVideoWnd video(&m_host, &m_times, kWidth, kHeight, 100, 20);
    QueueNumbers(video, 1, 19);
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(3));
    video.Stop();
    const std::size_t shown = m_times.Get().size();
    EXPECT_EQ(video.GetQueuedCount(), 0);
    video.Clear();
    EXPECT_EQ(PixelOf(video, 0, 0), kBlack);
    std::this_thread::sleep_for(50ms);
    ui_test::Pump();
    EXPECT_EQ(PixelOf(video, 0, 0), kBlack);
    EXPECT_EQ(m_times.Get().size(), shown);

    QueueNumbers(video, 50, 50);
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(shown + 1));
    video.Pause();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(50)) << "the queue starts afresh";
}

TEST_F(VideoWnd, PauseKeepsWhatWaits) {
    CVideoWnd video(&m_host, &m_times, kWidth, kHeight, 100, 20);
    video.Pause();
    QueueNumbers(video, 1, 10);
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(2));
    video.Pause();
    const auto shown = static_cast<int>(m_times.Get().size());
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(shown));
    EXPECT_EQ(video.GetQueuedCount(), 10 - shown);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(video.GetQueuedCount(), 10 - shown);
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(10));
    video.Pause();
    EXPECT_EQ(PixelOf(video, 0, 0), ColorOf(10));
}

TEST_F(VideoWnd, EachRateHasItsPeriodAndTheFirstPictureComesOnePeriodAfterPlay) {
    const std::array<std::chrono::milliseconds, 5> periods = {1000ms, 500ms, 333ms, 250ms, 200ms};
    std::array<Times, 5> times;
    std::array<std::unique_ptr<CVideoWnd>, 5> videos;
    std::array<Clock::time_point, 5> starts;
    for (std::size_t i = 0; i < 5; ++i) {
        videos[i] = std::make_unique<CVideoWnd>(&m_host, &times[i], kWidth, kHeight, 9, 20);
        videos[i]->SetFrameRate(static_cast<int>(i) + 1);
        QueueNumbers(*videos[i], 1, 3);
        starts[i] = Clock::now();
        videos[i]->Play();
    }
    for (std::size_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(times[i].WaitFor(2)) << "rate " << i + 1;
        const auto shown = times[i].Get();
        for (std::size_t k = 0; k < 2; ++k) {
            const auto due = starts[i] + (k + 1) * periods[i];
            EXPECT_GE(shown[k], due - 1ms) << "rate " << i + 1 << ", picture " << k + 1;
            EXPECT_LT(shown[k], due + 400ms) << "rate " << i + 1 << ", picture " << k + 1;
        }
    }
}

TEST_F(VideoWnd, ATickDuringADrawingIsLostAndNeverMadeUp) {
    CVideoWnd video(&m_host, &m_times, kWidth, kHeight, 5, 20);
    m_times.m_firstTakes = 500ms;  // from the tick at 200 ms past those at 400 and 600
    QueueNumbers(video, 1, 10);
    const auto start = Clock::now();
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(3));
    video.Pause();
    const auto shown = m_times.Get();
    EXPECT_GE(shown[1] - start, 799ms);
    EXPECT_GE(shown[2] - start, 999ms);
    EXPECT_LT(shown[2] - start, 1500ms);
}

TEST_F(VideoWnd, TheRateChangesOnlyWhileStopped) {
    CVideoWnd video(&m_host, &m_times, kWidth, kHeight, 50, 20);
    QueueNumbers(video, 1, 19);
    video.Play();
    video.SetFrameRate(1);
    video.Pause();
    const std::size_t before = m_times.Get().size();
    video.Play();
    EXPECT_TRUE(m_times.WaitFor(before + 2, 1900ms)) << "not remembered from the playing before";
    video.Pause();
    const std::size_t fast = m_times.Get().size();
    video.SetFrameRate(2);
    const auto start = Clock::now();
    video.Play();
    ASSERT_TRUE(m_times.WaitFor(fast + 1));
    EXPECT_GE(m_times.Get()[fast] - start, 499ms);
}

TEST_F(VideoWnd, PicturesThatHaveNoBitmapAreDropped) {
    // A picture without any area cannot have one.
    CVideoWnd video(&m_host, &m_times, 0, kHeight, 100, 3);
    const BYTE nothing = 0;
    ASSERT_TRUE(video.QueueFrame(&nothing));
    ASSERT_TRUE(video.QueueFrame(&nothing));
    EXPECT_FALSE(video.QueueFrame(&nothing));
    video.ShowNextFrame();
    EXPECT_EQ(video.GetQueuedCount(), 1);
    EXPECT_TRUE(m_times.Get().empty());
}

}  // namespace
