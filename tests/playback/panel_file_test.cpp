// SPDX-License-Identifier: MIT
// Files that keep their reader waiting, that grow, and that end badly.
#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <mutex>

#include "platform/shell/regular_file.h"
#include "res/resource.h"
#include "tests/playback/player_fixture.h"

// OpenRegularFile as the panel calls it comes here first (the linker's --wrap), so that reads can be held up.
std::FILE* OpenItself(const char* path) __asm__("__real__Z15OpenRegularFilePKc");
std::FILE* OpenHeld(const char* path) __asm__("__wrap__Z15OpenRegularFilePKc");

namespace {

// A file whose reads fail, or do not return, from an offset on.
struct SlowFile {
    std::FILE* file = nullptr;
    long offset = 0;
    std::mutex mutex;
    std::condition_variable changed;
    long holdFrom = -1, failFrom = -1;  // below 0: nowhere
    bool held = false, closed = false;

    void Release() {
        {
            const std::scoped_lock lock(mutex);
            holdFrom = -1;
        }
        changed.notify_all();
    }
};
SlowFile* g_slow = nullptr;

ssize_t ReadSlow(void* cookie, char* buffer, size_t size) {
    auto& slow = *static_cast<SlowFile*>(cookie);
    std::unique_lock lock(slow.mutex);
    if (slow.holdFrom >= 0 && slow.offset + static_cast<long>(size) > slow.holdFrom) {
        slow.held = true;
        slow.changed.wait(lock, [&] { return slow.holdFrom < 0; });
        slow.held = false;
    }
    if (slow.failFrom >= 0 && slow.offset >= slow.failFrom) return -1;
    if (slow.failFrom >= 0) size = std::min(size, static_cast<size_t>(slow.failFrom - slow.offset));
    std::fseek(slow.file, slow.offset, SEEK_SET);
    const size_t read = std::fread(buffer, 1, size, slow.file);
    slow.offset += static_cast<long>(read);
    return static_cast<ssize_t>(read);
}

int SeekSlow(void* cookie, off64_t* offset, int whence) {
    auto& slow = *static_cast<SlowFile*>(cookie);
    const std::scoped_lock lock(slow.mutex);
    if (whence != SEEK_SET) return -1;
    slow.offset = *offset;
    return 0;
}

int CloseSlow(void* cookie) {
    auto& slow = *static_cast<SlowFile*>(cookie);
    const std::scoped_lock lock(slow.mutex);
    std::fclose(slow.file);
    slow.closed = true;
    return 0;
}

}  // namespace

std::FILE* OpenHeld(const char* path) {
    std::FILE* file = OpenItself(path);
    if (g_slow == nullptr || file == nullptr) return file;
    g_slow->file = file;
    std::FILE* slow = fopencookie(g_slow, "rb", {ReadSlow, nullptr, SeekSlow, CloseSlow});
    std::setvbuf(slow, nullptr, _IOFBF, 256);
    return slow;
}

namespace {

class PanelFile : public PlayerTest {
protected:
    void TearDown() override {
        PlayerTest::TearDown();
        m_slow.Release();
        EXPECT_TRUE(g_slow == nullptr ||
                    watch::Eventually([this] { return IsClosed(); }, std::chrono::seconds(5)));
        g_slow = nullptr;
    }
    bool IsHeld() {
        const std::scoped_lock lock(m_slow.mutex);
        return m_slow.held;
    }
    bool IsClosed() {
        const std::scoped_lock lock(m_slow.mutex);
        return m_slow.closed;
    }
    SlowFile m_slow;
};

TEST_F(PanelFile, AReadThatDoesNotReturnKeepsNobodyWaiting) {
    m_slow.holdFrom = 40000;  // the first 24 s can be read
    g_slow = &m_slow;
    const MessageBuilder message = MessageBuilder(0, 3000).Speech(300);
    ASSERT_TRUE(Open(message));
    Panel().Play();
    const watch::Lateness lateness;
    const auto prompt = [&](const char* what, const std::function<void()>& call) {
        const auto from = watch::Clock::now();
        call();
        EXPECT_LT(watch::Ms(watch::Clock::now() - from), 20 + 2 * lateness.WorstMs()) << what;
    };
    prompt("seek", [&] { Panel().SeekTo(2000); });
    ASSERT_TRUE(HeadlessToolkit::PumpUntil([this] { return IsHeld(); }));
    prompt("pause", [&] { Panel().Pause(); });
    prompt("play", [&] { Panel().Play(); });
    HeadlessToolkit::PumpFor(1100);
    m_toolkit.FireTimers();
    EXPECT_EQ(Text(IDC_CURRENT), "Waiting for the file\u2026");
    prompt("stop", [&] { Panel().Stop(); });
    EXPECT_EQ(Text(IDC_CURRENT), "");
    prompt("seek", [&] { Panel().SeekTo(1500); });
    prompt("close", [&] { Panel().Close(); });
    EXPECT_FALSE(IsClosed());

    // The next message plays meanwhile.
    g_slow = nullptr;
    const MessageBuilder next = MessageBuilder(0, 30).Speech(3);
    ASSERT_TRUE(Open(next, "next.trv"));
    Panel().Play();
    ASSERT_TRUE(HearToTheEnd());
    EXPECT_EQ(m_sound->Heard(), next.Samples());
    g_slow = &m_slow;
}

TEST_F(PanelFile, AMessageThatEndsBadlySaysSoOnceAfterItHasBeenPlayed) {
    const struct {
        const char* name;
        MessageBuilder message;
        long failFrom;
        const char* box;
    } cases[] = {
        {"unreadable", MessageBuilder(0, 900).Speech(90), 13 + 331 * 60, "The message stopped at 0:12:\n"},
        {"bad length", MessageBuilder(5, 500).Speech(50).Bytes({1, 0x01, 0x40}), -1,
         "The message stopped at 0:10:\n"},
        {"cut off", MessageBuilder(0, 500).Speech(50).CutBy(1), -1, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_slow.failFrom = c.failFrom;
        g_slow = c.failFrom < 0 ? nullptr : &m_slow;
        m_toolkit.boxes.clear();
        m_main->ended = 0;
        ASSERT_TRUE(Open(c.message));
        for (int play = 1; play <= 2; ++play) {
            Panel().Play();
            ASSERT_TRUE(HearToTheEnd());
            EXPECT_EQ(m_toolkit.boxes.size(), c.box == nullptr ? 0U : 1U);
        }
        for (const auto& box : m_toolkit.boxes) EXPECT_TRUE(box.text.starts_with(c.box)) << box.text;
        Panel().Close();
        EXPECT_TRUE(g_slow == nullptr ||
                    watch::Eventually([this] { return IsClosed(); }, std::chrono::seconds(5)));
        g_slow = nullptr;
    }
}

TEST_F(PanelFile, AMessageThatIsStillBeingWrittenGoesOn) {
    MessageBuilder message = MessageBuilder(0, 0).Speech(8);
    const size_t before = message.Data().size();
    message.Speech(12);
    MessageBuilder first = MessageBuilder(0, 0).Speech(8);
    ASSERT_TRUE(Open(first.Bytes({0, 1, 2})));
    const auto grow = [&](size_t from, size_t to) {
        std::ofstream file(m_folder.Path("message.trv"), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(from));
        file.write(reinterpret_cast<const char*>(message.Data().data() + from),
                   static_cast<std::streamsize>(to - from));
    };
    Panel().Play();
    WaitForReader();
    ASSERT_TRUE(Hear(50));
    // It looks for more now: what is written before it has looked moves all later looks.
    WaitForReader();
    grow(before, before + 331 * 3);
    ASSERT_TRUE(Hear(28));
    WaitForReader();
    ASSERT_TRUE(Hear(12));
    grow(before + 331 * 3, message.Data().size());
    ASSERT_TRUE(Hear(17));
    WaitForReader();
    ASSERT_TRUE(HearToTheEnd());
    EXPECT_EQ(m_sound->Heard(), message.Samples());
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([this] { return Panel().GetLength() == 200; }));
}

// At the end pictures outlasted the sound, and silence was queued for them.
TEST_F(PanelFile, SpeechThatIsWrittenLateTakesTheSilencesPlace) {
    MessageBuilder message = MessageBuilder(5, 0).Speech(1);
    for (int i = 0; i < 10; ++i) message.Picture();
    ASSERT_TRUE(Open(message));
    Panel().Play();
    WaitForReader();
    ASSERT_TRUE(Hear(20));
    message.Speech(12).Write(m_folder.Path("message.trv"));
    ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] {
        Hear(1);
        return m_sound->Heard().back() != 0;
    }));
    const int from = Panel().GetPosition() * kSpeechFrameSamples;
    EXPECT_LT(Panel().GetPosition(), 60);
    ASSERT_TRUE(HearToTheEnd());
    const std::vector<int16_t> heard = m_sound->Heard();
    const std::vector<int16_t> written = message.Samples();
    EXPECT_TRUE(
        std::equal(written.begin() + from, written.end(), heard.end() - (std::ssize(written) - from)));
}

TEST_F(PanelFile, StrayBytesAndASoundlessDeviceLeaveTheProcessorAlone) {
    m_sound->SetOpenResult(MMSYSERR_NODRIVER);
    std::ofstream(m_folder.Path("stray.trv"), std::ios::binary)
        << "TRV01.01" << std::string(5, '\0') << std::string(20 << 20, '\7');
    MessageBuilder(0, 60000).Speech(6000).Write(m_folder.Path("speech.trv"));
    for (const char* name : {"stray.trv", "speech.trv"}) {
        ASSERT_TRUE(Panel().Open(m_folder.Path(name)));
        Panel().Play();
        WaitForReader();  // and the index, which looks through it all
        const double before = watch::ProcessorMs();
        HeadlessToolkit::PumpFor(600);
        // A reader that does not wait takes all of it.
        EXPECT_LT(watch::ProcessorMs() - before, watch::kSanitized ? 300.0 : 120.0) << name;
        const watch::Lateness lateness;
        const auto from = watch::Clock::now();
        Panel().Close();
        EXPECT_LT(watch::Ms(watch::Clock::now() - from), 20 + 2 * lateness.WorstMs());
    }
}

}  // namespace
