#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

/// One line of a benchmark's closing table: the median of one benchmark divided by that of another, both from
/// the same run, whose repetitions take turns. Absolute times tell more about the machine than about the
/// code.
///
/// @p target: the ratio that the project wants at most; 0: the ratio is only reported. Above it is a failure
/// unless there is a @p bound, which is given where measurements prove that the target cannot be met: then
/// the line says that the target is missed, and above the bound is a failure.
void compare(const std::string& title, const std::string& benchmark, const std::string& reference,
             double target, double bound = 0);

/// The same where a benchmark @p least shows the least that the work takes, and a second line for that one.
/// Where the least itself is above the target, the target cannot be met, and the bound is a fifth above the
/// least, both as this run measures them.
void compareWithLeast(const std::string& title, const std::string& benchmark, const std::string& reference,
                      const std::string& least, double target);

/// One line more: the exponent with which the time of a benchmark grows from size to size, fitted over
/// "@p benchmark/SIZE" of all @p sizes: 1 is linear.
///
/// @p target and @p bound as above.
void growth(const std::string& title, const std::string& benchmark, const std::vector<int>& sizes,
            double target, double bound = 0);

/// One line more, of a ratio that is no ratio of times; @p target as above.
void report(const std::string& title, double ratio, double target);

/// Prints the lines of a program that has no benchmarks, as runBenchmarks() does; @p program: its argv[0].
int printReports(const std::string& program);

/// Keeps this thread, and those it starts from now on, on one processor, and has lines compare processor
/// times, which what else the machine does hardly changes. For programs that ask no service while they
/// measure: it would have to share the processor, and its time would not count.
void stayOnOneProcessor();

/// Has the processor's caches hold other things, as after a host's own work, while the clock of @p state
/// stands: what a small list would leave there would make it look quicker, one by one, than a large one.
void fillCaches(benchmark::State& state);

/// Runs all benchmarks of the program nine times each, in turns, and prints the medians and the ratios.
///
/// The lines also go to the file that the environment variable KV_RATIOS names, behind what it holds:
/// program, title, ratio, target and bound, with tabs between them.
/// @return 1 when a benchmark failed or a ratio is above its bound or, without one, its target; else 0.
int runBenchmarks(int argc, char* argv[]);
