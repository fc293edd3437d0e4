// Rows of H.264 intra prediction and macroblock reconstruction.
#include <algorithm>
#include <bit>

#include "catalogue.h"

namespace catalogue {
namespace {

bool has(std::int64_t flags, int bit) { return (flags & bit) != 0; }

// ---- what is read around a block

// The square at the pointer with the neighbours that the mode needs of those that are available.
Extent around(int size, int dcMode, bool directional) {
    return [=](const Call& c) {
        const auto mode = c["predMode"], a = c["availability"];
        const bool isDC = mode == dcMode;
        const bool plane = directional ? mode >= 4 && mode <= 6 : mode == 3;
        const bool onlyAbove = directional ? mode == 0 || mode == 3 || mode == 7 : mode == (dcMode == 2 ? 0 : 2);
        const bool useAbove = has(a, 1) && (isDC || plane || onlyAbove), useLeft = has(a, 2) && !onlyAbove;
        const bool useCorner = has(a, 32) && plane;
        const bool useRight = directional && useAbove && has(a, 64) && (mode == 3 || mode == 7);
        return Rect{useLeft || useCorner ? -1 : 0, useAbove || useCorner ? -1 : 0, useRight ? 2 * size : size, size};
    };
}

// A macroblock's samples with the neighbours that edgeFlags leaves; `reach` columns to the right of it.
Extent aroundMacroblock(int width, int height, int reach, bool halves) {
    return [=](const Call& c) {
        const auto f = c["edgeFlags"];
        const bool left = !has(f, 1) || (halves && !has(f, 2)), above = !has(f, 4), corner = !has(f, 16);
        return Rect{left || corner ? -1 : 0, above || corner ? -1 : 0, width + (above && !has(f, 32) ? reach : 0),
                    height};
    };
}

// ---- arguments

Argument qp(int max) { return range("QP", 0, max).bad({-1, max + 1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange); }
Argument codedBlocks(const char* name) {
    return integer(name, [](Random& random, const Call&) {
        const auto bits = static_cast<Vek32u>(random());
        const auto kind = random() % 8;
        return std::int64_t{kind == 0 ? 0 : kind == 1 ? ~0u : kind < 5 ? bits : bits & static_cast<Vek32u>(random())};
    });
}
Argument edgeFlags(const char* name = "edgeFlags") {
    return integer(
        name, [](Random& random, const Call&) { return static_cast<std::int64_t>(random() % 2 ? 0 : random() % 256); });
}
Argument modes(int n) { return in<Vek32u>("pPredModes", count(n)).of(0, 8); }
Argument mode4() { return range("predMode", 0, 3).bad({-1, 4, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange); }
Argument levelScale(const char* name, int n) { return in<Vek16s>(name, count(n)).of(0, 32767); }
Argument bypass() { return oneOf("bypass", {0, 0, 1, 255}); }
Argument chromaQp(const char* name) {
    return range(name, 0, 39).bad({-1, 40, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange);
}

template <class C>
Argument stream(std::function<int(const Call&)> coefficients) {
    return in<C>("ppCoeffs", [=](const Call& c) { return Rect{0, 0, coefficients(c), 1}; }).movedOn();
}
int bits(std::int64_t value, int from, int n) {
    return std::popcount(static_cast<Vek32u>(value) >> from & ((1u << n) - 1));
}
int luma4x4(const Call& c) { return 16 * bits(c["cbp"], 1, 16); }
int luma8x8(const Call& c) {
    int n = 0;
    for (int k = 0; k < 4; ++k) n += bits(c["cbp"], 1 + 4 * k, 4) > 0 ? 64 : 0;
    return n;
}
int luma16x16(const Call& c) { return 16 * bits(c["cbp"], 0, 17); }
int chroma420(const Call& c) { return 4 * bits(c["cbp"], 17, 2) + 16 * bits(c["cbp"], 19, 8); }
int chroma422(const Call& c) { return 8 * bits(c["cbpChroma"], 0, 2) + 16 * bits(c["cbpChroma"], 2, 16); }

// ---- lists; those of the forms for higher bit depths follow from the 8-bit ones

using List = std::vector<Argument>;

List join(List a, const List& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

List predictor(int size, int dcMode, int least) {
    const bool directional = size == 4;
    const Argument s = step("pSrcDst");
    return {inOut<Vek8u>("pSrcDst", around(size, dcMode, directional)).writes(block(size, size)),
            least > 0 ? s.atLeast(least) : s,
            range("predMode", 0, directional ? 8 : 3)
                .bad({-1, directional ? 9 : 4, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
            range("availability", 0, 127)};
}

List lumaInter(int (*coefficients)(const Call&)) {
    return {stream<Vek16s>(coefficients), inOut<Vek8u>("pSrcDst", block(16, 16)), step("pSrcDst"), codedBlocks("cbp"),
            qp(51)};
}
List lumaIntra(int (*coefficients)(const Call&), Argument prediction, int reach, bool halves = false) {
    return {stream<Vek16s>(coefficients),
            inOut<Vek8u>("pSrcDst", aroundMacroblock(16, 16, reach, halves)).writes(block(16, 16)),
            step("pSrcDst"),
            std::move(prediction),
            codedBlocks("cbp"),
            qp(51),
            edgeFlags()};
}
List scaled(int n) { return {levelScale("pLevelScale", n), bypass()}; }

List chroma(int height, Extent touched) {
    const Extent written = block(8, height);
    return {stream<Vek16s>(height == 8 ? chroma420 : chroma422), inOut<Vek8u>("pSrcDstU", touched).writes(written),
            inOut<Vek8u>("pSrcDstV", touched).writes(written), step({"pSrcDstU", "pSrcDstV"})};
}
List chromaInter(int height, const List& scaling) {
    return join(join(chroma(height, block(8, height)), {codedBlocks(height == 8 ? "cbp" : "cbpChroma")}), scaling);
}
List chromaIntra(int height, bool halves, const List& scaling) {
    return join(join(chroma(height, aroundMacroblock(8, height, 0, halves)),
                     {mode4(), codedBlocks(height == 8 ? "cbp" : "cbpChroma")}),
                scaling);
}
List flat(const List& flags = {}) { return join({chromaQp("chromaQP")}, flags); }
List perPlane(const List& flags = {}) {
    return join(join({chromaQp("chromaQPU"), chromaQp("chromaQPV")}, flags),
                {levelScale("pLevelScaleU", 16), levelScale("pLevelScaleV", 16), range("levelScaleDCU", 0, 32767),
                 range("levelScaleDCV", 0, 32767), bypass()});
}
// Flags for each half; "edgeFlags" is what the extents look at.
List halvesOf(List arguments) {
    const auto at =
        std::find_if(arguments.begin(), arguments.end(), [](const Argument& a) { return a.name == "edgeFlags"; });
    arguments.insert(at + 1, integer("edgeFlagsLower", [](Random& random, const Call& c) {
                         return static_cast<std::int64_t>(random() & 254) | (c["edgeFlags"] & 1);
                     }));
    return arguments;
}

// The same list for 9 to 14 bits: wider operands, QP up to the depth's maximum, and the depth, drawn first.
List wide(List arguments) {
    for (Argument& a : arguments) {
        if (a.name == "ppCoeffs") a.elementBytes = 4;
        if (a.name.rfind("pSrcDst", 0) == 0 && a.kind == Kind::Memory) {
            a.elementBytes = 2;
            a.element = [](Random& random, const Call& c) { return draw(random, 0, (1 << c["bitDepth"]) - 1); };
        }
        if (a.name == "QP" || a.name == "chromaQPU" || a.name == "chromaQPV") {
            const int most = a.name == "QP" ? 51 : 39;
            a.value = [=](Random& random, const Call& c) { return draw(random, 0, most + 6 * (c["bitDepth"] - 8)); };
            a.badValues.clear();
            a = a.bad({-1, most + 37, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange);
        }
    }
    arguments.insert(arguments.begin(), range("bitDepth", 8, 14).bad({7, 15, -1, INT32_MAX}, vekStsErrOutOfRange));
    return arguments;
}

// A row whose first entry is the last argument.
template <class... A>
bool wideRow(const char* name, VekStatus (*)(A...), List arguments) {
    if (sizeof...(A) != arguments.size()) std::abort();
    return recordRow(name, std::move(arguments), [](void* function, const Slot* slots) {
        constexpr std::size_t n = sizeof...(A);
        Slot passed[n];
        std::rotate_copy(slots, slots + 1, slots + n, passed);
        return callWithSlots(reinterpret_cast<VekStatus (*)(A...)>(function), passed, std::index_sequence_for<A...>{});
    });
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiPredictIntra_4x4_H264_8u_C1IR", &vekiPredictIntra_4x4_H264_8u_C1IR, predictor(4, 2, 4)),
    row("vekiPredictIntra_16x16_H264_8u_C1IR", &vekiPredictIntra_16x16_H264_8u_C1IR, predictor(16, 2, 0)),
    row("vekiPredictIntraChroma8x8_H264_8u_C1IR", &vekiPredictIntraChroma8x8_H264_8u_C1IR, predictor(8, 0, 8)),
    row("vekiReconstructLumaInterMB_H264_16s8u_C1R", &vekiReconstructLumaInterMB_H264_16s8u_C1R, lumaInter(luma4x4)),
    row("vekiReconstructLumaInter4x4MB_H264_16s8u_C1R", &vekiReconstructLumaInter4x4MB_H264_16s8u_C1R,
        join(lumaInter(luma4x4), scaled(16))),
    row("vekiReconstructLumaInter8x8MB_H264_16s8u_C1R", &vekiReconstructLumaInter8x8MB_H264_16s8u_C1R,
        join(lumaInter(luma8x8), scaled(64))),
    row("vekiReconstructLumaIntraMB_H264_16s8u_C1R", &vekiReconstructLumaIntraMB_H264_16s8u_C1R,
        lumaIntra(luma4x4, modes(16), 4)),
    row("vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R", &vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R,
        join(lumaIntra(luma4x4, modes(16), 4), scaled(16))),
    row("vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R", &vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R,
        join(lumaIntra(luma8x8, modes(4), 8), scaled(64))),
    row("vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R", &vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R,
        lumaIntra(luma16x16, mode4(), 0)),
    row("vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R", &vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R,
        join(lumaIntra(luma16x16, mode4(), 0), scaled(16))),
    row("vekiReconstructLumaIntraHalfMB_H264_16s8u_C1R", &vekiReconstructLumaIntraHalfMB_H264_16s8u_C1R,
        lumaIntra(luma4x4, modes(16), 4, true)),
    row("vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R", &vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R,
        join(lumaIntra(luma4x4, modes(16), 4, true), scaled(16))),
    row("vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R", &vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R,
        join(lumaIntra(luma8x8, modes(4), 8, true), scaled(64))),
    row("vekiReconstructChromaInterMB_H264_16s8u_P2R", &vekiReconstructChromaInterMB_H264_16s8u_P2R,
        chromaInter(8, flat())),
    row("vekiReconstructChromaInter4x4MB_H264_16s8u_P2R", &vekiReconstructChromaInter4x4MB_H264_16s8u_P2R,
        chromaInter(8, perPlane())),
    row("vekiReconstructChromaIntraMB_H264_16s8u_P2R", &vekiReconstructChromaIntraMB_H264_16s8u_P2R,
        chromaIntra(8, false, flat({edgeFlags()}))),
    row("vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R", &vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R,
        chromaIntra(8, false, perPlane({edgeFlags()}))),
    row("vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R", &vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R,
        chromaIntra(8, true, flat({edgeFlags()}))),
    row("vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R", &vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R,
        chromaIntra(8, true, perPlane({edgeFlags()}))),
    row("vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R", &vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R,
        halvesOf(chromaIntra(8, false, flat({edgeFlags()})))),
    row("vekiReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R", &vekiReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R,
        halvesOf(chromaIntra(8, false, perPlane({edgeFlags()})))),
    row("vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R", &vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R,
        chromaInter(16, perPlane())),
    row("vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R", &vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R,
        chromaIntra(16, false, perPlane({edgeFlags()}))),
    row("vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R",
        &vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R, chromaIntra(16, true, perPlane({edgeFlags()}))),
    wideRow("vekiReconstructLumaInter4x4_H264High_32s16u_IP1R", &vekiReconstructLumaInter4x4_H264High_32s16u_IP1R,
            wide(join(lumaInter(luma4x4), scaled(16)))),
    wideRow("vekiReconstructLumaInter8x8_H264High_32s16u_IP1R", &vekiReconstructLumaInter8x8_H264High_32s16u_IP1R,
            wide(join(lumaInter(luma8x8), scaled(64)))),
    wideRow("vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R", &vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R,
            wide(join(lumaIntra(luma4x4, modes(16), 4), scaled(16)))),
    wideRow("vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R", &vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R,
            wide(join(lumaIntra(luma8x8, modes(4), 8), scaled(64)))),
    wideRow("vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R", &vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R,
            wide(join(lumaIntra(luma16x16, mode4(), 0), scaled(16)))),
    wideRow("vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R",
            &vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R,
            wide(join(lumaIntra(luma4x4, modes(16), 4, true), scaled(16)))),
    wideRow("vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R",
            &vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R,
            wide(join(lumaIntra(luma8x8, modes(4), 8, true), scaled(64)))),
    wideRow("vekiReconstructChromaInter4x4_H264High_32s16u_IP2R", &vekiReconstructChromaInter4x4_H264High_32s16u_IP2R,
            wide(chromaInter(8, perPlane()))),
    wideRow("vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R", &vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R,
            wide(chromaIntra(8, false, perPlane({edgeFlags()})))),
    wideRow("vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R",
            &vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R,
            wide(chromaIntra(8, true, perPlane({edgeFlags()})))),
    wideRow("vekiReconstructChroma422Inter4x4_H264High_32s16u_IP2R",
            &vekiReconstructChroma422Inter4x4_H264High_32s16u_IP2R, wide(chromaInter(16, perPlane()))),
    wideRow("vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R",
            &vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R,
            wide(chromaIntra(16, false, perPlane({edgeFlags()})))),
    wideRow("vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R",
            &vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R,
            wide(chromaIntra(16, true, perPlane({edgeFlags()})))),
};

}  // namespace
}  // namespace catalogue
