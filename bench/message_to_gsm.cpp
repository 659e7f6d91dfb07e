// SPDX-License-Identifier: MIT
// Writes a message's speech frames in libgsm's own layout, for programs that decode .gsm files.
//
//   message_to_gsm MESSAGE FILE
#include <cstdio>
#include <memory>

#include "bench/gsm_layout.h"
#include "codec/message_reader.h"

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: message_to_gsm MESSAGE FILE\n");
        return 2;
    }
    const File message(std::fopen(argv[1], "rb"));
    const File target(std::fopen(argv[2], "wb"));
    MessageReader reader;
    if (!message || !target || !reader.Rewind(message.get())) {
        std::perror("message_to_gsm");
        return 1;
    }
    for (MessageRecord record; (record = reader.Read(message.get())).kind != MessageRecordKind::End;) {
        if (record.kind != MessageRecordKind::Speech) continue;
        for (size_t at = 0; at < kSpeechBlockBytes; at += kSpeechFrameBytes) {
            gsm_byte layout[kSpeechFrameBytes];
            ToGsmLayout(record.body.data() + at, layout);
            std::fwrite(layout, sizeof layout, 1, target.get());
        }
    }
    return std::fflush(target.get()) == 0 && std::ferror(target.get()) == 0 ? 0 : 1;
}
