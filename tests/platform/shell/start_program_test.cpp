// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/framework/winuser.h"
#include "platform/shell/start_program.h"
#include "tests/platform/shell/private_folders.h"
#include "tests/support/watch.h"

namespace {

using std::chrono::seconds;

class StartProgram : public testing::Test {
protected:
    std::string Report(const std::string& name) const {
        const auto path = m_folders.Root() / name;
        EXPECT_TRUE(watch::Eventually([&] { return std::filesystem::exists(path); }, seconds(10))) << name;
        return PrivateFolders::Read(path);
    }

    PrivateFolders m_folders;
};

TEST_F(StartProgram, GetsItsWordsAndOnlyInTheBackgroundANotification) {
    m_folders.WriteProgram(
        "volume control",
        "#!/bin/sh\ncd \"$HOME/..\"\n"
        "for a; do echo \"<$a>\"; done > part\necho \"$DESKTOP_STARTUP_ID\" >> part\nmv part \"$1\"\n");
    PrivateFolders::Set("DESKTOP_STARTUP_ID", "launcher_TIME99");
    EXPECT_EQ(33U, WinExec("\"volume control\" front  \"two words\"", SW_SHOW));
    EXPECT_EQ("<front>\n<two words>\nlauncher_TIME99\n", Report("front"));
    EXPECT_EQ(33U, WinExec("\"volume control\" back", SW_SHOWNOACTIVATE));
    EXPECT_EQ("<back>\ntrvplayer_TIME1\n", Report("back"));
}

TEST_F(StartProgram, IsNotWaitedFor) {
    // Its output is closed, so that whoever waits for the end of the tests' own does not wait for it.
    m_folders.WriteProgram("slow", "#!/bin/sh\nexec sleep 3 >/dev/null 2>&1\n");
    const auto begin = watch::Clock::now();
    EXPECT_EQ(33U, WinExec("slow", SW_SHOW));
    EXPECT_LT(watch::Clock::now() - begin, seconds(2));
}

TEST_F(StartProgram, WhatCannotBeStartedIsReported) {
    PrivateFolders::Write(m_folders.Root() / "bin/no-program", "not for execution\n");
    m_folders.WriteProgram("no-format", "\x01\x02\x03");
    for (const char* command :
         {"", "  ", "SndVol32.exe", "no-program", "..", "/nowhere/at-all --x", "no-format"}) {
        EXPECT_EQ(2U, WinExec(command, SW_SHOW)) << command;
    }
}

}  // namespace
