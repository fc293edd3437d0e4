#include "core/filter_frame.h"

#include <omp.h>

#include "core/fill.h"
#include "core/filter_frame_plain.h"
#include "core/kernel.h"
#include "vekcore.h"
#if VEKVC_SIMD
#include "core/filter_frame_simd.h"
#endif

namespace vekvc {
namespace {

constexpr int kRingRows = 3;

template <class T>
struct Filter {
    using Sum = FilterSum<T>;

    const T* pSrc;
    Vek32s srcStep;
    T* pDst;
    Vek32s dstStep;
    VekiSize roi;

    // Bytes of intermediate rows for one thread; a multiple of 64, so that threads share no cache line.
    std::ptrdiff_t scratchBytes() const {
        return (std::ptrdiff_t{kRingRows} * roi.width * static_cast<std::ptrdiff_t>(sizeof(Sum)) + 63) / 64 * 64;
    }

    // Filters rows first to last - 1: the horizontal pass runs one row ahead of the vertical one.
    void band(Vek32s first, Vek32s last, Sum* scratch) const {
        const auto sums = [&](Vek32s y) { return scratch + std::ptrdiff_t{roi.width} * (y % kRingRows); };
        const auto clamped = [&](Vek32s y) { return y < 0 ? 0 : y >= roi.height ? roi.height - 1 : y; };
        const auto horizontal = [&](Vek32s y) {
            kernel::filterHorizontally(offsetBytes(pSrc, std::ptrdiff_t{srcStep} * y), sums(y), roi.width);
        };
        for (Vek32s y = clamped(first - 1); y <= first; ++y) horizontal(y);
        for (Vek32s y = first; y < last; ++y) {
            if (y + 1 < roi.height) horizontal(y + 1);
            kernel::filterVertically(sums(clamped(y - 1)), sums(y), sums(clamped(y + 1)),
                                     offsetBytes(pDst, std::ptrdiff_t{dstStep} * y), roi.width);
        }
    }
};

// Scratch for so many threads, cleared; null if there is no memory.
Vek8u* allocateScratch(std::ptrdiff_t bytesPerThread, int threads) {
    const std::ptrdiff_t bytes = bytesPerThread * threads;
    if (bytes > INT32_MAX) return nullptr;
    auto* scratch = static_cast<Vek8u*>(vekMalloc(static_cast<int>(bytes)));
    if (scratch != nullptr)
        fillPlane(0, scratch, static_cast<Vek32s>(bytesPerThread), {static_cast<Vek32s>(bytesPerThread), threads});
    return scratch;
}

template <class T>
VekStatus run(const Filter<T>& filter, int threads) {
    const std::ptrdiff_t perThread = filter.scratchBytes();
    Vek8u* scratch = allocateScratch(perThread, threads);
    if (scratch == nullptr) return vekStsErrMemAlloc;
    const auto slice = [&](int thread) { return reinterpret_cast<FilterSum<T>*>(scratch + perThread * thread); };
    if (threads == 1) {
        filter.band(0, filter.roi.height, slice(0));
    } else {
        Vek32s rows = 0;
        int team = 1;
#pragma omp parallel num_threads(threads)
        {
#pragma omp master
            {
                team = omp_get_num_threads();  // the runtime may give fewer
                rows = filter.roi.height / team;
            }
#pragma omp barrier
            const int thread = omp_get_thread_num();
            const Vek32s first = rows * thread;
            const Vek32s last =
                thread == team - 1 ? filter.roi.height : first + rows;  // the last takes the remainder too
            if (first < last) filter.band(first, last, slice(thread));
        }
    }
    vekFree(scratch);
    return vekStsOk;
}

}  // namespace

VekStatus smoothBinomial3x3(FilterSamples samples, const void* pSrc, Vek32s srcStep, void* pDst, Vek32s dstStep,
                            VekiSize roiSize, int threads) {
    if (samples == FilterSamples::Vek8u) {
        const Filter<Vek8u> filter = {static_cast<const Vek8u*>(pSrc), srcStep, static_cast<Vek8u*>(pDst), dstStep,
                                      roiSize};
        return run(filter, 1);
    }
    const Filter<Vek16u> filter = {static_cast<const Vek16u*>(pSrc), srcStep, static_cast<Vek16u*>(pDst), dstStep,
                                   roiSize};
    const int allowed = ownGetNumThreads();
    return run(filter, threads < allowed ? threads : allowed);
}

}  // namespace vekvc
