// A temporary folder with a home and XDG folders, named in the environment while the object lives.
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>

class PrivateFolders {
public:
    PrivateFolders() {
        std::string name = "/tmp/trv-shell.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) std::abort();
        m_root = name;
        for (const auto& [variable, folder] : {std::pair("HOME", "home"),
                                               {"XDG_RUNTIME_DIR", "run"},
                                               {"XDG_DATA_HOME", "home/data"},
                                               {"XDG_CONFIG_HOME", "home/config"}}) {
            Set(variable, m_root / folder);
            std::filesystem::create_directories(m_root / folder);
            std::filesystem::permissions(m_root / folder, std::filesystem::perms::owner_all);
        }
    }
    PrivateFolders(const PrivateFolders&) = delete;
    PrivateFolders& operator=(const PrivateFolders&) = delete;
    ~PrivateFolders() {
        for (const auto& [variable, value] : m_before) {
            if (value) {
                setenv(variable.c_str(), value->c_str(), 1);
            } else {
                unsetenv(variable.c_str());
            }
        }
        std::error_code error;
        std::filesystem::remove_all(m_root, error);
    }

    void Set(const std::string& variable, const std::string& value) {
        const char* before = std::getenv(variable.c_str());
        m_before.emplace(variable, before == nullptr ? std::nullopt : std::optional<std::string>(before));
        setenv(variable.c_str(), value.c_str(), 1);
    }

    std::filesystem::path Root() const { return m_root; }
    std::filesystem::path Data() const { return m_root / "home/data"; }
    std::filesystem::path Config() const { return m_root / "home/config"; }

    static std::string Read(const std::filesystem::path& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }
    static void Write(const std::filesystem::path& path, const std::string& content) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

private:
    std::filesystem::path m_root;
    std::map<std::string, std::optional<std::string>> m_before;
};
