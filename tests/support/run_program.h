// SPDX-License-Identifier: MIT
// Runs other programs.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/test_files.h"

// A program that runs beside the test, with nothing on its standard input; one that still runs when the
// object goes is killed.
class ChildProcess {
public:
    // The first word is a program of the PATH, or a path.
    explicit ChildProcess(const std::vector<std::string>& words);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    // What it has written to standard output and standard error so far.
    std::string Out() const;
    std::string Err() const;

    pid_t Pid() const { return m_pid; }
    void Signal(int number) const;
    bool HasEnded() const;
    // Waits for its end, once: the exit status, or the negative number of the signal that ended it.
    int Wait();

private:
    std::unique_ptr<TestFolder> m_folder = std::make_unique<TestFolder>();
    pid_t m_pid = -1;
};

// What a program did.
struct ProgramRun {
    int status = -1;  // exit status; 127 when it could not be started, -1 when a signal ended it
    std::string out;
    std::string err;
};

// Runs a program of the PATH, or of a path, to its end with nothing on its standard input.
ProgramRun RunProgram(const std::vector<std::string>& words);
