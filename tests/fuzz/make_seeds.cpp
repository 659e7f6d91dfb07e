// SPDX-License-Identifier: MIT
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "codec/message_reader.h"

// make_seeds CORPORA MESSAGE…: for each message its payloads and a few short messages of its first records.

namespace {

using Bytes = std::vector<char>;

constexpr int kMostPayloads = 8;

bool Write(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.good();
}

bool MakeSeeds(const std::filesystem::path& corpora, const std::filesystem::path& message) {
    std::ifstream whole(message, std::ios::binary);
    const Bytes bytes((std::istreambuf_iterator<char>(whole)), std::istreambuf_iterator<char>());
    std::FILE* file = std::fopen(message.c_str(), "rb");
    if (file == nullptr) return false;

    static MessageReader reader;
    bool written = reader.Rewind(file);
    const std::string name = message.stem().string();
    MessageRecord record;
    for (int count = 1; written && count <= 40; ++count) {
        record = reader.Read(file);
        if (record.kind == MessageRecordKind::End) break;
        if (count == 1 || count == 4) {
            Bytes start(bytes.begin(), bytes.begin() + reader.Offset());
            start.insert(start.begin(), bytes[8]);  // the rate
            written = Write(corpora / "message" / (name + std::to_string(count)), start);
        }
        if (record.kind == MessageRecordKind::Video && count <= kMostPayloads) {
            Bytes payload(record.body.begin(), record.body.end());
            written = written && Write(corpora / "vdec_symbols" / (name + std::to_string(count)), payload);
            payload.insert(payload.begin(), 3);  // the quality level
            written = written && Write(corpora / "vdec_decode" / (name + std::to_string(count)), payload);
        }
    }
    std::fclose(file);
    return written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const std::filesystem::path corpora = argv[1];
    for (const char* target : {"message", "vdec_decode", "vdec_symbols"}) {
        std::filesystem::create_directories(corpora / target);
    }
    for (int i = 2; i < argc; ++i) {
        if (!MakeSeeds(corpora, argv[i])) {
            std::fprintf(stderr, "make_seeds: no seeds from %s\n", argv[i]);
            return 1;
        }
    }
    return 0;
}
