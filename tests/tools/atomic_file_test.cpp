#include "tools/encode/atomic_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "tools/tool_error.h"

namespace {

namespace fs = std::filesystem;

constexpr std::array<uint8_t, 3> kBytes = {'n', 'e', 'w'};

class AtomicFileTest : public testing::Test {
protected:
    AtomicFileTest() {
        std::string name = (fs::temp_directory_path() / "trvatomic.XXXXXX").string();
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    ~AtomicFileTest() override { fs::remove_all(folder_); }

    static void Put(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }
    static std::string Get(const fs::path& path) {
        std::string text;
        std::getline(std::ifstream(path), text);
        return text;
    }
    auto FileCount() const {
        return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
    }

    fs::path folder_;
};

}  // namespace

TEST_F(AtomicFileTest, AppearsWholeOrNotAtAll) {
    const fs::path path = folder_ / "m";
    Put(path, "old");
    {
        tools::AtomicFile abandoned(path);
        abandoned.Write(kBytes);
    }
    EXPECT_EQ(Get(path), "old");
    EXPECT_EQ(FileCount(), 1);

    tools::AtomicFile file(path);
    file.Write(kBytes);
    file.Write(kBytes);
    file.Overwrite(1, std::span(kBytes).first(1));
    file.Write(kBytes);
    EXPECT_EQ(Get(path), "old");
    file.Commit();
    EXPECT_EQ(Get(path), "nnwnewnew");
    EXPECT_EQ(FileCount(), 1);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(static_cast<unsigned>(fs::status(path).permissions()), 0666U & ~mask);
}

TEST_F(AtomicFileTest, LinksStayAndOtherThingsAreNotReplaced) {
    Put(folder_ / "target", "old");
    fs::create_symlink("target", folder_ / "link");
    tools::AtomicFile file(folder_ / "link");
    file.Write(kBytes);
    file.Commit();
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_EQ(Get(folder_ / "target"), "new");

    EXPECT_THROW(tools::AtomicFile{folder_}, tools::ToolError);
    EXPECT_THROW(tools::AtomicFile{"/dev/null"}, tools::ToolError);
    EXPECT_THROW(tools::AtomicFile{folder_ / "none" / "m"}, tools::ToolError);
}
