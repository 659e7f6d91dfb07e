// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "codec/message_reader.h"

// make_seeds CORPORA RESOURCES MESSAGE…: what the fuzz targets begin with. For each message its payloads and
// a few short messages of its first records; each small resource by itself; texts as other programs write
// them.

namespace {

using Bytes = std::vector<char>;

constexpr int kMostPayloads = 8;
constexpr size_t kMostResourceBytes = 1200;

bool Write(const std::filesystem::path& path, const Bytes& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.good();
}

Bytes ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

bool MakeMessageSeeds(const std::filesystem::path& corpora, const std::filesystem::path& message) {
    const Bytes bytes = ReadAll(message);
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
            start.insert(start.begin(), bytes[8]);  // the rate, or the size of a thumbnail
            for (const char* target : {"message", "index", "thumbnail"})
                written = written && Write(corpora / target / (name + std::to_string(count)), start);
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

// Entries of a compiled resource file: two sizes, the type and the number behind 0xFFFF each, then the rest.
bool MakeResourceSeeds(const std::filesystem::path& corpora, const std::filesystem::path& resources) {
    const Bytes bytes = ReadAll(resources);
    bool written = !bytes.empty();
    Bytes together(1, 0);
    for (size_t at = 0; written && at + 16 <= bytes.size();) {
        std::array<uint32_t, 2> sizes;
        std::memcpy(sizes.data(), &bytes[at], sizeof sizes);
        const size_t size = (size_t{sizes[0]} + sizes[1] + 3) / 4 * 4;
        if (size > bytes.size() - at) return false;
        if (sizes[0] > 0 && size <= kMostResourceBytes) {
            const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
            const auto data = from + static_cast<std::ptrdiff_t>(sizes[1]);
            Bytes seed(data, data + static_cast<std::ptrdiff_t>(sizes[0]));
            seed.insert(seed.begin(), bytes[at + 10]);  // its type
            written = Write(corpora / "resources" / std::to_string(at), seed);
            together.insert(together.end(), from, from + static_cast<std::ptrdiff_t>(size));
        }
        at += size;
    }
    return written && Write(corpora / "resources/together", together);
}

bool MakeTextSeeds(const std::filesystem::path& corpora) {
    const std::string globs =
        "# a comment\n50:application/x-trivelle-message:*.trv:cs\n60:text/plain:*.TXT\n";
    const std::string entry =
        "[Desktop Entry]\nType=Application\nName=Player\nIcon=application-x\nMimeType=application/x;\n"
        "Categories=AudioVideo;Player;\nTerminal=false\nTryExec=/a\\\\b\nExec=\"/a\\\\\\\\b\" %f\n";
    const std::string media = std::string(24, '\1') + "file:///a%20b\r\nfile://localhost/c%00\nFILE:/d\n";
    const auto bytes = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
    return Write(corpora / "texts/globs2", bytes(globs)) && Write(corpora / "texts/entry", bytes(entry)) &&
           Write(corpora / "media/list", bytes(media));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    const std::filesystem::path corpora = argv[1];
    bool made = MakeTextSeeds(corpora) && MakeResourceSeeds(corpora, argv[2]);
    for (int i = 3; i < argc; ++i) made = made && MakeMessageSeeds(corpora, argv[i]);
    if (!made) std::fputs("make_seeds: not all seeds could be made\n", stderr);
    return made ? 0 : 1;
}
