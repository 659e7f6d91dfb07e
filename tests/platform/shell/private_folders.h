// A temporary folder with a home and XDG folders, named in the environment while the object lives.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

#include "tests/support/test_files.h"

class PrivateFolders {
public:
    PrivateFolders() {
        for (const auto& [variable, folder] :
             {std::pair("HOME", "home"), {"XDG_RUNTIME_DIR", "run"}, {"XDG_DATA_HOME", "home/data"}}) {
            Set(variable, MakeFolder(folder));
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
    }

    void Set(const std::string& variable, const std::string& value) {
        const char* before = std::getenv(variable.c_str());
        m_before.emplace(variable, before == nullptr ? std::nullopt : std::optional<std::string>(before));
        setenv(variable.c_str(), value.c_str(), 1);
    }

    std::filesystem::path Root() const { return m_root.Path(); }
    // A folder that only its user can enter.
    std::filesystem::path MakeFolder(const std::string& name) const {
        std::filesystem::create_directories(Root() / name);
        std::filesystem::permissions(Root() / name, std::filesystem::perms::owner_all);
        return Root() / name;
    }

    static std::string Read(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void Write(const std::filesystem::path& path, const std::string& content) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }
    static void WriteProgram(const std::filesystem::path& path, const std::string& content) {
        Write(path, content);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

private:
    TestFolder m_root;
    std::map<std::string, std::optional<std::string>> m_before;
};
