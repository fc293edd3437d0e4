// Exports: reconstruction of the two chroma planes of a macroblock.
#include "core/check.h"
#include "core/kernel.h"
#include "h264/reconstruct_plain.h"
#include "vekvc/h264_reconstruct.h"
#if VEKVC_SIMD
#include "h264/reconstruct_simd.h"
#endif

using namespace vekvc;
using h264::availableNeighbours;
using h264::CodedBlocks;
using h264::Scaling;

namespace {

// Which blocks of Cb and Cr are coded.
struct CodedPlanes {
    CodedBlocks plane[2];

    bool none() const { return !plane[0].dc && !plane[1].dc && plane[0].ac == 0 && plane[1].ac == 0; }
};

constexpr CodedPlanes codedBlocks420(Vek32u cbp) {
    return {{{(cbp >> 17 & 1) != 0, cbp >> 19 & 15}, {(cbp >> 18 & 1) != 0, cbp >> 23 & 15}}};
}
constexpr CodedPlanes codedBlocks422(Vek32u cbpChroma) {
    return {{{(cbpChroma & 1) != 0, cbpChroma >> 2 & 255}, {(cbpChroma & 2) != 0, cbpChroma >> 10 & 255}}};
}

// The scaling arguments of the forms that take them for each plane.
struct ChromaScaling {
    Vek32s chromaQPU, chromaQPV;
    const Vek16s *pLevelScaleU, *pLevelScaleV;
    Vek32s levelScaleDCU, levelScaleDCV;
    Vek8u bypass;
};

// Flat scaling with one QP; any table will do for a QP that the checks will reject.
ChromaScaling flatScaling(Vek32s chromaQP) {
    const auto& levelScale = h264::flatLevelScale4x4[outside(chromaQP, 0, 39) ? 0 : chromaQP % 6];
    return {chromaQP, chromaQP, levelScale.data(), levelScale.data(), levelScale[0], levelScale[0], 0};
}

// One set of edge flags from those of the two halves.
constexpr Vek8u joinedHalves(Vek8u edgeFlagsUpper, Vek8u edgeFlagsLower) {
    return static_cast<Vek8u>((edgeFlagsUpper & ~2) | (edgeFlagsLower & 1) << 1);
}

template <class C, class P>
bool nullArgument(C** ppCoeffs, P* pSrcDstU, P* pSrcDstV, const ChromaScaling& s) {
    return anyNull(ppCoeffs, pSrcDstU, pSrcDstV, s.pLevelScaleU, s.pLevelScaleV) || anyNull(*ppCoeffs);
}

bool outsideQP(const ChromaScaling& s, Vek32s bitDepth) {
    if (outside(bitDepth, 8, 14)) return true;
    const Vek32s maxQP = 39 + 6 * (bitDepth - 8);
    return outside(s.chromaQPU, 0, maxQP) || outside(s.chromaQPV, 0, maxQP);
}

template <int height, class C, class P>
void addResidual(C** ppCoeffs, const MutableBlock<P> (&planes)[2], const CodedPlanes& coded, const ChromaScaling& s,
                 Vek32s bitDepth) {
    const Scaling scaling[2] = {{s.pLevelScaleU, s.levelScaleDCU, s.chromaQPU, s.bypass != 0},
                                {s.pLevelScaleV, s.levelScaleDCV, s.chromaQPV, s.bypass != 0}};
    kernel::reconstructChroma<height>(*ppCoeffs, planes, coded.plane, scaling, bitDepth);
}

template <int height, class C, class P>
VekStatus reconstructInter(C** ppCoeffs, P* pSrcDstU, P* pSrcDstV, Vek32s step, CodedPlanes coded,
                           const ChromaScaling& s, Vek32s bitDepth) {
    if (nullArgument(ppCoeffs, pSrcDstU, pSrcDstV, s)) return vekStsErrNullPtr;
    if (outsideQP(s, bitDepth)) return vekStsErrOutOfRange;
    if (coded.none()) return vekStsOk;
    addResidual<height>(ppCoeffs, {MutableBlock<P>(pSrcDstU, step), MutableBlock<P>(pSrcDstV, step)}, coded, s,
                        bitDepth);
    return vekStsOk;
}

template <int height, class C, class P>
VekStatus reconstructIntra(C** ppCoeffs, P* pSrcDstU, P* pSrcDstV, Vek32s step, Vek32s predMode, CodedPlanes coded,
                           Vek32u neighbours, const ChromaScaling& s, Vek32s bitDepth) {
    if (nullArgument(ppCoeffs, pSrcDstU, pSrcDstV, s)) return vekStsErrNullPtr;
    if (outside(predMode, 0, 3) || outsideQP(s, bitDepth)) return vekStsErrOutOfRange;
    const auto mode = static_cast<h264::ChromaMode>(predMode);
    if (lacksNeighbour(mode, neighbours)) return vekStsErrUnavailableNeighbour;
    const MutableBlock<P> planes[2] = {{pSrcDstU, step}, {pSrcDstV, step}};
    for (const MutableBlock<P>& plane : planes) kernel::predictIntraChroma<height>(plane, mode, neighbours, bitDepth);
    if (!coded.none()) addResidual<height>(ppCoeffs, planes, coded, s, bitDepth);
    return vekStsOk;
}

}  // namespace

VekStatus vekiReconstructChromaInterMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                      Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQP) {
    return reconstructInter<8>(ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, codedBlocks420(cbp), flatScaling(chromaQP), 8);
}

VekStatus vekiReconstructChromaInter4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                         Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQPU,
                                                         Vek32s chromaQPV, const Vek16s* pLevelScaleU,
                                                         const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                         Vek32s levelScaleDCV, Vek8u bypass) {
    return reconstructInter<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, codedBlocks420(cbp),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChromaIntraMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                      Vek32s srcDstStep, Vek32s predMode, Vek32u cbp, Vek32s chromaQP,
                                                      Vek8u edgeFlags) {
    return reconstructIntra<8>(ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp),
                               availableNeighbours(edgeFlags, false), flatScaling(chromaQP), 8);
}

VekStatus vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                         Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                         Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                         const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                         Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass) {
    return reconstructIntra<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp), availableNeighbours(edgeFlags, false),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                           Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                           Vek32s chromaQP, Vek8u edgeFlags) {
    return reconstructIntra<8>(ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp),
                               availableNeighbours(edgeFlags, true), flatScaling(chromaQP), 8);
}

VekStatus vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                              Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                              Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                              const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                              Vek32s levelScaleDCU, Vek32s levelScaleDCV,
                                                              Vek8u bypass) {
    return reconstructIntra<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp), availableNeighbours(edgeFlags, true),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                            Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                            Vek32s chromaQP, Vek8u edgeFlagsUpper,
                                                            Vek8u edgeFlagsLower) {
    return reconstructIntra<8>(ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp),
                               availableNeighbours(joinedHalves(edgeFlagsUpper, edgeFlagsLower), true),
                               flatScaling(chromaQP), 8);
}

VekStatus vekiReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                               Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                               Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlagsUpper,
                                                               Vek8u edgeFlagsLower, const Vek16s* pLevelScaleU,
                                                               const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                               Vek32s levelScaleDCV, Vek8u bypass) {
    return reconstructIntra<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp),
        availableNeighbours(joinedHalves(edgeFlagsUpper, edgeFlagsLower), true),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChromaInter4x4_H264High_32s16u_IP2R(Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV,
                                                             Vek32s srcDstStep, Vek32u cbp, Vek32s chromaQPU,
                                                             Vek32s chromaQPV, const Vek16s* pLevelScaleU,
                                                             const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                             Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth) {
    return reconstructInter<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, codedBlocks420(cbp),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}

VekStatus vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R(Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV,
                                                             Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                             Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                             const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                             Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass,
                                                             Vek32s bitDepth) {
    return reconstructIntra<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp), availableNeighbours(edgeFlags, false),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}

VekStatus vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV,
                                                                 Vek32s srcDstStep, Vek32s predMode, Vek32u cbp,
                                                                 Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                                 const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                                 Vek32s levelScaleDCU, Vek32s levelScaleDCV,
                                                                 Vek8u bypass, Vek32s bitDepth) {
    return reconstructIntra<8>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks420(cbp), availableNeighbours(edgeFlags, true),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}

VekStatus vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                               Vek32s srcDstStep, Vek32u cbpChroma, Vek32s chromaQPU,
                                                               Vek32s chromaQPV, const Vek16s* pLevelScaleU,
                                                               const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                               Vek32s levelScaleDCV, Vek8u bypass) {
    return reconstructInter<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, codedBlocks422(cbpChroma),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChroma422Inter4x4_H264High_32s16u_IP2R(Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV,
                                                                Vek32s srcDstStep, Vek32u cbpChroma, Vek32s chromaQPU,
                                                                Vek32s chromaQPV, const Vek16s* pLevelScaleU,
                                                                const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                                Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth) {
    return reconstructInter<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, codedBlocks422(cbpChroma),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}

VekStatus vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                               Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
                                                               Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                               const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                               Vek32s levelScaleDCU, Vek32s levelScaleDCV,
                                                               Vek8u bypass) {
    return reconstructIntra<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks422(cbpChroma),
        availableNeighbours(edgeFlags, false),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R(Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV,
                                                                Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
                                                                Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                                const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
                                                                Vek32s levelScaleDCU, Vek32s levelScaleDCV,
                                                                Vek8u bypass, Vek32s bitDepth) {
    return reconstructIntra<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks422(cbpChroma),
        availableNeighbours(edgeFlags, false),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}

VekStatus vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(Vek16s** ppCoeffs, Vek8u* pSrcDstU, Vek8u* pSrcDstV,
                                                                   Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
                                                                   Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags,
                                                                   const Vek16s* pLevelScaleU,
                                                                   const Vek16s* pLevelScaleV, Vek32s levelScaleDCU,
                                                                   Vek32s levelScaleDCV, Vek8u bypass) {
    return reconstructIntra<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks422(cbpChroma),
        availableNeighbours(edgeFlags, true),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass}, 8);
}

VekStatus vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
    Vek32s** ppCoeffs, Vek16u* pSrcDstU, Vek16u* pSrcDstV, Vek32s srcDstStep, Vek32s predMode, Vek32u cbpChroma,
    Vek32s chromaQPU, Vek32s chromaQPV, Vek8u edgeFlags, const Vek16s* pLevelScaleU, const Vek16s* pLevelScaleV,
    Vek32s levelScaleDCU, Vek32s levelScaleDCV, Vek8u bypass, Vek32s bitDepth) {
    return reconstructIntra<16>(
        ppCoeffs, pSrcDstU, pSrcDstV, srcDstStep, predMode, codedBlocks422(cbpChroma),
        availableNeighbours(edgeFlags, true),
        ChromaScaling{chromaQPU, chromaQPV, pLevelScaleU, pLevelScaleV, levelScaleDCU, levelScaleDCV, bypass},
        bitDepth);
}
