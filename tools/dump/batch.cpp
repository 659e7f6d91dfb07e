// SPDX-License-Identifier: MIT
#include "tools/dump/batch.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "tools/dump/confinement.h"
#include "tools/dump/message_task.h"
#include "tools/dump/sound_file_output.h"
#include "tools/ending_signal.h"
#include "tools/progress.h"

namespace tools {
namespace {

void Print(const std::string& text, std::FILE* stream = stdout) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

// Films and the sound that libsndfile does not know are ffmpeg's.
bool StartsPrograms(const DumpOptions& options) {
    if (options.video) return true;
    return options.audio && options.audio_form != FindSaveForm("wav") && !IsLibraryForm(*options.audio_form);
}

class Batch {
public:
    explicit Batch(const DumpOptions& options)
        : options_(options),
          results_(options.messages.size()),
          progress_(options.messages.size() == 1
                        ? "trvdump: " + options.messages[0]
                        : "trvdump: " + std::to_string(options.messages.size()) + " messages") {
        const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
        const unsigned jobs = options.jobs == 0 ? cores : options.jobs;
        jobs_ = static_cast<unsigned>(std::min<std::size_t>(jobs, results_.size()));
        threads_ = std::max(cores / jobs_, 1U);
    }

    bool Run() {
        // A thumbnail is drawn in a process of its own, and a single message described once it is open.
        if (options_.Writes() && !StartsPrograms(options_)) Confine(Reach::Files);
        if (!options_.Writes() && results_.size() > 1) Confine(Reach::FilesToRead);
        // A single message stays on this thread, whose reads a signal interrupts.
        std::vector<std::jthread> workers;
        if (results_.size() == 1) {
            Work();
        } else {
            for (unsigned i = 0; i < jobs_; ++i) workers.emplace_back([this] { Work(); });
        }
        bool good = true;
        const bool array = options_.json && results_.size() > 1;
        if (array) Print("[\n");
        for (std::size_t i = 0; i < results_.size(); ++i) {
            const TaskResult result = Await(i);
            if (i > 0 && !options_.json_lines)
                Print(options_.json ? ",\n" : result.printed.empty() ? "" : "\n");
            Print(result.printed);
            if (options_.json_lines) std::fflush(stdout);
            Print(result.complaints, stderr);
            good = good && !result.failed;
        }
        if (array) Print("\n]");
        if (options_.json) Print("\n");
        return good;
    }

private:
    void Work() {
        for (std::size_t i = 0; (i = next_++) < results_.size();) {
            std::optional<TaskResult> result;
            std::exception_ptr ending;
            double share = 0;
            double played = 0;
            const TaskWatch watch = [&](double new_share, double new_played) {
                ThrowIfInterrupted();
                Show(new_share - share, new_played - played);
                share = new_share;
                played = new_played;
            };
            try {
                result = TreatMessage(options_, options_.messages[i], threads_, watch);
                Show(1 - share, 0);
            } catch (...) {
                ending = std::current_exception();
            }
            const std::scoped_lock lock(mutex_);
            results_[i] = result;
            if (ending && !ending_) ending_ = ending;
            changed_.notify_all();
            if (ending) return;
        }
    }

    void Show(double share, double played) {
        const std::scoped_lock lock(mutex_);
        done_ += share;
        played_ += played;
        progress_.Show(done_ / static_cast<double>(results_.size()), played_);
    }

    TaskResult Await(std::size_t i) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return results_[i] || ending_; });
        if (!results_[i]) std::rethrow_exception(ending_);
        return *std::exchange(results_[i], TaskResult());
    }

    const DumpOptions& options_;
    unsigned jobs_;
    unsigned threads_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::optional<TaskResult>> results_;
    std::exception_ptr ending_;
    double done_ = 0;    // messages
    double played_ = 0;  // seconds of them
    Progress progress_;
};

}  // namespace

bool TreatAll(const DumpOptions& options) {
    return Batch(options).Run();
}

}  // namespace tools
