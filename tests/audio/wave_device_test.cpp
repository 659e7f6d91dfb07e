// SPDX-License-Identifier: MIT
#include "audio/wave_device.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <thread>

#include "platform/framework/afxwin.h"
#include "res/resource.h"
#include "tests/support/headless_toolkit.h"
#include "tests/support/simulated_sound.h"
#include "volume/volume_dlg.h"

namespace {

constexpr int kSamples = 160;
constexpr int kThreshold = 20;

class Client : public CWaveClient {
public:
    void OnBlockPlayed(int samples) override {
        ++played;
        heard += samples;
        if (then) then();
    }
    int played = 0;
    int heard = 0;
    std::function<void()> then;
};

class WaveDeviceTest : public testing::Test, protected SimulatedSound {
protected:
    ~WaveDeviceTest() override { m_device.Close(); }

    // p pause, r resume, f flush, o open, c close.
    void Do(const char* steps) {
        for (; *steps != 0; ++steps) {
            if (*steps == 'p') m_device.Pause();
            if (*steps == 'r') m_device.Resume();
            if (*steps == 'f') m_device.Flush();
            if (*steps == 'o') m_device.Open();
            if (*steps == 'c') m_device.Close();
        }
    }

    // Each block holds one number, counted on from block to block.
    void Write(int blocks) {
        for (int i = 0; i < blocks; ++i) {
            const std::vector<int16_t> block(kSamples, static_cast<int16_t>(m_written++));
            m_device.Write(block.data());
        }
    }

    // Lets time pass and the notifications through.
    void Hear(int blocks) {
        for (int i = 0; i < blocks; ++i) {
            m_sound->Advance(20);
            HeadlessToolkit::Pump();
        }
    }

    // The numbers of the blocks heard, one per stretch of the same number, and whether each was whole.
    std::vector<std::pair<int, bool>> HeardBlocks() const {
        std::vector<std::pair<int, bool>> blocks;
        const std::vector<int16_t> heard = m_sound->Heard();
        for (size_t from = 0; from < heard.size();) {
            size_t to = from;
            while (to < heard.size() && heard[to] == heard[from] && to - from < kSamples) ++to;
            blocks.emplace_back(heard[from], to - from == kSamples);
            from = to;
        }
        return blocks;
    }
    static std::vector<std::pair<int, bool>> Whole(int first, int end) {
        std::vector<std::pair<int, bool>> blocks;
        for (int i = first; i < end; ++i) blocks.emplace_back(i, true);
        return blocks;
    }

    HeadlessToolkit m_toolkit;
    struct Host : CDialog {
        Host() { Create(IDD_ABOUTBOX); }
    } m_host;
    Client m_client;
    CWaveDevice m_device{&m_host, &m_client, CWaveDevice::kPlay, kSamples, kThreshold, 2, 8000};
    int m_written = 0;
};

TEST_F(WaveDeviceTest, StartsAboveTheThresholdAndAgainAfterItRanDry) {
    ASSERT_TRUE(m_device.Open());
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        const int before = m_written;
        Write(kThreshold);
        Hear(50);
        EXPECT_EQ(m_client.played, before);
        EXPECT_EQ(m_device.GetQueuedCount(), kThreshold);
        Write(1);
        EXPECT_TRUE(m_sound->IsRunning());
        Hear(kThreshold);
        EXPECT_EQ(m_device.GetQueuedCount(), 1);
        EXPECT_TRUE(m_sound->IsRunning());
        Hear(1);
        EXPECT_EQ(m_device.GetQueuedCount(), 0);
        EXPECT_FALSE(m_sound->IsRunning()) << "an empty queue buffers";
    }
    EXPECT_EQ(m_client.played, m_written);
    EXPECT_EQ(HeardBlocks(), Whole(0, m_written));
}

TEST_F(WaveDeviceTest, DropsWhatItCannotTake) {
    Write(30);
    EXPECT_EQ(m_device.GetQueuedCount(), 0) << "closed";
    ASSERT_TRUE(m_device.Open());
    const int first = m_written;
    Write(kMaxQueuedBlocks + 1);
    EXPECT_EQ(m_device.GetQueuedCount(), 249) << "full";
    Hear(kMaxQueuedBlocks);
    EXPECT_EQ(m_client.played, 249);
    EXPECT_EQ(HeardBlocks(), Whole(first, first + 249));
}

TEST_F(WaveDeviceTest, PauseKeepsTheRingAndResumeStartsWithTheBlockNotCountedYet) {
    ASSERT_TRUE(m_device.Open());
    Write(30);
    m_sound->Advance(50);  // two blocks and a half
    HeadlessToolkit::Pump();
    m_device.Pause();
    m_device.Pause();
    EXPECT_EQ(m_device.GetQueuedCount(), 28);
    EXPECT_EQ(m_sound->BytesQueued(), 0U);
    Write(5);
    Hear(10);
    EXPECT_EQ(m_client.played, 2) << "nothing counts while paused";
    EXPECT_EQ(m_device.GetQueuedCount(), 33);

    m_device.Resume();
    m_device.Resume();
    EXPECT_TRUE(m_sound->IsRunning());
    Hear(40);
    EXPECT_EQ(m_client.played, 35);
    std::vector<int16_t> expected;
    const auto expect = [&expected](int block, int samples) {
        expected.insert(expected.end(), static_cast<size_t>(samples), static_cast<int16_t>(block));
    };
    expect(0, kSamples);
    expect(1, kSamples);
    expect(2, kSamples / 2);
    for (int i = 2; i < 35; ++i) expect(i, kSamples);
    EXPECT_EQ(m_sound->Heard(), expected);
}

TEST_F(WaveDeviceTest, ResumeRestartsWithTheTwentySecondBlock) {
    for (const auto& [blocks, running] : {std::pair{21, false}, {22, true}, {30, true}}) {
        SCOPED_TRACE(blocks);
        ASSERT_TRUE(m_device.Open());
        Write(blocks);
        Do("pr");
        EXPECT_EQ(m_sound->IsRunning(), running);
        Write(1);
        EXPECT_TRUE(m_sound->IsRunning());
        m_device.Close();
    }
    // Without a Pause it does nothing, and neither does Flush.
    ASSERT_TRUE(m_device.Open());
    Write(5);
    Do("fr");
    EXPECT_EQ(m_sound->BytesQueued(), 5U * 2 * kSamples);
    EXPECT_FALSE(m_sound->IsRunning());
}

// What the driver hands back, and what it has already reported but nobody has seen yet, must not count for
// the blocks that are queued afterwards.
TEST_F(WaveDeviceTest, NotificationsFromBeforeAResetNeverCount) {
    const struct {
        const char* name;
        const char* steps;
        bool keeps;  // the ring's blocks are played again
    } cases[] = {{"Pause, Play", "pr", true},
                 {"Pause, Play, Pause, Play", "prpr", true},
                 {"Stop, Play", "pfr", false},
                 {"Open while playing", "pfco", false},
                 {"Close, Open", "co", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_client.played = 0;
        ASSERT_TRUE(m_device.Open());
        Write(40);
        m_sound->Advance(100);  // five are done; their notifications wait
        Do(c.steps);
        Write(30);
        HeadlessToolkit::Pump();
        const int expected = c.keeps ? 70 : 30;
        EXPECT_EQ(m_client.played, 0);
        EXPECT_EQ(m_device.GetQueuedCount(), expected);
        m_sound->ForgetHeard();
        Hear(expected);
        EXPECT_EQ(m_client.played, expected);
        EXPECT_EQ(m_device.GetQueuedCount(), 0);
        EXPECT_EQ(HeardBlocks(), Whole(m_written - expected, m_written));
        m_device.Close();
    }
}

TEST_F(WaveDeviceTest, EndOfSoundPlaysTheLastBlocksHoweverFew) {
    for (const int blocks : {1, 20, 21, 100}) {
        SCOPED_TRACE(blocks);
        m_client.played = 0;
        ASSERT_TRUE(m_device.Open());
        Write(blocks);
        m_device.EndOfSound();
        Hear(blocks);
        EXPECT_EQ(m_client.played, blocks);
        EXPECT_FALSE(m_sound->IsRunning());
        m_device.Close();
    }

    // With nothing queued there is nothing to start.
    ASSERT_TRUE(m_device.Open());
    m_device.EndOfSound();
    EXPECT_FALSE(m_sound->IsRunning());
}

TEST_F(WaveDeviceTest, EndOfSoundIsTakenBackByAWriteAFlushAndAnOpen) {
    for (const char* steps : {"", "pfr", "co"}) {
        SCOPED_TRACE(steps);
        ASSERT_TRUE(m_device.Open());
        m_device.EndOfSound();
        Do(steps);
        Write(kThreshold);
        Do("pr");
        EXPECT_FALSE(m_sound->IsRunning());
        m_device.Close();
    }
}

class WaveDeviceSpeed : public WaveDeviceTest {
protected:
    static constexpr int kBlocksOfTone = 240;

    void WriteTone(double hertz) {
        for (int i = 0; i < kBlocksOfTone; ++i) {
            int16_t block[kSamples];
            for (int j = 0; j < kSamples; ++j)
                block[j] = static_cast<int16_t>(
                    std::lround(10000 * std::sin((i * kSamples + j) * hertz * 2 * std::numbers::pi / 8000)));
            m_device.Write(block);
        }
        m_device.EndOfSound();
    }
    // Plays the tone, from the start at one speed, from a second on at another.
    void PlayTone(double hertz, int speed, int then) {
        m_client.played = m_client.heard = 0;
        m_sound->ForgetHeard();
        ASSERT_TRUE(m_device.SetSpeed(speed));
        ASSERT_TRUE(m_device.Open());
        WriteTone(hertz);
        Hear(50);
        ASSERT_EQ(m_client.heard, 50 * kSamples * speed / 100);
        ASSERT_TRUE(m_device.SetSpeed(then));
        while (m_device.GetQueuedCount() != 0 && m_client.played < 1000) Hear(1);
        EXPECT_EQ(m_client.heard, kBlocksOfTone * kSamples) << "the position ends at the end";
        EXPECT_FALSE(m_sound->IsRunning());
        m_device.Close();
    }
    // But for the end, which may be silent already.
    int LargestStep() const {
        const std::vector<int16_t> heard = m_sound->Heard();
        int largest = 0;
        for (size_t i = 1; i + kSamples < heard.size(); ++i)
            largest = std::max(largest, std::abs(heard[i] - heard[i - 1]));
        return largest;
    }
};

TEST_F(WaveDeviceSpeed, EachSpeedTakesItsTimeAndEachChangeIsHeardSoonAndWithoutAClick) {
    // Blocks and whole periods of the first tone coincide; of the second they do not.
    for (const double hertz : {300.0, 317.0}) {
        SCOPED_TRACE(hertz);
        std::map<int, int> own;  // the tone's steps at each speed
        for (const int speed : kSpeeds) {
            SCOPED_TRACE(speed);
            PlayTone(hertz, speed, speed);
            EXPECT_NEAR(static_cast<double>(m_sound->HeardCount()), kBlocksOfTone * kSamples * 100.0 / speed,
                        1.0);
            own[speed] = LargestStep();
        }
        for (const auto& [from, to] :
             {std::pair(100, 150), {150, 100}, {100, 50}, {75, 300}, {250, 125}, {50, 200}}) {
            SCOPED_TRACE(testing::Message() << from << " to " << to);
            PlayTone(hertz, from, to);
            EXPECT_LE(LargestStep(), std::max(own[from], own[to]) * 101 / 100);
            const double left = kBlocksOfTone * kSamples - 8000.0 * from / 100;
            const double late = static_cast<double>(m_sound->HeardCount()) - 8000 - left * 100 / to;
            // So much is played at the old speed, and a period of the voice may be skipped.
            EXPECT_LE(std::abs(late), 1600 * std::abs(1 - static_cast<double>(from) / to) + 130);
        }
    }
}

TEST_F(WaveDeviceSpeed, AWriterThatFallsBehindAndComesBackLosesNothingAtAnySpeed) {
    for (const int speed : kSpeeds) {
        SCOPED_TRACE(speed);
        m_client.heard = 0;
        m_device.SetSpeed(speed);
        ASSERT_TRUE(m_device.Open());
        for (int round = 0; round < 5; ++round) {
            Write(30 + round);
            if (round == 3) m_device.EndOfSound();
            Hear(90);
            if (round == 2) Do("pr");
        }
        m_device.EndOfSound();
        Hear(200);
        EXPECT_EQ(m_client.heard, 160 * kSamples);
        m_device.Close();
    }
}

// A writer that falls behind again and again: each underrun must end, with no block lost or counted twice.
TEST_F(WaveDeviceTest, WriterAndNotificationsMeetWithoutLosingABlock) {
    constexpr int kTotal = 3000;
    ASSERT_TRUE(m_device.Open());
    std::thread writer([this] {
        while (m_written < kTotal) {
            if (m_device.GetQueuedCount() + 10 < kSoundBlockSlots) Write(10);
            if (m_written % 70 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_device.EndOfSound();
    });
    const bool all = HeadlessToolkit::PumpUntil(
        [this] {
            Hear(40);
            return m_client.played == kTotal;
        },
        60000);
    writer.join();
    EXPECT_TRUE(all) << m_client.played << " blocks";
    EXPECT_EQ(m_device.GetQueuedCount(), 0);
    EXPECT_EQ(HeardBlocks(), Whole(0, kTotal));
}

TEST_F(WaveDeviceTest, PassesTheVolumeDialogsNewsToTheMainWindow) {
    class Main : public CDialog {
    public:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
            if (message == WM_VOLUME_CLOSED) ++news;
            return CDialog::WindowProc(message, wParam, lParam);
        }
        int news = 0;
    };
    m_device.SendMessage(WM_VOLUME_CLOSED);  // no application, no main window: nothing happens
    CWinApp app;
    Main main;
    ASSERT_TRUE(main.Create(IDD_ABOUTBOX));
    app.m_pMainWnd = &main;
    m_device.SendMessage(WM_VOLUME_CLOSED);
    EXPECT_EQ(main.news, 1);
    main.DestroyWindow();
}

}  // namespace
