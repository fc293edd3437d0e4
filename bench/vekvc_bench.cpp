// The benchmark: core cycles per call of every export in every variant, and how many times faster than px.
//
//     vekvc_bench [--version] [--csv] [WORD ...]        only rows whose name contains one of the words
//
// Each row draws 64 different calls from the catalogue (operands on ordinary positive steps, random content and modes)
// and times rounds over all of them; before each, the operands get back what an earlier one has overwritten. The number
// is the lower quartile of the rounds, variants taking turns, less the loop's own cost. The time-stamp counter is
// calibrated against a chain of dependent multiplications (3 cycles each).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "engine.h"

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace {

using namespace catalogue;

std::uint64_t ticks() {
#if defined(__x86_64__)
    unsigned processor;
    return __rdtscp(&processor);
#else
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

double lowerQuartile(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 4];
}

// Ticks per core cycle.
double calibrate() {
    std::vector<double> samples;
    for (int i = 0; i < 40; ++i) {
        std::uint64_t x = 3;
        const std::uint64_t start = ticks();
        for (int k = 0; k < 4000; ++k) {
            x *= x;
            asm volatile("" : "+r"(x));
        }
        samples.push_back(static_cast<double>(ticks() - start) / (4000 * 3));
    }
    return lowerQuartile(samples);
}

VekStatus doNothing(void*, const Slot*) { return vekStsOk; }

// Ticks per call over all instances; `function` null times the loop alone. Every call finds its operands as they were
// drawn, those that it changes in place too; restoring them is not timed.
double timeRound(std::vector<Instance>& instances, void* function, int repeats) {
    static volatile Thunk nothing = doNothing;
    std::uint64_t sum = 0;
    for (int r = 0; r < repeats; ++r) {
        for (auto& instance : instances) instance.restore();
        const std::uint64_t start = ticks();
        for (auto& instance : instances) {
            if (function != nullptr)
                instance.runBare(function);
            else
                nothing(nullptr, instance.slots().data());
        }
        sum += ticks() - start;
    }
    return static_cast<double>(sum) / (static_cast<double>(instances.size()) * repeats);
}

struct Result {
    std::string name;
    std::vector<double> cycles;  // by variant
};

Result measure(const Row& row, double ticksPerCycle) {
    Random random(std::hash<std::string>{}(row.name));
    std::vector<Instance> instances;
    for (int i = 0; i < 64; ++i) instances.emplace_back(row, Layout::Picture, random);

    std::vector<void*> functions = {nullptr};
    for (const auto& variant : variants()) functions.push_back(variant.find(row.name));
    std::vector<std::vector<double>> rounds(functions.size());
    const double once = timeRound(instances, functions[1], 1) * 64;
    const int repeats = std::clamp(static_cast<int>(60000.0 / once), 1, 8);
    for (int i = 0; i < 24; ++i)
        for (std::size_t f = 0; f < functions.size(); ++f) {
            timeRound(instances, functions[f], 1);  // warm up
            rounds[f].push_back(timeRound(instances, functions[f], repeats));
        }
    Result result{row.name, {}};
    for (std::size_t f = 1; f < functions.size(); ++f)
        result.cycles.push_back((lowerQuartile(rounds[f]) - lowerQuartile(rounds[0])) / ticksPerCycle);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    bool csv = false;
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--csv") == 0)
            csv = true;
        else if (std::strcmp(argv[i], "--version") == 0) {
            const VekLibraryVersion* v = vekvcGetLibVersion();
            std::printf("%s, version %s; the loader chose it by the name libvekvc.so.6\n", v->libraryName,
                        v->versionText);
            return 0;
        } else if (argv[i][0] == '-') {
            std::fprintf(stderr, "usage: %s [--version] [--csv] [WORD ...]\n", argv[0]);
            return 2;
        } else
            words.emplace_back(argv[i]);
    }
    const double ticksPerCycle = calibrate();
    if (csv) {
        std::printf("export");
        for (const auto& v : variants()) std::printf(",%s", v.code.c_str());
        std::printf("\n");
    } else {
        std::printf(
            "Core cycles per call, %.2f ticks each; in brackets how many times faster than px. Built by %s.\n%-52s",
            ticksPerCycle, VEKVC_COMPILER, "");
        for (const auto& v : variants()) std::printf("%*s", v.code == "px" ? 10 : 18, v.code.c_str());
        std::printf("\n");
    }
    for (const auto& row : rows()) {
        const auto wanted = [&](const std::string& word) { return row.name.find(word) != std::string::npos; };
        if (!words.empty() && std::none_of(words.begin(), words.end(), wanted)) continue;
        const Result r = measure(row, ticksPerCycle);
        std::printf(csv ? "%s" : "%-52s", r.name.c_str());
        for (std::size_t v = 0; v < r.cycles.size(); ++v) {
            if (csv)
                std::printf(",%.1f", r.cycles[v]);
            else if (v == 0)
                std::printf("%10.1f", r.cycles[v]);
            else
                std::printf("%10.1f (%5.1f)", r.cycles[v], r.cycles[0] / r.cycles[v]);
        }
        std::printf("\n");
    }
    return 0;
}
