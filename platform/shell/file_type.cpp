// SPDX-License-Identifier: MIT
#include "platform/shell/file_type.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

#include "platform/shell/start_program.h"

namespace {

namespace fs = std::filesystem;

bool Exists(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

// The user's own folder of data, empty if there is none, and the system's. A relative path counts as unset.
std::vector<fs::path> DataFolders() {
    const auto absolute = [](const char* variable) {
        const char* value = std::getenv(variable);
        return fs::path(value != nullptr && value[0] == '/' ? value : "");
    };
    std::vector<fs::path> folders{absolute("XDG_DATA_HOME")};
    const fs::path home = absolute("HOME");
    if (folders.front().empty() && !home.empty()) folders.front() = home / ".local/share";
    const char* system = std::getenv("XDG_DATA_DIRS");
    std::istringstream list(system != nullptr && *system != '\0' ? system : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/')) folders.emplace_back(folder);
    }
    return folders;
}

// Lines of globs2 are weight:type:pattern, perhaps with :flags after them.
bool IsPatternKnown(const fs::path& folder, const std::string& pattern) {
    std::ifstream globs(folder / "mime/globs2");
    for (std::string line; std::getline(globs, line);) {
        const std::size_t type = line.find(':');
        if (line.starts_with('#') || type == std::string::npos) continue;
        const std::size_t glob = line.find(':', type + 1);
        if (glob == std::string::npos) continue;
        const std::string found = line.substr(glob + 1, line.find(':', glob + 1) - glob - 1);
        if (strcasecmp(found.c_str(), pattern.c_str()) == 0) return true;
    }
    return false;
}

// "Trivelle.Message" becomes "trivelle-message".
std::string PlainName(std::string identifier) {
    std::ranges::transform(identifier, identifier.begin(), [](unsigned char c) {
        return std::isalnum(c) != 0 ? static_cast<char>(std::tolower(c)) : '-';
    });
    return identifier;
}

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

std::string Entry(const FileType& type, const std::string& subtype, const std::string& program) {
    return EntryBeforeProgram(type, subtype) + TryExec(program) + "\nExec=" + Exec(program) + " %f\n";
}

// Whether the entry is as Entry made it, for a program that has gone.
bool IsStale(const fs::path& path, const FileType& type, const std::string& subtype) {
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    const std::string before = EntryBeforeProgram(type, subtype);
    if (!content.starts_with(before)) return false;
    std::string program;
    for (std::size_t i = before.size(); i < content.size() && content[i] != '\n'; ++i) {
        if (content[i] == '\\') ++i;
        program += content[i];
    }
    return content == Entry(type, subtype, program) && !Exists(program);
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

// The content is written beside the file and then gets its name.
bool Write(const fs::path& path, std::string_view content) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    const fs::path unnamed = path.string() + "." + std::to_string(getpid());
    std::ofstream file(unnamed, std::ios::binary);
    file << content;
    file.close();
    if (file) fs::rename(unnamed, path, error);
    const bool done = file && !error;
    if (!done) fs::remove(unnamed, error);
    return done;
}

// The programs take tenths of a second, which start-up does not wait for.
void UpdateDatabases(const fs::path& data) {
    StartDetached({"/bin/sh", "-c",
                   "exec </dev/null >/dev/null 2>&1\n"
                   "update-mime-database \"$1/mime\"\nupdate-desktop-database \"$1/applications\"",
                   "sh", data});
}

}  // namespace

void RegisterFileType(const FileType& type) {
    const std::vector<fs::path> folders = DataFolders();
    const fs::path& data = folders.front();
    if (data.empty()) return;
    const std::string name = PlainName(type.identifier);
    const std::string subtype = "x-" + name;
    const fs::path package = data / "mime/packages" / (name + ".xml");
    const fs::path entry = data / "applications" / (name + ".desktop");
    if (Exists(package)) {
        const bool renewed =
            IsStale(entry, type, subtype) && Write(entry, Entry(type, subtype, type.program));
        // The update of an earlier start may have been cut short; what it writes tells.
        if (renewed || !Exists(data / "mime/application" / (subtype + ".xml"))) UpdateDatabases(data);
        return;
    }
    const auto known = [&](const fs::path& folder) {
        return Exists(folder / "applications" / type.installed_entry) ||
               IsPatternKnown(folder, "*" + type.extension);
    };
    if (std::ranges::any_of(folders, known)) return;
    if (!type.icon.empty()) {
        Write(data / "icons/hicolor/scalable/mimetypes" / ("application-" + subtype + ".svg"),
              {reinterpret_cast<const char*>(type.icon.data()), type.icon.size()});
    }
    if (!Exists(entry)) Write(entry, Entry(type, subtype, type.program));
    // Last, since it is what later starts look for.
    if (Write(package, MimePackage(type, subtype))) UpdateDatabases(data);
}
