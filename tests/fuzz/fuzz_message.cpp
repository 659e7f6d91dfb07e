// SPDX-License-Identifier: MIT
#include "codec/message_reader.h"
#include "tests/fuzz/memory_file.h"
#include "tests/fuzz/require.h"

// Any bytes as a message: its header, every record to the end, once more, and from one record on.

namespace {

struct Sum {
    int64_t records = 0;
    int64_t last = kMessageDataStart;  // where the last record but the end begins
    int64_t end = 0;
    uint64_t skipped = 0;
    MessageEnd reason = MessageEnd::None;
    bool operator==(const Sum&) const = default;
};

Sum ReadToEnd(MessageReader& reader, std::FILE* file) {
    Sum sum;
    for (;;) {
        const int64_t offset = reader.Offset();
        const MessageRecord record = reader.Read(file);
        if (record.kind == MessageRecordKind::End) break;
        if (record.kind == MessageRecordKind::Skipped) continue;
        Require(record.body.size() == record.declared_bytes && record.body.size() <= kMaxPayloadBytes);
        ++sum.records;
        sum.last = offset;
    }
    sum.end = reader.Offset();
    sum.skipped = reader.SkippedBytes();
    sum.reason = reader.Read(file).end;
    Require(sum.reason != MessageEnd::None && sum.reason != MessageEnd::ReadError);
    return sum;
}

}  // namespace

// The first byte is for the index.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static MemoryFile message;
    static MessageReader reader;
    std::FILE* file = message.Show({data + 1, size - 1});
    uint8_t kind = 0;
    uint32_t frames = 0;
    if (ReadMessageKind(file, kind) == MessageHeaderError::None)
        Require((ReadMessageFrameCount(file, frames) == MessageHeaderError::None) ==
                (size - 1 >= static_cast<size_t>(kMessageDataStart)));
    Require(reader.Rewind(file));
    const Sum sum = ReadToEnd(reader, file);
    Require(reader.Resume(file) == (sum.reason != MessageEnd::BadLength));
    Require(ReadToEnd(reader, file).reason == sum.reason && reader.Offset() == sum.end);
    Require(reader.Seek(file, sum.last));
    Require(ReadToEnd(reader, file).end == sum.end);
    return 0;
}
