// SPDX-License-Identifier: MIT
// Files that tests read and write.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// A folder of the test's own, deleted with everything in it.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& Path() const { return m_folder; }
    std::string Path(const std::string& name) const { return (m_folder / name).string(); }
    // The names of what is in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path m_folder;
};

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes);

// The full path of a file in tests/data, and of a sample message there.
std::string TestData(const std::string& name);
std::string Sample(const std::string& name);
