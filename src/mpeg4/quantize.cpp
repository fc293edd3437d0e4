// Exports: quantization and inverse quantization.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/quantize_plain.h"
#include "vekvc/mpeg4.h"
#if VEKVC_SIMD
#include "mpeg4/quantize_simd.h"
#endif

using namespace vekvc;
using namespace vekvc::mpeg4;

namespace {

template <class State>
VekStatus initialise(Kind kind, Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel) {
    if (anyNull(pSpec)) return vekStsErrNullPtr;
    if (pQuantMatrix != nullptr && std::memchr(pQuantMatrix, 0, 64) != nullptr) return vekStsErrQPRange;
    if (outside(bitsPerPixel, 4, 12)) return vekStsErrOutOfRange;
    new (stateIn<State>(pSpec)) State(kind, pQuantMatrix, bitsPerPixel);
    return vekStsOk;
}

// Finds the state of the buffer, and checks it and QP.
template <class State>
VekStatus open(const Vek8u* pSpec, Kind kind, Vek32s QP, const State*& state) {
    if (!isSpecification(pSpec, kind)) return vekStsErrContextMatch;
    state = stateIn<State>(pSpec);
    return outside(QP, 1, state->largestQp()) ? vekStsErrQPRange : vekStsOk;
}

// Apart from the export, which would save registers for it.
[[gnu::noinline]] VekStatus quantAdvancedIntra(Vek16s* pSrcDst, Vek32s QP, Vek32s largest, Vek32s* pCount) {
    store(pCount, kernel::quantAdvancedIntra(pSrcDst, QP, largest));
    return vekStsOk;
}

}  // namespace

VekStatus vekiQuantIntraGetSize_MPEG4(Vek32u* pSpecSize) { return reportSize(pSpecSize, kQuantizerSize); }
VekStatus vekiQuantInterGetSize_MPEG4(Vek32u* pSpecSize) { return reportSize(pSpecSize, kQuantizerSize); }
VekStatus vekiQuantInvIntraGetSize_MPEG4(Vek32u* pSpecSize) { return reportSize(pSpecSize, kInverseQuantizerSize); }
VekStatus vekiQuantInvInterGetSize_MPEG4(Vek32u* pSpecSize) { return reportSize(pSpecSize, kInverseQuantizerSize); }

VekStatus vekiQuantIntraInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel) {
    return initialise<ForwardQuantizer>(Kind::quantIntra, pSpec, pQuantMatrix, bitsPerPixel);
}

VekStatus vekiQuantInterInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel) {
    return initialise<ForwardQuantizer>(Kind::quantInter, pSpec, pQuantMatrix, bitsPerPixel);
}

VekStatus vekiQuantInvIntraInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel) {
    return initialise<InverseQuantizer>(Kind::quantInvIntra, pSpec, pQuantMatrix, bitsPerPixel);
}

VekStatus vekiQuantInvInterInit_MPEG4(Vek8u* pSpec, const Vek8u* pQuantMatrix, Vek32s bitsPerPixel) {
    return initialise<InverseQuantizer>(Kind::quantInvInter, pSpec, pQuantMatrix, bitsPerPixel);
}

VekStatus vekiQuantIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s videoComp,
                                       Vek32s* pCount) {
    if (anyNull(pSrcDst, pSpec, pCount)) return vekStsErrNullPtr;
    const ForwardQuantizer* q = nullptr;
    if (const VekStatus status = open(pSpec, Kind::quantIntra, QP, q); status != vekStsOk) return status;
    store(pCount, kernel::quantMpeg4<true>(pSrcDst, *q, QP, dcScaler(QP, videoComp != 0)));
    return vekStsOk;
}

VekStatus vekiQuantInter_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s* pCount) {
    if (anyNull(pSrcDst, pSpec, pCount)) return vekStsErrNullPtr;
    const ForwardQuantizer* q = nullptr;
    if (const VekStatus status = open(pSpec, Kind::quantInter, QP, q); status != vekStsOk) return status;
    store(pCount, kernel::quantMpeg4<false>(pSrcDst, *q, QP, 0));
    return vekStsOk;
}

VekStatus vekiQuantInvIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP, Vek32s videoComp) {
    if (anyNull(pSrcDst, pSpec)) return vekStsErrNullPtr;
    const InverseQuantizer* q = nullptr;
    if (const VekStatus status = open(pSpec, Kind::quantInvIntra, QP, q); status != vekStsOk) return status;
    kernel::quantInvMpeg4<true>(pSrcDst, *q, QP, dcScaler(QP, videoComp != 0));
    return vekStsOk;
}

VekStatus vekiQuantInvInter_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek8u* pSpec, Vek32s QP) {
    if (anyNull(pSrcDst, pSpec)) return vekStsErrNullPtr;
    const InverseQuantizer* q = nullptr;
    if (const VekStatus status = open(pSpec, Kind::quantInvInter, QP, q); status != vekStsOk) return status;
    kernel::quantInvMpeg4<false>(pSrcDst, *q, QP, 0);
    return vekStsOk;
}

VekStatus vekiQuantIntra_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s advIntraFlag, Vek32s modQuantFlag,
                                      Vek32s* pCount) {
    if (anyNull(pSrcDst, pCount)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    const Vek32s largest = opaque(largestLevelH263(modQuantFlag != 0));  // not found a second time in 16 bits
    if (advIntraFlag != 0) return quantAdvancedIntra(pSrcDst, QP, largest, pCount);
    store(pCount, kernel::quantH263<true>(pSrcDst, QP, largest));
    return vekStsOk;
}

VekStatus vekiQuantInter_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s modQuantFlag, Vek32s* pCount) {
    if (anyNull(pSrcDst, pCount)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    store(pCount, kernel::quantH263<false>(pSrcDst, QP, largestLevelH263(modQuantFlag != 0)));
    return vekStsOk;
}

VekStatus vekiQuantInvIntra_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP, Vek32s advIntraFlag) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    if (advIntraFlag != 0)
        kernel::quantInvAdvancedIntra(pSrcDst, QP);
    else
        kernel::quantInvH263<true>(pSrcDst, QP);
    return vekStsOk;
}

VekStatus vekiQuantInvInter_H263_16s_C1I(Vek16s* pSrcDst, Vek32s QP) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(QP, 1, 31)) return vekStsErrQPRange;
    kernel::quantInvH263<false>(pSrcDst, QP);
    return vekStsOk;
}
