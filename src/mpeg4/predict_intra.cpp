// Exports: prediction of the coefficients of intra blocks.
#include "core/check.h"
#include "core/kernel.h"
#include "mpeg4/predict_intra_plain.h"
#include "vekvc/mpeg4.h"
#if VEKVC_SIMD
#include "mpeg4/predict_intra_simd.h"
#endif

using namespace vekvc;

VekStatus vekiPredictIntra_MPEG4_16s_C1I(Vek16s* pSrcDst, const Vek16s* pPred, Vek32s predQP, Vek32s QP,
                                         Vek32s videoComp, Vek32s predDir, Vek32s acPredFlag) {
    if (anyNull(pSrcDst, pPred)) return vekStsErrNullPtr;
    if (outside(predQP, 1, 511) || outside(QP, 1, 511)) return vekStsErrQPRange;
    kernel::predictIntraMpeg4(pSrcDst, pPred, predQP, QP, mpeg4::dcScaler(QP, videoComp != 0), predDir != 0,
                              acPredFlag != 0);
    return vekStsOk;
}

VekStatus vekiPredictIntraAIC_H263_16s_C1I(Vek16s* pSrcDst, const Vek16s* pLeft, const Vek16s* pAbove,
                                           Vek32s intraMode) {
    if (anyNull(pSrcDst)) return vekStsErrNullPtr;
    if (outside(intraMode, 0, 2)) return vekStsErrOutOfRange;
    kernel::predictIntraAic(pSrcDst, pLeft, pAbove, intraMode);
    return vekStsOk;
}
