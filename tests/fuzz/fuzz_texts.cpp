// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <sstream>

#include "platform/shell/file_type_texts.h"

// Any bytes as the texts that other programs keep of file types, and as a program's path in one of them.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FileType type{.extension = ".trv",
                               .identifier = "Trivelle.Message",
                               .description = "message",
                               .magic = "TRV",
                               .program = "/usr/bin/trvplayer",
                               .program_name = "Player",
                               .installed_entry = "player.desktop",
                               .icon = {}};
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream lines(text);
    (void)IsPatternIn(lines, "*.trv");

    (void)ProgramOfEntry(text, type, "x");
    const auto program = ProgramOfEntry(DesktopEntry(type, "x", text), type, "x");
    const bool is_one_line = text.find('\n') == std::string::npos;
    if (is_one_line ? program != text : program.has_value()) std::abort();
    return 0;
}
