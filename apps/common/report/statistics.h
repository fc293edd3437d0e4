// What a decoder counted.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vekapp {

struct Statistics {
    long frames = 0;    // given out
    long pictures = 0;  // coded: frames, fields
    long slices = 0;    // or what else the standard divides pictures into
    long damaged = 0;   // of these
    std::uint64_t bits = 0;
    // Kinds of blocks with how many there were of each, under the name of what is counted.
    std::string unit = "macroblocks";
    std::vector<std::pair<std::string, long>> kinds;
    // Parts of a kind, such as "skipped"; not among the kinds.
    std::vector<std::pair<std::string, long>> of;
    // Steps with the seconds that they took, and all together.
    std::vector<std::pair<std::string, double>> seconds;
    double secondsTotal = 0;
    // Whole sentences that stand for themselves.
    std::vector<std::string> remarks;
};

// A few lines on standard error.
void print(const Statistics& statistics);

}  // namespace vekapp
