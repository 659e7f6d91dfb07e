// Runs other programs.
#pragma once

#include <string>
#include <vector>

// What a program did.
struct ProgramRun {
    int status = -1;  // exit status; 127 when it could not be started, -1 when a signal ended it
    std::string out;
    std::string err;
};

// Runs a program of the PATH, or of a path, to its end with nothing on its standard input.
ProgramRun RunProgram(const std::vector<std::string>& words);
