// Coefficient scans and the zero count in 512 bits: a block is two vectors.
#ifndef VEKVC_COMMON_SCAN_SIMD512_H
#define VEKVC_COMMON_SCAN_SIMD512_H

#include "common/scan_simd.h"

namespace vekvc::simd512 {

// The places of a table as lane indices.
struct LaneIndices {
    alignas(64) Vek16u lane[64] = {};
    constexpr explicit LaneIndices(const Vek8u (&places)[64]) {
        for (int i = 0; i < 64; ++i) lane[i] = places[i];
    }
};
template <const Vek8u (&table)[64]>
inline constexpr LaneIndices kForwardLanes{table};
template <const Vek8u (&table)[64]>
inline constexpr LaneIndices kInverseLanes{simd::kPositions<table>.position};

struct TwoVectors {
    i16x32 low, high;

    int countNonZero() const { return std::popcount(nonZeroLanes(low)) + std::popcount(nonZeroLanes(high)); }
    std::uint64_t nonZero() const { return std::uint64_t{nonZeroLanes(low)} | std::uint64_t{nonZeroLanes(high)} << 32; }
    void store(Vek16s* p) const {
        vekvc::store(p, low);
        vekvc::store(p + 32, high);
    }
};
[[gnu::always_inline]] inline TwoVectors permuted(TwoVectors v, const LaneIndices& from) {
    return {permutePair(v.low, v.high, load<u16x32>(from.lane)),
            permutePair(v.low, v.high, load<u16x32>(from.lane + 32))};
}

template <const Vek8u (&table)[64]>
[[gnu::always_inline]] inline void scanForward(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero) {
    const TwoVectors in = {load<i16x32>(pSrc), load<i16x32>(pSrc + 32)};
    const TwoVectors out = permuted(in, kForwardLanes<table>);
    out.store(pDst);
    if (countNonZero >= 20 || in.countNonZero() <= countNonZero) [[likely]]
        return;
    // What stands behind the expected count is dropped.
    const std::uint64_t late = withoutLowestBits(out.nonZero(), countNonZero);
    TwoVectors{keepLanes(out.low, static_cast<Vek32u>(~late)), keepLanes(out.high, static_cast<Vek32u>(~late >> 32))}
        .store(pDst);
}

template <const Vek8u (&table)[64]>
[[gnu::always_inline]] inline void scanInverse(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero) {
    const std::uint64_t there = lowestBits(indxLastNonZero + 1);
    const TwoVectors in = {loadLanes<i16x32>(pSrc, static_cast<Vek32u>(there)),
                           loadLanes<i16x32>(pSrc + 32, static_cast<Vek32u>(there >> 32))};
    permuted(in, kInverseLanes<table>).store(pDst);
}

inline Vek32u countZeros(const Vek16s* pSrc) {
    const TwoVectors v = {load<i16x32>(pSrc), load<i16x32>(pSrc + 32)};
    return static_cast<Vek32u>(64 - v.countNonZero());
}

}  // namespace vekvc::simd512

#endif
