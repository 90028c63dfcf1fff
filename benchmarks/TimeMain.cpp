#include "JsonCases.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

/// Time of this thread alone: what other processes do on the same processor does not count.
double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double timeOf(const std::function<void()>& work) {
    const double begun = threadSeconds();
    work();
    return threadSeconds() - begun;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Ours and the floor take turns, so that a slow moment of the machine meets both.
void measure(benchmark::State& state, const JsonCase& one) {
    std::vector<double> ours;
    std::vector<double> floor;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        one.prepare();
        ours.push_back(timeOf(one.ours));
        floor.push_back(timeOf(one.floor));
        state.SetIterationTime(ours.back());
    }
    state.counters["ours_us"] = median(ours) * 1e6;
    state.counters["floor_us"] = median(floor) * 1e6;
    state.counters["target"] = one.target;
}

constexpr const char* turnsOption = "--turns=";

} // namespace

int main(int argc, char** argv) {
    int turns = 1000;
    if (argc > 1 && std::strncmp(argv[argc - 1], turnsOption, std::strlen(turnsOption)) == 0) {
        turns = std::atoi(argv[--argc] + std::strlen(turnsOption));
        if (turns < 1) {
            std::fprintf(stderr, "orvane-bench-time: --turns needs a positive number\n");
            return 2;
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    const std::vector<JsonCase> cases = jsonCases();
    for (const JsonCase& one : cases) {
        benchmark::RegisterBenchmark(one.name.c_str(), [&one](benchmark::State& state) { measure(state, one); })
            ->UseManualTime()
            ->Iterations(turns);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
