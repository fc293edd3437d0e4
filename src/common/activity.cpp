// The exports of activity in frame and field order, and of edge detection.
#include "common/activity_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/activity_simd.h"
#endif

namespace vekvc {
namespace {

template <class T>
VekStatus frameField(const T* pSrc, Vek32s srcStep, Vek32s* pFrame, Vek32s* pField) {
    if (anyNull(pSrc, pFrame, pField)) return vekStsErrNullPtr;
    const auto sums = kernel::activityFrameField(Block<T>(pSrc, srcStep));
    store(pFrame, sums.frame);
    store(pField, sums.field);
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

using namespace vekvc;

VekStatus vekiSADFrameField16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s* pFrame, Vek32s* pField) {
    return frameField(pSrc, srcStep, pFrame, pField);
}

VekStatus vekiSADFrameField16x16_16s32s_C1R(const Vek16s* pSrc, Vek32s srcStep, Vek32s* pFrame, Vek32s* pField) {
    return frameField(pSrc, srcStep, pFrame, pField);
}

VekStatus vekiEdgeDetect16x16_8u32s_C1R(const Vek8u* pSrc, Vek32s srcStep, Vek32s edgeLevel, Vek32s edgeCount,
                                        Vek32s* pIsEdge) {
    if (anyNull(pSrc, pIsEdge)) return vekStsErrNullPtr;
    store(pIsEdge, Vek32s{kernel::countEdges(Block<Vek8u>(pSrc, srcStep), edgeLevel) >= edgeCount});
    return vekStsOk;
}
