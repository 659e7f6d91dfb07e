// SPDX-License-Identifier: MIT
#include "tests/support/run_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace {

void Redirect(const std::string& path, int descriptor, int flags) {
    const int file = open(path.c_str(), flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
}

std::string Text(const std::string& path) {
    const std::vector<uint8_t> bytes = ReadBytes(path);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& words) {
    const std::string out = m_folder->Path("out");
    const std::string err = m_folder->Path("err");
    WriteBytes(out, {});
    WriteBytes(err, {});
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    m_pid = fork();
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // ends with the test
        Redirect("/dev/null", STDIN_FILENO, O_RDONLY);
        Redirect(out, STDOUT_FILENO, O_WRONLY);
        Redirect(err, STDERR_FILENO, O_WRONLY);
        execvp(argv[0], argv.data());
        _exit(127);
    }
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_folder(std::move(other.m_folder)), m_pid(std::exchange(other.m_pid, -1)) {}

ChildProcess::~ChildProcess() {
    if (m_pid < 0) return;
    Signal(SIGKILL);
    Wait();
}

std::string ChildProcess::Out() const {
    return Text(m_folder->Path("out"));
}

std::string ChildProcess::Err() const {
    return Text(m_folder->Path("err"));
}

void ChildProcess::Signal(int number) const {
    kill(m_pid, number);
}

bool ChildProcess::HasEnded() const {
    siginfo_t status{};
    return waitid(P_PID, static_cast<id_t>(m_pid), &status, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           status.si_pid == m_pid;
}

int ChildProcess::Wait() {
    int status = 0;
    waitpid(std::exchange(m_pid, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

ProgramRun RunProgram(const std::vector<std::string>& words) {
    ChildProcess child(words);
    const int status = child.Wait();
    return {std::max(status, -1), child.Out(), child.Err()};
}
