// SPDX-License-Identifier: MIT
#include "platform/shell/file_type_texts.h"

#include <strings.h>

#include <istream>
#include <string_view>

namespace {

// Puts the escape before each of the special characters.
std::string Escaped(std::string_view text, std::string_view special, char escape) {
    std::string result;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) result += escape;
        result += c;
    }
    return result;
}

// TryExec holds the path as every string of a desktop entry: with its backslashes doubled.
std::string TryExec(const std::string& program) {
    return Escaped(program, "\\", '\\');
}

// Exec quotes it, doubles its per cent signs, and doubles the quotes' backslashes once more.
std::string Exec(const std::string& program) {
    const std::string quoted = '"' + Escaped(program, "\"`$\\", '\\') + '"';
    return Escaped(Escaped(quoted, "%", '%'), "\\", '\\');
}

std::string EntryBeforeProgram(const FileType& type, const std::string& subtype) {
    return "[Desktop Entry]\nType=Application\nName=" + type.program_name + "\nIcon=application-" + subtype +
           "\nMimeType=application/" + subtype + ";\nCategories=AudioVideo;Player;\nTerminal=false\nTryExec=";
}

}  // namespace

bool IsPatternIn(std::istream& globs2, const std::string& pattern) {
    for (std::string line; std::getline(globs2, line);) {
        const std::size_t type = line.find(':');
        if (line.starts_with('#') || type == std::string::npos) continue;
        const std::size_t glob = line.find(':', type + 1);
        if (glob == std::string::npos) continue;
        const std::string found = line.substr(glob + 1, line.find(':', glob + 1) - glob - 1);
        if (strcasecmp(found.c_str(), pattern.c_str()) == 0) return true;
    }
    return false;
}

std::string DesktopEntry(const FileType& type, const std::string& subtype, const std::string& program) {
    return EntryBeforeProgram(type, subtype) + TryExec(program) + "\nExec=" + Exec(program) + " %f\n";
}

std::optional<std::string> ProgramOfEntry(const std::string& entry, const FileType& type,
                                          const std::string& subtype) {
    const std::string before = EntryBeforeProgram(type, subtype);
    if (!entry.starts_with(before)) return std::nullopt;
    std::string program;
    for (std::size_t i = before.size(); i < entry.size() && entry[i] != '\n'; ++i) {
        if (entry[i] == '\\') ++i;
        program += entry[i];
    }
    if (entry != DesktopEntry(type, subtype, program)) return std::nullopt;
    return program;
}

std::string MimePackage(const FileType& type, const std::string& subtype) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
           "  <mime-type type=\"application/" +
           subtype + "\">\n    <comment>" + type.description +
           "</comment>\n    <magic priority=\"50\">\n      <match type=\"string\" offset=\"0\" value=\"" +
           type.magic + "\"/>\n    </magic>\n    <glob pattern=\"*" + type.extension +
           "\"/>\n    <generic-icon name=\"video-x-generic\"/>\n  </mime-type>\n</mime-info>\n";
}
