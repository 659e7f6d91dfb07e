#include "codec/message_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "tests/codec/message_test_file.h"

namespace {

TEST(MessageHeader, IsCheckedInTwoSteps) {
    const auto none = MessageHeaderError::None;
    struct {
        const char* what;
        Bytes bytes;
        MessageHeaderError kind, count;
        uint32_t frames;
    } cases[] = {
        {"whole", kHeader, none, none, 4500},
        {"largest count", Text("TRV01.01") + Bytes{5, 255, 255, 255, 255}, none, none, 0xFFFFFFFF},
        {"short magic", Text("TRV01.0"), MessageHeaderError::BadMagic, {}, 0},
        {"small letters", Text("trv01.01") + Bytes(5), MessageHeaderError::BadMagic, {}, 0},
        {"other version", Text("TRV01.02") + Bytes(5), MessageHeaderError::BadMagic, {}, 0},
        {"no rate", Text("TRV01.01"), MessageHeaderError::NoVideoRate, {}, 0},
        {"rate 6", Text("TRV01.01") + Bytes{6, 0, 0, 0, 0}, MessageHeaderError::BadVideoRate, {}, 0},
        {"short count", Text("TRV01.01") + Bytes{1, 0, 0, 0}, none, MessageHeaderError::NoFrameCount, 0},
    };
    for (auto& c : cases) {
        const File file = OpenBytes(c.bytes);
        uint8_t rate = 0xEE;
        uint32_t frames = 0;
        EXPECT_EQ(ReadMessageKind(file.get(), rate), c.kind) << c.what;
        EXPECT_EQ(rate, c.bytes.size() < 9 || c.kind == MessageHeaderError::BadMagic ? 0xEE : c.bytes[8])
            << c.what;
        if (c.kind != none) continue;
        EXPECT_EQ(ReadMessageFrameCount(file.get(), frames), c.count) << c.what;
        EXPECT_EQ(frames, c.frames) << c.what;
        EXPECT_EQ(std::ftell(file.get()), std::min<long>(kMessageDataStart, std::ssize(c.bytes))) << c.what;
    }
}

// A message that is being written goes on where it ended, unless its end was final, and a reader may begin at
// any record.
TEST(MessageReader, SeeksAndResumes) {
    const Bytes bytes = kHeader + Speech(1) + Video(700, 700, 7) + Video(40000, 0, 0);
    const size_t second = kHeader.size() + 1 + kSpeechBlockBytes;
    const File file(std::tmpfile());
    MessageReader reader;
    const auto write = [&](size_t from, size_t to) {
        ASSERT_EQ(pwrite(fileno(file.get()), bytes.data() + from, to - from, static_cast<off_t>(from)),
                  static_cast<ssize_t>(to - from));
    };
    write(0, second + 4);
    ASSERT_TRUE(reader.Rewind(file.get()));
    MessageRecord record = reader.Read(file.get());
    EXPECT_EQ(Bytes(record.body.begin(), record.body.end()), Bytes(330, 1));
    EXPECT_EQ(reader.Read(file.get()).end, MessageEnd::PartialRecord);
    write(second + 4, bytes.size());
    EXPECT_EQ(reader.Read(file.get()).end, MessageEnd::PartialRecord) << "an end stays";
    ASSERT_TRUE(reader.Resume(file.get()));
    record = reader.Read(file.get());
    EXPECT_EQ(Bytes(record.body.begin(), record.body.end()), Bytes(700, 7));
    EXPECT_EQ(record.declared_bytes, 700U);
    record = reader.Read(file.get());
    EXPECT_EQ(record.end, MessageEnd::BadLength);
    EXPECT_EQ(record.declared_bytes, 40000U);
    EXPECT_FALSE(reader.Resume(file.get()));
    ASSERT_TRUE(reader.Seek(file.get(), static_cast<int64_t>(second)));
    EXPECT_EQ(reader.Read(file.get()).body[1], 7);
}

// A folder opens as a file on this system, but cannot be read.
TEST(MessageReader, ReportsReadErrors) {
    const File folder(std::fopen("/", "rb"));
    MessageReader reader;
    for (int i = 0; i < 2; ++i) {
        const MessageRecord record = reader.Read(folder.get());
        EXPECT_EQ(record.end, MessageEnd::ReadError);
        EXPECT_EQ(record.error, EISDIR);
    }
}

}  // namespace
