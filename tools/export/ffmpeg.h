// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tools {

// Bytes for one of ffmpeg's inputs, asked for when there is room for them.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // The next bytes, valid until the next call; none at the end.
    virtual std::span<const uint8_t> Next() = 0;
};

// The program ffmpeg as a child, in a process group of its own. One that still runs when the object goes is
// killed. Any thread, one at a time; nothing of the process but the child is touched.
class Ffmpeg {
public:
    // Its inputs are the child's descriptors InputName(0) and so on, its output is what `arguments` name.
    // `output`: a descriptor that becomes its standard output, which stays the caller's; -1 for none. Throws
    // ToolError when there is no ffmpeg, or no process to be had.
    Ffmpeg(const std::vector<std::string>& arguments, std::size_t inputs, int output);
    ~Ffmpeg();
    Ffmpeg(Ffmpeg&& other) noexcept;
    Ffmpeg& operator=(Ffmpeg&&) = delete;

    static std::string InputName(std::size_t input);

    // Gives each input what its source has, whichever of them has room, and waits until the child has ended.
    // What `check`, called at least ten times a second, throws ends the child. `what` is what is being
    // written, for the ToolError that is thrown when the child did not do all of it.
    void Feed(std::span<ByteSource* const> sources, const std::function<void()>& check,
              const std::string& what);

    // For a child made by Reading: fills `bytes`, calling `check` as Feed does; a smaller result than asked
    // for is the end. Throws ToolError when the child then ended with an error, whose words are about `what`.
    static Ffmpeg Reading(const std::vector<std::string>& arguments);
    std::size_t Read(std::span<uint8_t> bytes, const std::function<void()>& check, const std::string& what);

    // What to say to a person without the program.
    static const char* const kMissing;

private:
    struct Input {
        int descriptor;
        std::span<const uint8_t> bytes;
        ByteSource* source = nullptr;
    };

    void Spawn(const std::vector<std::string>& arguments, const std::vector<int>& child_ends, int output,
               int complaints);
    bool Refill(Input& input);
    void Write(Input& input);
    void ReadComplaints();
    void CloseInputs();
    // The child's exit status once it has ended. Throws ToolError where a signal ended it.
    int Wait(const std::string& what);
    std::string LastComplaint(int status) const;

    std::vector<Input> inputs_;
    int complaints_ = -1;  // the child's standard error
    int output_ = -1;      // what it writes, where that is read here
    std::string complaint_;
    pid_t child_ = -1;
};

}  // namespace tools
