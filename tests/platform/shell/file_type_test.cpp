// SPDX-License-Identifier: MIT
#include "platform/shell/file_type.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "tests/platform/shell/private_folders.h"
#include "tests/support/run_program.h"
#include "tests/support/watch.h"

namespace {

constexpr std::string_view drawing = "<svg xmlns=\"http://www.w3.org/2000/svg\"/>";
const std::string mime_type = "application/x-trivelle-message";

FileType Message(const std::string& program) {
    return {.extension = ".trv",
            .identifier = "Trivelle.Message",
            .description = "Trivelle Compressed Message",
            .magic = "TRV01.01",
            .program = program,
            .program_name = "Trivelle Message Player",
            .installed_entry = "com.trivelle.MessagePlayer.desktop",
            .icon = {reinterpret_cast<const unsigned char*>(drawing.data()), drawing.size()}};
}

class RegisteredFileType : public testing::Test {
protected:
    RegisteredFileType() {
        // Not the machine's own, which may have the player installed.
        PrivateFolders::Set("XDG_DATA_DIRS", m_folders.Root() / "system");
        PrivateFolders::Set("XDG_CURRENT_DESKTOP", "");
        PrivateFolders::Set("LC_ALL", "C.UTF-8");
    }

    std::filesystem::path Data() const { return m_folders.Root() / "home/data"; }
    std::filesystem::path Entry() const { return Data() / "applications/trivelle-message.desktop"; }

    // The databases are written in the background, the programs' list last.
    void WaitForDatabases() const {
        EXPECT_TRUE(
            Eventually([&] { return std::filesystem::exists(Data() / "applications/mimeinfo.cache"); }));
    }
    static bool Eventually(const std::function<bool()>& condition) {
        return watch::Eventually(condition, std::chrono::seconds(20));
    }

    // Everything below the home, names and contents.
    std::map<std::string, std::string> Everything() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folders.Root() / "home")) {
            if (entry.is_regular_file()) found[entry.path()] = PrivateFolders::Read(entry.path());
        }
        return found;
    }

    PrivateFolders m_folders;
};

TEST_F(RegisteredFileType, TheDesktopsOwnResolversKnowIt) {
    const std::string folder = (m_folders.Root() / "plain/").string();
    PrivateFolders::Write(folder + "hello.trv", "anything");
    PrivateFolders::Write(folder + "LOUD.TRV", "anything");
    PrivateFolders::Write(folder + "unnamed", "TRV01.01\1\1\1\1\1");
    // A program that really exists, since the resolvers leave out those that do not. (GLib also leaves out
    // one with a per cent sign in its path: it looks for the file before it undoes the doubling.)
    const std::string name = "a \"player\" for $5 & more/trv`player\\";
    const std::filesystem::path program = m_folders.Root() / "bin" / name;
    const std::filesystem::path opened = m_folders.Root() / "opened";
    m_folders.WriteProgram(name, "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" > " + opened.string() + "\n");
    RegisterFileType(Message(program));
    WaitForDatabases();

    for (const char* file : {"hello.trv", "LOUD.TRV", "unnamed"}) {
        const std::string info =
            RunProgram({"gio", "info", "-a", "standard::content-type,standard::icon", folder + file}).out;
        EXPECT_NE(std::string::npos, info.find("standard::content-type: " + mime_type)) << info;
        EXPECT_NE(std::string::npos, info.find("application-x-trivelle-message")) << info;
    }
    const std::string programs = RunProgram({"gio", "mime", mime_type}).out;
    EXPECT_NE(std::string::npos,
              programs.find("Default application for “" + mime_type + "”: trivelle-message.desktop"))
        << programs;
    EXPECT_EQ("trivelle-message.desktop\n", RunProgram({"xdg-mime", "query", "default", mime_type}).out);
    const ProgramRun validated = RunProgram({"desktop-file-validate", Entry().string()});
    EXPECT_EQ("", validated.out + validated.err);
    EXPECT_EQ(0, validated.status);
    EXPECT_EQ(drawing, PrivateFolders::Read(Data() / "icons/hicolor/scalable/mimetypes" /
                                            "application-x-trivelle-message.svg"));

    RunProgram({"gio", "launch", Entry().string(), folder + "hello.trv"});
    EXPECT_TRUE(Eventually([&] {
        return PrivateFolders::Read(opened) == program.string() + "|" + folder + "hello.trv|";
    })) << PrivateFolders::Read(opened);
}

TEST_F(RegisteredFileType, ASecondStartChangesNothingAndMakesUpForAnUpdateThatWasCutShort) {
    // The program in place of the desktop's own counts its runs.
    const auto runs = m_folders.Root() / "runs";
    m_folders.WriteProgram("update-mime-database", "#!/bin/sh\necho run >> " + runs.string() + "\n");
    RegisterFileType(Message("/bin/sh"));
    EXPECT_TRUE(Eventually([&] { return PrivateFolders::Read(runs) == "run\n"; }));
    WaitForDatabases();
    PrivateFolders::Write(Data() / "mime" / (mime_type + ".xml"), "what the update writes");
    const auto before = Everything();
    RegisterFileType(Message("/another/program"));
    EXPECT_EQ(before, Everything());
    std::filesystem::remove(Data() / "mime" / (mime_type + ".xml"));
    RegisterFileType(Message("/bin/sh"));
    EXPECT_TRUE(Eventually([&] { return PrivateFolders::Read(runs) == "run\nrun\n"; }));
}

TEST_F(RegisteredFileType, WhatTheDesktopKnowsAlreadyIsLeftAlone) {
    using Case = std::tuple<const char*, const char*, bool>;
    for (const auto& [file, content, known] :
         {Case{"home/data/mime/globs2", "# comment\n50:video/x-other:*.trv\n", true},
          {"system/mime/globs2", "50:video/x-other:*.TRV:cs\n", true},
          {"system/mime/globs2", "50:video/x-other:*.trv", true},
          {"system/mime/globs2", "50:x/other:*.trv2\n50:x/trv:trv\n:*.trv\n", false},
          {"system/applications/com.trivelle.MessagePlayer.desktop", "", true},
          {"system/applications/com.trivelle.Other.desktop", "", false}}) {
        PrivateFolders::Write(m_folders.Root() / file, content);
        const auto before = Everything();
        RegisterFileType(Message("/bin/sh"));
        EXPECT_EQ(known, before == Everything()) << file << ": " << content;
        if (!known) WaitForDatabases();
        std::filesystem::remove_all(Data());
        std::filesystem::remove_all(m_folders.Root() / "system");
    }
}

TEST_F(RegisteredFileType, OnlyAnUnchangedEntryOfItsOwnWhoseProgramHasGoneIsRenewed) {
    PrivateFolders::Write(Entry(), "the user's own entry\n");
    RegisterFileType(Message("/bin/sh"));
    WaitForDatabases();
    EXPECT_EQ("the user's own entry\n", PrivateFolders::Read(Entry()));
    std::filesystem::remove_all(Data());
    const auto program = m_folders.Root() / "bin" / "a % \\player";
    m_folders.WriteProgram("a % \\player", "");
    RegisterFileType(Message(program));
    WaitForDatabases();
    const std::string written = PrivateFolders::Read(Entry());
    RegisterFileType(Message("/new/program"));
    EXPECT_EQ(written, PrivateFolders::Read(Entry()));
    std::filesystem::remove(program);
    for (const std::string& others :
         {written + "NoDisplay=true\n", std::string("[Desktop Entry]\nExec=/gone\n"), std::string(),
          written.substr(0, written.find("player"))}) {
        PrivateFolders::Write(Entry(), others);
        RegisterFileType(Message("/new/program"));
        EXPECT_EQ(others, PrivateFolders::Read(Entry()));
    }
    PrivateFolders::Write(Entry(), written);
    RegisterFileType(Message("/new/program"));
    EXPECT_NE(std::string::npos, PrivateFolders::Read(Entry()).find("\nExec=\"/new/program\" %f\n"));
}

TEST_F(RegisteredFileType, WhereNothingCanBeWrittenNothingHappens) {
    // A file where a folder belongs stops even a user that permissions do not.
    PrivateFolders::Write(m_folders.Root() / "file", "");
    PrivateFolders::Set("XDG_DATA_HOME", m_folders.Root() / "file/data");
    RegisterFileType(Message("/bin/sh"));
    PrivateFolders::Set("XDG_DATA_HOME", "relative");
    PrivateFolders::Set("HOME", "");
    RegisterFileType(Message("/bin/sh"));
    EXPECT_TRUE(Everything().empty());
}

}  // namespace
