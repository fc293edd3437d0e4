// Fast forms of the inverse quantizers.
#ifndef VEKVC_DV_QUANTIZE_SIMD_H
#define VEKVC_DV_QUANTIZE_SIMD_H

#include "core/simd.h"
#include "dv/quantize_plain.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using DvVector = i16x16;
#else
using DvVector = i16x8;
#endif
inline constexpr int kDvLanes = DvVector::kBytes / 2;

// 2^(shift + 2) by raster position, for both modes and k / 2: the shifts of k and k ^ 1 are equal but for 14 and 15,
// which stand for themselves.
struct DvFactors {
    std::int16_t factor[2][9][64];

    static constexpr int row(int k) { return k < 14 ? k / 2 : k == 14 ? 7 : 8; }
    constexpr DvFactors() : factor() {
        for (int mode = 0; mode < 2; ++mode)
            for (int k = 0; k < 22; ++k)
                for (int i = 1; i < 64; ++i)
                    factor[mode][row(k)][dv::kScan[mode][i]] =
                        static_cast<std::int16_t>(4 << dv::kShift[k][dv::areaOf(i)]);
    }
};
inline constexpr DvFactors kDvFactors;

// Multiplying by a power of two wraps as the shift does; the rounded high product is (x * iw + 2^14) >> 15.
inline void quantInv(Vek16s* block, const VekDVBlockInfo& info) {
    const int mode = info.dctMode & 1, classNo = info.classNo & 3;
    const Vek16s dc = wrap16(4 * load<Vek16s>(block));
    const std::int16_t* factor = kDvFactors.factor[mode][DvFactors::row((info.qNo & 15) + dv::kClassOffset[classNo])];
    const auto once = splat<DvVector>(classNo == 3 ? 2 : 1);
    for (int p = 0; p < 64; p += kDvLanes) {
        const auto x = load<DvVector>(block + p) * (load<DvVector>(factor + p) * once);
        store(block + p, mulHighRound(x, load<DvVector>(dv::kInverseWeight[mode] + p)));
    }
    store<Vek16s>(block, dc);
}

// (x * m + 16) >> 5 in 32 bits, m = step * W: at most 52 * 492, which fits 16 bits, as does |x| of up to 255 * 8.
inline void quantInv100(Vek16s* block, const VekDVBlockInfo& info, int weightSet) {
    const Vek16s dc = wrap16(4 * load<Vek16s>(block));
    const auto step = splat<DvVector>(dv::kStep100[info.qNo & 15]);
    const auto times = splat<DvVector>(1 << (info.classNo & 3));
    const auto one = splat<DvVector>(1), half = splat<DvVector>(16);
    for (int p = 0; p < 64; p += kDvLanes) {
        const auto x = load<DvVector>(block + p) * times;
        const auto m = load<DvVector>(dv::kWeight100[weightSet] + p) * step;
        const auto low = mulAddPairs(interleaveLow(x, one), interleaveLow(m, half)) >> 5;
        const auto high = mulAddPairs(interleaveHigh(x, one), interleaveHigh(m, half)) >> 5;
        store(block + p, narrowI16(low, high));
    }
    store<Vek16s>(block, dc);
}

}  // namespace vekvc::simd

#endif
