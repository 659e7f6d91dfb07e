#include "tests/support/run_program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/test_files.h"

namespace {

void Redirect(const std::string& path, int descriptor, int flags) {
    const int file = open(path.c_str(), flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& words) {
    const TestFolder folder;
    const std::string out = folder.Path("out");
    const std::string err = folder.Path("err");
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        Redirect("/dev/null", STDIN_FILENO, O_RDONLY);
        Redirect(out, STDOUT_FILENO, O_WRONLY | O_CREAT);
        Redirect(err, STDERR_FILENO, O_WRONLY | O_CREAT);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto text = [](const std::string& path) {
        const std::vector<uint8_t> bytes = ReadBytes(path);
        return std::string(bytes.begin(), bytes.end());
    };
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text(out), text(err)};
}
