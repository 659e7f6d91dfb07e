#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/message_reader.h"

// Any bytes as a message: header, every record to the end, and the same again after a rewind.

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

// What one pass over the records saw.
struct Pass {
    uint64_t bytes = 0;  // of the file, up to the end
    uint64_t records = 0;
    MessageEnd end = MessageEnd::None;
    bool operator==(const Pass&) const = default;
};

Pass ReadToEnd(MessageReader& reader, std::FILE* file) {
    Pass pass;
    for (;;) {
        const MessageRecord record = reader.Read(file);
        if (record.kind == MessageRecordKind::End) {
            Require(record.end != MessageEnd::None && reader.Read(file).end == record.end);
            pass.end = record.end;
            return pass;
        }
        ++pass.records;
        pass.bytes += 1 + record.body.size();
        if (record.kind == MessageRecordKind::Speech) Require(record.body.size() == kSpeechBlockBytes);
        if (record.kind == MessageRecordKind::Video) {
            Require(record.body.size() <= kMaxPayloadBytes && record.body.size() == record.declared_bytes);
            pass.bytes += 2;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    // A copy of its own size, so that reading past the end is seen.
    const std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
    std::memcpy(bytes.get(), data, size);
    std::FILE* file = fmemopen(bytes.get(), size, "rb");
    if (file == nullptr) return 0;

    uint8_t rate = 0;
    uint32_t frames = 0;
    if (ReadMessageKind(file, rate) == MessageHeaderError::None &&
        ReadMessageFrameCount(file, frames) == MessageHeaderError::None) {
        static MessageReader reader;
        reader.Reset();
        const Pass first = ReadToEnd(reader, file);
        Require(first.bytes + kMessageDataStart <= size);
        Require(first.end != MessageEnd::Clean || first.bytes + kMessageDataStart == size);
        Require(reader.Rewind(file) && ReadToEnd(reader, file) == first);
    }
    std::fclose(file);
    return 0;
}
