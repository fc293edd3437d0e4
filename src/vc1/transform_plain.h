// The VC-1 block transforms (SMPTE 421M annex A) and their forward counterparts.
#ifndef VEKVC_VC1_TRANSFORM_PLAIN_H
#define VEKVC_VC1_TRANSFORM_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"
#include "vc1/transform_tables.h"

namespace vekvc::vc1 {

// What the caller says of a block: only its first coefficient counts, or only those of the leading columns and rows.
constexpr bool isDCOnly(VekiSize sizeNZ) { return sizeNZ.width < 2 && sizeNZ.height < 2; }

template <int W, int H>
constexpr VekiSize codedRegion(VekiSize sizeNZ) {
    if (W == H && sizeNZ.width <= 2 && sizeNZ.height <= 2) return {2, 2};
    if (sizeNZ.width <= 4 && sizeNZ.height <= 4) return {4, 4};
    return {W, H};
}

// The residual of a block with the DC coefficient d alone; nothing between is limited.
template <int W, int H>
constexpr Vek16s dcResidual(Vek32s d) {
    constexpr int rowGain = inverseBasis<W>().at[0][0], columnGain = inverseBasis<H>().at[0][0];
    return wrap16((columnGain * ((rowGain * d + 4) >> 3) + 64) >> 7);
}

}  // namespace vekvc::vc1

namespace vekvc::plain {

template <int W, int H>
void transformInverse(Block<Vek16s> src, MutableBlock<Vek16s> dst, VekiSize sizeNZ) {
    if (vc1::isDCOnly(sizeNZ)) {
        const Vek16s value = vc1::dcResidual<W, H>(src(0, 0));
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) dst.put(x, y, value);
        return;
    }
    const VekiSize coded = vc1::codedRegion<W, H>(sizeNZ);
    Vek16s rows[H][W] = {};
    for (int y = 0; y < coded.height; ++y)
        for (int x = 0; x < W; ++x) {
            Vek32s sum = 4;
            for (int k = 0; k < coded.width; ++k) sum += src(k, y) * vc1::inverseBasis<W>().at[k][x];
            rows[y][x] = saturate16(sum >> 3);
        }
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            Vek32s sum = y < 4 ? 64 : 65;
            for (int k = 0; k < H; ++k) sum += rows[k][x] * vc1::inverseBasis<H>().at[k][y];
            dst.put(x, y, saturate16(sum >> 7));
        }
}

template <int W, int H>
void transformForward(Block<Vek16s> src, MutableBlock<Vek16s> dst) {
    constexpr int rowShift = vc1::kForwardRowShift<W>, columnShift = vc1::kForwardColumnShift<H>;
    Vek16s rows[H][W];
    for (int y = 0; y < H; ++y)
        for (int k = 0; k < W; ++k) {
            Vek32s sum = 1 << (rowShift - 1);
            for (int x = 0; x < W; ++x) sum = wrapAdd(sum, src(x, y) * vc1::forwardBasis<W>().at[k][x]);
            rows[y][k] = saturate16(sum >> rowShift);
        }
    for (int k = 0; k < H; ++k)
        for (int x = 0; x < W; ++x) {
            Vek32s sum = 1 << (columnShift - 1);
            for (int y = 0; y < H; ++y) sum = wrapAdd(sum, rows[y][x] * vc1::forwardBasis<H>().at[k][y]);
            dst.put(x, k, saturate16(sum >> columnShift));
        }
}

}  // namespace vekvc::plain

#endif
