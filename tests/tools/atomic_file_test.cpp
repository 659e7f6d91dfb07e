// SPDX-License-Identifier: MIT
#include "tools/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <span>
#include <vector>

#include "tests/support/test_files.h"
#include "tools/tool_error.h"

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

const Bytes kOld = {'o', 'l', 'd'};
const Bytes kNew = {'n', 'e', 'w'};

TEST(AtomicFile, AppearsWholeOrNotAtAll) {
    const TestFolder folder;
    const fs::path path = folder.Path("m");
    WriteBytes(path, kOld);
    {
        tools::AtomicFile abandoned(path);
        abandoned.Write(kNew);
    }
    EXPECT_EQ(ReadBytes(path), kOld);
    EXPECT_EQ(folder.Names().size(), 1U);

    tools::AtomicFile file(path);
    file.Write(kNew);
    file.Write(kNew);
    file.Overwrite(1, std::span(kNew).first(1));
    file.Write(kNew);
    EXPECT_EQ(ReadBytes(path), kOld);
    file.Commit();
    EXPECT_EQ(ReadBytes(path), (Bytes{'n', 'n', 'w', 'n', 'e', 'w', 'n', 'e', 'w'}));
    EXPECT_EQ(folder.Names().size(), 1U);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(static_cast<unsigned>(fs::status(path).permissions()), 0666U & ~mask);
}

TEST(AtomicFile, LinksStayAndDevicesAreNotReplaced) {
    const TestFolder folder;
    WriteBytes(folder.Path("target"), kOld);
    fs::create_symlink("target", folder.Path("link"));
    tools::AtomicFile file(folder.Path("link"));
    file.Write(kNew);
    file.Commit();
    EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
    EXPECT_EQ(ReadBytes(folder.Path("target")), kNew);
    EXPECT_THROW(tools::AtomicFile{"/dev/null"}, tools::ToolError);
}
