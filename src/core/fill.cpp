#include "core/fill.h"

#include <cstring>

#include "core/check.h"
#include "core/memory.h"
#include "vekcore.h"
#if VEKVC_SIMD
#include "core/simd.h"
#endif

namespace vekvc {
namespace {

constexpr std::ptrdiff_t kLargeFill = 0x80000;

bool exceedsCaches(std::ptrdiff_t bytes) {
    int cache = 0;
    return bytes > kLargeFill && vekGetMaxCacheSizeB(&cache) == 0 && bytes >= cache;
}

void fillRun(Vek8u value, Vek8u* p, std::ptrdiff_t n, [[maybe_unused]] bool bypassCaches) {
#if VEKVC_SIMD
    if (bypassCaches && n >= 64) {
        const auto head = static_cast<std::ptrdiff_t>(-reinterpret_cast<std::uintptr_t>(p) & 15);
        std::memset(p, value, static_cast<std::size_t>(head));
        p += head;
        n -= head;
        const u8x16 v = splat<u8x16>(value);
        for (; n >= 16; n -= 16, p += 16) storeStreaming(p, v);
    }
#endif
    std::memset(p, value, static_cast<std::size_t>(n));
}

}  // namespace

VekStatus fillPlane(Vek8u value, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize) {
    if (anyNull(pDst)) return vekStsErrNullPtr;
    if (anyBelow(1, roiSize.width, roiSize.height)) return vekStsErrSize;
    const std::ptrdiff_t bytes = std::ptrdiff_t{roiSize.width} * roiSize.height;
    const bool bypassCaches = exceedsCaches(bytes);
    if (roiSize.width == dstStep) {
        fillRun(value, pDst, bytes, bypassCaches);
    } else {
        for (Vek32s y = 0; y < roiSize.height; ++y)
            fillRun(value, pDst + std::ptrdiff_t{dstStep} * y, roiSize.width, bypassCaches);
    }
#if VEKVC_SIMD
    if (bypassCaches) finishStreaming();
#endif
    return vekStsOk;
}

}  // namespace vekvc
