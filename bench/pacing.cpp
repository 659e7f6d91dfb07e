// SPDX-License-Identifier: MIT
// How late pictures appear: plays numbered 320 x 240 pictures at each of 1 to 5 a second and compares the
// moment at which each has been drawn with its tick, start + k * period. The time that Play itself takes
// counts as lateness.
//
// Usage: pacing [SECONDS_PER_RATE]    (60 when not given; needs no display with QT_QPA_PLATFORM=offscreen)
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "bench/bench_app.h"
#include "video/video_wnd.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kSlots = 20;
constexpr int kMostFramesPerSecond = 5;
constexpr UINT_PTR kRoundTimer = 1;

int g_secondsPerRate = 60;

// Notes the moment at which each picture has been drawn. Read once the playing has ended.
class Recorder : public CVideoWndClient {
public:
    Recorder() { m_shown.reserve(static_cast<std::size_t>(g_secondsPerRate * kMostFramesPerSecond + 10)); }
    void OnFrameShown() override { m_shown.push_back(Clock::now()); }
    std::vector<Clock::time_point> m_shown;
};

class Producer {
public:
    explicit Producer(CVideoWnd& video) : m_thread([this, &video] { Run(video); }) {}
    ~Producer() {
        m_end = true;
        m_thread.join();
    }

private:
    void Run(CVideoWnd& video) const {
        for (int number = 0; !m_end;) {
            if (BYTE* picture = video.GetFreeFrame()) {
                std::fill_n(picture, kWidth * kHeight * 3, static_cast<BYTE>(number));
                video.QueueFrame(number++);
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        }
    }
    std::atomic<bool> m_end = false;
    std::thread m_thread;
};

// One rate after the other, each in a renderer of its own.
class CBenchDlg : public CDialog {
public:
    void Start() {
        std::printf("%6s %9s %9s %9s %9s %9s\n", "rate", "pictures", "missed", "mean ms", "99 % ms",
                    "worst ms");
        StartRound();
    }

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnTimer(UINT_PTR) {
        KillTimer(kRoundTimer);
        m_video->Pause();
        Report();
        m_producer.reset();
        m_video.reset();
        if (++m_rate <= kMostFramesPerSecond) {
            StartRound();
        } else {
            DestroyWindow();
        }
    }

private:
    void StartRound() {
        m_recorder = std::make_unique<Recorder>();
        m_video = std::make_unique<CVideoWnd>(this, m_recorder.get(), kWidth, kHeight, m_rate, kSlots);
        m_producer = std::make_unique<Producer>(*m_video);
        m_start = Clock::now();
        m_video->Play();
        SetTimer(kRoundTimer, static_cast<UINT>(g_secondsPerRate * 1000 + 100));
    }

    void Report() const {
        const std::chrono::milliseconds period(1000 / m_rate);
        std::vector<double> late;
        double sum = 0;
        long long lastTick = 0;
        long long missed = 0;
        for (const auto shown : m_recorder->m_shown) {
            const long long tick = (shown - m_start) / period;
            missed += tick - lastTick - 1;
            lastTick = tick;
            late.push_back(
                std::chrono::duration<double, std::milli>(shown - m_start - tick * period).count());
            sum += late.back();
        }
        if (late.empty()) {
            std::printf("%6d nothing shown\n", m_rate);
            return;
        }
        std::sort(late.begin(), late.end());
        std::printf("%6d %9zu %9lld %9.3f %9.3f %9.3f\n", m_rate, late.size(), missed,
                    sum / static_cast<double>(late.size()), late[late.size() * 99 / 100], late.back());
        std::fflush(stdout);
    }

    int m_rate = 1;
    Clock::time_point m_start;
    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<CVideoWnd> m_video;
    std::unique_ptr<Producer> m_producer;
};

BEGIN_MESSAGE_MAP(CBenchDlg, CDialog)
ON_WM_TIMER()
END_MESSAGE_MAP()

CBenchApp<CBenchDlg> g_app;

}  // namespace

int main(int argc, char** argv) {
    return RunBench(argc, argv, g_secondsPerRate);
}
