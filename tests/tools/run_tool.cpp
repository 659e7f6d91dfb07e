#include "tests/tools/run_tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QByteArray>
#include <QCryptographicHash>
#include <iterator>

#include "playback/message_format.h"

namespace {

std::string Text(const std::filesystem::path& path) {
    const std::vector<uint8_t> bytes = ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

void Redirect(const std::string& path, int descriptor, int flags) {
    const int file = open(path.c_str(), flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
}

}  // namespace

ToolRun RunTool(const std::string& program, const std::vector<std::string>& arguments) {
    const TestFolder folder;
    const std::string out = folder.Path("out");
    const std::string err = folder.Path("err");
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& word : arguments) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        Redirect("/dev/null", STDIN_FILENO, O_RDONLY);
        Redirect(out, STDOUT_FILENO, O_WRONLY | O_CREAT);
        Redirect(err, STDERR_FILENO, O_WRONLY | O_CREAT);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Text(out), Text(err)};
}

ToolRun RunTrvdump(const std::vector<std::string>& arguments) {
    return RunTool(TRVDUMP_PATH, arguments);
}

ToolRun RunTrvmake(const std::vector<std::string>& arguments) {
    return RunTool(TRVMAKE_PATH, arguments);
}

std::string Sha256(const std::vector<uint8_t>& bytes) {
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex().toStdString();
}

std::vector<uint8_t> MessageHeader(uint8_t rate, uint32_t frame_count) {
    std::vector<uint8_t> message(std::begin(kMessageMagic), std::end(kMessageMagic));
    message.push_back(rate);
    for (int shift = 0; shift < 32; shift += 8) message.push_back(static_cast<uint8_t>(frame_count >> shift));
    return message;
}

void AppendSpeech(std::vector<uint8_t>& message, uint8_t filler) {
    message.push_back(kSpeechRecord);
    message.insert(message.end(), kSpeechBlockBytes, filler);
}

void AppendVideo(std::vector<uint8_t>& message, unsigned length_field, const std::vector<uint8_t>& payload) {
    message.push_back(kVideoRecord);
    message.push_back(static_cast<uint8_t>(length_field));
    message.push_back(static_cast<uint8_t>(length_field >> 8));
    message.insert(message.end(), payload.begin(), payload.end());
}
