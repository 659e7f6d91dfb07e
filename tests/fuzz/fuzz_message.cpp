// SPDX-License-Identifier: MIT
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "codec/message_index.h"

// Any bytes as a message: its header, every record to the end, twice, and the index of the file as it grows,
// which must find the same.

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void CompareWithReader(const MessageIndex& index, std::FILE* file, int rate) {
    static MessageReader reader;
    MessageClock clock(rate);
    MessageRecord record;
    Require(reader.Rewind(file));
    for (;;) {
        const int64_t offset = reader.Offset();
        record = reader.Read(file);
        if (record.kind == MessageRecordKind::End) break;
        if (record.kind == MessageRecordKind::Skipped) continue;
        Require(record.body.size() == record.declared_bytes && record.body.size() <= kMaxPayloadBytes);
        const bool is_speech = record.kind == MessageRecordKind::Speech;
        const MessagePlace place = is_speech ? index.PlaceForFrame(clock.NextSpeechFrame())
                                             : index.PlaceForPicture(clock.Pictures());
        Require(place.offset == offset && place.frame == clock.SpeechEnd() &&
                place.pictures == clock.Pictures());
        is_speech ? clock.AddSpeechBlock() : clock.AddPicture();
    }
    Require(record.end != MessageEnd::None && reader.Read(file).end == record.end);
    const MessageExtent extent = index.Extent();
    Require(extent.end == record.end && extent.end_offset == reader.Offset());
    Require(extent.length == clock.Length() && extent.skipped_bytes == reader.SkippedBytes());
}

}  // namespace

// The first byte chooses the rate and in how many parts the rest comes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 + static_cast<size_t>(kMessageDataStart)) return 0;
    const int rate = data[0] % (kMaxVideoRate + 1);
    const size_t part = 1 + (size - 1) / (1 + data[0] / 64);
    std::FILE* file = fdopen(memfd_create("message", 0), "w+b");
    Require(file != nullptr);
    MessageIndex index(rate);
    for (size_t at = 1; at < size; at += part) {
        const size_t bytes = at + part < size ? part : size - at;
        Require(write(fileno(file), data + at, bytes) == static_cast<ssize_t>(bytes));
        while (index.BuildSlice(fileno(file))) {
        }
    }
    uint8_t kind = 0;
    uint32_t frames = 0;
    std::rewind(file);
    if (ReadMessageKind(file, kind) == MessageHeaderError::None)
        Require(ReadMessageFrameCount(file, frames) == MessageHeaderError::None);
    CompareWithReader(index, file, rate);
    CompareWithReader(index, file, rate);
    std::fclose(file);
    return 0;
}
