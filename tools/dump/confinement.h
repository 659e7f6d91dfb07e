// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tools {

// What a process that reads others' files may still ask of the system. Each includes those before it.
enum class Reach {
    OpenFiles,    // reading and writing what is open, memory, and its own end
    FilesToRead,  // threads, and opening files for reading
    Files,        // creating, renaming and removing files and folders
};

// From now on the system ends this process (SIGSYS) when any of its threads asks for anything else: another
// program, the network, another process. Not to be undone, only to be narrowed. False, with nothing changed,
// where the system or this build has no filter (TRV_SECCOMP).
bool Confine(Reach reach);

// What `make` gives, called in a copy of this process that reaches OpenFiles only. Nothing where that process
// could not be started, threw, or was ended. Only one thread may run.
std::optional<std::vector<uint8_t>> MakeConfined(const std::function<std::vector<uint8_t>()>& make);

}  // namespace tools
