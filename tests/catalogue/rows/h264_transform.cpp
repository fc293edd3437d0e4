// Rows of the H.264 transforms and quantizers.
#include "catalogue.h"
#include "optional.h"

namespace catalogue {
namespace {

Argument qp(int max) { return range("QP", 0, max).bad({-1, max + 1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange); }
Argument unsignedQp(int max) { return range("QP", 0, max).bad({max + 1, -1, INT32_MIN}, vekStsErrOutOfRange); }
Argument qpDiv6(int max) { return range("QPdiv6", 0, max).bad({-1, max + 1, INT32_MIN, INT32_MAX}, vekStsErrQPRange); }
Argument flag(const char* name) { return oneOf(name, {0, 0, 1, 1, -2}); }
Argument scanPos(int n) { return in<Vek16s>("pScanPos", count(n)).of(0, n - 1); }
Argument scale(int n) { return in<Vek16s>("pScale", count(n)).of(-32768, 32767); }
Argument optionalScale(int n) { return in<Vek16s>("pScale", whenGiven("pScale", n)).of(-32768, 32767).nullable(); }
template <class T>
Argument counter(const char* name) {
    return out<T>(name, count(1));
}
Argument samples(const char* name, Use use, int size) {
    return memory<Vek16u>(name, use, block(size, size)).of([](Random& random, const Call& c) {
        return draw(random, 0, (1 << c["bitDepth"]) - 1);
    });
}

template <class S, class D>
std::vector<Argument> forward4x4(int maxQp) {
    return {in<S>("pSrc", count(16)),      out<D>("pDst", count(16)), qp(maxQp),
            counter<Vek32s>("pNumLevels"), flag("isIntra"),           scanPos(16),
            counter<Vek32s>("pLastPos"),   optionalScale(16)};
}
template <class C>
std::vector<Argument> forwardLumaDC(int maxQp) {
    return {out<C>("pDst", count(16)),
            inOut<C>("pSrc", count(16)),
            qp(maxQp),
            counter<Vek32s>("pNumLevels"),
            flag("needTransform"),
            scanPos(16),
            counter<Vek32s>("pLastPos"),
            optionalScale(1)};
}
template <class C>
std::vector<Argument> forwardChromaDC(int n, int maxQp) {
    return {out<C>("pDst", count(n)), inOut<C>("pSrc", count(n)), qp(maxQp),       counter<Vek32s>("pNumLevels"),
            flag("isIntra"),          flag("needTransform"),      optionalScale(1)};
}
template <class C>
std::vector<Argument> inverseDC(int n, int maxQp) {
    return {inOut<C>("pSrcDst", count(n)), qp(maxQp), optionalScale(1)};
}
std::vector<Argument> without(std::vector<Argument> arguments) {
    arguments.pop_back();
    return arguments;
}
template <class C, class S>
std::vector<Argument> quantize(Argument qpArgument, Argument scaleArgument) {
    return {in<C>("pSrc", count(16)),
            out<C>("pDst", count(16)),
            counter<Vek32u>("pNumLevels"),
            counter<Vek32u>("pLastPos"),
            scaleArgument,
            scanPos(16),
            qpArgument,
            flag("isIntra")};
}
template <class C>
std::vector<Argument> quantize8x8(int maxDiv6) {
    return {in<C>("pSrc", count(64)),
            out<C>("pDst", count(64)),
            qpDiv6(maxDiv6),
            flag("isIntra"),
            counter<Vek32s>("pNumLevels"),
            scanPos(64),
            counter<Vek32s>("pLastPos"),
            scale(64)};
}
// Levels of which hasAC and pDC decide how many are read.
template <class C>
Argument levelsRead() {
    return in<C>("pSrcDst", [](const Call& c) {
        return Rect{c["pDCGiven"] && !c["hasAC"] ? 1 : 0, 0, c["hasAC"] ? 16 : 1, 1};
    });
}
template <class C>
Argument optionalDC() {
    return in<C>("pDC", whenGiven("pDC", 1)).nullable();
}
std::vector<Argument> scaleLevel(int n, VekStatus status) {
    return {in<Vek8u>("pSrc", count(n)), out<Vek16s>("pDstInv", count(n)), out<Vek16s>("pDstFwd", count(n)),
            range("QPmod6", 0, 5).bad({-1, 6, INT32_MIN, INT32_MAX}, status)};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiTransformResidual4x4Fwd_H264_16s_C1", &vekiTransformResidual4x4Fwd_H264_16s_C1,
        {in<Vek16s>("pSrc", count(16)), out<Vek16s>("pDst", count(16))}),
    row("vekiTransformResidual4x4Fwd_H264_32s_C1", &vekiTransformResidual4x4Fwd_H264_32s_C1,
        {in<Vek32s>("pSrc", count(16)), out<Vek32s>("pDst", count(16))}),
    row("vekiTransformResidual4x4Inv_H264_16s_C1", &vekiTransformResidual4x4Inv_H264_16s_C1,
        {in<Vek16s>("pSrc", count(16)), out<Vek16s>("pDst", count(16))}),
    row("vekiTransformResidual4x4Inv_H264_32s_C1", &vekiTransformResidual4x4Inv_H264_32s_C1,
        {in<Vek32s>("pSrc", count(16)), out<Vek32s>("pDst", count(16))}),
    optionalRow<7>("vekiTransformQuantFwd4x4_H264_16s_C1", &vekiTransformQuantFwd4x4_H264_16s_C1,
                   forward4x4<Vek16s, Vek16s>(51)),
    optionalRow<7>("vekiTransformQuantFwd4x4_H264_16s32s_C1", &vekiTransformQuantFwd4x4_H264_16s32s_C1,
                   forward4x4<Vek16s, Vek32s>(87)),
    optionalRow<4>(
        "vekiTransformQuantResidual_H264_16s_C1I", &vekiTransformQuantResidual_H264_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(16)), qp(51), flag("isIntra"), counter<Vek32s>("pNumLevels"),
         in<Vek16s>("pScanPos", whenGiven("pScanPos", 16)).of(0, 15).nullable(), counter<Vek32s>("pLastPos")}),
    row("vekiQuantizeResidual4x4Fwd_H264_16s32s_C1", &vekiQuantizeResidual4x4Fwd_H264_16s32s_C1,
        quantize<Vek16s, Vek32u>(qp(51), in<Vek32u>("pScale", count(16)))),
    optionalRow<4>("vekiQuantizeResidual4x4Fwd_H264_16s_C1", &vekiQuantizeResidual4x4Fwd_H264_16s_C1,
                   quantize<Vek16s, Vek16s>(unsignedQp(51), optionalScale(16))),
    optionalRow<4>("vekiQuantizeResidual4x4Fwd_H264_32s_C1", &vekiQuantizeResidual4x4Fwd_H264_32s_C1,
                   quantize<Vek32s, Vek32u>(unsignedQp(87), in<Vek32u>("pScale", whenGiven("pScale", 16)).nullable())),
    optionalRow<3, 8>("vekiTransformQuantInvAddPred4x4_H264_16s_C1IR", &vekiTransformQuantInvAddPred4x4_H264_16s_C1IR,
                      {in<Vek8u>("pPred", block(4, 4)), step("pPred"), levelsRead<Vek16s>(), optionalDC<Vek16s>(),
                       out<Vek8u>("pDst", block(4, 4)), step("pDst"), qp(51), flag("hasAC"), optionalScale(16)}),
    optionalRow<3, 8>("vekiTransformQuantInvAddPred4x4_H264_32s_C1IR", &vekiTransformQuantInvAddPred4x4_H264_32s_C1IR,
                      {samples("pPred", Use::In, 4), step("pPred"), levelsRead<Vek32s>(), optionalDC<Vek32s>(),
                       out<Vek16u>("pDst", block(4, 4)), step("pDst"), qp(87), flag("hasAC"), optionalScale(16),
                       range("bitDepth", 9, 14).bad({8, 15, -1, INT32_MAX}, vekStsErrOutOfRange)}),
    optionalRow<3>("vekiDequantTransformResidualAndAdd_H264_16s_C1I", &vekiDequantTransformResidualAndAdd_H264_16s_C1I,
                   {in<Vek8u>("pPred", block(4, 4)), step("pPred"), levelsRead<Vek16s>().nullable(),
                    optionalDC<Vek16s>(), out<Vek8u>("pDst", block(4, 4)), step("pDst"), qp(51), flag("hasAC")}),
    optionalRow<2>("vekiDequantTransformResidual_H264_16s_C1I", &vekiDequantTransformResidual_H264_16s_C1I,
                   {inOut<Vek16s>("pSrcDst", block(4, 4)), step("pSrcDst").atLeast(8), optionalDC<Vek16s>(), qp(51),
                    flag("hasAC")}),
    optionalRow<7>("vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I", &vekiTransformQuantFwdLumaDC4x4_H264_16s_C1I,
                   forwardLumaDC<Vek16s>(51)),
    optionalRow<7>("vekiTransformQuantFwdLumaDC4x4_H264_32s_C1I", &vekiTransformQuantFwdLumaDC4x4_H264_32s_C1I,
                   forwardLumaDC<Vek32s>(87)),
    row("vekiTransformQuantLumaDC_H264_16s_C1I", &vekiTransformQuantLumaDC_H264_16s_C1I,
        without(forwardLumaDC<Vek16s>(51))),
    optionalRow<6>("vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I", &vekiTransformQuantFwdChromaDC2x2_H264_16s_C1I,
                   forwardChromaDC<Vek16s>(4, 39)),
    optionalRow<6>("vekiTransformQuantFwdChromaDC2x2_H264_32s_C1I", &vekiTransformQuantFwdChromaDC2x2_H264_32s_C1I,
                   forwardChromaDC<Vek32s>(4, 75)),
    optionalRow<6>("vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I", &vekiTransformQuantFwdChromaDC2x4_H264_16s_C1I,
                   forwardChromaDC<Vek16s>(8, 39)),
    optionalRow<6>("vekiTransformQuantFwdChromaDC2x4_H264_32s_C1I", &vekiTransformQuantFwdChromaDC2x4_H264_32s_C1I,
                   forwardChromaDC<Vek32s>(8, 75)),
    row("vekiTransformQuantChromaDC_H264_16s_C1I", &vekiTransformQuantChromaDC_H264_16s_C1I,
        without(forwardChromaDC<Vek16s>(4, 39))),
    row("vekiTransformDequantLumaDC_H264_16s_C1I", &vekiTransformDequantLumaDC_H264_16s_C1I,
        without(inverseDC<Vek16s>(16, 51))),
    row("vekiTransformDequantChromaDC_H264_16s_C1I", &vekiTransformDequantChromaDC_H264_16s_C1I,
        without(inverseDC<Vek16s>(4, 51))),
    optionalRow<2>("vekiTransformQuantInvLumaDC4x4_H264_16s_C1I", &vekiTransformQuantInvLumaDC4x4_H264_16s_C1I,
                   inverseDC<Vek16s>(16, 51)),
    optionalRow<2>("vekiTransformQuantInvLumaDC4x4_H264_32s_C1I", &vekiTransformQuantInvLumaDC4x4_H264_32s_C1I,
                   inverseDC<Vek32s>(16, 87)),
    optionalRow<2>("vekiTransformQuantInvChromaDC2x2_H264_16s_C1I", &vekiTransformQuantInvChromaDC2x2_H264_16s_C1I,
                   inverseDC<Vek16s>(4, 39)),
    optionalRow<2>("vekiTransformQuantInvChromaDC2x2_H264_32s_C1I", &vekiTransformQuantInvChromaDC2x2_H264_32s_C1I,
                   inverseDC<Vek32s>(4, 75)),
    optionalRow<2>("vekiTransformQuantInvChromaDC2x4_H264_16s_C1I", &vekiTransformQuantInvChromaDC2x4_H264_16s_C1I,
                   inverseDC<Vek16s>(8, 39)),
    optionalRow<2>("vekiTransformQuantInvChromaDC2x4_H264_32s_C1I", &vekiTransformQuantInvChromaDC2x4_H264_32s_C1I,
                   inverseDC<Vek32s>(8, 75)),
    row("vekiTransformPrediction_H264_8u16s_C1", &vekiTransformPrediction_H264_8u16s_C1,
        {in<Vek8u>("pSrc", block(4, 4)), step("pSrc"), out<Vek16s>("pDst", count(16))}),
    optionalRow<2>("vekiDequantTransformResidual_SISP_H264_16s_C1I", &vekiDequantTransformResidual_SISP_H264_16s_C1I,
                   {inOut<Vek16s>("pSrcDst", count(16)), in<Vek16s>("pPred", count(16)), optionalDC<Vek16s>(),
                    range("QP", -2, 53), range("QS", -2, 53), flag("isSwitching")}),
    row("vekiTransformDequantChromaDC_SISP_H264_16s_C1I", &vekiTransformDequantChromaDC_SISP_H264_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(4)), in<Vek16s>("pPred", count(4)), range("QP", -2, 53), range("QS", -2, 53),
         flag("isSwitching")}),
    row("vekiGenScaleLevel4x4_H264_8u16s_C1", &vekiGenScaleLevel4x4_H264_8u16s_C1, scaleLevel(16, vekStsErrOutOfRange)),
    row("vekiGenScaleLevel8x8_H264_8u16s_D2", &vekiGenScaleLevel8x8_H264_8u16s_D2, scaleLevel(64, vekStsErrQPRange)),
    row("vekiTransformFwdLuma8x8_H264_16s_C1", &vekiTransformFwdLuma8x8_H264_16s_C1,
        {in<Vek16s>("pSrc", count(64)), out<Vek16s>("pDst", count(64))}),
    row("vekiTransformFwdLuma8x8_H264_16s32s_C1", &vekiTransformFwdLuma8x8_H264_16s32s_C1,
        {in<Vek16s>("pSrc", count(64)), out<Vek32s>("pDst", count(64))}),
    row("vekiTransformLuma8x8Fwd_H264_16s_C1I", &vekiTransformLuma8x8Fwd_H264_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(64))}),
    row("vekiQuantLuma8x8_H264_16s_C1", &vekiQuantLuma8x8_H264_16s_C1, quantize8x8<Vek16s>(8)),
    row("vekiQuantLuma8x8_H264_32s_C1", &vekiQuantLuma8x8_H264_32s_C1, quantize8x8<Vek32s>(14)),
    row("vekiQuantLuma8x8Inv_H264_16s_C1I", &vekiQuantLuma8x8Inv_H264_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(64)), qpDiv6(8), scale(64)}),
    row("vekiQuantInvLuma8x8_H264_32s_C1I", &vekiQuantInvLuma8x8_H264_32s_C1I,
        {inOut<Vek32s>("pSrcDst", count(64)), qpDiv6(14), scale(64)}),
    row("vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R", &vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R,
        {in<Vek8u>("pPred", block(8, 8)), step("pPred"), in<Vek16s>("pSrc", count(64)), out<Vek8u>("pDst", block(8, 8)),
         step("pDst")}),
    row("vekiTransformInvAddPredLuma8x8_H264_32s16u_C1R", &vekiTransformInvAddPredLuma8x8_H264_32s16u_C1R,
        {samples("pPred", Use::In, 8), step("pPred"), in<Vek32s>("pSrc", count(64)), out<Vek16u>("pDst", block(8, 8)),
         step("pDst"), range("bitDepth", 8, 14)}),
};

}  // namespace
}  // namespace catalogue
