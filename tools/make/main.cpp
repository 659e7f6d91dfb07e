// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "tools/ending_signal.h"
#include "tools/make/make_message.h"
#include "tools/make/make_options.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

int Run(int argc, char** argv) {
    MakeOptions options;
    try {
        options = ParseMakeOptions(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "trvmake: %s\nTry 'trvmake --help'.\n", error.what());
        return 2;
    }
    if (options.help) {
        std::fputs(kMakeHelp, stdout);
        return 0;
    }
    if (options.version) {
        std::puts("trvmake " TRV_VERSION);
        return 0;
    }
    CatchEndingSignals();
    try {
        MakeMessage(options);
    } catch (const Interrupted&) {
        EndBySignal();
    } catch (const ToolError& error) {
        std::fprintf(stderr, "trvmake: %s\n", error.what());
        return 1;
    } catch (const std::bad_alloc&) {
        std::fputs("trvmake: out of memory\n", stderr);
        return 1;
    }
    return 0;
}

}  // namespace
}  // namespace tools

int main(int argc, char** argv) {
    // Tells the image reader where its format plug-ins are; needs no display.
    int qt_argc = 1;
    const QCoreApplication application(qt_argc, argv);
    return tools::Run(argc, argv);
}
