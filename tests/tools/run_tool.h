#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// What a program did.
struct ToolRun {
    int status = -1;  // exit status, or -1 when a signal ended it
    std::string out;
    std::string err;
};

// Runs a program to its end, with nothing on its standard input.
ToolRun RunTool(const std::string& program, const std::vector<std::string>& arguments);
ToolRun RunTrvdump(const std::vector<std::string>& arguments);
ToolRun RunTrvmake(const std::vector<std::string>& arguments);

// A folder of its own, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    // The names of what is in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes);

// Lower-case hexadecimal SHA-256.
std::string Sha256(const std::vector<uint8_t>& bytes);

// A sample message that comes with the tests.
std::string SamplePath(const std::string& name);

// Messages put together byte by byte.
std::vector<uint8_t> MessageHeader(uint8_t rate, uint32_t frame_count);
void AppendSpeech(std::vector<uint8_t>& message, uint8_t filler);
void AppendVideo(std::vector<uint8_t>& message, unsigned length_field, const std::vector<uint8_t>& payload);
