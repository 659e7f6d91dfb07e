#include "codec/message_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/codec/message_test_file.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

const Bytes kHeader = Text("TRV01.01") + Bytes{3, 0x94, 0x11, 0, 0};

Bytes Speech(uint8_t filler) {
    return Bytes{0} + Bytes(kSpeechBlockBytes, filler);
}

Bytes Video(unsigned declared, size_t present, uint8_t filler) {
    return Bytes{1, static_cast<uint8_t>(declared), static_cast<uint8_t>(declared >> 8)} +
           Bytes(present, filler);
}

TEST(MessageHeader, IsCheckedInTwoSteps) {
    struct {
        const char* what;
        Bytes bytes;
        MessageHeaderError kind, count;
        uint32_t frames;
    } cases[] = {
        {"whole", kHeader, MessageHeaderError::None, MessageHeaderError::None, 4500},
        {"voice", Text("TRV01.01") + Bytes{0, 0, 0, 0, 0}, MessageHeaderError::None, MessageHeaderError::None,
         0},
        {"largest count", Text("TRV01.01") + Bytes{5, 255, 255, 255, 255}, MessageHeaderError::None,
         MessageHeaderError::None, 0xFFFFFFFF},
        {"short magic", Text("TRV01.0"), MessageHeaderError::BadMagic, {}, 0},
        {"small letters", Text("trv01.01") + Bytes(5), MessageHeaderError::BadMagic, {}, 0},
        {"other version", Text("TRV01.02") + Bytes(5), MessageHeaderError::BadMagic, {}, 0},
        {"no rate", Text("TRV01.01"), MessageHeaderError::NoVideoRate, {}, 0},
        {"rate 6", Text("TRV01.01") + Bytes{6, 0, 0, 0, 0}, MessageHeaderError::BadVideoRate, {}, 0},
        {"rate 255", Text("TRV01.01") + Bytes{255, 0, 0, 0, 0}, MessageHeaderError::BadVideoRate, {}, 0},
        {"short count", Text("TRV01.01") + Bytes{1, 0, 0, 0}, MessageHeaderError::None,
         MessageHeaderError::NoFrameCount, 0},
    };
    for (auto& c : cases) {
        const File file = OpenBytes(c.bytes);
        uint8_t rate = 0xEE;
        EXPECT_EQ(ReadMessageKind(file.get(), rate), c.kind) << c.what;
        const bool rate_read =
            c.kind == MessageHeaderError::None || c.kind == MessageHeaderError::BadVideoRate;
        EXPECT_EQ(rate, rate_read ? c.bytes[8] : 0xEE) << c.what;
        if (c.kind != MessageHeaderError::None) continue;
        uint32_t frames = 0;
        EXPECT_EQ(ReadMessageFrameCount(file.get(), frames), c.count) << c.what;
        EXPECT_EQ(frames, c.frames) << c.what;
        EXPECT_EQ(std::ftell(file.get()), std::min<long>(kMessageDataStart, std::ssize(c.bytes))) << c.what;
    }
}

struct RecordsCase {
    const char* what;
    Bytes records;
    std::string read;  // S: speech, V: video, p: a skipped byte
    MessageEnd end;
};

std::string ReadAll(MessageReader& reader, std::FILE* file, MessageEnd& end) {
    std::string read;
    for (;;) {
        const MessageRecord record = reader.Read(file);
        switch (record.kind) {
            case MessageRecordKind::Speech:
                read += 'S';
                EXPECT_EQ(record.body.size(), kSpeechBlockBytes);
                break;
            case MessageRecordKind::Video:
                read += 'V';
                break;
            case MessageRecordKind::Skipped:
                read += 'p';
                break;
            case MessageRecordKind::End:
                end = record.end;
                return read;
        }
    }
}

TEST(MessageReader, ReadsTheRecordsOfAnyFile) {
    const RecordsCase cases[] = {
        {"header only", {}, "", MessageEnd::Clean},
        {"speech and video", Video(5, 5, 9) + Speech(1) + Speech(2) + Video(0, 0, 0), "VSSV",
         MessageEnd::Clean},
        {"stray bytes", Bytes{7} + Speech(1) + Bytes{2, 255} + Video(2, 2, 0), "pSppV", MessageEnd::Clean},
        {"largest video", Video(16384, 16384, 1) + Speech(0), "VS", MessageEnd::Clean},
        {"too large", Video(16385, 16385, 0) + Speech(0), "", MessageEnd::BadLength},
        {"negative", Speech(3) + Video(0x8001, 0x8001, 0), "S", MessageEnd::BadLength},
        {"speech cut", Speech(1) + Bytes(330, 0), "S", MessageEnd::PartialRecord},
        {"speech type alone", Bytes{0}, "", MessageEnd::PartialRecord},
        {"video cut", Video(20, 19, 1), "", MessageEnd::PartialRecord},
        {"length cut", Speech(1) + Bytes{1, 4}, "S", MessageEnd::PartialRecord},
        {"video type alone", Bytes{1}, "", MessageEnd::PartialRecord},
    };
    for (const RecordsCase& c : cases) {
        Bytes bytes = kHeader + c.records;
        const File file = OpenBytes(bytes);
        MessageReader reader;
        MessageEnd end = MessageEnd::None;
        // Before the header is gone by, and twice more after a rewind: the message reads the same.
        for (int round = 0; round < 3; ++round) {
            ASSERT_TRUE(reader.Rewind(file.get()));
            EXPECT_EQ(ReadAll(reader, file.get(), end), c.read) << c.what;
            EXPECT_EQ(end, c.end) << c.what;
            EXPECT_EQ(reader.SkippedBytes(),
                      static_cast<uint64_t>(std::count(c.read.begin(), c.read.end(), 'p')))
                << c.what;
            // What follows an end is never taken for records.
            EXPECT_EQ(ReadAll(reader, file.get(), end), "") << c.what;
            EXPECT_EQ(end, c.end) << c.what;
        }
    }
}

TEST(MessageReader, GivesBodiesAndDeclaredLengths) {
    Bytes bytes = kHeader + Video(700, 700, 0xAB) + Speech(0x55) + Video(40000, 0, 0);
    const File file = OpenBytes(bytes);
    MessageReader reader;
    ASSERT_TRUE(reader.Rewind(file.get()));
    MessageRecord record = reader.Read(file.get());
    EXPECT_EQ(Bytes(record.body.begin(), record.body.end()), Bytes(700, 0xAB));
    EXPECT_EQ(record.declared_bytes, 700U);
    record = reader.Read(file.get());
    EXPECT_EQ(Bytes(record.body.begin(), record.body.end()), Bytes(330, 0x55));
    record = reader.Read(file.get());
    EXPECT_EQ(record.end, MessageEnd::BadLength);
    EXPECT_EQ(record.declared_bytes, 40000U);
    EXPECT_TRUE(record.body.empty());
}

// A folder opens as a file on this system, but cannot be read.
TEST(MessageReader, ReportsReadErrors) {
    const File folder(std::fopen("/", "rb"));
    ASSERT_TRUE(folder);
    MessageReader reader;
    EXPECT_EQ(reader.Read(folder.get()).end, MessageEnd::ReadError);
    EXPECT_EQ(reader.Read(folder.get()).end, MessageEnd::ReadError);
}

}  // namespace
