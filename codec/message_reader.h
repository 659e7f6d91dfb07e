// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

#include "codec/message_format.h"

// Why a file is not a message.
enum class MessageHeaderError {
    None,
    BadMagic,      // shorter than eight bytes, or other bytes
    NoVideoRate,   // ends before the video rate
    BadVideoRate,  // above kMaxVideoRate
    NoFrameCount,  // ends within the frame count
};

// The header is read in two steps, because a window wants to know the kind of message before the rest.
// The first reads magic and video rate from the start of a stream; `video_rate` is set when the rate byte
// could be read, even when it is out of range.
MessageHeaderError ReadMessageKind(std::FILE* file, uint8_t& video_rate);

// The second reads the number of 20 ms speech frames and leaves the stream at kMessageDataStart. Any value is
// accepted; nothing says that it agrees with the records.
MessageHeaderError ReadMessageFrameCount(std::FILE* file, uint32_t& frame_count);

enum class MessageRecordKind {
    Speech,   // body: kSpeechBlockBytes
    Video,    // body: one payload, 0 to kMaxPayloadBytes
    Skipped,  // one byte that is no record's type
    End,
};

enum class MessageEnd {
    None,
    Clean,          // the file ends between two records
    PartialRecord,  // the file ends within a record, which is dropped
    BadLength,      // a video record claims more than kMaxPayloadBytes
    ReadError,      // the system could not read on
};

struct MessageRecord {
    MessageRecordKind kind = MessageRecordKind::End;
    std::span<const uint8_t> body;      // in the reader's buffer, valid until its next Read
    MessageEnd end = MessageEnd::None;  // for End
    unsigned declared_bytes = 0;        // for Speech and Video, and for the record that brought the end
    int error = 0;                      // errno of ReadError
};

// Reads the records of a message one by one. The stream is the caller's at every call: the reader neither
// keeps nor closes it. One thread at a time.
class MessageReader {
public:
    // Reads from the stream's position: one record, or one byte that is skipped. Once the message has
    // ended, it stays ended, for the same reason, until Rewind.
    MessageRecord Read(std::FILE* file);

    // Goes back to the first record and counts skipped bytes from 0. False when the stream cannot seek;
    // the message has then ended.
    bool Rewind(std::FILE* file);

    // Goes to the record at `offset` of the file (from a MessageIndex or Offset) and counts on. False as with
    // Rewind.
    bool Seek(std::FILE* file, int64_t offset);

    // After an end: goes back to where it was met, so that Read looks whether the message goes on there now.
    // False as with Rewind, or when the message has ended for good, by a bad length.
    bool Resume(std::FILE* file);

    // For a stream that the caller has put at the first record, such as the one of another message.
    void Reset();

    // Where the next record begins in the file; after an end, the record that brought it.
    int64_t Offset() const { return m_offset; }

    // Bytes skipped since the start or the last rewind.
    uint64_t SkippedBytes() const { return m_skipped; }

private:
    MessageRecord ReadBody(std::FILE* file, MessageRecordKind kind, size_t bytes);
    MessageRecord EndWith(std::FILE* file, MessageEnd reason, unsigned declared_bytes);

    std::array<uint8_t, kMaxPayloadBytes> m_buffer;
    MessageRecord m_end;  // kind End; its reason is None while there is more to read
    int64_t m_offset = kMessageDataStart;
    uint64_t m_skipped = 0;
};
