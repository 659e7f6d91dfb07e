// The reader thread with the real queues but without the panel.
#include "playback/reader_thread.h"

#include <atomic>
#include <thread>

#include "codec/vdec.h"
#include "platform/framework/window.h"
#include "platform/shell/regular_file.h"
#include "res/resource.h"
#include "tests/playback/player_fixture.h"

namespace {

class ReaderThread : public PlayerTest {
protected:
    void SetUp() override {
        PlayerTest::SetUp();
        m_owner.Create(IDD_ABOUTBOX);
        m_device = std::make_unique<CWaveDevice>(&m_owner, nullptr, CWaveDevice::kPlay, kSpeechFrameSamples,
                                                 20, 2, kSpeechSampleRate);
        m_video =
            std::make_unique<CVideoWnd>(&m_owner, nullptr, kPictureWidth, kPictureHeight, 5, kPictureSlots);
        vdec_init();
    }
    void TearDown() override {
        m_gate.End();
        if (m_thread != nullptr) WaitForSingleObject(m_thread->m_hThread, INFINITE);
        delete m_thread;
        m_device->Close();
        if (m_file != nullptr) std::fclose(m_file);
        if (m_params.hSpeech != nullptr) gsm_destroy(m_params.hSpeech);
        vdec_free();
        m_video.reset();
        m_device.reset();
        m_owner.DestroyWindow();
        PlayerTest::TearDown();
    }

    void Start(const MessageBuilder& message) {
        message.Write(m_folder.Path("m.trv"));
        m_file = OpenRegularFile(m_folder.Path("m.trv").c_str());
        ASSERT_NE(m_file, nullptr);
        m_reader.Rewind(m_file);
        ASSERT_TRUE(m_device->Open());
        m_params = {&m_owner,      nullptr, m_device.get(), gsm_create(),
                    m_video.get(), &m_file, &m_reader,      &m_gate};
        m_thread = AfxBeginThread(ReaderThreadProc, &m_params, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
        m_thread->m_bAutoDelete = FALSE;
        m_thread->ResumeThread();
    }
    BOOL HasRoom() const { return HasRoomForRecord(m_video->GetQueuedCount(), m_device->GetQueuedCount()); }

    CDialog m_owner;
    std::unique_ptr<CWaveDevice> m_device;
    std::unique_ptr<CVideoWnd> m_video;
    std::FILE* m_file = nullptr;
    MessageReader m_reader;
    CReaderGate m_gate;
    ReaderParams m_params;
    CWinThread* m_thread = nullptr;
};

TEST_F(ReaderThread, PicturesThatNobodyTakesHoldItUp) {
    MessageBuilder message(5, 100);
    for (int i = 0; i < 25; ++i) message.Picture();
    Start(message.Speech(10));
    WaitForReader();
    EXPECT_EQ(m_video->GetQueuedCount(), 0) << "the run flag is clear";
    m_gate.Run();
    ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] { return m_video->GetQueuedCount() == 19; }));
    WaitForReader();
    EXPECT_EQ(m_video->GetQueuedCount(), 19);
    EXPECT_EQ(m_device->GetQueuedCount(), 0);
    for (int i = 0; i < 6; ++i) {
        m_video->ShowNextFrame();
        m_gate.OnShorterQueue([this] { return HasRoom(); });
        ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] { return m_video->GetQueuedCount() == 19; })) << i;
    }
    EXPECT_EQ(m_device->GetQueuedCount(), 0);
    m_video->ShowNextFrame();
    m_gate.OnShorterQueue([this] { return HasRoom(); });
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return m_device->GetQueuedCount() == 100; }));
}

TEST_F(ReaderThread, IsOutOfItsRecordWhenHaltReturns) {
    MessageBuilder message(5, 10);
    for (int i = 0; i < 200; ++i) message.Picture().Speech(1).Bytes({9});
    Start(message);
    for (int i = 0; i < 300; ++i) {
        m_gate.Run();
        std::this_thread::sleep_for(std::chrono::microseconds(i * 7 % 900));
        m_gate.Halt();
        // Everything is this thread's now; a record still under way would show here, or as a data race.
        const size_t written = m_sound->BlocksWritten();
        ASSERT_EQ(written % kFramesPerSpeechBlock, 0U);
        m_device->Pause();
        m_device->Flush();
        m_video->Stop();
        m_reader.Rewind(m_file);
        ASSERT_EQ(m_sound->BlocksWritten(), written);
        m_device->Resume();
    }
}

// Two queues with room for one thing each, emptied on two threads at once: whichever is later wakes the
// reader, or it would sleep for ever.
TEST(ReaderGate, RoomFreedOnTwoThreadsAtOnceWakesTheReader) {
    constexpr int kRecords = 5000;
    CReaderGate gate;
    std::atomic<int> first = 0;
    std::atomic<int> second = 0;
    std::atomic<int> records = 0;
    const auto hasRoom = [&] { return first.load() == 0 && second.load() == 0; };
    gate.Run();
    std::thread reader([&] {
        while (gate.EnterRecord(hasRoom)) {
            first = 1;
            second = 1;
            gate.LeaveRecord(++records == kRecords);
        }
    });
    const auto consume = [&](std::atomic<int>& queue) {
        while (records < kRecords) {
            if (queue.exchange(0) != 0) gate.OnShorterQueue(hasRoom);
            std::this_thread::yield();
        }
    };
    std::thread consumer([&] { consume(first); });
    std::thread watch([&] {
        int last = -1;
        for (int asleepMs = 0; records < kRecords && asleepMs < 5000; asleepMs += 5) {
            if (records != last) asleepMs = 0;
            last = records;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(records, kRecords) << "asleep";
        records = kRecords;
    });
    consume(second);
    consumer.join();
    watch.join();
    EXPECT_FALSE(gate.IsRunning());
    gate.End();
    reader.join();
}

// A reader that has nothing to do uses no processor time, whatever it waits for.
TEST_F(ReaderThread, SleepsWhileItWaits) {
    const auto expectIdle = [&](const char* what) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const double before = watch::ProcessorMs();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        EXPECT_LT(watch::ProcessorMs() - before, 10.0) << what;
    };
    Start(MessageBuilder(0, 400).Speech(40));
    expectIdle("before Play");
    m_gate.Run();
    WaitForReader();
    expectIdle("full queue");
    m_gate.Halt();
    expectIdle("paused");
}

}  // namespace
