// The state of the recursive denoiser: for every pixel the estimate H in sixteenths of a grey level and the gain G, and
// a few rows of scratch, so that the operation allocates nothing and reads each sample once.
#ifndef VEKVC_PROCESSING_DENOISE_ADAPTIVE_H
#define VEKVC_PROCESSING_DENOISE_ADAPTIVE_H

#include <cstdint>

#include "core/memory.h"
#include "core/state.h"
#include "vekvc/processing_denoise.h"

namespace vekvc {

// What follows from the gain k of a pixel in this frame.
struct AdaptiveGain {
    Vek8u next;       // G for the next frame
    Vek8u threshold;  // T[k], the reach of the filter in space
};

}  // namespace vekvc

struct VekDenoiseAdaptiveState : vekvc::AllocatedState {
    VekiSize size = {};
    Vek32s noise = 0;
    vekvc::AdaptiveGain gains[257] = {};  // by k; k = 0 does not occur

    // The table: planes and rows whose pitch is a multiple of kUnit samples, so that vectors may run over a row's end.
    // Rows of scratch have kMargin samples more on both sides.
    static constexpr std::int64_t kUnit = 32, kMargin = 32;
    static constexpr Vek32s kDifferenceRows = 3, kSampleRows = 8, kThresholdRows = 4;

    std::int64_t pitch() const { return (std::int64_t{size.width} + kUnit - 1) / kUnit * kUnit; }
    std::int64_t scratchPitch() const { return pitch() + 2 * kMargin; }
    std::int64_t planeSamples() const { return pitch() * size.height; }
    // More than INT32_MAX if it is more than can be allocated; 3 times the greatest plane would not fit 64 bits.
    std::int64_t tableBytes() const {
        if (planeSamples() > INT32_MAX) return planeSamples();
        return 3 * planeSamples() + scratchBytes();
    }
    std::int64_t scratchBytes() const {
        return (2 * kDifferenceRows + kSampleRows + kThresholdRows + 4) * scratchPitch();
    }

    Vek16u* estimate(Vek32s y) const { return static_cast<Vek16u*>(table) + pitch() * y; }
    Vek8u* gain(Vek32s y) const { return static_cast<Vek8u*>(table) + 2 * planeSamples() + pitch() * y; }
    Vek8u* scratch() const { return static_cast<Vek8u*>(table) + 3 * planeSamples(); }
    // e = 16 s - H of row y, of the frame before; with one sample repeated on both sides.
    Vek16s* differences(Vek32s y) const {
        return reinterpret_cast<Vek16s*>(scratch()) + scratchPitch() * (y % kDifferenceRows) + kMargin;
    }
    // b = (H + 8) >> 4 of row y, of this frame; with two samples repeated on both sides.
    Vek8u* samples(Vek32s y) const {
        return scratch() + scratchPitch() * (2 * kDifferenceRows + y % kSampleRows) + kMargin;
    }
    // T[k] of row y.
    Vek8u* thresholds(Vek32s y) const {
        return scratch() + scratchPitch() * (2 * kDifferenceRows + kSampleRows + y % kThresholdRows) + kMargin;
    }
    // Of the fast form: sums down the columns of the differences and of their magnitudes.
    Vek16s* columnSums() const { return reinterpret_cast<Vek16s*>(lastRows()) + kMargin; }
    Vek16s* columnMagnitudes() const { return columnSums() + scratchPitch(); }

  private:
    Vek8u* lastRows() const {
        return scratch() + scratchPitch() * (2 * kDifferenceRows + kSampleRows + kThresholdRows);
    }
};

#endif
