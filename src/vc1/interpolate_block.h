// The reference of a block that lies near or beyond the edges of its frame, or whose samples are mapped by intensity
// compensation (SMPTE 421M 8.3.6.5 and 8.3.8): the neighbourhood that a filter needs, copied from the frame.
#ifndef VEKVC_VC1_INTERPOLATE_BLOCK_H
#define VEKVC_VC1_INTERPOLATE_BLOCK_H

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/arith.h"
#include "vc1/interpolate_plain.h"
#include "vekvc/vc1.h"

namespace vekvc::vc1 {

// How far a filter reads before and behind a block in a direction with a fraction.
struct Reach {
    int before, behind;
};
inline constexpr Reach kBicubicReach{1, 2}, kBilinearReach{0, 1};

// The rows of the frame or field that a block refers to.
struct ReferenceRows {
    std::ptrdiff_t step;
    std::ptrdiff_t count;
    bool interlaced;

    explicit ReferenceRows(const VekVC1InterpolationBlockParams& b)
        : step(b.isFieldPicture ? std::ptrdiff_t{2} * b.srcStep : b.srcStep),
          count(b.isFieldPicture ? b.sizeFrame.height / 2 : b.sizeFrame.height),
          interlaced(b.isReferInterlaced && !b.isFieldPicture) {}

    // The nearest row to y, of y's parity if the rows are interlaced (and there is one of it).
    std::ptrdiff_t nearest(std::ptrdiff_t y) const {
        if (y >= 0 && y < count) return y;
        if (!interlaced) return clip3(0, count - 1, y);
        const std::ptrdiff_t parity = y & 1;
        const std::ptrdiff_t last = count - 1 - ((count - 1 - parity) & 1);
        return y < 0 ? std::min(parity, count - 1) : std::max(last, std::ptrdiff_t{0});
    }
};

// The neighbourhood of the largest block: 19 x 19 samples, or 9 x 9 pairs.
struct Neighbourhood {
    static constexpr int kStep = 32, kRows = 19;
    Vek8u samples[kRows * kStep];
};

// Row `row` of the frame (`width` samples of `channels` bytes) from column x on, n samples, extended at its ends.
template <int channels>
void copyExtended(Vek8u* to, const Vek8u* row, std::ptrdiff_t width, std::ptrdiff_t x, int n) {
    const std::ptrdiff_t before = clip3(0, n, -x), inside = clip3(0, n, width - x) - before;
    const auto repeat = [&](std::ptrdiff_t from, std::ptrdiff_t end, const Vek8u* sample) {
        for (std::ptrdiff_t i = from; i < end; ++i) std::memcpy(to + i * channels, sample, channels);
    };
    repeat(0, before, row);
    if (inside > 0)
        std::memcpy(to + before * channels, row + (x + before) * channels, static_cast<std::size_t>(inside * channels));
    repeat(before + inside, n, row + (width - 1) * channels);
}

// Calls filter(interpolation) with the block's reference: the frame itself or a copy in `local`. Does nothing if the
// frame or the block is empty.
template <int channels, class Filter>
void withReference(const VekVC1InterpolationBlockParams& b, VekiSize size, Reach reach, Filter&& filter) {
    const ReferenceRows rows(b);
    const std::ptrdiff_t width = b.sizeFrame.width;
    if (std::min({size.width, size.height, b.sizeFrame.width}) < 1 || rows.count < 1) return;

    Interpolation p{nullptr, rows.step, b.pDst, b.dstStep, b.dx & 3, b.dy & 3, b.roundControl & 1, b.sizeBlock};
    const Reach across = p.dx != 0 ? reach : Reach{0, 0}, down = p.dy != 0 ? reach : Reach{0, 0};
    const std::ptrdiff_t left = std::ptrdiff_t{b.x} - across.before, top = std::ptrdiff_t{b.y} - down.before;
    const int columnCount = across.before + size.width + across.behind;
    const int rowCount = down.before + size.height + down.behind;
    const bool inside = left >= 0 && left + columnCount <= width && top >= 0 && top + rowCount <= rows.count;
    Neighbourhood local;
    if (inside && b.pLUTTop == nullptr && b.pLUTBottom == nullptr) {
        p.src = b.pSrc + b.y * rows.step + std::ptrdiff_t{b.x} * channels;
    } else {
        for (int i = 0; i < rowCount; ++i) {
            const std::ptrdiff_t y = rows.nearest(top + i);
            Vek8u* to = local.samples + i * Neighbourhood::kStep;
            copyExtended<channels>(to, b.pSrc + y * rows.step, width, left, columnCount);
            const Vek8u* table = (y & 1) == 0 ? b.pLUTTop : b.pLUTBottom;
            if (table != nullptr)
                std::transform(to, to + columnCount * channels, to, [=](Vek8u x) { return table[x]; });
        }
        p.src = local.samples + down.before * Neighbourhood::kStep + across.before * channels;
        p.srcStep = Neighbourhood::kStep;
    }
    filter(p);
}

}  // namespace vekvc::vc1

#endif
