#include "tools/encode/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/test_files.h"
#include "tools/tool_error.h"

namespace {

namespace fs = std::filesystem;

constexpr std::array<uint8_t, 3> kBytes = {'n', 'e', 'w'};

class AtomicFileTest : public testing::Test {
protected:
    static void Put(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }
    static std::string Get(const fs::path& path) {
        std::string text;
        std::getline(std::ifstream(path), text);
        return text;
    }

    TestFolder m_folder;
};

}  // namespace

TEST_F(AtomicFileTest, AppearsWholeOrNotAtAll) {
    const fs::path path = m_folder.Path() / "m";
    Put(path, "old");
    {
        tools::AtomicFile abandoned(path);
        abandoned.Write(kBytes);
    }
    EXPECT_EQ(Get(path), "old");
    EXPECT_EQ(m_folder.Names().size(), 1U);

    tools::AtomicFile file(path);
    file.Write(kBytes);
    file.Write(kBytes);
    file.Overwrite(1, std::span(kBytes).first(1));
    file.Write(kBytes);
    EXPECT_EQ(Get(path), "old");
    file.Commit();
    EXPECT_EQ(Get(path), "nnwnewnew");
    EXPECT_EQ(m_folder.Names().size(), 1U);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(static_cast<unsigned>(fs::status(path).permissions()), 0666U & ~mask);
}

TEST_F(AtomicFileTest, LinksStayAndOtherThingsAreNotReplaced) {
    Put(m_folder.Path() / "target", "old");
    fs::create_symlink("target", m_folder.Path() / "link");
    tools::AtomicFile file(m_folder.Path() / "link");
    file.Write(kBytes);
    file.Commit();
    EXPECT_TRUE(fs::is_symlink(m_folder.Path() / "link"));
    EXPECT_EQ(Get(m_folder.Path() / "target"), "new");

    EXPECT_THROW(tools::AtomicFile{m_folder.Path()}, tools::ToolError);
    EXPECT_THROW(tools::AtomicFile{"/dev/null"}, tools::ToolError);
    EXPECT_THROW(tools::AtomicFile{m_folder.Path() / "none" / "m"}, tools::ToolError);
}
