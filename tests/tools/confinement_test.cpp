// SPDX-License-Identifier: MIT
// What a confined process may do, and its end when it does anything else.
#include "tools/dump/confinement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tests/support/run_program.h"
#include "tests/support/test_files.h"
#include "tests/support/watch.h"

namespace {

using tools::Confine;
using tools::Reach;

struct Act {
    const char* name;
    Reach needed;
    void (*run)(const std::string& folder);
};

const Act kActs[] = {
    {"open for reading", Reach::FilesToRead,
     [](const std::string& folder) { close(open(folder.c_str(), O_RDONLY)); }},
    {"thread", Reach::FilesToRead, [](const std::string&) { std::thread([] {}).join(); }},
    {"open for writing", Reach::Files,
     [](const std::string& folder) { close(open((folder + "/new").c_str(), O_WRONLY | O_CREAT, 0600)); }},
    {"remove", Reach::Files, [](const std::string& folder) { unlink((folder + "/gone").c_str()); }},
};
const Act kForbidden[] = {
    {"program", Reach::Files, [](const std::string&) { execl("/bin/true", "true", nullptr); }},
    {"process", Reach::Files, [](const std::string&) { (void)fork(); }},
    {"network", Reach::Files, [](const std::string&) { socket(AF_INET, SOCK_STREAM, 0); }},
    {"another process's end", Reach::Files, [](const std::string&) { kill(getppid(), 0); }},
    {"memory to run", Reach::Files,
     [](const std::string&) { mmap(nullptr, 1, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0); }},
};

bool IsEnded(const Act& act, Reach reach) {
    const TestFolder folder;
    const std::string path = folder.Path().string();
    const pid_t child = fork();
    if (child == 0) {
        if (!Confine(reach)) _exit(2);
        act.run(path);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << "no filter";
    EXPECT_TRUE(WIFEXITED(status) || WTERMSIG(status) == SIGSYS);
    return WIFSIGNALED(status);
}

}  // namespace

TEST(Confinement, EndsWhoReachesFurther) {
    for (const Reach reach : {Reach::OpenFiles, Reach::FilesToRead, Reach::Files}) {
        for (const Act& act : kActs) EXPECT_EQ(IsEnded(act, reach), reach < act.needed) << act.name;
        for (const Act& act : kForbidden) EXPECT_TRUE(IsEnded(act, reach)) << act.name;
    }
}

TEST(Confinement, NothingIsMadeByWhoWasEnded) {
    EXPECT_EQ(tools::MakeConfined([] { return std::vector<uint8_t>(300000, 7); }),
              std::vector<uint8_t>(300000, 7));
    EXPECT_EQ(tools::MakeConfined([] { return std::vector<uint8_t>(static_cast<std::size_t>(getppid())); }),
              std::nullopt);
    EXPECT_EQ(tools::MakeConfined([]() -> std::vector<uint8_t> { throw std::bad_alloc(); }), std::nullopt);
}

// The program itself, while it waits for more of a message: whether it is filtered.
TEST(Confinement, HoldsWhileTrvdumpReads) {
    const TestFolder folder;
    const std::string pipe = folder.Path("m.trv");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const auto& [words, mode] : {std::pair{std::vector<std::string>{}, '2'},
                                      {{"--wav", folder.Path("o.wav")}, '2'},
                                      {{"--video", folder.Path("o.mp4")}, '0'}}) {
        std::vector<std::string> command = {TRVDUMP_PATH};
        command.insert(command.end(), words.begin(), words.end());
        command.push_back(pipe);
        ChildProcess program(command);
        const int writer = open(pipe.c_str(), O_WRONLY);
        ASSERT_EQ(write(writer, "TRV01.01\0\0\0\0\0", 13), 13);
        const std::string wanted = std::string("\nSeccomp:\t") + mode;
        EXPECT_TRUE(watch::Eventually(
            [&] {
                std::ifstream file("/proc/" + std::to_string(program.Pid()) + "/status");
                const std::string status(std::istreambuf_iterator<char>(file), {});
                return status.find(wanted) != std::string::npos;
            },
            std::chrono::seconds(5)))
            << words.size();
        close(writer);
        program.Wait();
    }
}
