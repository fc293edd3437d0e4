#include "core/check.h"
#include "core/kernel.h"
#include "mpeg2/quant_plain.h"
#if VEKVC_SIMD
#include "mpeg2/quant_simd.h"
#endif
#include "vekvc/mpeg2.h"

using namespace vekvc;

namespace {

// Reciprocals of the default intra quantiser matrix (ISO 13818-2 6.3.11), raster order.
struct DefaultReciprocals {
    Vek32f value[64];

    constexpr DefaultReciprocals() : value() {
        constexpr Vek8u kWeights[64] = {8,  16, 19, 22, 26, 27, 29, 34, 16, 16, 22, 24, 27, 29, 34, 37,  //
                                        19, 22, 26, 27, 29, 34, 34, 38, 22, 22, 26, 27, 29, 34, 37, 40,  //
                                        22, 26, 27, 29, 32, 35, 40, 48, 26, 27, 29, 32, 35, 40, 48, 58,  //
                                        26, 27, 29, 34, 38, 46, 56, 69, 27, 29, 35, 38, 46, 56, 69, 83};
        for (int i = 0; i < 64; ++i) value[i] = 1.0f / static_cast<Vek32f>(kWeights[i]);
    }
};

constexpr DefaultReciprocals kDefaultIntra;

}  // namespace

VekStatus vekiQuantIntra_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix, Vek32s* pCount) {
    if (anyNull(pSrcDst, pCount)) return vekStsErrNullPtr;
    if (QP == 0) return vekStsErrDivByZero;
    const Vek32f* const matrix = pQuantMatrix != nullptr ? pQuantMatrix : kDefaultIntra.value;
    store<Vek32s>(pCount, kernel::quantMatrix(pSrcDst, QP, matrix, 1));
    return vekStsOk;
}

VekStatus vekiQuant_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek32f* pQuantMatrix, Vek32s* pCount) {
    if (anyNull(pSrcDst, pCount)) return vekStsErrNullPtr;
    if (QP == 0) return vekStsErrDivByZero;
    store<Vek32s>(pCount, pQuantMatrix != nullptr ? kernel::quantMatrix(pSrcDst, QP, pQuantMatrix, 0)
                                                  : kernel::quantFlat(pSrcDst, QP));
    return vekStsOk;
}

VekStatus vekiQuantInvIntra_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    if (anyNull(pSrcDst, pQuantMatrix)) return vekStsErrNullPtr;
    kernel::quantInvIntra(pSrcDst, QP, pQuantMatrix);
    return vekStsOk;
}

VekStatus vekiQuantInv_MPEG2_16s_C1I(Vek16s* pSrcDst, Vek32s QP, const Vek16s* pQuantMatrix) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (pQuantMatrix != nullptr)
        kernel::quantInv(pSrcDst, QP, pQuantMatrix);
    else
        kernel::quantInvFlat(pSrcDst, QP);
    return vekStsOk;
}
