#include "h264/reconstruction.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "h264/inter_prediction.h"
#include "h264/prefetch.h"

namespace vekdec::h264 {

void LevelScales::update(const ScalingLists& lists) {
    if (made_ && lists.list4x4 == lists_.list4x4 && lists.list8x8 == lists_.list8x8) return;
    lists_ = lists;
    made_ = true;
    // Scaling lists come in the zig-zag order of frames, whatever the macroblocks (8.5.6).
    for (std::size_t list = 0; list < 6; ++list) {
        Vek8u weights[16];
        for (std::size_t i = 0; i < 16; ++i) weights[kScan4x4[0][i]] = lists.list4x4[list][i];
        Vek16s forward[16];
        for (int m = 0; m < 6; ++m) vekiGenScaleLevel4x4_H264_8u16s_C1(weights, scale4x4_[list][m], forward, m);
    }
    for (std::size_t list = 0; list < 2; ++list) {
        Vek8u weights[64];
        for (std::size_t i = 0; i < 64; ++i) weights[kScan8x8[0][i]] = lists.list8x8[list][i];
        Vek16s forward[64];
        for (int m = 0; m < 6; ++m) vekiGenScaleLevel8x8_H264_8u16s_D2(weights, scale8x8_[list][m], forward, m);
    }
}

int chromaQp(int qpY, int chromaQpIndexOffset, int qpBdOffsetC) {
    static constexpr std::uint8_t kFrom30[22] = {29, 30, 31, 32, 32, 33, 34, 34, 35, 35, 36,
                                                 36, 37, 37, 37, 38, 38, 38, 39, 39, 39, 39};
    const int index = std::clamp(qpY + chromaQpIndexOffset, -qpBdOffsetC, 51);
    return index < 30 ? index : kFrom30[index - 30];
}

namespace {

// ---- lossless macroblocks: 8.5.15 on the coefficients, since the library adds them as they stand

// Running sums along rows (horizontal) or columns of a block of `width` x `height`.
template <typename Coeff>
void accumulate(Coeff* r, int width, int height, bool horizontal) {
    const int back = horizontal ? 1 : width;
    for (int y = horizontal ? 0 : 1; y < height; ++y)
        for (int x = horizontal ? 1 : 0; x < width; ++x)
            r[y * width + x] = static_cast<Coeff>(r[y * width + x] + r[y * width + x - back]);
}

// Blocks of an I_NxN macroblock are summed one by one.
template <typename Coeff>
void accumulateBlocks(const Macroblock& mb, Residual<Coeff>& residual) {
    Coeff* next = residual.coeffs;
    const int side = mb.transform8x8 ? 8 : 4;
    for (int i = 0; i < 16; i += mb.transform8x8 ? 4 : 1) {
        if ((residual.coded >> (i + 1) & 1) == 0) continue;
        const int mode = mb.predMode4x4[kBlockRaster[i]];
        if (mode < 2) accumulate(next, side, side, mode == 1);
        next += side * side;
    }
}

// Intra16x16 luma and chroma are summed over the whole macroblock: unpacked, summed, and packed again with all blocks
// coded. A plane has `dcCount` DC values, one per block, blocks `across` wide. `rasterOf` gives a block's place.
template <typename Coeff>
void accumulateWhole(Coeff* plane, const Coeff* dc, const Coeff* ac, unsigned acCoded, int across, int blocks,
                     const std::uint8_t* rasterOf, bool horizontal) {
    const int width = 4 * across;
    std::memset(plane, 0, static_cast<std::size_t>(16 * blocks) * sizeof(Coeff));
    for (int i = 0; i < blocks; ++i) {
        const int raster = rasterOf[i];
        Coeff* to = plane + raster / across * 4 * width + raster % across * 4;
        if (acCoded >> i & 1) {
            for (int k = 0; k < 16; ++k) to[k / 4 * width + k % 4] = ac[k];
            ac += 16;
        }
        to[0] = dc[raster];
    }
    accumulate(plane, width, 4 * blocks / across, horizontal);
}

template <typename Coeff>
Coeff* packWhole(const Coeff* plane, int across, int blocks, const std::uint8_t* rasterOf, Coeff* dc, Coeff* ac) {
    const int width = 4 * across;
    for (int i = 0; i < blocks; ++i, ac += 16) {
        const int raster = rasterOf[i];
        const Coeff* from = plane + raster / across * 4 * width + raster % across * 4;
        for (int k = 0; k < 16; ++k) ac[k] = from[k / 4 * width + k % 4];
        dc[raster] = ac[0];
    }
    return ac;
}

constexpr std::uint8_t kInOrder[8] = {0, 1, 2, 3, 4, 5, 6, 7};

// Sums `residual`, a copy of `old` with room for all coefficients.
template <typename Coeff>
void accumulateLossless(const Macroblock& mb, int chromaFormatIdc, const Residual<Coeff>& old,
                        Residual<Coeff>& residual) {
    if (mb.type == MbType::I4x4 || mb.type == MbType::I8x8) accumulateBlocks(mb, residual);
    const bool luma = mb.type == MbType::I16x16 && mb.predMode16x16 < 2;
    const bool chroma = chromaFormatIdc != 0 && (mb.predModeChroma == 1 || mb.predModeChroma == 2);
    if (!luma && !chroma) return;
    const Coeff* from = old.coeffs;  // never behind `to`
    Coeff* to = residual.coeffs;
    Coeff plane[256];
    static constexpr Coeff kZeros[16] = {};
    const auto take = [&](bool coded, int count) {
        const Coeff* block = coded ? from : kZeros;
        if (coded) from += count;
        return block;
    };
    // Luma
    const unsigned lumaAc = old.coded >> 1 & 0xffff;
    const int perBlock = mb.transform8x8 ? 64 : 16;
    if (luma) {
        const Coeff* dc = take(old.coded & 1, 16);
        accumulateWhole(plane, dc, from, lumaAc, 4, 16, kBlockRaster, mb.predMode16x16 == 1);
        from += 16 * __builtin_popcount(lumaAc);
        to = packWhole(plane, 4, 16, kBlockRaster, to, to + 16);
        residual.coded |= 0x1ffff;
    } else {
        const int count = (old.coded & 1 ? 16 : 0) + perBlock * __builtin_popcount(lumaAc);
        from += count;
        to += count;
    }
    if (!chroma) {
        std::memcpy(to, from, static_cast<std::size_t>(residual.coeffs + Residual<Coeff>::kMost - to) * sizeof(Coeff));
        return;
    }
    const bool is422 = chromaFormatIdc == 2;
    const int blocks = is422 ? 8 : 4;
    const unsigned flags = is422 ? old.codedChroma : old.coded >> 17;
    const Coeff* dc[2] = {};
    for (unsigned c = 0; c < 2; ++c) dc[c] = take(flags >> c & 1, blocks);
    Coeff* const newDc = to;
    to += 2 * blocks;
    for (unsigned c = 0; c < 2; ++c) {
        const unsigned ac = flags >> (2 + c * static_cast<unsigned>(blocks)) & ((1u << blocks) - 1);
        accumulateWhole(plane, dc[c], from, ac, 2, blocks, kInOrder, mb.predModeChroma == 1);
        from += 16 * __builtin_popcount(ac);
        to = packWhole(plane, 2, blocks, kInOrder, newDc + static_cast<int>(c) * blocks, to);
    }
    if (is422)
        residual.codedChroma = 0x3ffff;
    else
        residual.coded |= 0x3ffu << 17;
}

// ---- the library's calls

void check(VekStatus status) {
    if (status == vekStsOk) return;
    if (status == vekStsWrnUnavailableNeighbour || status == vekStsErrUnavailableNeighbour)
        throw BadSyntax("an intra prediction mode needs neighbours that are not there");
    throw BadSyntax("a macroblock that cannot be reconstructed");
}

struct Operands {
    const SliceContext& context;
    const CurrentMacroblock& current;
    unsigned edges;
    const LevelScales& scales;
};

template <typename Sample, typename Coeff>
void reconstructLuma(const Operands& o, Coeff** coeffs, Vek32u coded) {
    constexpr bool narrow = std::is_same_v<Sample, Vek8u>;
    const Macroblock& mb = *o.current.mb;
    auto* dst = reinterpret_cast<Sample*>(o.current.plane[0]);
    const int step = o.current.planeStep[0];
    const int depth = o.context.sps->bitDepthLuma;
    const int qp = mb.qp + 6 * (depth - 8);  // QP'Y
    const bool intra = mb.intra();
    const Vek16s* scale = mb.transform8x8 ? o.scales.scale8x8(intra ? 0 : 1, qp) : o.scales.scale4x4(intra ? 0 : 3, qp);
    const Vek8u bypass = mb.bypass;
    if (!intra) {
        if constexpr (narrow)
            check((mb.transform8x8
                       ? vekiReconstructLumaInter8x8MB_H264_16s8u_C1R
                       : vekiReconstructLumaInter4x4MB_H264_16s8u_C1R)(coeffs, dst, step, coded, qp, scale, bypass));
        else
            check((mb.transform8x8 ? vekiReconstructLumaInter8x8_H264High_32s16u_IP1R
                                   : vekiReconstructLumaInter4x4_H264High_32s16u_IP1R)(coeffs, dst, step, coded, qp,
                                                                                       scale, bypass, depth));
        return;
    }
    const bool halves = (o.edges & 3) == 1 || (o.edges & 3) == 2;
    if (mb.type == MbType::I16x16) {
        const auto edges = static_cast<Vek8u>(halves ? o.edges | 1 : o.edges);
        if constexpr (narrow)
            check(vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R(coeffs, dst, step, mb.predMode16x16, coded, qp, edges,
                                                                 scale, bypass));
        else
            check(vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R(coeffs, dst, step, mb.predMode16x16, coded, qp,
                                                                     edges, scale, bypass, depth));
        return;
    }
    const auto edges = static_cast<Vek8u>(o.edges);
    Vek32u modes[16];
    if (mb.transform8x8) {
        for (int i = 0; i < 4; ++i) modes[i] = static_cast<Vek32u>(mb.predMode4x4[kBlockRaster[4 * i]]);
        if constexpr (narrow)
            check((halves ? vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R
                          : vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R)(coeffs, dst, step, modes, coded, qp, edges,
                                                                          scale, bypass));
        else
            check((halves ? vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R
                          : vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R)(coeffs, dst, step, modes, coded, qp,
                                                                              edges, scale, bypass, depth));
    } else {
        for (int i = 0; i < 16; ++i) modes[i] = static_cast<Vek32u>(mb.predMode4x4[kBlockRaster[i]]);
        if constexpr (narrow)
            check((halves ? vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R
                          : vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R)(coeffs, dst, step, modes, coded, qp, edges,
                                                                          scale, bypass));
        else
            check((halves ? vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R
                          : vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R)(coeffs, dst, step, modes, coded, qp,
                                                                              edges, scale, bypass, depth));
    }
}

template <typename Sample, typename Coeff>
void reconstructChroma(const Operands& o, Coeff** coeffs, Vek32u coded, bool is422) {
    constexpr bool narrow = std::is_same_v<Sample, Vek8u>;
    const Macroblock& mb = *o.current.mb;
    auto* u = reinterpret_cast<Sample*>(o.current.plane[1]);
    auto* v = reinterpret_cast<Sample*>(o.current.plane[2]);
    const int step = o.current.planeStep[1];
    const int depth = o.context.sps->bitDepthChroma;
    const bool intra = mb.intra();
    const int qpU = mb.qpc[0] + 6 * (depth - 8), qpV = mb.qpc[1] + 6 * (depth - 8);  // QP'c
    const int list = intra ? 1 : 4, dcUp = is422 ? 3 : 0;
    const Vek16s *scaleU = o.scales.scale4x4(list, qpU), *scaleV = o.scales.scale4x4(list + 1, qpV);
    const int dcU = o.scales.scale4x4(list, qpU + dcUp)[0], dcV = o.scales.scale4x4(list + 1, qpV + dcUp)[0];
    const Vek8u bypass = mb.bypass;
    if (!intra) {
        if constexpr (narrow)
            check((is422 ? vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R
                         : vekiReconstructChromaInter4x4MB_H264_16s8u_P2R)(coeffs, u, v, step, coded, qpU, qpV, scaleU,
                                                                           scaleV, dcU, dcV, bypass));
        else
            check((is422 ? vekiReconstructChroma422Inter4x4_H264High_32s16u_IP2R
                         : vekiReconstructChromaInter4x4_H264High_32s16u_IP2R)(
                coeffs, u, v, step, coded, qpU, qpV, scaleU, scaleV, dcU, dcV, bypass, depth));
        return;
    }
    const bool halves = (o.edges & 3) == 1 || (o.edges & 3) == 2;
    const auto edges = static_cast<Vek8u>(o.edges);
    if constexpr (narrow) {
        const auto call = is422 ? (halves ? vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R
                                          : vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R)
                                : (halves ? vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R
                                          : vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R);
        check(call(coeffs, u, v, step, mb.predModeChroma, coded, qpU, qpV, edges, scaleU, scaleV, dcU, dcV, bypass));
    } else {
        const auto call = is422 ? (halves ? vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R
                                          : vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R)
                                : (halves ? vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R
                                          : vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R);
        check(call(coeffs, u, v, step, mb.predModeChroma, coded, qpU, qpV, edges, scaleU, scaleV, dcU, dcV, bypass,
                   depth));
    }
}

template <typename Sample, typename Coeff>
void storePcm(const SliceContext& context, const CurrentMacroblock& current, const Coeff* samples) {
    const SequenceParameterSet& sps = *context.sps;
    for (int i = 0; i < (sps.chromaFormatIdc == 0 ? 1 : 3); ++i) {
        const int width = i == 0 ? 16 : sps.chromaWidthMb(), height = i == 0 ? 16 : sps.chromaHeightMb();
        for (int y = 0; y < height; ++y) {
            auto* row = reinterpret_cast<Sample*>(current.plane[i] + std::ptrdiff_t{current.planeStep[i]} * y);
            for (int x = 0; x < width; ++x) row[x] = static_cast<Sample>(*samples++);
        }
    }
}

template <typename Sample, typename Coeff>
void addResidual(const SliceContext& context, const ParsedMacroblock& parsed, const LevelScales& scales,
                 Residual<Coeff> residual) {
    const Macroblock& mb = *parsed.mb;
    const int chromaFormatIdc = context.sps->chromaFormatIdc;
    Coeff summed[Residual<Coeff>::kMost];
    if (mb.bypass && mb.intra()) {
        const Residual<Coeff> old = residual;
        residual.coeffs = summed;
        std::memcpy(summed, old.coeffs, sizeof summed);
        accumulateLossless(mb, chromaFormatIdc, old, residual);
    }
    const Operands operands{context, parsed, parsed.intraEdges, scales};
    Coeff* coeffs = residual.coeffs;
    const bool intra = mb.intra();
    if (intra || (residual.coded & 0x1ffff) != 0) reconstructLuma<Sample>(operands, &coeffs, residual.coded);
    if (chromaFormatIdc == 0) return;
    const bool is422 = chromaFormatIdc == 2;
    const Vek32u coded = is422 ? residual.codedChroma : residual.coded;
    if (intra || (is422 ? coded : coded >> 17) != 0) reconstructChroma<Sample>(operands, &coeffs, coded, is422);
}

// Where the macroblocks to the right go.
template <typename Sample>
[[gnu::always_inline]] inline void prefetchTarget(const SliceContext& context, const CurrentMacroblock& current) {
    const auto address = [&](int i) { return reinterpret_cast<std::uintptr_t>(current.plane[i]); };
    prefetchRight<16, Sample>(address(0), current.planeStep[0], current.x);
    if (context.sps->chromaFormatIdc == 0) return;
    for (int i = 1; i < 3; ++i) prefetchRight<8, Sample>(address(i), current.planeStep[i], current.x / 2);
}

}  // namespace

template <typename Sample, typename Coeff>
void reconstruct(const SliceContext& context, const ParsedMacroblock& parsed, const LevelScales& scales,
                 const Coeff* coeffs) {
    const Macroblock& mb = *parsed.mb;
    coeffs += parsed.coeffs;
    prefetchTarget<Sample>(context, parsed);
    if (mb.type == MbType::IPcm) {
        storePcm<Sample>(context, parsed, coeffs);
        return;
    }
    if (!mb.intra()) predictInter<Sample>(context, parsed);
    if (!mb.skipped)
        addResidual<Sample>(context, parsed, scales,
                            Residual<Coeff>{const_cast<Coeff*>(coeffs), parsed.coded, parsed.codedChroma});
}

template void reconstruct<Vek8u, Vek16s>(const SliceContext&, const ParsedMacroblock&, const LevelScales&,
                                         const Vek16s*);
template void reconstruct<Vek16u, Vek32s>(const SliceContext&, const ParsedMacroblock&, const LevelScales&,
                                          const Vek32s*);

}  // namespace vekdec::h264
