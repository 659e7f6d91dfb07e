// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

// Prints what Google Benchmark prints and then, for pairs of benchmarks, the ratio of their medians. Ratios
// in one run hold on any machine; times do not.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    struct Pair {
        std::string what;
        std::string numerator;  // names of benchmarks; a missing one leaves the line out
        std::string denominator;
        std::string aim;
    };

    explicit RatioReporter(std::vector<Pair> pairs);
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    std::vector<Pair> m_pairs;
    std::map<std::string, double> m_medians;  // by name, in ns
};

// Runs all benchmarks of the program: the whole of main. Repetitions are interleaved at random, so that a
// slow moment of the machine falls on both sides of a ratio.
int RunBenchmarks(int argc, char** argv, std::vector<RatioReporter::Pair> pairs);

// Processor time that this thread has used.
double ThreadSeconds();
