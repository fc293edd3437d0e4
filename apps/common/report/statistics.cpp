#include "report/statistics.h"

#include <algorithm>
#include <cstdio>

namespace vekapp {

void print(const Statistics& s) {
    long all = 0;
    for (const auto& [name, count] : s.kinds) all += count;
    const auto share = [](double part, double whole) { return whole > 0 ? 100 * part / whole : 0.0; };
    std::fprintf(stderr, "%ld frames, %ld pictures, %ld slices (%ld damaged), %llu bits", s.frames, s.pictures,
                 s.slices, s.damaged, static_cast<unsigned long long>(s.bits));
    if (all > 0)
        std::fprintf(stderr, ", %.1f bits per %.*s", static_cast<double>(s.bits) / static_cast<double>(all),
                     static_cast<int>(s.unit.size()) - 1, s.unit.c_str());
    std::fprintf(stderr, "\n%s: %ld", s.unit.c_str(), all);
    for (const auto& [name, count] : s.kinds)
        if (count > 0)
            std::fprintf(stderr, ", %s %.1f %%", name.c_str(),
                         share(static_cast<double>(count), static_cast<double>(all)));
    const char* open = " (of all";
    for (const auto& [name, count] : s.of) {
        std::fprintf(stderr, "%s, %s %.1f %%", open, name.c_str(),
                     share(static_cast<double>(count), static_cast<double>(all)));
        open = "";
    }
    std::fputs(s.of.empty() ? "\ntime: " : ")\ntime: ", stderr);
    double steps = 0;
    for (const auto& [name, seconds] : s.seconds) steps += seconds;
    const double whole = std::max(steps, s.secondsTotal);  // threads take more time than passes
    for (const auto& [name, seconds] : s.seconds)
        std::fprintf(stderr, "%s %.1f %%, ", name.c_str(), share(seconds, whole));
    std::fprintf(stderr, "the rest %.1f %% (parsing of headers, output)\n", share(whole - steps, whole));
    for (const std::string& remark : s.remarks) std::fprintf(stderr, "%s\n", remark.c_str());
}

}  // namespace vekapp
