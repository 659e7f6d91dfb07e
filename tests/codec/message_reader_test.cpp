#include "codec/message_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "tests/codec/message_test_file.h"

namespace {

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
    for (const RecordsCase& c : kRecordsCases) {
        Bytes bytes = kHeader + c.records;
        const File file = OpenBytes(bytes);
        MessageReader reader;
        MessageEnd end = MessageEnd::None;
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

// A message that is being written goes on where it ended, unless its end was final; and a reader may begin at
// any record.
TEST(MessageReader, SeeksAndResumes) {
    Bytes bytes = kHeader + Speech(1) + Video(2, 2, 7) + Video(16385, 0, 0);
    const size_t second = kHeader.size() + 1 + kSpeechBlockBytes;
    const File file(std::tmpfile());
    MessageReader reader;
    const auto write = [&](size_t from, size_t to) {
        ASSERT_EQ(pwrite(fileno(file.get()), bytes.data() + from, to - from, static_cast<off_t>(from)),
                  static_cast<ssize_t>(to - from));
    };
    write(0, second + 4);
    ASSERT_TRUE(reader.Rewind(file.get()));
    EXPECT_EQ(reader.Read(file.get()).kind, MessageRecordKind::Speech);
    EXPECT_EQ(reader.Read(file.get()).end, MessageEnd::PartialRecord);
    write(second + 4, bytes.size());
    EXPECT_EQ(reader.Read(file.get()).end, MessageEnd::PartialRecord);
    ASSERT_TRUE(reader.Resume(file.get()));
    EXPECT_EQ(reader.Read(file.get()).kind, MessageRecordKind::Video);
    EXPECT_EQ(reader.Read(file.get()).end, MessageEnd::BadLength);
    EXPECT_FALSE(reader.Resume(file.get()));
    ASSERT_TRUE(reader.Seek(file.get(), static_cast<int64_t>(second)));
    EXPECT_EQ(reader.Read(file.get()).body[1], 7);
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
