#include "h264/motion_vector_prediction.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vekdec::h264 {
namespace {

// The vector, or zero where the reference is not used. No branch: the answers follow no pattern.
MotionVector usedVector(MotionVector mv, int ref) {
    return std::bit_cast<MotionVector>(std::bit_cast<std::uint32_t>(mv) & ~static_cast<std::uint32_t>(ref >> 31));
}

// Takes the motion of block `raster` of a neighbouring macroblock.
void take(const Macroblock* mb, int raster, int list, bool field, std::int8_t& ref, MotionVector& mv) {
    if (mb == nullptr) {
        ref = MotionCache::kNotAvailable;
        mv = {};
        return;
    }
    ref = mb->refIdx[list][(raster >> 3) * 2 + (raster >> 1 & 1)];  // kNotUsed throughout intra macroblocks
    mv = usedVector(mb->mv[list][raster], ref);
    if (mb->field == field || ref < 0) return;
    if (field) {
        ref = static_cast<std::int8_t>(2 * ref);
        mv.y = static_cast<std::int16_t>(mv.y / 2);
    } else {
        ref = static_cast<std::int8_t>(ref >> 1);
        mv.y = static_cast<std::int16_t>(2 * mv.y);
    }
}

int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// The four blocks of the neighbour above, and of a left neighbour of the same kind. Vectors that are not used are zero.
void takeAbove(const Macroblock* mb, int list, std::int8_t* ref, MotionVector* mv) {
    if (mb == nullptr || mb->type != MbType::Inter) {
        std::memset(ref, mb == nullptr ? MotionCache::kNotAvailable : MotionCache::kNotUsed, 4);
        std::memset(static_cast<void*>(mv), 0, 4 * sizeof *mv);
        return;
    }
    ref[0] = ref[1] = mb->refIdx[list][2];
    ref[2] = ref[3] = mb->refIdx[list][3];
    std::memcpy(mv, &mb->mv[list][12], 4 * sizeof *mv);
}

void takeLeft(const Macroblock* mb, int list, std::int8_t* ref, MotionVector* mv) {
    if (mb == nullptr || mb->type != MbType::Inter) {
        for (int i = 0; i < 4; ++i) {
            ref[i * MotionCache::kStep] = mb == nullptr ? MotionCache::kNotAvailable : MotionCache::kNotUsed;
            mv[i * MotionCache::kStep] = {};
        }
        return;
    }
    for (int i = 0; i < 4; ++i) {
        ref[i * MotionCache::kStep] = mb->refIdx[list][i / 2 * 2 + 1];
        mv[i * MotionCache::kStep] = mb->mv[list][4 * i + 3];
    }
}

void takeDiagonals(const Neighbours& n, bool field, int list, MotionCache& cache) {
    constexpr int aboveLeft = MotionCache::at(-1, -1), aboveRight = MotionCache::at(4, -1);
    std::int8_t* ref = cache.ref[list];
    MotionVector* mv = cache.mv[list];
    take(n.aboveLeft, n.aboveLeftRow * 4 + 3, list, field, ref[aboveLeft], mv[aboveLeft]);
    take(n.aboveRight, 12, list, field, ref[aboveRight], mv[aboveRight]);
}

void gatherMixed(const Neighbours& n, bool field, int list, MotionCache& cache) {
    std::int8_t* ref = cache.ref[list];
    MotionVector* mv = cache.mv[list];
    for (int i = 0; i < 4; ++i) {
        const std::uint8_t entry = n.rows->luma[i];
        const int left = MotionCache::at(-1, i), above = MotionCache::at(i, -1);
        take(n.leftOf(entry), (entry & 3) * 4 + 3, list, field, ref[left], mv[left]);
        take(n.above, 12 + i, list, field, ref[above], mv[above]);
    }
    if (!n.leftMixed) return;
    for (int i = 1; i < 4; ++i) {
        const std::uint8_t entry = n.rows->lumaAbove[i];
        take(n.leftOf(entry), (entry & 3) * 4 + 3, list, field, cache.leftAboveRef[list][i],
             cache.leftAboveMv[list][i]);
    }
}

}  // namespace

void gatherMotion(const Neighbours& n, bool field, int lists, MotionCache& cache) {
    cache.leftMixed = n.leftMixed;
    const bool mixed = n.leftMixed || (n.above != nullptr && n.above->field != field);
    for (int list = 0; list < lists; ++list) {
        std::int8_t* ref = cache.ref[list];
        MotionVector* mv = cache.mv[list];
        std::memset(ref + MotionCache::at(-1, 0), MotionCache::kNotAvailable, 4 * MotionCache::kStep);
        if (mixed) {
            gatherMixed(n, field, list, cache);
        } else {
            takeLeft(n.left[0], list, ref + MotionCache::at(-1, 0), mv + MotionCache::at(-1, 0));
            takeAbove(n.above, list, ref + MotionCache::at(0, -1), mv + MotionCache::at(0, -1));
        }
        takeDiagonals(n, field, list, cache);
    }
}

void gatherCorners(const Neighbours& n, bool field, int lists, MotionCache& cache) {
    constexpr int left = MotionCache::at(-1, 0), above = MotionCache::at(0, -1);
    const std::uint8_t entry = n.rows->luma[0];
    for (int list = 0; list < lists; ++list) {
        std::int8_t* ref = cache.ref[list];
        MotionVector* mv = cache.mv[list];
        take(n.leftOf(entry), (entry & 3) * 4 + 3, list, field, ref[left], mv[left]);
        take(n.above, 12, list, field, ref[above], mv[above]);
        takeDiagonals(n, field, list, cache);
    }
}

NeighbourMotion aboveRightMotion(const MotionCache& cache, int list, int x, int y, int w) {
    const int c = MotionCache::at(x + w, y - 1);
    if (cache.ref[list][c] != MotionCache::kNotAvailable) return {cache.ref[list][c], cache.mv[list][c]};
    if (x == 0 && y > 0 && cache.leftMixed) return {cache.leftAboveRef[list][y], cache.leftAboveMv[list][y]};
    const int d = MotionCache::at(x - 1, y - 1);
    return {cache.ref[list][d], cache.mv[list][d]};
}

namespace {

// Median prediction (8.4.1.3.1) from the neighbours A, B and C.
MotionVector medianOf(const NeighbourMotion& a, const NeighbourMotion& b, const NeighbourMotion& c, int refIdx) {
    if (b.ref == MotionCache::kNotAvailable && c.ref == MotionCache::kNotAvailable) return a.mv;  // 8.4.1.3, B and C
    const int matches = int{a.ref == refIdx} + int{b.ref == refIdx} + int{c.ref == refIdx};
    if (matches == 1) return a.ref == refIdx ? a.mv : b.ref == refIdx ? b.mv : c.mv;
    return {static_cast<std::int16_t>(median(a.mv.x, b.mv.x, c.mv.x)),
            static_cast<std::int16_t>(median(a.mv.y, b.mv.y, c.mv.y))};
}

}  // namespace

MotionVector predictMotionVector(const MotionCache& cache, int list, int x, int y, int w, int refIdx,
                                 PartitionShape shape) {
    const int at = MotionCache::at(x, y);
    const std::int8_t* ref = cache.ref[list];
    const MotionVector* mv = cache.mv[list];
    const int a = at - 1, b = at - MotionCache::kStep;
    if (shape == PartitionShape::Wide16x8) {
        if (y == 0 && ref[b] == refIdx) return mv[b];
        if (y != 0 && ref[a] == refIdx) return mv[a];
    } else if (shape == PartitionShape::Tall8x16 && x == 0 && ref[a] == refIdx) {
        return mv[a];
    }
    const NeighbourMotion c = aboveRightMotion(cache, list, x, y, w);
    if (shape == PartitionShape::Tall8x16 && x != 0 && c.ref == refIdx) return c.mv;
    return medianOf({ref[a], mv[a]}, {ref[b], mv[b]}, c, refIdx);
}

MotionVector predictWhole(const MotionCache& cache, int list, int refIdx) {
    const auto neighbour = [&](int i) { return NeighbourMotion{cache.ref[list][i], cache.mv[list][i]}; };
    return medianOf(neighbour(MotionCache::at(-1, 0)), neighbour(MotionCache::at(0, -1)),
                    aboveRightMotion(cache, list, 0, 0, 4), refIdx);
}

MotionVector predictSkipped(const MotionCache& cache) {
    const int a = MotionCache::at(-1, 0), b = MotionCache::at(0, -1);
    const std::int8_t* ref = cache.ref[0];
    const MotionVector* mv = cache.mv[0];
    const auto still = [&](int i) { return ref[i] == 0 && mv[i] == MotionVector{}; };
    if (ref[a] == MotionCache::kNotAvailable || ref[b] == MotionCache::kNotAvailable || still(a) || still(b)) return {};
    return predictWhole(cache, 0, 0);
}

}  // namespace vekdec::h264
