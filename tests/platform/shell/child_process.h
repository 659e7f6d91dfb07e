// A child process whose standard output the test reads.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> arguments) {
        std::array<int, 2> output{};
        if (pipe2(output.data(), O_CLOEXEC) != 0) std::abort();
        m_nPid = fork();
        if (m_nPid == 0) {
            dup2(output[1], STDOUT_FILENO);
            std::vector<char*> words;
            for (std::string& argument : arguments) words.push_back(argument.data());
            words.push_back(nullptr);
            execv(words[0], words.data());
            _exit(127);
        }
        close(output[1]);
        m_nOutput = output[0];
    }
    ChildProcess(ChildProcess&& other) noexcept
        : m_nPid(std::exchange(other.m_nPid, -1)), m_nOutput(std::exchange(other.m_nOutput, -1)) {}
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess() {
        if (m_nPid > 0) {
            Signal(SIGKILL);
            Wait();
        }
        if (m_nOutput >= 0) close(m_nOutput);
    }

    void Signal(int number) const { kill(m_nPid, number); }

    // The next character that it writes; 0 at the end of its output or when nothing comes in time.
    char Read(int milliseconds = 10000) {
        pollfd readable{m_nOutput, POLLIN, 0};
        char c = 0;
        if (poll(&readable, 1, milliseconds) > 0 && read(m_nOutput, &c, 1) == 1) return c;
        return 0;
    }

    bool HasEnded() {
        siginfo_t status{};
        return waitid(P_PID, static_cast<id_t>(m_nPid), &status, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               status.si_pid == m_nPid;
    }

    // Its exit status, or the negative number of the signal that ended it.
    int Wait() {
        int status = 0;
        waitpid(std::exchange(m_nPid, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t m_nPid = -1;
    int m_nOutput = -1;
};
