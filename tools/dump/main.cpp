// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "tools/dump/export.h"
#include "tools/dump/message_file.h"
#include "tools/dump/message_report.h"
#include "tools/dump/options.h"
#include "tools/dump/report_json.h"
#include "tools/dump/thumbnail.h"
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

class Program {
public:
    explicit Program(const DumpOptions& options) : options_(options) {}

    int Run() {
        const bool array = options_.json && options_.messages.size() > 1;
        if (array) Print("[\n");
        for (std::size_t i = 0; i < options_.messages.size(); ++i) {
            if (i > 0) Print(options_.json ? ",\n" : "\n");
            Treat(options_.messages[i]);
        }
        if (array) Print("\n]");
        if (options_.json) Print("\n");
        return IsPrinted() ? status_ : kFailure;
    }

private:
    void Treat(const std::string& path) {
        try {
            if (options_.thumbnail) {
                WriteThumbnail(path, *options_.thumbnail,
                               options_.thumbnail_size.value_or(DumpOptions::kThumbnailSize));
                return;
            }
            MessageFile message(path);
            const MessageReport report = ReportOn(message);
            if (options_.Writes()) {
                for (const Warning& warning : report.warnings) {
                    std::fprintf(stderr, "trvdump: %s: warning: %s\n", path.c_str(), warning.text.c_str());
                }
                message.Rewind();
                ExportMessage(message, report, options_);
            }
            if (options_.json) {
                Print(ReportAsJson(report));
            } else if (!options_.Writes()) {
                Print(ReportAsText(report));
            }
        } catch (const ToolError& error) {
            std::fprintf(stderr, "trvdump: %s\n", error.what());
            if (options_.json) Print(ErrorAsJson(path, error.what()));
            status_ = kFailure;
        }
    }

    static void Print(const std::string& text) { std::fputs(text.c_str(), stdout); }

    const DumpOptions& options_;
    int status_ = kSuccess;
};

}  // namespace
}  // namespace tools

int main(int argc, char** argv) {
    try {
        const tools::DumpOptions options = tools::ParseDumpOptions(argc, argv);
        if (options.help || options.version) {
            std::fputs(options.help ? tools::kDumpHelp : "trvdump " TRV_VERSION "\n", stdout);
            return tools::IsPrinted() ? tools::kSuccess : tools::kFailure;
        }
        return tools::Program(options).Run();
    } catch (const tools::UsageError& error) {
        std::fprintf(stderr, "trvdump: %s\nTry 'trvdump --help'.\n", error.what());
        return tools::kWrongUsage;
    } catch (const std::bad_alloc&) {
        std::fputs("trvdump: out of memory\n", stderr);
        return tools::kFailure;
    }
}
