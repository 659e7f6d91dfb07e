#include "platform/shell/file_type.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "platform/shell/run_program.h"

namespace {

struct Folders {
    std::string data;                   // XDG_DATA_HOME
    std::string config;                 // XDG_CONFIG_HOME
    std::vector<std::string> all_data;  // data and the system's, XDG_DATA_DIRS
};

// A relative path counts as unset.
std::string AbsolutePath(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : std::string();
}

Folders XdgFolders() {
    Folders folders{AbsolutePath("XDG_DATA_HOME"), AbsolutePath("XDG_CONFIG_HOME"), {}};
    const std::string home = AbsolutePath("HOME");
    if (folders.data.empty() && !home.empty()) folders.data = home + "/.local/share";
    if (folders.config.empty() && !home.empty()) folders.config = home + "/.config";
    folders.all_data.push_back(folders.data);
    const char* system = std::getenv("XDG_DATA_DIRS");
    std::istringstream list(system != nullptr && *system != '\0' ? system : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/')) folders.all_data.push_back(folder);
    }
    return folders;
}

bool Exists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

// Lines of globs2 are weight:type:pattern, perhaps with :flags after them.
bool IsPatternKnown(const std::string& folder, const std::string& pattern) {
    std::ifstream globs(folder + "/mime/globs2");
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
std::string PlainName(const std::string& identifier) {
    std::string name;
    for (const char c : identifier) {
        const auto byte = static_cast<unsigned char>(c);
        name += std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte)) : '-';
    }
    return name;
}

std::string Escaped(std::string_view text, std::string_view special, std::string (*escape)(char)) {
    std::string result;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) {
            result += escape(c);
        } else {
            result += c;
        }
    }
    return result;
}

std::string XmlText(std::string_view text) {
    return Escaped(text, "&<>\"'",
                   [](char c) { return std::string("&#").append(std::to_string(c)).append(1, ';'); });
}

std::string MagicValue(std::string_view magic) {
    return XmlText(Escaped(magic, "\\", [](char c) { return std::string{'\\', c}; }));
}

// A quoted argument of Exec, whose backslashes are doubled once more as every string's of a desktop entry.
std::string ExecArgument(const std::string& argument) {
    const std::string quoted = Escaped(argument, "\"`$\\", [](char c) { return std::string{'\\', c}; });
    const std::string percent = Escaped(quoted, "%", [](char) { return std::string("%%"); });
    std::string argument_text(1, '"');
    return argument_text.append(Escaped(percent, "\\", [](char) { return std::string("\\\\"); }))
        .append(1, '"');
}

bool MakeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), S_IRWXU) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) return true;
    }
}

bool WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t size = write(file, content.data(), content.size());
        if (size < 0 && errno != EINTR) return false;
        if (size > 0) content.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

enum class Existing { Keep, Replace };

// Complete or not at all: the content is written beside the file and then gets its name.
bool WriteFile(const std::string& path, std::string_view content, mode_t mode, Existing existing) {
    if (!MakeFolders(path.substr(0, path.rfind('/')))) return false;
    std::string unnamed = path + ".XXXXXX";
    const int file = mkostemp(unnamed.data(), O_CLOEXEC);
    if (file < 0) return false;
    bool done = WriteAll(file, content) && fchmod(file, mode) == 0;
    // What replaces a file of the user's must survive a power cut; that costs a start-up's worth of time.
    if (existing == Existing::Replace) done = done && fsync(file) == 0;
    done = close(file) == 0 && done;
    if (existing == Existing::Keep) {
        done = done && link(unnamed.c_str(), path.c_str()) == 0;
        unlink(unnamed.c_str());
    } else if (!done || rename(unnamed.c_str(), path.c_str()) != 0) {
        unlink(unnamed.c_str());
        done = false;
    }
    return done;
}

void WriteIcons(const std::string& data, const std::string& name, const std::vector<FileTypeIcon>& icons) {
    for (const FileTypeIcon& icon : icons) {
        const std::string pixels = std::to_string(icon.pixels);
        const std::string folder = icon.pixels == 0 ? "scalable" : pixels + "x" + pixels;
        const std::string_view bytes(reinterpret_cast<const char*>(icon.bytes.data()), icon.bytes.size());
        WriteFile(
            data + "/icons/hicolor/" + folder + "/mimetypes/" + name + (icon.pixels == 0 ? ".svg" : ".png"),
            bytes, 0644, Existing::Keep);
    }
}

std::string DesktopEntry(const FileType& type, const std::string& mime_type, const std::string& icon) {
    return "[Desktop Entry]\nType=Application\nName=" + type.program_name + "\nIcon=" + icon +
           "\nExec=" + ExecArgument(type.program) + " %f\nMimeType=" + mime_type +
           ";\nCategories=AudioVideo;Player;\nTerminal=false\n";
}

std::string MimePackage(const FileType& type, const std::string& mime_type) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
           "  <mime-type type=\"" +
           mime_type + "\">\n    <comment>" + XmlText(type.description) +
           "</comment>\n    <magic priority=\"50\">\n      <match type=\"string\" offset=\"0\" value=\"" +
           MagicValue(type.magic) + "\"/>\n    </magic>\n    <glob pattern=\"*" + XmlText(type.extension) +
           "\"/>\n    <generic-icon name=\"video-x-generic\"/>\n  </mime-type>\n</mime-info>\n";
}

// A link is followed, so that a list kept elsewhere stays where it is.
void AddDefaultProgram(const std::string& config, const std::string& mime_type, const std::string& entry) {
    std::error_code error;
    std::string path = config + "/mimeapps.list";
    if (std::filesystem::is_symlink(path, error)) path = std::filesystem::weakly_canonical(path, error);
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    std::string list;
    if (exists) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        // A list that cannot be read whole is not replaced by less of it.
        if (!file || content.str().size() != static_cast<std::size_t>(status.st_size)) return;
        list = content.str();
    }
    const std::string merged = WithDefaultProgram(list, mime_type, entry);
    if (merged == list) return;
    WriteFile(path, merged, exists ? status.st_mode & 0777U : 0644,
              exists ? Existing::Replace : Existing::Keep);
}

// Their programs take tenths of a second, which start-up does not wait for.
void UpdateDatabases(const std::string& data) {
    StartDetached({"/bin/sh", "-c",
                   "exec </dev/null >/dev/null 2>&1\n"
                   "update-mime-database \"$1/mime\"\nupdate-desktop-database \"$1/applications\"",
                   "sh", data});
}

}  // namespace

bool RegisterFileType(const FileType& type) {
    const Folders folders = XdgFolders();
    if (folders.data.empty() || folders.config.empty()) return false;
    const std::string name = PlainName(type.identifier);
    const std::string subtype = "x-" + name;
    const std::string mime_type = "application/" + subtype;
    const std::string package = folders.data + "/mime/packages/" + name + ".xml";
    if (Exists(package)) {
        // The update of an earlier start may have been cut short; what it writes tells.
        if (!Exists(folders.data + "/mime/" + mime_type + ".xml") &&
            !FindProgram("update-mime-database").empty()) {
            UpdateDatabases(folders.data);
        }
        return false;
    }
    for (const std::string& folder : folders.all_data) {
        if (IsPatternKnown(folder, "*" + type.extension)) return false;
    }
    const std::string icon = "application-" + subtype;
    const std::string entry = name + ".desktop";
    const std::string entry_path = folders.data + "/applications/" + entry;
    WriteIcons(folders.data, icon, type.icons);
    WriteFile(entry_path, DesktopEntry(type, mime_type, icon), 0644, Existing::Keep);
    // The list must not come to name an entry that could not be written.
    if (Exists(entry_path)) AddDefaultProgram(folders.config, mime_type, entry);
    // Last, since it is what later starts look for.
    if (!WriteFile(package, MimePackage(type, mime_type), 0644, Existing::Keep)) return false;
    UpdateDatabases(folders.data);
    return true;
}

std::string WithDefaultProgram(const std::string& list, const std::string& mime_type,
                               const std::string& entry) {
    constexpr std::string_view group = "[Default Applications]";
    const std::string line_end = list.find("\r\n") == std::string::npos ? "\n" : "\r\n";
    const std::string added = mime_type + "=" + entry + line_end;
    bool in_group = false;
    std::size_t insert_at = std::string::npos;  // after the last line of the first such group
    for (std::size_t begin = 0; begin < list.size();) {
        const std::size_t next = std::min(list.find('\n', begin), list.size() - 1) + 1;
        std::string_view line = std::string_view(list).substr(begin, next - begin);
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0)
            line.remove_suffix(1);
        if (line.starts_with('[')) in_group = line == group;
        if (in_group) {
            const std::string_view key = line.substr(0, line.find_first_of(" \t="));
            if (key == mime_type) return list;
            if (!line.empty()) insert_at = next;
        }
        begin = next;
    }
    std::string merged = list;
    if (!merged.empty() && merged.back() != '\n') merged += line_end;
    if (insert_at == list.size()) insert_at = merged.size();
    if (insert_at != std::string::npos) return merged.insert(insert_at, added);
    if (!merged.empty()) merged += line_end;
    return merged.append(group).append(line_end).append(added);
}
