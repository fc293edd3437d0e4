// Motion vectors as H.263 and MPEG-4 Part 2 predict them and derive those of chroma.
#pragma once

#include <algorithm>

namespace vekdec::h263 {

struct MotionVector {
    int x = 0, y = 0;  // half samples, or quarter samples where the stream says so
    bool operator==(const MotionVector&) const = default;
};

constexpr int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }
constexpr MotionVector median(MotionVector a, MotionVector b, MotionVector c) {
    return {median(a.x, b.x, c.x), median(a.y, b.y, c.y)};
}

// From a luma component in half luma samples to half chroma samples (ISO 14496-2 7.6.2.1): quarters count as halves.
constexpr int chromaComponent(int v) { return (v >> 1) | (v & 1); }
// The same from the sum of four vectors (ISO 14496-2 Table 7-9, H.263 Table F.1): sixteenths to halves.
constexpr int chromaComponentOfFour(int sum) {
    constexpr int kHalves[16] = {0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2};
    return kHalves[sum & 15] + ((sum >> 3) & ~1);
}

}  // namespace vekdec::h263
