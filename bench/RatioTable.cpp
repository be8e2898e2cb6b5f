// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Runs all benchmarks interleaved in random order, takes the median of the repeats and prints one table of
// ratios.

#include "RatioTable.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

namespace Bench {

namespace {

struct Line {
    std::string label;
    std::string variant;
    std::string baseline;
    double limit;
};
struct Figure {
    std::string label;
    double figure;
    double limit;
};

std::vector<Line>& Lines() {
    static std::vector<Line> lines;
    return lines;
}
std::vector<Figure>& Figures() {
    static std::vector<Figure> figures;
    return figures;
}

/// Collects the times of all repeats by the benchmark's name.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                std::string const name = run.run_name.function_name + "/" + run.run_name.args;
                times[name].push_back(run.GetAdjustedCPUTime());
                results[name] = run.counters.at("result").value;
            }
        }
    }
    double Median(std::string const& name) {
        std::vector<double>& repeats = times.at(name);
        std::sort(repeats.begin(), repeats.end());
        return repeats[repeats.size() / 2];
    }
    bool Has(std::string const& name) const { return times.contains(name); }

    std::map<std::string, std::vector<double>> times;
    std::map<std::string, double> results;
};

char const* Verdict(double value, double limit) {
    return value <= limit ? "" : "  over";
}

} // namespace

void CompareTimes(std::string const& label, std::string const& variant, std::string const& baseline, double limit) {
    Lines().push_back({label, variant, baseline, limit});
}

void ReportFigure(std::string const& label, double figure, double limit) {
    Figures().push_back({label, figure, limit});
}

int PrintTable(Collector& collector) {
    int wrong = 0;
    std::printf("%-58s %8s %8s\n", "ratio of times (median of repeats in one run)", "measured", "at most");
    for (Line const& line : Lines()) {
        if (!collector.Has(line.variant) || !collector.Has(line.baseline)) {
            continue;
        }
        double const ratio = collector.Median(line.variant) / collector.Median(line.baseline);
        bool const same = collector.results[line.variant] == collector.results[line.baseline];
        std::printf("%-58s %8.3f %8.3f%s%s\n", line.label.c_str(), ratio, line.limit, Verdict(ratio, line.limit),
                    same ? "" : "  DIFFERENT RESULT");
        wrong += same ? 0 : 1;
    }
    if (!Figures().empty()) {
        std::printf("\n%-58s %8s %8s\n", "other figures", "measured", "at most");
    }
    for (Figure const& figure : Figures()) {
        std::printf("%-58s %8.2f %8.2f%s\n", figure.label.c_str(), figure.figure, figure.limit,
                    Verdict(figure.figure, figure.limit));
    }
    return wrong == 0 ? 0 : 1;
}

} // namespace Bench

int main(int argc, char** argv) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string settings[] = {"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=9",
                              "--benchmark_min_time=0.05"};
    for (std::string& setting : settings) {
        arguments.insert(arguments.begin() + 1, setting.data());
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Bench::Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    return Bench::PrintTable(collector);
}
