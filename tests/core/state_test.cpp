// Caller-held state, the large fill and the parallel split. This program's own core library counts allocations, can
// refuse them, and allows as many threads as the test wants.
#include "core/state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "core/fill.h"
#include "core/filter_frame.h"
#include "vekvc.h"

namespace {
int live = 0;         // blocks not yet freed
int refuseFrom = -1;  // allocations from this number on fail; -1: none
int allocations = 0;
int allowedThreads = 1;
int cacheSize = 1 << 20;
int cacheStatus = 0;
}  // namespace

extern "C" {
void* vekMalloc(int size) {
    if (refuseFrom >= 0 && allocations++ >= refuseFrom) return nullptr;
    ++live;
    return std::aligned_alloc(64, (static_cast<std::size_t>(size) + 63) / 64 * 64);
}
void vekFree(void* p) {
    if (p != nullptr) --live;
    std::free(p);
}
int ownGetNumThreads(void) { return allowedThreads; }
int vekGetMaxCacheSizeB(int* pSize) {
    *pSize = cacheSize;
    return cacheStatus;
}
}

namespace vekvc {
namespace {

struct Specification : TaggedState {
    Vek32s parameter;
};

TEST(SpecificationBuffer, LiesAtAMultipleOf16AndCarriesItsTag) {
    std::vector<Vek8u> memory(specificationSize<Specification>() + 16, 0);
    EXPECT_EQ(specificationSize<Specification>(), sizeof(Specification) + 15);
    for (std::size_t shift = 0; shift < 16; ++shift) {
        Vek8u* buffer = memory.data() + shift;
        std::fill(memory.begin(), memory.end(), Vek8u{0});
        EXPECT_FALSE(hasTag<Specification>(buffer));
        auto* state = new (stateIn<Specification>(buffer)) Specification;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state) % 16, 0u);
        EXPECT_LE(reinterpret_cast<Vek8u*>(state + 1), buffer + specificationSize<Specification>());
        EXPECT_TRUE(hasTag<Specification>(buffer));
        EXPECT_EQ(std::memcmp(state, "RAMC", 4), 0);
    }
}

struct Header : AllocatedState {
    Vek32s parameter = 7;
};

TEST(AllocatedState, FreesWhatItAllocatedAlsoAfterAFailure) {
    for (const int refused : {-1, 0, 1}) {
        allocations = 0;
        refuseFrom = refused;
        Header* header = nullptr;
        const VekStatus status = allocateState(&header, 100);
        refuseFrom = -1;
        EXPECT_EQ(status, refused < 0 ? vekStsOk : vekStsErrMemAlloc);
        EXPECT_EQ(header == nullptr, refused == 0);
        if (header != nullptr) {
            EXPECT_EQ(header->table == nullptr, refused == 1);
            EXPECT_EQ(freeState(header), vekStsOk);
        }
        EXPECT_EQ(live, 0);
    }
    EXPECT_EQ(freeState<Header>(nullptr), vekStsErrNullPtr);
}

// Makes, uses and releases a state with each of its two allocations refused, and with none.
template <class State, class Make, class Use, class Free>
void refuseEach(Make make, Use use, Free release) {
    for (const int refused : {0, 1, -1}) {
        allocations = 0;
        refuseFrom = refused;
        State* state = nullptr;
        EXPECT_EQ(make(&state), refused < 0 ? vekStsOk : vekStsErrMemAlloc);
        refuseFrom = -1;
        ASSERT_EQ(state == nullptr, refused == 0);
        if (state == nullptr) continue;
        EXPECT_EQ(use(state), refused < 0 ? vekStsOk : vekStsErrNullPtr);
        EXPECT_EQ(release(state), vekStsOk);
        EXPECT_EQ(live, 0);
    }
    EXPECT_EQ(make(nullptr), vekStsErrNullPtr);
    EXPECT_EQ(release(nullptr), vekStsErrNullPtr);
}

TEST(AllocatedState, ExportsReportWhatIsRefused) {
    const Vek8u src[64] = {};
    Vek8u dst[64];
    refuseEach<VekDeinterlaceBlendState>([](auto state) { return vekiDeinterlaceBlendInitAlloc_8u_C1(4, 12, state); },
                                         [&](auto state) {
                                             return vekiDeinterlaceBlend_8u_C1R(src, 8, dst, 8, {8, 8}, state);
                                         },
                                         vekiDeinterlaceBlendFree_8u_C1);
    refuseEach<VekDenoiseAdaptiveState>(
        [](auto state) {
            return vekiFilterDenoiseAdaptiveInitAlloc_8u_C1({8, 8}, 20, 10, state);
        },
        [&](auto state) { return vekiFilterDenoiseAdaptive_8u_C1R(src, 8, dst, 8, state); },
        vekiFilterDenoiseAdaptiveFree_8u_C1);
    refuseEach<VekDenoiseMosquitoState>(
        [](auto state) {
            return vekiFilterDenoiseMosquitoInitAlloc_8u_C1({8, 8}, state);
        },
        [&](auto state) { return vekiFilterDenoiseMosquito_8u_C1R(src, 8, dst, 8, 8, state); },
        vekiFilterDenoiseMosquitoFree_8u_C1);

    // Tables that vekMalloc() cannot be asked for; sizes that are none.
    for (const VekiSize size : {VekiSize{1 << 16, 1 << 16}, VekiSize{INT32_MAX, INT32_MAX}, VekiSize{1, INT32_MAX}}) {
        VekDenoiseAdaptiveState* adaptive = nullptr;
        EXPECT_EQ(vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(size, 20, 10, &adaptive), vekStsErrMemAlloc);
        EXPECT_EQ(vekiFilterDenoiseAdaptiveFree_8u_C1(adaptive), vekStsOk);
    }
    VekDenoiseMosquitoState* mosquito = nullptr;
    EXPECT_EQ(vekiFilterDenoiseMosquitoInitAlloc_8u_C1({INT32_MAX, INT32_MAX}, &mosquito), vekStsErrMemAlloc);
    EXPECT_EQ(vekiFilterDenoiseMosquitoFree_8u_C1(mosquito), vekStsOk);
    EXPECT_EQ(live, 0);
    for (const VekiSize size : {VekiSize{0, 8}, VekiSize{8, -1}}) {
        VekDenoiseAdaptiveState* state = nullptr;
        EXPECT_EQ(vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(size, 20, 10, nullptr), vekStsErrNullPtr);
        EXPECT_EQ(vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(size, 20, 10, &state), vekStsErrSize);
        EXPECT_EQ(vekiFilterDenoiseMosquitoInitAlloc_8u_C1(size, &mosquito), vekStsErrSize);
        EXPECT_EQ(state, nullptr);
    }
}

TEST(FillPlane, FillsTheRegionAloneOnAllRoads) {
    struct Case {
        Vek32s width, height, step;
        int cache, status;
    };
    const Case cases[] = {{13, 5, 17, 1, 0},
                          {64, 4, 64, 1, 0},
                          {1024, 600, 1024, 1000, 0},
                          {1000, 600, 1031, 1000, 0},
                          {1024, 600, 1024, 1 << 30, 0},
                          {1024, 600, 1024, 1000, -2},
                          {32, 20000, 33, 1000, 0}};
    for (const auto& c : cases) {
        cacheSize = c.cache;
        cacheStatus = c.status;
        std::vector<Vek8u> plane(static_cast<std::size_t>(c.step) * static_cast<std::size_t>(c.height) + 64, 1);
        Vek8u* start = plane.data() + 5;
        ASSERT_EQ(fillPlane(9, start, c.step, {c.width, c.height}), vekStsOk);
        std::size_t wrong = 0;
        for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(plane.size()); ++i) {
            const std::ptrdiff_t at = i - 5;
            const bool inside = at >= 0 && at / c.step < c.height && at % c.step < c.width;
            wrong += plane[static_cast<std::size_t>(i)] != (inside ? 9 : 1);
        }
        EXPECT_EQ(wrong, 0u) << c.width << "x" << c.height;
    }
    Vek8u byte = 0;
    EXPECT_EQ(fillPlane(0, nullptr, 1, {1, 1}), vekStsErrNullPtr);
    EXPECT_EQ(fillPlane(0, &byte, 1, {0, 1}), vekStsErrSize);
    EXPECT_EQ(fillPlane(0, &byte, 1, {1, -1}), vekStsErrSize);
}

TEST(FilterFrame, ThreadsGiveTheSerialResult) {
    std::mt19937 random(5);
    for (const VekiSize roi : {VekiSize{33, 41}, VekiSize{7, 3}, VekiSize{1, 9}}) {
        std::vector<Vek16u> src(static_cast<std::size_t>(roi.width * roi.height));
        for (auto& sample : src) sample = static_cast<Vek16u>(random());
        const Vek32s step = roi.width * 2;
        std::vector<Vek16u> serial(src.size());
        allowedThreads = 1;
        ASSERT_EQ(smoothBinomial3x3(FilterSamples::Vek16u, src.data(), step, serial.data(), step, roi, 8), vekStsOk);
        const auto at = [&](int x, int y) {
            return Vek32u{src[static_cast<std::size_t>(std::clamp(y, 0, roi.height - 1) * roi.width +
                                                       std::clamp(x, 0, roi.width - 1))]};
        };
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                Vek32u sum = 8;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx)
                        sum += at(x + dx, y + dy) * static_cast<Vek32u>((2 - dx * dx) * (2 - dy * dy));
                ASSERT_EQ(serial[static_cast<std::size_t>(y * roi.width + x)], sum >> 4);
            }
        for (allowedThreads = 2; allowedThreads <= 8; ++allowedThreads) {
            std::vector<Vek16u> split(src.size());
            ASSERT_EQ(smoothBinomial3x3(FilterSamples::Vek16u, src.data(), step, split.data(), step, roi, 8), vekStsOk);
            EXPECT_EQ(split, serial) << allowedThreads << " threads";
        }
        for (allowedThreads = 1; allowedThreads <= 8; allowedThreads += 7) {  // no memory, nothing written
            allocations = refuseFrom = 0;
            std::vector<Vek16u> untouched(src.size(), 3);
            EXPECT_EQ(smoothBinomial3x3(FilterSamples::Vek16u, src.data(), step, untouched.data(), step, roi, 8),
                      vekStsErrMemAlloc);
            EXPECT_EQ(untouched, std::vector<Vek16u>(src.size(), 3));
            refuseFrom = -1;
        }
        EXPECT_EQ(live, 0);
    }
}

}  // namespace
}  // namespace vekvc
