// SPDX-License-Identifier: MIT
// A temporary folder with a home and XDG folders, which the environment names from then on.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/test_files.h"

class PrivateFolders {
public:
    PrivateFolders() {
        for (const auto& [variable, folder] :
             {std::pair("HOME", "home"), {"XDG_RUNTIME_DIR", "run"}, {"XDG_DATA_HOME", "home/data"}}) {
            Set(variable, MakeFolder(folder));
        }
        Set("PATH", (Root() / "bin").string() + ":" + std::getenv("PATH"));
    }
    PrivateFolders(const PrivateFolders&) = delete;
    PrivateFolders& operator=(const PrivateFolders&) = delete;

    static void Set(const char* variable, const std::string& value) { setenv(variable, value.c_str(), 1); }

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
    // A program that is found on PATH before the machine's own.
    void WriteProgram(const std::string& name, const std::string& content) const {
        Write(Root() / "bin" / name, content);
        std::filesystem::permissions(Root() / "bin" / name, std::filesystem::perms::owner_all);
    }

private:
    TestFolder m_root;
};
