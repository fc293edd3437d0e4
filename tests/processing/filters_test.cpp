// Deinterlacers and denoisers: what holds for them by their definitions. Their known answers stand in tests/vekproc.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "texture.h"

namespace {

using namespace vekvc_test;
using Bytes = std::vector<Vek8u>;

// ---- what holds for every filter

// A picture within memory of its own: rows at any step, one behind the other in either direction.
struct Picture {
    VekiSize size;
    Vek32s step;
    Bytes memory;

    Picture(VekiSize itsSize, bool bottomUp, int seed = 1, int t = 0)
        : size(itsSize), step(bottomUp ? -(itsSize.width + 5) : itsSize.width + 5) {
        memory.assign(static_cast<std::size_t>((size.width + 5) * size.height), kUntouched);
        const Bytes samples = makePlane(size.width, size.height, seed, 6, t);
        for (int y = 0; y < size.height; ++y) std::copy_n(samples.begin() + y * size.width, size.width, row(y));
    }
    Vek8u* row(int y) { return memory.data() + (step < 0 ? (size.height - 1 - y) * -step : y * step); }
    Bytes samples(int first, int end) {
        Bytes all;
        for (int y = first; y < end; ++y) all.insert(all.end(), row(y), row(y) + size.width);
        return all;
    }
    Bytes samples() { return samples(0, size.height); }
    void fill(Vek8u value) {
        for (int y = 0; y < size.height; ++y) std::fill_n(row(y), size.width, value);
    }
};

using Planes = const Vek8u* const*;  // of the frame before, of this one, of the next one
struct Filter {
    const char* name;
    std::function<VekStatus(Planes, Vek32s, Vek8u*, Vek32s, VekiSize)> run;
    int leastRows = 1, leastColumns = 1;
    bool inPlace = false;
    int reach = 0;  // rows by which a result depends on others; 0: it cannot be made band by band
};

template <class State, class Make, class Use, class Free>
VekStatus withState(Make make, Use use, Free release) {
    State* state = nullptr;
    EXPECT_EQ(make(&state), vekStsOk);
    const VekStatus status = use(state);
    EXPECT_EQ(release(state), vekStsOk);
    return status;
}

const std::vector<Filter>& filters() {
    static const std::vector<Filter> all = [] {
        std::vector<Filter> f;
        for (const Vek32s field : {0, 1, 2})
            f.push_back({"triangle",
                         [=](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                             return vekiDeinterlaceTriangle_8u_C1R(p[1], ps, d, ds, s, field);
                         },
                         1, 1, field < 2, 1});
        for (const Vek32s field : {0, 1}) {
            f.push_back({"edge",
                         [=](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                             return vekiDeinterlaceEdgeDetect_8u_C1R(p[1], ps, d, ds, s, field, 8);
                         },
                         1, 1, true, 3});
            f.push_back({"median",
                         [=](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                             return vekiDeinterlaceMedianThreshold_8u_C1R(p[1], ps, d, ds, s, field, 8);
                         },
                         1, 1, true, 1});
            f.push_back({"motion",
                         [=](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                             return vekiDeinterlaceMotionAdaptive_8u_C1R(p[0], p[1], p[2], ps, d, ds, s, field, 0);
                         },
                         1, 1, false, 3});
        }
        f.push_back({"blend",
                     [](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                         return withState<VekDeinterlaceBlendState>(
                             [](auto state) { return vekiDeinterlaceBlendInitAlloc_8u_C1(4, 12, state); },
                             [&](auto state) { return vekiDeinterlaceBlend_8u_C1R(p[1], ps, d, ds, s, state); },
                             vekiDeinterlaceBlendFree_8u_C1);
                     },
                     1, 1, false, 3});
        f.push_back({"adaptive",
                     [](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                         return withState<VekDenoiseAdaptiveState>(
                             [&](auto state) { return vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(s, 20, 10, state); },
                             [&](auto state) { return vekiFilterDenoiseAdaptive_8u_C1R(p[1], ps, d, ds, state); },
                             vekiFilterDenoiseAdaptiveFree_8u_C1);
                     },
                     1, 1, true, 0});
        f.push_back({"cast",
                     [](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                         return vekiFilterDenoiseCAST_8u_C1R(p[0], p[1], p[2], ps, d, ds, s, 30);
                     },
                     1, 1, false, 4});
        f.push_back({"mosquito",
                     [](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                         return withState<VekDenoiseMosquitoState>(
                             [&](auto state) { return vekiFilterDenoiseMosquitoInitAlloc_8u_C1(s, state); },
                             [&](auto state) { return vekiFilterDenoiseMosquito_8u_C1R(p[1], ps, d, ds, 12, state); },
                             vekiFilterDenoiseMosquitoFree_8u_C1);
                     },
                     8, 8, false, 0});
        f.push_back({"smooth",
                     [](Planes p, Vek32s ps, Vek8u* d, Vek32s ds, VekiSize s) {
                         return vekiFilterDenoiseSmooth_8u_C1R(p[1], ps, d, ds, s);
                     },
                     3, 1, false, 1});
        return f;
    }();
    return all;
}

Bytes filtered(const Filter& filter, VekiSize size, bool srcUp, bool dstUp) {
    Picture before(size, srcUp), here(size, srcUp, 1, 1), next(size, srcUp, 1, 2), dst(size, dstUp);
    const Vek8u* planes[] = {before.row(0), here.row(0), next.row(0)};
    EXPECT_EQ(filter.run(planes, here.step, dst.row(0), dst.step, size), vekStsOk) << filter.name;
    return dst.samples();
}

constexpr VekiSize kSizes[] = {{1, 1}, {1, 2}, {2, 1}, {1, 9}, {9, 1}, {4, 4}, {8, 8}, {37, 20}, {70, 33}, {131, 12}};

TEST(ProcessingFilters, FlatPicturesStayFlat) {
    for (const auto& filter : filters())
        for (const VekiSize size : kSizes) {
            if (size.height < filter.leastRows || size.width < filter.leastColumns) continue;
            for (const int value : {0, 1, 77, 255}) {
                Picture src(size, false), dst(size, false);
                src.fill(static_cast<Vek8u>(value));
                const Vek8u* planes[] = {src.row(0), src.row(0), src.row(0)};
                ASSERT_EQ(filter.run(planes, src.step, dst.row(0), dst.step, size), vekStsOk);
                ASSERT_EQ(dst.samples(), src.samples()) << filter.name << " " << size.width << "x" << size.height;
            }
        }
}

TEST(ProcessingFilters, StepsAreTakenWithTheirSign) {
    for (const auto& filter : filters())
        for (const VekiSize size : {VekiSize{37, 20}, VekiSize{70, 33}}) {
            const Bytes down = filtered(filter, size, false, false);
            EXPECT_EQ(filtered(filter, size, true, false), down) << filter.name;
            EXPECT_EQ(filtered(filter, size, false, true), down) << filter.name;
        }
}

TEST(ProcessingFilters, InPlaceGivesTheSame) {
    for (const auto& filter : filters())
        for (const VekiSize size : kSizes) {
            if (!filter.inPlace) continue;
            Picture src(size, false, 1, 1);
            const Vek8u* planes[] = {nullptr, src.row(0), nullptr};
            ASSERT_EQ(filter.run(planes, src.step, src.row(0), src.step, size), vekStsOk);
            EXPECT_EQ(src.samples(), filtered(filter, size, false, false)) << filter.name << size.width;
        }
}

TEST(ProcessingFilters, BandsGiveTheRowsOfTheWhole) {
    const VekiSize size = {70, 41};
    for (const auto& filter : filters()) {
        if (filter.reach == 0) continue;
        const Bytes whole = filtered(filter, size, false, false);
        Picture before(size, false), here(size, false, 1, 1), next(size, false, 1, 2), dst(size, false);
        const int first = 12, end = 35;  // an even row: fields keep their parity
        const Vek8u* planes[] = {before.row(first), here.row(first), next.row(first)};
        ASSERT_EQ(filter.run(planes, here.step, dst.row(first), dst.step, {size.width, end - first}), vekStsOk);
        const int from = first + filter.reach, to = end - filter.reach;
        EXPECT_EQ(dst.samples(from, to), Bytes(whole.begin() + from * size.width, whole.begin() + to * size.width))
            << filter.name;
    }
}

// ---- deinterlacers

TEST(Deinterlace, MedianAndCopyAreTheEndsOfTheThreshold) {
    const Vek32s w = 45, h = 9;
    const Bytes src = makePlane(w, h, 3, 40);
    Bytes dst(src.size());
    ASSERT_EQ(vekiDeinterlaceMedianThreshold_8u_C1R(src.data(), w, dst.data(), w, {w, h}, 0, 255), vekStsOk);
    EXPECT_EQ(dst, src);
    ASSERT_EQ(vekiDeinterlaceMedianThreshold_8u_C1R(src.data(), w, dst.data(), w, {w, h}, 0, -7), vekStsOk);
    for (int y = 1; y < h; y += 2)
        for (int x = 0; x < w; ++x) {
            const auto at = [&](int row) { return src[static_cast<std::size_t>(row * w + x)]; };
            Vek8u three[] = {at(y - 1), at(y), at(y + 1)};
            std::sort(three, three + 3);
            ASSERT_EQ(dst[static_cast<std::size_t>(y * w + x)], three[1]);
        }
}

TEST(Deinterlace, ALoneRowIsItsOwnNeighbour) {
    const Vek32s w = 50;
    const Bytes src = makePlane(w, 1, 5, 30);
    for (const auto& filter : filters()) {
        if (std::string(filter.name) != "triangle" && std::string(filter.name) != "edge" &&
            std::string(filter.name) != "median" && std::string(filter.name) != "blend")
            continue;
        Bytes dst(src.size());
        const Vek8u* planes[] = {nullptr, src.data(), nullptr};
        ASSERT_EQ(filter.run(planes, w, dst.data(), w, {w, 1}), vekStsOk);
        EXPECT_EQ(dst, src) << filter.name;
    }
}

TEST(Deinterlace, ThreeEqualFramesAreWoven) {
    for (const VekiSize size : kSizes)
        for (const Vek32s field : {0, 1}) {
            const Bytes src = makePlane(size.width, size.height, 2, 50);
            Bytes dst(src.size());
            ASSERT_EQ(vekiDeinterlaceMotionAdaptive_8u_C1R(src.data(), src.data(), src.data(), size.width, dst.data(),
                                                           size.width, size, field, field ^ 1),
                      vekStsOk);
            EXPECT_EQ(dst, src);
        }
}

// A comb of 255 against 0 alone reaches the weight 256 where `low` is 254; of 254 it is left.
TEST(Deinterlace, BlendLeavesCombsUpToLow) {
    const Vek32s w = 40, h = 8;
    for (const int bright : {254, 255}) {
        Bytes src(static_cast<std::size_t>(w * h), 0);
        for (int y = 0; y < h; y += 2) std::fill_n(src.begin() + y * w, w, static_cast<Vek8u>(bright));
        Bytes dst(src.size());
        VekDeinterlaceBlendState* state = nullptr;
        ASSERT_EQ(vekiDeinterlaceBlendInitAlloc_8u_C1(254, 0, &state), vekStsOk);
        ASSERT_EQ(vekiDeinterlaceBlend_8u_C1R(src.data(), w, dst.data(), w, {w, h}, state), vekStsOk);
        vekiDeinterlaceBlendFree_8u_C1(state);
        EXPECT_EQ(dst, bright == 254 ? src : Bytes(src.size(), 128));
    }
}

// ---- denoisers

TEST(DenoiseAdaptive, AveragesUpToItsNumberOfFrames) {
    const VekiSize size = {70, 20};
    const Vek32s w = size.width;
    const Bytes src = makePlane(w, size.height, 4, 6);
    const auto sequence = [&](Vek32s frames, int count) {
        VekDenoiseAdaptiveState* state = nullptr;
        EXPECT_EQ(vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(size, 20, frames, &state), vekStsOk);
        std::vector<Bytes> results;
        for (int i = 0; i < count; ++i) {
            results.emplace_back(src.size());
            EXPECT_EQ(vekiFilterDenoiseAdaptive_8u_C1R(src.data(), w, results.back().data(), w, state), vekStsOk);
        }
        vekiFilterDenoiseAdaptiveFree_8u_C1(state);
        return results;
    };
    const auto ten = sequence(10, 13), one = sequence(1, 3), none = sequence(-5, 3);
    EXPECT_EQ(ten[0], one[0]);  // in space only
    EXPECT_NE(ten[0], src);
    EXPECT_EQ(one[1], one[0]);
    EXPECT_EQ(none, one);
    for (int i = 10; i < 13; ++i) EXPECT_EQ(ten[static_cast<std::size_t>(i)], ten[9]);
}

TEST(DenoiseMosquito, WorksNearEdgesOnly) {
    const VekiSize size = {43, 29};
    const Vek32s w = size.width;
    VekDenoiseMosquitoState* state = nullptr;
    ASSERT_EQ(vekiFilterDenoiseMosquitoInitAlloc_8u_C1(size, &state), vekStsOk);
    Bytes src = makePlane(w, size.height, 4, 30), dst(src.size());
    ASSERT_EQ(vekiFilterDenoiseMosquito_8u_C1R(src.data(), w, dst.data(), w, 0, state), vekStsOk);
    EXPECT_EQ(dst, src);
    const int edge = 19;
    for (int i = 0; i < w * size.height; ++i) src[static_cast<std::size_t>(i)] = i % w < edge ? 60 : 180;
    ASSERT_EQ(vekiFilterDenoiseMosquito_8u_C1R(src.data(), w, dst.data(), w, 31, state), vekStsOk);
    for (int i = 0; i < w * size.height; ++i)
        if (i % w < edge - 2 || i % w >= edge + 2) {
            ASSERT_EQ(dst[static_cast<std::size_t>(i)], src[static_cast<std::size_t>(i)]);
        }
    vekiFilterDenoiseMosquitoFree_8u_C1(state);
}

// One block of 8x8 samples.
Bytes withoutMosquitoes(const Bytes& block, Vek32s strength) {
    VekDenoiseMosquitoState* state = nullptr;
    EXPECT_EQ(vekiFilterDenoiseMosquitoInitAlloc_8u_C1({8, 8}, &state), vekStsOk);
    Bytes dst(64);
    EXPECT_EQ(vekiFilterDenoiseMosquito_8u_C1R(block.data(), 8, dst.data(), 8, strength, state), vekStsOk);
    EXPECT_EQ(vekiFilterDenoiseMosquitoFree_8u_C1(state), vekStsOk);
    return dst;
}

TEST(DenoiseMosquito, BlocksByHand) {
    // A row of 100 among rows of 110 at strength 2: f = 16, p = 2, q = 1. The direction is 2; nothing differs along it,
    // the eight taps across add 2 * 4 + 4 = 12: (8 + 12) >> 4 = 1.
    Bytes row(64, 110);
    std::fill_n(row.begin() + 24, 8, Vek8u{100});
    for (std::size_t x = 2; x < 6; ++x) EXPECT_EQ(withoutMosquitoes(row, 2)[24 + x], 101);

    // Both diagonals at 118 in 108, strength 6: f = 6, p = 2, q = 1. Directions 0 and 4 have the same score, 0 counts.
    // On its own diagonal, i + j = 7, the taps along it add nothing, those across -12: (8 - 12 - 1) >> 4 = -1; on the
    // other one the taps along add 4 * 3 * -2 more: (8 - 36 - 1) >> 4 = -2.
    Bytes cross(64, 108);
    for (std::size_t i = 0; i < 8; ++i) cross[9 * i] = cross[7 * i + 7] = 118;
    const Bytes dst = withoutMosquitoes(cross, 6);
    EXPECT_EQ(dst[8 * 2 + 5], 117);
    EXPECT_EQ(dst[8 * 2 + 2], 116);
}

// Noise of two values is unlike itself at any displacement, so that no sample has a weight but one of the frame before:
// it differs by 86. Noise 7: Th = 88, R = 47662, the weight is (2 * R) >> 16 = 1, and (2 * 86 + 33) / 66 is 3.
TEST(DenoiseCast, ThresholdRoundsUp) {
    const Vek32s w = 17;
    unsigned bits = 1;
    Bytes here(static_cast<std::size_t>(w * w)), dst(here.size());
    for (Vek8u& s : here) {
        bits = bits * 1664525 + 1013904223;
        s = bits >> 31 != 0 ? 200 : 40;
    }
    Bytes before = here, next = here;
    for (Vek8u& s : next) s = static_cast<Vek8u>(240 - s);
    const std::size_t middle = 8 * 17 + 8;
    const int change = here[middle] == 40 ? 86 : -86;
    before[middle] = static_cast<Vek8u>(here[middle] + change);
    ASSERT_EQ(vekiFilterDenoiseCAST_8u_C1R(before.data(), here.data(), next.data(), w, dst.data(), w, {w, w}, 7),
              vekStsOk);
    EXPECT_EQ(dst[middle], here[middle] + (change > 0 ? 3 : -3));
}

}  // namespace
