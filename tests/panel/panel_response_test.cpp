// How long the window waits for the reader, at worst.
#include <sched.h>

#include <algorithm>
#include <chrono>
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

class PanelResponse : public PlayerTest {
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
            const auto from = std::chrono::steady_clock::now();
            call();
            const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - from;
            worst = std::max(worst, took.count());
        }
        return worst;
    }
    static void SpinFor(int microseconds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(microseconds);
        while (std::chrono::steady_clock::now() < end) {
        }
    }
};

TEST_F(PanelResponse, PauseStopAndCloseComeBackAtOnce) {
    MessageBuilder message(5, 400);
    for (int i = 0; i < 40; ++i) message.Picture().Speech(1);
    const std::string path = m_folder.Path("m.trv");
    message.Write(path);
    CMessagePanel& panel = *m_main->panel;
    ASSERT_TRUE(panel.Open(path));

    const auto play = [&](int i) {
        HeadlessToolkit::Pump();
        panel.Play();
        SpinFor(i * 37 % 5000);
    };
    const double stop = WorstMs(play, [&] { panel.Stop(); });
    const double pause = WorstMs(
        [&](int i) {
            if (i % 8 == 0) panel.Stop();  // so that the reader has something to read
            play(i);
        },
        [&] { panel.Pause(); });
    const double close = WorstMs(
        [&](int i) {
            ASSERT_TRUE(panel.Open(path));
            play(i);
        },
        [&] { panel.Close(); });
    std::printf("worst of %d: Pause %.2f ms, Stop %.2f ms, Close %.2f ms\n", kRounds, pause, stop, close);
    EXPECT_LT(pause, kLimitMs);
    EXPECT_LT(stop, kLimitMs);
    EXPECT_LT(close, kLimitMs);
}

}  // namespace
