#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/framework/winuser.h"
#include "platform/shell/start_program.h"
#include "tests/platform/shell/private_folders.h"
#include "tests/support/watch.h"

namespace {

using std::chrono::seconds;

class StartProgram : public testing::Test {
protected:
    StartProgram() {
        m_folders.Set("PATH", (m_folders.Root() / "bin").string() + ":" + std::getenv("PATH"));
        m_folders.Set("FOLDER", m_folders.Root());
    }

    void Script(const std::string& name, const std::string& content) const {
        PrivateFolders::WriteProgram(m_folders.Root() / "bin" / name, content);
    }
    std::string Report(const std::string& name) const {
        const auto path = m_folders.Root() / name;
        EXPECT_TRUE(watch::Eventually([&] { return std::filesystem::exists(path); }, seconds(10))) << name;
        return PrivateFolders::Read(path);
    }

    PrivateFolders m_folders;
};

TEST_F(StartProgram, GetsItsWordsAndOnlyInTheBackgroundANotification) {
    Script("volume control",
           "#!/bin/sh\ncd \"$FOLDER\"\n"
           "for a; do echo \"<$a>\"; done > part\necho \"$DESKTOP_STARTUP_ID\" >> part\nmv part \"$1\"\n");
    m_folders.Set("DESKTOP_STARTUP_ID", "launcher_TIME99");
    EXPECT_EQ(33U, WinExec("\"volume control\" front  \"two words\"", SW_SHOW));
    EXPECT_EQ("<front>\n<two words>\nlauncher_TIME99\n", Report("front"));
    EXPECT_EQ(33U, WinExec("\"volume control\" back", SW_SHOWNOACTIVATE));
    EXPECT_EQ("<back>\ntrvplayer_TIME1\n", Report("back"));
}

TEST_F(StartProgram, IsNotWaitedForAndLeavesNoZombie) {
    // Its output is closed, so that whoever waits for the end of the tests' own does not wait for it.
    Script("slow", "#!/bin/sh\nexec sleep 3 >/dev/null 2>&1\n");
    const auto begin = watch::Clock::now();
    EXPECT_EQ(33U, WinExec("slow", SW_SHOW));
    EXPECT_LT(watch::Clock::now() - begin, seconds(2));
    EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
    EXPECT_EQ(ECHILD, errno);
}

TEST_F(StartProgram, WhatCannotBeStartedIsReported) {
    PrivateFolders::Write(m_folders.Root() / "bin/no-program", "not for execution\n");
    Script("no-format", "\x01\x02\x03");
    m_folders.MakeFolder("bin/a-folder");
    for (const char* command :
         {"", "  ", "SndVol32.exe", "no-program", "a-folder", "/nowhere/at-all --x", "no-format"}) {
        EXPECT_EQ(2U, WinExec(command, SW_SHOW)) << command;
    }
}

}  // namespace
