#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QMimeDatabase>
#include <array>
#include <chrono>
#include <cstdio>
#include <thread>

#include "platform/shell/file_type.h"
#include "tests/platform/shell/private_folders.h"

namespace {

constexpr std::string_view icon_bytes = "\x89PNG any bytes";
constexpr std::string_view drawing_bytes = "<svg xmlns=\"http://www.w3.org/2000/svg\"/>";
const std::string mime_type = "application/x-trivelle-message";

std::span<const unsigned char> Bytes(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

FileType Message(const std::string& program = "/opt/a \"player\" for $5 & 100%/trvplayer") {
    return {.extension = ".trv",
            .identifier = "Trivelle.Message",
            .description = "Trivelle Compressed Message",
            .magic = "TRV01.01",
            .program = program,
            .program_name = "Trivelle Message Player",
            .icons = {{48, Bytes(icon_bytes)}, {0, Bytes(drawing_bytes)}}};
}

std::string Output(const std::string& command) {
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> part{};
    while (const std::size_t size = fread(part.data(), 1, part.size(), pipe))
        output.append(part.data(), size);
    const int status = pclose(pipe);
    if (status != 0) output += "exit status " + std::to_string(status);
    return output;
}

class RegisteredFileType : public testing::Test {
protected:
    RegisteredFileType() {
        m_folders.Set("XDG_DATA_DIRS", (m_folders.Root() / "system").string() + ":/usr/share");
        m_folders.Set("XDG_CURRENT_DESKTOP", "");
    }

    std::filesystem::path Package() const { return m_folders.Data() / "mime/packages/trivelle-message.xml"; }
    std::filesystem::path Entry() const { return m_folders.Data() / "applications/trivelle-message.desktop"; }

    // The databases are written in the background, the programs' list last.
    void WaitForDatabases() const {
        for (int i = 0;
             i < 1000 && !std::filesystem::exists(m_folders.Data() / "applications/mimeinfo.cache"); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    // Everything below the home, names and contents.
    std::map<std::string, std::string> Everything() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folders.Root() / "home")) {
            if (entry.is_regular_file()) found[entry.path()] = PrivateFolders::Read(entry.path());
        }
        return found;
    }

    // A program of this name on PATH that only counts its runs.
    void CountRunsOf(const std::string& program) {
        const std::filesystem::path path = m_folders.Root() / "bin" / program;
        PrivateFolders::Write(path, "#!/bin/sh\necho run >> " + (m_folders.Root() / program).string() + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        m_folders.Set("PATH", (m_folders.Root() / "bin").string() + ":" + std::getenv("PATH"));
    }

    PrivateFolders m_folders;
};

TEST_F(RegisteredFileType, TheDesktopsOwnResolversKnowIt) {
    PrivateFolders::Write(m_folders.Root() / "plain/hello.trv", "anything");
    PrivateFolders::Write(m_folders.Root() / "plain/LOUD.TRV", "anything");
    PrivateFolders::Write(m_folders.Root() / "plain/unnamed", "TRV01.01\1\1\1\1\1");
    // A program that really exists, since the resolvers leave out those that do not. (GLib also leaves out
    // one with a per cent sign in its path: it looks for the file before it undoes the doubling.)
    const std::filesystem::path program = m_folders.Root() / "a \"player\" for $5 & more" / "trv`player\\";
    PrivateFolders::Write(
        program, "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" > " + (m_folders.Root() / "opened").string() + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    ASSERT_TRUE(RegisterFileType(Message(program)));
    WaitForDatabases();

    const std::string folder = (m_folders.Root() / "plain/").string();
    for (const char* name : {"hello.trv", "LOUD.TRV", "unnamed"}) {
        EXPECT_EQ(
            mime_type,
            QMimeDatabase().mimeTypeForFile(QString::fromStdString(folder + name)).name().toStdString());
        const std::string info = Output("gio info -a standard::content-type,standard::icon " + folder + name);
        EXPECT_NE(std::string::npos, info.find("standard::content-type: " + mime_type)) << info;
        EXPECT_NE(std::string::npos, info.find("application-x-trivelle-message")) << info;
    }
    EXPECT_EQ("Trivelle Compressed Message",
              QMimeDatabase().mimeTypeForName(QString::fromStdString(mime_type)).comment().toStdString());
    const std::string programs = Output("LC_ALL=C.UTF-8 gio mime " + mime_type);
    EXPECT_NE(std::string::npos,
              programs.find("Default application for “" + mime_type + "”: trivelle-message.desktop"))
        << programs;
    EXPECT_EQ("trivelle-message.desktop\n", Output("xdg-mime query default " + mime_type));
    EXPECT_EQ("", Output("desktop-file-validate " + Entry().string()));

    Output("gio launch " + Entry().string() + " " + folder + "hello.trv");
    for (int i = 0; i < 500 && !std::filesystem::exists(m_folders.Root() / "opened"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(program.string() + "|" + folder + "hello.trv|",
              PrivateFolders::Read(m_folders.Root() / "opened"));

    const std::filesystem::path icons = m_folders.Data() / "icons/hicolor";
    EXPECT_EQ(icon_bytes, PrivateFolders::Read(icons / "48x48/mimetypes/application-x-trivelle-message.png"));
    EXPECT_EQ(drawing_bytes,
              PrivateFolders::Read(icons / "scalable/mimetypes/application-x-trivelle-message.svg"));
}

TEST_F(RegisteredFileType, ASecondStartChangesNothingAndRunsNothing) {
    CountRunsOf("update-mime-database");
    CountRunsOf("update-desktop-database");
    ASSERT_TRUE(RegisterFileType(Message()));
    for (int i = 0; i < 500 && !std::filesystem::exists(m_folders.Root() / "update-desktop-database"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    PrivateFolders::Write(m_folders.Data() / "mime" / (mime_type + ".xml"), "what the update writes");
    const auto before = Everything();
    EXPECT_FALSE(RegisterFileType(Message("/another/program")));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(before, Everything());
    EXPECT_EQ("run\n", PrivateFolders::Read(m_folders.Root() / "update-mime-database"));
    // An update that never came about is made up for.
    std::filesystem::remove(m_folders.Data() / "mime" / (mime_type + ".xml"));
    EXPECT_FALSE(RegisterFileType(Message()));
    for (int i = 0; i < 500; ++i) {
        if (PrivateFolders::Read(m_folders.Root() / "update-mime-database") == "run\nrun\n") break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ("run\nrun\n", PrivateFolders::Read(m_folders.Root() / "update-mime-database"));
}

TEST_F(RegisteredFileType, AnExtensionThatHasATypeIsLeftAlone) {
    struct Case {
        const char* folder;
        const char* globs;
        bool known;
    };
    for (const Case& c : {Case{"home/data", "# comment\n50:video/x-other:*.trv\n", true},
                          {"system", "50:video/x-other:*.TRV:cs\n", true},
                          {"system", "50:video/x-other:*.trv", true},
                          {"system", "50:video/x-other:*.trv2\n50:text/x-trv:trv\n:*.trv\n", false}}) {
        PrivateFolders::Write(m_folders.Root() / c.folder / "mime/globs2", c.globs);
        const auto before = Everything();
        EXPECT_EQ(!c.known, RegisterFileType(Message())) << c.globs;
        EXPECT_EQ(c.known, before == Everything()) << c.globs;
        std::filesystem::remove_all(m_folders.Root() / c.folder / "mime");
    }
}

TEST_F(RegisteredFileType, FilesOfTheUsersOwnAreKept) {
    PrivateFolders::Write(Entry(), "the user's own entry\n");
    PrivateFolders::Write(m_folders.Root() / "elsewhere/list",
                          "[Default Applications]\ntext/plain=ed.desktop\n");
    std::filesystem::permissions(m_folders.Root() / "elsewhere/list",
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    std::filesystem::create_symlink(m_folders.Root() / "elsewhere/list",
                                    m_folders.Config() / "mimeapps.list");
    ASSERT_TRUE(RegisterFileType(Message()));
    EXPECT_EQ("the user's own entry\n", PrivateFolders::Read(Entry()));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folders.Config() / "mimeapps.list"));
    EXPECT_EQ("[Default Applications]\ntext/plain=ed.desktop\n" + mime_type + "=trivelle-message.desktop\n",
              PrivateFolders::Read(m_folders.Root() / "elsewhere/list"));
    struct stat status {};
    ASSERT_EQ(0, stat((m_folders.Root() / "elsewhere/list").c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 0777U);
    WaitForDatabases();
    for (const auto& [name, content] : Everything()) {
        EXPECT_EQ(std::string::npos, name.find("XXXX")) << name;
        EXPECT_TRUE(std::filesystem::path(name).extension() != ".desktop" || name == Entry()) << name;
    }
}

TEST_F(RegisteredFileType, WithoutAnEntryNoListNamesIt) {
    PrivateFolders::Write(Entry().parent_path(), "a file where the folder belongs");
    const auto list = m_folders.Config() / "mimeapps.list";
    PrivateFolders::Write(list, "[Default Applications]\ntext/plain=ed.desktop\n");
    EXPECT_TRUE(RegisterFileType(Message()));
    WaitForDatabases();
    EXPECT_EQ("[Default Applications]\ntext/plain=ed.desktop\n", PrivateFolders::Read(list));
}

TEST_F(RegisteredFileType, WhereNothingCanBeWrittenNothingHappens) {
    // A file where a folder belongs stops even a user that permissions do not.
    PrivateFolders::Write(m_folders.Root() / "file", "");
    m_folders.Set("XDG_DATA_HOME", m_folders.Root() / "file/data");
    m_folders.Set("XDG_CONFIG_HOME", m_folders.Root() / "file/config");
    EXPECT_FALSE(RegisterFileType(Message()));
    m_folders.Set("XDG_DATA_HOME", "relative");
    m_folders.Set("XDG_CONFIG_HOME", "");
    m_folders.Set("HOME", "");
    EXPECT_FALSE(RegisterFileType(Message()));
    EXPECT_TRUE(Everything().empty());
}

TEST(WithDefaultProgram, AddsOneLineAndKeepsTheRest) {
    struct Case {
        const char* list;
        const char* merged;  // null: unchanged
    };
    for (const Case& c : {
             Case{"", "[Default Applications]\na/b=p.desktop\n"},
             {"[Default Applications]\n", "[Default Applications]\na/b=p.desktop\n"},
             {"[Default Applications]", "[Default Applications]\na/b=p.desktop\n"},
             {"[Default Applications]\nx/y=q.desktop\n\n[Added Associations]\na/b=q.desktop",
              "[Default Applications]\nx/y=q.desktop\na/b=p.desktop\n\n[Added "
              "Associations]\na/b=q.desktop\n"},
             {"# mine\n[Added Associations]\nx/y=q.desktop\n",
              "# mine\n[Added Associations]\nx/y=q.desktop\n\n[Default Applications]\na/b=p.desktop\n"},
             {"[Default Applications]\r\nx/y=q.desktop\r\n",
              "[Default Applications]\r\nx/y=q.desktop\r\na/b=p.desktop\r\n"},
             {"[Default Applications]\na/bc=q.desktop\n#a/b=q.desktop\n",
              "[Default Applications]\na/bc=q.desktop\n#a/b=q.desktop\na/b=p.desktop\n"},
             {"[Default Applications]\na/b=q.desktop\n", nullptr},
             {"[Default Applications]\na/b = q.desktop", nullptr},
             {"[Default Applications]\n[Other]\n[Default Applications]\na/b=\n", nullptr},
         }) {
        EXPECT_EQ(c.merged == nullptr ? c.list : c.merged, WithDefaultProgram(c.list, "a/b", "p.desktop"))
            << c.list;
    }
}

}  // namespace
