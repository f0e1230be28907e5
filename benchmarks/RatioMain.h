#pragma once

#include <benchmark/benchmark.h>

#include <string>

/// One line of a benchmark's closing table: the median of one benchmark divided by that of another, both from
/// the same run, whose repetitions take turns. Absolute times tell more about the machine than about the
/// code.
///
/// @p limit is the highest ratio that the project accepts; 0: the ratio is only reported.
void compare(const std::string& title, const std::string& benchmark, const std::string& reference,
             double limit);

/// Runs all benchmarks of the program nine times each, in turns, and prints the medians and the ratios.
/// @return 1 when a benchmark failed or a ratio is above its limit, else 0.
int runBenchmarks(int argc, char* argv[]);
