// SPDX-License-Identifier: MIT
#include "codec/message_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

#include "tests/support/message_builder.h"

namespace {

// A message that is being written goes on where it ended, unless its end was final, and a reader may begin at
// any record.
TEST(MessageReader, SeeksAndResumes) {
    using Bytes = std::vector<uint8_t>;
    const Bytes bytes = MessageBuilder(3).SpeechOf(1).Video(700, Bytes(700, 7)).Video(40000, {}).Data();
    const size_t second = kMessageDataStart + 1 + kSpeechBlockBytes;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
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

}  // namespace
