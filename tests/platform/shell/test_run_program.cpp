#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/framework/winuser.h"
#include "platform/shell/run_program.h"
#include "tests/platform/shell/child_process.h"
#include "tests/platform/shell/private_folders.h"

namespace {

std::string WaitForFile(const std::filesystem::path& path) {
    for (int i = 0; i < 500; ++i) {
        if (std::filesystem::exists(path)) return PrivateFolders::Read(path);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return "missing";
}

class RunProgram : public testing::Test {
protected:
    RunProgram() {
        // Writes its arguments to a file, and what differs from a fresh process: session and blocked signals.
        Script(
            "volume control",
            "#!/bin/sh\nfor a; do echo \"<$a>\"; done > report.part\n"
            "grep -q \"^NSsid:.*[^0-9]$SESSION\\$\" /proc/$$/status || echo apart >> report.part\n"
            "grep -E 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t' >> report.part\nmv report.part report\n");
        // Its output is closed, so that whoever waits for the end of the tests' own does not wait for it.
        Script("slow", "#!/bin/sh\nexec sleep 3 >/dev/null 2>&1\n");
        Script("no-program", "not for execution\n", false);
        Script("no-format", std::string("\x01\x02\x03\x04", 4));
        std::filesystem::create_directory(m_folders.Root() / "bin/a-folder");
        m_folders.Set("PATH", (m_folders.Root() / "empty").string() + ":" +
                                  (m_folders.Root() / "bin").string() + ":" + std::getenv("PATH"));
        m_folders.Set("SESSION", std::to_string(getsid(0)));
        m_before = std::filesystem::current_path();
        std::filesystem::current_path(m_folders.Root());
    }
    ~RunProgram() override { std::filesystem::current_path(m_before); }

    void Script(const std::string& name, const std::string& content, bool executable = true) {
        PrivateFolders::Write(m_folders.Root() / "bin" / name, content);
        if (executable) {
            std::filesystem::permissions(m_folders.Root() / "bin" / name, std::filesystem::perms::owner_all);
        }
    }

    PrivateFolders m_folders;
    std::filesystem::path m_before;
};

TEST_F(RunProgram, AProgramOnPathRunsWithItsWordsAndLeavesNoZombie) {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    EXPECT_LT(31U, WinExec("\"volume control\" --tab  3 \"two words\" \"\"", SW_SHOW));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    // The shell itself blocks nothing, so what it reports was inherited.
    EXPECT_EQ("<--tab>\n<3>\n<two words>\n<>\napart\nSigBlk:0000000000000000\nSigIgn:0000000000000000\n",
              WaitForFile("report"));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
    EXPECT_EQ(ECHILD, errno);
}

TEST_F(RunProgram, OnlyAProgramThatIsToStayInTheBackgroundIsToldSo) {
    Script("who", "#!/bin/sh\necho \"$DESKTOP_STARTUP_ID $MARK\" > part\nmv part \"$1\"\n");
    m_folders.Set("DESKTOP_STARTUP_ID", "launcher_TIME99");
    m_folders.Set("MARK", "kept");
    EXPECT_LT(31U, WinExec("who front", SW_SHOW));
    EXPECT_EQ("launcher_TIME99 kept\n", WaitForFile("front"));
    EXPECT_LT(31U, WinExec("who back", SW_SHOWNOACTIVATE));
    EXPECT_EQ("trvplayer_TIME1 kept\n", WaitForFile("back"));
}

TEST_F(RunProgram, ItDoesNotWaitForTheProgram) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_LT(31U, WinExec("slow", SW_SHOW));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST_F(RunProgram, WhatCannotBeStartedIsReported) {
    struct Case {
        const char* command;
        UINT result;
    };
    for (const Case& c : {Case{"", 2},
                          {"  ", 2},
                          {"SndVol32.exe", 2},
                          {"no-program", 2},
                          {"a-folder", 2},
                          {"/nowhere/at-all --x", 2},
                          {"no-format", 11}}) {
        EXPECT_EQ(c.result, WinExec(c.command, SW_SHOW)) << c.command;
    }
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
}

TEST_F(RunProgram, RelativeFoldersOnPathAreNotSearched) {
    m_folders.Set("PATH", "bin::.");
    EXPECT_EQ("", FindProgram("volume control"));
    EXPECT_EQ("bin/volume control", FindProgram("bin/volume control"));
}

}  // namespace
