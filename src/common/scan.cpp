// The exports of the coefficient scans and the zero count.
#include "common/scan_plain.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/common.h"
#if VEKVC_SIMD
#include "common/scan_simd.h"
#endif
#if VEKVC_VECTOR512
#include "common/scan_simd512.h"
#endif

using namespace vekvc;

VekStatus vekiScanFwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero, Vek32s scan) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(countNonZero, 1, 64)) return vekStsErrOutOfRange;
    return finish([&] {
        return withScan(
            scan, [&]<const Vek8u(&table)[64]>() { return kernel::scanForward<table>(pSrc, pDst, countNonZero); });
    });
}

VekStatus vekiScanInv_16s_C1(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero, Vek32s scan) {
    if (anyNull(pSrc, pDst)) return vekStsErrNullPtr;
    if (outside(indxLastNonZero, 0, 63)) return vekStsErrOutOfRange;
    return finish([&] {
        return withScan(
            scan, [&]<const Vek8u(&table)[64]>() { return kernel::scanInverse<table>(pSrc, pDst, indxLastNonZero); });
    });
}

VekStatus vekiCountZeros8x8_16s_C1(const Vek16s* pSrc, Vek32u* pCount) {
    if (anyNull(pCount, pSrc)) return vekStsErrNullPtr;
    store(pCount, kernel::countZeros(pSrc));
    return vekStsOk;
}
