// How long the window waits for the reader at worst, and when the first picture comes.
#include <sched.h>

#include <algorithm>
#include <functional>

#include "tests/panel/player_fixture.h"

namespace {

// The sanitizers slow the decoders down many times.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kLimitMs = 200;
constexpr int kRounds = 100;
#else
constexpr double kLimitMs = 20;
constexpr int kRounds = 1000;
#endif

class PanelTiming : public PlayerTest {
protected:
    // Ahead of what else the machine does, where that is allowed: what others add to a call is none of the
    // player's doing. Its threads inherit it.
    void SetUp() override {
        const sched_param priority = {.sched_priority = 1};
        sched_setscheduler(0, SCHED_FIFO, &priority);
        PlayerTest::SetUp();
    }
    // The longest of so many calls, each made at another point of the reader's work.
    static double WorstMs(const std::function<void(int)>& before, const std::function<void()>& call) {
        double worst = 0;
        for (int i = 0; i < kRounds; ++i) {
            before(i);
            const auto from = watch::Clock::now();
            call();
            worst = std::max(worst, watch::Ms(watch::Clock::now() - from));
        }
        return worst;
    }
    static void SpinFor(int microseconds) {
        const auto end = watch::Clock::now() + std::chrono::microseconds(microseconds);
        while (watch::Clock::now() < end) {
        }
    }
};

TEST_F(PanelTiming, PauseStopAndCloseComeBackAtOnce) {
    MessageBuilder message(5, 400);
    for (int i = 0; i < 40; ++i) message.Picture().Speech(1);
    const std::string path = m_folder.Path("m.trv");
    message.Write(path);
    ASSERT_TRUE(Panel().Open(path));

    const auto play = [&](int i) {
        HeadlessToolkit::Pump();
        Panel().Play();
        SpinFor(i * 37 % 5000);
    };
    const double stop = WorstMs(play, [&] { Panel().Stop(); });
    const double pause = WorstMs(
        [&](int i) {
            if (i % 8 == 0) Panel().Stop();  // so that the reader has something to read
            play(i);
        },
        [&] { Panel().Pause(); });
    const double close = WorstMs(
        [&](int i) {
            ASSERT_TRUE(Panel().Open(path));
            play(i);
        },
        [&] { Panel().Close(); });
    std::printf("worst of %d: Pause %.2f ms, Stop %.2f ms, Close %.2f ms\n", kRounds, pause, stop, close);
    EXPECT_LT(pause, kLimitMs);
    EXPECT_LT(stop, kLimitMs);
    EXPECT_LT(close, kLimitMs);
}

TEST_F(PanelTiming, FirstPictureComesOnePeriodOfTheMessagesRateAfterPlay) {
    for (const int rate : {5, 2, 3}) {
        SCOPED_TRACE(rate);
        ASSERT_TRUE(Open(MessageBuilder(rate, 100).Picture().Speech(10)));
        const auto from = watch::Clock::now();
        Panel().Play();
        ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] { return MidPixel() != 0; }));
        const double took = watch::Ms(watch::Clock::now() - from);
        EXPECT_GE(took, 1000 / rate);
        EXPECT_LT(took, 1000 / rate + 450);
    }
}

}  // namespace
