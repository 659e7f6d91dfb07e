// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "tools/dump/batch.h"
#include "tools/dump/dump_options.h"
#include "tools/ending_signal.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

// Whether all of standard output has been written; else says why not.
bool IsPrinted() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    std::fprintf(stderr, "trvdump: standard output: cannot be written: %s\n", std::strerror(errno));
    return false;
}

}  // namespace
}  // namespace tools

int main(int argc, char** argv) {
    try {
        const tools::DumpOptions options = tools::ParseDumpOptions(argc, argv);
        if (options.help || options.version) {
            std::fputs(options.help ? tools::kDumpHelp : "trvdump " TRV_VERSION "\n", stdout);
            return tools::IsPrinted() ? tools::kSuccess : tools::kFailure;
        }
        tools::CatchEndingSignals();
        const bool good = tools::TreatAll(options);
        return tools::IsPrinted() && good ? tools::kSuccess : tools::kFailure;
    } catch (const tools::Interrupted&) {
        tools::EndBySignal();
    } catch (const tools::UsageError& error) {
        std::fprintf(stderr, "trvdump: %s\nTry 'trvdump --help'.\n", error.what());
        return tools::kWrongUsage;
    } catch (const std::bad_alloc&) {
        std::fputs("trvdump: out of memory\n", stderr);
        return tools::kFailure;
    }
}
