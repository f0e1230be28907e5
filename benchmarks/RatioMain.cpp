#include "RatioMain.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <vector>

#ifdef __linux__
#include <sched.h>
#endif

namespace {

class MedianReporter;

// Whether only the processor time of this thread counts, which what else the machine does hardly changes.
bool byProcessorTime = false;

using Figure = std::function<double(const MedianReporter&)>;

// A line of the closing table; its figure is 0 when what it needs was filtered out on the command line.
struct Line
{
    std::string title;
    Figure figure;
    double target;
    Figure bound;
};

Figure always(double value)
{
    return [value](const MedianReporter&) {
        return value;
    };
}

std::vector<Line>& lines()
{
    static std::vector<Line> list;
    return list;
}

// Prints as usual and keeps the medians.
class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            m_failed = m_failed || run.error_occurred;
            if (run.aggregate_name == "median")
                m_medians[run.run_name.str()] =
                    byProcessorTime ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    double median(const std::string& name) const
    {
        for (const auto& entry : m_medians) {
            // Behind the name as registered stand marks such as "/real_time".
            if (entry.first == name || entry.first.rfind(name + '/', 0) == 0)
                return entry.second;
        }
        return 0;
    }

    bool hasFailed() const { return m_failed; }

private:
    std::map<std::string, double> m_medians;
    bool m_failed = false;
};

// Whether a line is above its limit.
bool printLines(const std::string& path, const MedianReporter& reporter)
{
    const std::string program = path.substr(path.rfind('/') + 1);
    const char* const file = std::getenv("KV_RATIOS");
    std::ofstream kept;
    if (file)
        kept.open(file, std::ios::app);
    bool above = false;
    std::printf("\n");
    for (const Line& line : lines()) {
        const double ratio = line.figure(reporter);
        if (ratio <= 0)
            continue;
        const double bound = line.bound(reporter);
        const double limit = bound > 0 ? bound : line.target;
        std::printf("ratio  %-52s %6.2f", line.title.c_str(), ratio);
        if (line.target > 0)
            std::printf("   target %.2f%s", line.target, ratio > line.target ? " missed" : "");
        if (bound > 0)
            std::printf("   bound %.2f", bound);
        if (limit > 0 && ratio > limit) {
            std::printf("   ABOVE");
            above = true;
        }
        std::printf("\n");
        kept << program << '\t' << line.title << '\t' << ratio << '\t' << line.target << '\t' << bound
             << '\n';
    }
    return above;
}

} // namespace

namespace {

Figure ratioOf(const std::string& benchmark, const std::string& reference)
{
    return [=](const MedianReporter& reporter) {
        const double divisor = reporter.median(reference);
        return divisor > 0 ? reporter.median(benchmark) / divisor : 0;
    };
}

} // namespace

void compare(const std::string& title, const std::string& benchmark, const std::string& reference,
             double target, double bound)
{
    lines().push_back({title, ratioOf(benchmark, reference), target, always(bound)});
}

void compareWithLeast(const std::string& title, const std::string& benchmark, const std::string& reference,
                      const std::string& least, double target)
{
    const Figure leastRatio = ratioOf(least, reference);
    const auto bound = [=](const MedianReporter& reporter) {
        const double ratio = leastRatio(reporter);
        return ratio > target ? 1.2 * ratio : 0;
    };
    lines().push_back({title, ratioOf(benchmark, reference), target, bound});
    lines().push_back({"least of " + title, leastRatio, 0, always(0)});
}

void growth(const std::string& title, const std::string& benchmark, const std::vector<int>& sizes,
            double target, double bound)
{
    // The slope of the line through the logarithms of sizes and times that leaves the least squares.
    const auto exponent = [=](const MedianReporter& reporter) {
        double x = 0;
        double y = 0;
        double xx = 0;
        double xy = 0;
        for (const int size : sizes) {
            const double median = reporter.median(benchmark + '/' + std::to_string(size));
            if (median <= 0)
                return 0.0;
            const double logSize = std::log(double(size));
            const double logTime = std::log(median);
            x += logSize;
            y += logTime;
            xx += logSize * logSize;
            xy += logSize * logTime;
        }
        const double count = double(sizes.size());
        return (count * xy - x * y) / (count * xx - x * x);
    };
    lines().push_back({"growth, " + title, exponent, target, always(bound)});
}

void report(const std::string& title, double ratio, double target)
{
    lines().push_back({title, always(ratio), target, always(0)});
}

void stayOnOneProcessor()
{
    byProcessorTime = true;
#ifdef __linux__
    const int processor = sched_getcpu();
    if (processor < 0)
        return;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(processor), &one);
    sched_setaffinity(0, sizeof one, &one);
#endif
}

void fillCaches(benchmark::State& state)
{
    state.PauseTiming();
    static std::vector<char> other(std::size_t(128) << 20);
    for (std::size_t at = 0; at < other.size(); at += 64)
        ++other[at];
    benchmark::DoNotOptimize(other.data());
    state.ResumeTiming();
}

namespace {

// What a million nodes leave of memory and caches would make smaller plans look slower, and each time by
// another factor, so they come last.
bool isMillionMeasured()
{
    const std::string ending = "/1000000";
    return std::any_of(lines().begin(), lines().end(), [&](const Line& line) {
        return line.title.size() > ending.size() &&
               line.title.compare(line.title.size() - ending.size(), ending.size(), ending) == 0;
    });
}

} // namespace

int runBenchmarks(int argc, char* argv[])
{
    std::vector<std::string> words = {argv[0],
                                      "--benchmark_repetitions=9",
                                      "--benchmark_min_time=0.05",
                                      "--benchmark_enable_random_interleaving=true",
                                      "--benchmark_report_aggregates_only=true",
                                      "--benchmark_color=false"};
    words.insert(words.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(&word[0]);
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;

    MedianReporter reporter;
    if (!benchmark::GetBenchmarkFilter().empty() || !isMillionMeasured()) {
        benchmark::RunSpecifiedBenchmarks(&reporter);
    } else {
        benchmark::RunSpecifiedBenchmarks(&reporter, "-/1000000(/|$)");
        benchmark::RunSpecifiedBenchmarks(&reporter, "/1000000(/|$)");
    }

    const bool above = printLines(argv[0], reporter);
    return above || reporter.hasFailed() ? 1 : 0;
}

int printReports(const std::string& program)
{
    return printLines(program, MedianReporter()) ? 1 : 0;
}
