// SPDX-License-Identifier: MIT
#include "codec/message_index.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <thread>

#include "tests/support/message_builder.h"

namespace {

TEST(MessageTime, PicturesFallDueAfterTheirPeriod) {
    const struct {
        int rate;
        int64_t picture, due;  // frame
    } cases[] = {{1, 0, 50}, {2, 1, 50}, {3, 0, 17}, {3, 1, 34},
                 {3, 2, 50}, {4, 0, 13}, {4, 1, 25}, {5, 9, 100}};
    for (const auto& c : cases) {
        EXPECT_EQ(PictureDueFrame(c.picture, c.rate), c.due) << c.rate << ", " << c.picture;
        EXPECT_EQ(PicturesDueAt(c.due, c.rate), c.picture + 1) << c.rate << ", " << c.picture;
        EXPECT_EQ(PicturesDueAt(c.due - 1, c.rate), c.picture) << c.rate << ", " << c.picture;
    }
    EXPECT_EQ(PicturesDueAt(1000, 0), 0);
}

TEST(MessageTime, SpeechWaitsForPicturesAndLastPicturesAreShown) {
    const struct {
        const char* what;
        int rate;
        const char* records;  // v: picture, s: speech block
        int64_t speech_end, length;
    } cases[] = {
        {"nothing", 5, "", 0, 0},
        {"speech alone", 0, "ssvs", 30, 30},
        {"in step", 5, "vsvsvs", 30, 30},
        {"last due one period after the sound", 5, "vvvss", 20, 20},
        {"two more", 5, "vvvs", 10, 40},
        {"pictures alone", 3, "vv", 0, 50},
        {"one picture alone", 5, "v", 0, 20},
        {"as far ahead as may be", 5, "vvvvvvvvvvvvvvvvs", 10, 170},
        {"one more holds the speech back", 5, "vvvvvvvvvvvvvvvvvs", 20, 180},
        {"and so does each that follows", 1, "vvvvvvvvvvvvvvvvvvvvvsvs", 310, 1150},
    };
    for (const auto& c : cases) {
        MessageClock clock(c.rate);
        for (const char* record = c.records; *record != '\0'; ++record) {
            if (*record == 's') clock.AddSpeechBlock();
            if (*record == 'v') clock.AddPicture();
        }
        EXPECT_EQ(clock.SpeechEnd(), c.speech_end) << c.what;
        EXPECT_EQ(clock.Length(), c.length) << c.what;
    }
}

// A file in memory that can grow.
class IndexedFile {
public:
    IndexedFile() : m_descriptor(memfd_create("message", MFD_CLOEXEC)) {}
    ~IndexedFile() { close(m_descriptor); }
    void Append(std::span<const uint8_t> bytes) const {
        ASSERT_EQ(write(m_descriptor, bytes.data(), bytes.size()), std::ssize(bytes));
    }
    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

void BuildToEnd(MessageIndex& index, int descriptor) {
    while (index.BuildSlice(descriptor)) {
    }
}

// The index agrees with the reader on each record's place and on how the message ends, also when it watched
// the file grow.
TEST(MessageIndex, FindsWhatTheReaderFinds) {
    using Bytes = std::vector<uint8_t>;
    const auto message = [] { return MessageBuilder(3); };
    const struct {
        const char* what;
        MessageBuilder message;
        std::string read;  // S: speech, V: video, p: a skipped byte
        MessageEnd end;
    } cases[] = {
        {"header only", message(), "", MessageEnd::Clean},
        {"both", message().Video(5, Bytes(5)).Speech(2).Video(0, {}), "VSSV", MessageEnd::Clean},
        {"stray bytes", message().Bytes({7}).Speech(1).Bytes({2, 255}).Video(1, {2}), "pSppV",
         MessageEnd::Clean},
        {"largest video", message().Video(16384, Bytes(16384)).Speech(1), "VS", MessageEnd::Clean},
        {"too large", message().Video(16385, Bytes(16385)).Speech(1), "", MessageEnd::BadLength},
        {"negative", message().Speech(1).Video(0x8001, Bytes(0x8001)), "S", MessageEnd::BadLength},
        {"speech cut", message().Speech(2).CutBy(1), "S", MessageEnd::PartialRecord},
        {"speech type alone", message().Bytes({0}), "", MessageEnd::PartialRecord},
        {"video cut", message().Video(20, Bytes(19)), "", MessageEnd::PartialRecord},
        {"length cut", message().Speech(1).Bytes({1, 4}), "S", MessageEnd::PartialRecord},
        {"video type alone", message().Bytes({1}), "", MessageEnd::PartialRecord},
    };
    for (const auto& c : cases) {
        for (const size_t step : {size_t{1} << 20, size_t{97}}) {
            SCOPED_TRACE(std::string(c.what) + ", " + std::to_string(step));
            const Bytes& bytes = c.message.Data();
            const IndexedFile file;
            MessageIndex index(3);
            for (size_t at = 0; at < bytes.size(); at += step) {
                file.Append(std::span(bytes).subspan(at, std::min(step, bytes.size() - at)));
                BuildToEnd(index, file.Descriptor());
            }
            const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(fdopen(dup(file.Descriptor()), "rb"),
                                                                         &std::fclose);
            MessageReader reader;
            ASSERT_TRUE(reader.Rewind(stream.get()));
            MessageClock clock(3);
            std::string read;
            MessageRecord record;
            for (int64_t offset = reader.Offset(); read.empty() || read.back() != '.';
                 offset = reader.Offset()) {
                record = reader.Read(stream.get());
                read += "SVp."[static_cast<size_t>(record.kind)];
                if (read.back() != 'S' && read.back() != 'V') continue;
                const MessagePlace place = read.back() == 'S' ? index.PlaceForFrame(clock.NextSpeechFrame())
                                                              : index.PlaceForPicture(clock.Pictures());
                EXPECT_EQ(place.offset, offset);
                EXPECT_EQ(place.frame, clock.SpeechEnd());
                EXPECT_EQ(place.pictures, clock.Pictures());
                read.back() == 'S' ? clock.AddSpeechBlock() : clock.AddPicture();
            }
            EXPECT_EQ(read, c.read + '.');
            EXPECT_EQ(record.end, c.end);
            const MessageExtent extent = index.Extent();
            EXPECT_EQ(extent.end, record.end);
            EXPECT_EQ(extent.end_offset, reader.Offset());
            EXPECT_EQ(extent.declared_bytes, record.declared_bytes);
            EXPECT_EQ(extent.skipped_bytes, reader.SkippedBytes());
            EXPECT_EQ(extent.length, clock.Length());
            EXPECT_EQ(extent.pictures, clock.Pictures());
        }
    }
}

TEST(MessageIndex, ThinsOutOnLongMessages) {
    constexpr int64_t kPictures = 300000;  // 5 to a block
    const IndexedFile file;
    MessageBuilder message(5);
    for (int64_t n = 0; n < kPictures; ++n) {
        message.Video(0, {});
        if (n % 5 == 4) message.SpeechOf(0);
    }
    file.Append(message.Data());
    MessageIndex index(5);
    BuildToEnd(index, file.Descriptor());
    EXPECT_EQ(index.Extent().end, MessageEnd::Clean);
    // 360,000 records: every eighth has a checkpoint.
    for (const int64_t picture : {int64_t{0}, int64_t{7}, kPictures / 2 + 3, kPictures - 1}) {
        const MessagePlace place = index.PlaceForPicture(picture);
        EXPECT_LE(place.pictures, picture);
        EXPECT_GT(place.pictures, picture - 8);
        EXPECT_EQ(place.offset, kMessageDataStart + 3 * place.pictures + place.pictures / 5 * 331);
    }
}

TEST(MessageIndex, ReportsReadErrorsAndGoesOnAfterThem) {
    MessageIndex index(0);
    const int folder = open("/", O_RDONLY);
    EXPECT_FALSE(index.BuildSlice(folder));
    close(folder);
    EXPECT_EQ(index.Extent().end, MessageEnd::ReadError);
    EXPECT_EQ(index.Extent().error, EISDIR);
    const IndexedFile file;
    file.Append(MessageBuilder().Speech(1).Data());
    BuildToEnd(index, file.Descriptor());
    EXPECT_EQ(index.Extent().end, MessageEnd::Clean);
    EXPECT_EQ(index.Extent().error, 0);
    EXPECT_EQ(index.Extent().length, 10);
}

// While one thread builds, others ask, and may stop it: no answer lies beyond what was asked for.
TEST(MessageIndex, AnswersWhileItIsBuiltAndStops) {
    const IndexedFile file;
    file.Append(MessageBuilder().Data());
    // Speech of zeros without end, as far as the time of a test goes.
    ASSERT_EQ(ftruncate(file.Descriptor(), off_t{1} << 42), 0);
    MessageIndex index(0);
    std::jthread builder([&](const std::stop_token& stop) { index.Build(file.Descriptor(), stop); });
    while (index.Extent().length < 2000000) {
        const MessagePlace place = index.PlaceForFrame(1000000);
        ASSERT_LE(place.frame, 1000000);
        ASSERT_EQ(place.offset, kMessageDataStart + place.frame / 10 * 331);
    }
    builder.request_stop();
    builder.join();
    EXPECT_EQ(index.Extent().end, MessageEnd::None);
}

}  // namespace
