// SPDX-License-Identifier: MIT
#include "platform/shell/file_type.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

#include "platform/shell/file_type_texts.h"
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

bool IsPatternKnown(const fs::path& folder, const std::string& pattern) {
    std::ifstream globs(folder / "mime/globs2");
    return IsPatternIn(globs, pattern);
}

// "Trivelle.Message" becomes "trivelle-message".
std::string PlainName(std::string identifier) {
    std::ranges::transform(identifier, identifier.begin(), [](unsigned char c) {
        return std::isalnum(c) != 0 ? static_cast<char>(std::tolower(c)) : '-';
    });
    return identifier;
}

// Whether the entry is as an earlier call made it, for a program that has gone.
bool IsStale(const fs::path& path, const FileType& type, const std::string& subtype) {
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    const std::optional<std::string> program = ProgramOfEntry(content, type, subtype);
    return program.has_value() && !Exists(*program);
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
            IsStale(entry, type, subtype) && Write(entry, DesktopEntry(type, subtype, type.program));
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
    if (!Exists(entry)) Write(entry, DesktopEntry(type, subtype, type.program));
    // Last, since it is what later starts look for.
    if (Write(package, MimePackage(type, subtype))) UpdateDatabases(data);
}
