#include "RatioMain.h"

#include <cstdio>
#include <map>
#include <vector>

namespace {

struct Comparison
{
    std::string title;
    std::string benchmark;
    std::string reference;
    double limit;
};

std::vector<Comparison>& comparisons()
{
    static std::vector<Comparison> list;
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
                m_medians[run.run_name.str()] = run.GetAdjustedRealTime();
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

} // namespace

void compare(const std::string& title, const std::string& benchmark, const std::string& reference,
             double limit)
{
    comparisons().push_back({title, benchmark, reference, limit});
}

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
    benchmark::RunSpecifiedBenchmarks(&reporter);

    bool above = false;
    std::printf("\n");
    for (const Comparison& line : comparisons()) {
        const double measured = reporter.median(line.benchmark);
        const double reference = reporter.median(line.reference);
        if (measured <= 0 || reference <= 0)
            continue; // filtered out on the command line
        const double ratio = measured / reference;
        std::printf("ratio  %-44s %6.2f", line.title.c_str(), ratio);
        if (line.limit > 0) {
            std::printf("   at most %.2f%s", line.limit, ratio > line.limit ? "   ABOVE" : "");
            above = above || ratio > line.limit;
        }
        std::printf("\n");
    }
    return above || reporter.hasFailed() ? 1 : 0;
}
