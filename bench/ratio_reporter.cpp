// SPDX-License-Identifier: MIT
#include "bench/ratio_reporter.h"

#include <time.h>

#include <cstdio>
#include <utility>

RatioReporter::RatioReporter(std::vector<Pair> pairs)
    : ConsoleReporter(OO_Tabular), m_pairs(std::move(pairs)) {}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
        // A benchmark that takes its own time has taken processor time too.
        const bool own_time = !run.run_name.time_type.empty();
        const double time = own_time ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
        m_medians[run.run_name.function_name] = time * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
}

void RatioReporter::Finalize() {
    ConsoleReporter::Finalize();
    std::printf("\nRatios of medians\n");
    for (const Pair& pair : m_pairs) {
        const auto numerator = m_medians.find(pair.numerator);
        const auto denominator = m_medians.find(pair.denominator);
        if (numerator == m_medians.end() || denominator == m_medians.end()) continue;
        std::printf("%-58s %10.1f us / %9.1f us = %6.3f  (%s)\n", pair.what.c_str(), numerator->second / 1e3,
                    denominator->second / 1e3, numerator->second / denominator->second, pair.aim.c_str());
    }
}

int RunBenchmarks(int argc, char** argv, std::vector<RatioReporter::Pair> pairs) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string defaults[] = {"--benchmark_repetitions=15", "--benchmark_enable_random_interleaving=true",
                              "--benchmark_min_time=0.05", "--benchmark_display_aggregates_only=true"};
    // What the command line says comes later and so holds.
    for (std::string& option : defaults) arguments.insert(arguments.begin() + 1, option.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    RatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

double ThreadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}
