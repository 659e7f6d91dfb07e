#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "codec/message_reader.h"

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A stream over `bytes`, of which there must be some; they must stay where they are.
inline File OpenBytes(std::vector<uint8_t>& bytes) {
    return File(fmemopen(bytes.data(), bytes.size(), "rb"));
}

using Bytes = std::vector<uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

inline const Bytes kHeader = Text("TRV01.01") + Bytes{3, 0x94, 0x11, 0, 0};

inline Bytes Speech(uint8_t filler) {
    return Bytes{0} + Bytes(kSpeechBlockBytes, filler);
}

inline Bytes Video(unsigned declared, size_t present, uint8_t filler) {
    return Bytes{1, static_cast<uint8_t>(declared), static_cast<uint8_t>(declared >> 8)} +
           Bytes(present, filler);
}

// Whole and broken messages; the records stand behind kHeader.
struct RecordsCase {
    const char* what;
    Bytes records;
    std::string read;  // S: speech, V: video, p: a skipped byte
    MessageEnd end;
};
inline const RecordsCase kRecordsCases[] = {
    {"header only", {}, "", MessageEnd::Clean},
    {"speech and video", Video(5, 5, 9) + Speech(1) + Speech(2) + Video(0, 0, 0), "VSSV", MessageEnd::Clean},
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
