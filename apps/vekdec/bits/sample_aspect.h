// The shapes of samples that MPEG-4, H.263, VC-1 and H.264 number alike.
#pragma once

#include <iterator>

#include "frames/frame.h"

namespace vekdec {

// H.264 Table E-1; SMPTE 421M 6.1.14 has those up to 13, ISO 14496-2 Table 6-12 and H.263 5.1.5 those up to 5.
// Not known for 0 and above `most`.
constexpr vekapp::Rational numberedSampleAspect(unsigned number, unsigned most) {
    constexpr vekapp::Rational kAspects[] = {{},       {1, 1},    {12, 11}, {10, 11}, {16, 11}, {40, 33},
                                             {24, 11}, {20, 11},  {32, 11}, {80, 33}, {18, 11}, {15, 11},
                                             {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1}};
    return number <= most && number < std::size(kAspects) ? kAspects[number] : vekapp::Rational{};
}

}  // namespace vekdec
