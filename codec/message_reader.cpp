// SPDX-License-Identifier: MIT
#include "codec/message_reader.h"

#include <cerrno>
#include <cstring>

MessageHeaderError ReadMessageKind(std::FILE* file, uint8_t& video_rate) {
    char magic[sizeof(kMessageMagic)];
    if (std::fread(magic, 1, sizeof(magic), file) != sizeof(magic) ||
        std::memcmp(magic, kMessageMagic, sizeof(magic)) != 0) {
        return MessageHeaderError::BadMagic;
    }
    if (std::fread(&video_rate, 1, 1, file) != 1) return MessageHeaderError::NoVideoRate;
    return video_rate <= kMaxVideoRate ? MessageHeaderError::None : MessageHeaderError::BadVideoRate;
}

MessageHeaderError ReadMessageFrameCount(std::FILE* file, uint32_t& frame_count) {
    uint8_t bytes[4];
    if (std::fread(bytes, 1, sizeof(bytes), file) != sizeof(bytes)) return MessageHeaderError::NoFrameCount;
    frame_count = bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
    return MessageHeaderError::None;
}

MessageRecord MessageReader::Read(std::FILE* file) {
    if (m_end.end != MessageEnd::None) return m_end;

    const int type = std::fgetc(file);
    if (type == EOF) return EndWith(file, MessageEnd::Clean, 0);
    if (type == kSpeechRecord) return ReadBody(file, MessageRecordKind::Speech, kSpeechBlockBytes);
    if (type != kVideoRecord) {
        ++m_skipped;
        ++m_offset;
        MessageRecord record;
        record.kind = MessageRecordKind::Skipped;
        return record;
    }

    uint8_t length_bytes[2];
    if (std::fread(length_bytes, 1, sizeof(length_bytes), file) != sizeof(length_bytes)) {
        return EndWith(file, MessageEnd::PartialRecord, 0);
    }
    const unsigned length = length_bytes[0] | unsigned{length_bytes[1]} << 8;
    if (length > kMaxPayloadBytes) return EndWith(file, MessageEnd::BadLength, length);
    return ReadBody(file, MessageRecordKind::Video, length);
}

bool MessageReader::Rewind(std::FILE* file) {
    m_skipped = 0;
    return Seek(file, kMessageDataStart);
}

bool MessageReader::Seek(std::FILE* file, int64_t offset) {
    m_end = MessageRecord();
    m_offset = offset;
    std::clearerr(file);
    if (fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0) return true;
    m_end.end = MessageEnd::ReadError;
    m_end.error = errno;
    return false;
}

bool MessageReader::Resume(std::FILE* file) {
    return m_end.end != MessageEnd::BadLength && Seek(file, m_offset);
}

void MessageReader::Reset() {
    m_end = MessageRecord();
    m_offset = kMessageDataStart;
    m_skipped = 0;
}

MessageRecord MessageReader::ReadBody(std::FILE* file, MessageRecordKind kind, size_t bytes) {
    if (std::fread(m_buffer.data(), 1, bytes, file) != bytes) {
        return EndWith(file, MessageEnd::PartialRecord, static_cast<unsigned>(bytes));
    }
    m_offset += static_cast<int64_t>(bytes) + (kind == MessageRecordKind::Video ? 3 : 1);
    MessageRecord record;
    record.kind = kind;
    record.body = std::span<const uint8_t>(m_buffer).first(bytes);
    record.declared_bytes = static_cast<unsigned>(bytes);
    return record;
}

MessageRecord MessageReader::EndWith(std::FILE* file, MessageEnd reason, unsigned declared_bytes) {
    if (std::ferror(file) != 0) {
        reason = MessageEnd::ReadError;
        m_end.error = errno;
    }
    m_end.end = reason;
    m_end.declared_bytes = declared_bytes;
    return m_end;
}
