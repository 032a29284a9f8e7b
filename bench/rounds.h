// Runs subjects in rounds: each round runs every subject once, in an order of its own, so that what
// slows the machine for a while slows all of them alike.
#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Subject {
    std::string name;
    std::function<void(benchmark::State &)> run;
    benchmark::IterationCount iterations; ///< per round
};

/// Subjects that are compared with each other: they stay neighbours, in whatever order.
using Group = std::vector<Subject>;

/// What the command line asks for, beside Google Benchmark's own options.
struct Options {
    int rounds = 0;
    std::string json; ///< where the results go, as Google Benchmark writes them; a round is a repetition
};

/// Ends the program when the command line or the environment is not fit for measuring.
Options parse(int argc, char **argv, int default_rounds);

/// Returns the program's exit status: 0, or 2 when a subject could not be measured.
int run_rounds(std::vector<Group> groups, const Options &options);

/// Does it and returns its exit status; 2, having said why, when it throws.
int measured(const std::function<int()> &run);

} // namespace bench
