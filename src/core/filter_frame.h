// The frame of the separable 2-D filters: a horizontal pass into a ring of three intermediate rows, a vertical pass out
// of them, and the split of the rows between threads. The 3x3 binomial smoothing is its one filter.
#ifndef VEKVC_CORE_FILTER_FRAME_H
#define VEKVC_CORE_FILTER_FRAME_H

#include "vekvc/types.h"

namespace vekvc {

enum class FilterSamples { Vek8u, Vek16u };

// Samples beyond the region's border are those of the border. The region has at least 3 rows and 1 column. More than
// one thread (as many as are asked for and ownGetNumThreads() allows) works only on samples that are not of 8 bits.
// Error: vekStsErrMemAlloc, with nothing written.
VekStatus smoothBinomial3x3(FilterSamples samples, const void* pSrc, Vek32s srcStep, void* pDst, Vek32s dstStep,
                            VekiSize roiSize, int threads);

}  // namespace vekvc

#endif
