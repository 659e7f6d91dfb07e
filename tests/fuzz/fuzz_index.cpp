// SPDX-License-Identifier: MIT
#include <sys/mman.h>
#include <unistd.h>

#include "codec/message_index.h"
#include "tests/fuzz/memory_file.h"
#include "tests/fuzz/require.h"

// Any bytes as a message that grows: its index must find what the reader does.

namespace {

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
        const bool is_speech = record.kind == MessageRecordKind::Speech;
        const MessagePlace place = is_speech ? index.PlaceForFrame(clock.NextSpeechFrame())
                                             : index.PlaceForPicture(clock.Pictures());
        Require(place.offset == offset && place.frame == clock.SpeechEnd() &&
                place.pictures == clock.Pictures());
        is_speech ? clock.AddSpeechBlock() : clock.AddPicture();
    }
    const MessageExtent extent = index.Extent();
    Require(extent.end == record.end && extent.end_offset == reader.Offset());
    Require(extent.length == clock.Length() && extent.skipped_bytes == reader.SkippedBytes());
    // Places that no message has.
    for (const int64_t far : {int64_t{-1}, extent.length, INT64_MAX, INT64_MIN}) {
        Require(index.PlaceForFrame(far).offset <= reader.Offset());
        Require(index.PlaceForPicture(far).offset <= reader.Offset());
    }
}

}  // namespace

// The first byte chooses the rate and in how many parts the rest comes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 + static_cast<size_t>(kMessageDataStart)) return 0;
    static const int file = memfd_create("message", 0);
    static MemoryFile message;
    const int rate = data[0] % (kMaxVideoRate + 1);
    const size_t part = 1 + (size - 1) / (1 + data[0] / 64);
    Require(ftruncate(file, 0) == 0);
    MessageIndex index(rate);
    for (size_t at = 1; at < size; at += part) {
        const size_t bytes = at + part < size ? part : size - at;
        Require(pwrite(file, data + at, bytes, static_cast<off_t>(at - 1)) == static_cast<ssize_t>(bytes));
        while (index.BuildSlice(file)) {
        }
    }
    CompareWithReader(index, message.Show({data + 1, size - 1}), rate);
    return 0;
}
