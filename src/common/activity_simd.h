// Activity in frame and field order, edges. The fast form of activity_plain.h.
#ifndef VEKVC_COMMON_ACTIVITY_SIMD_H
#define VEKVC_COMMON_ACTIVITY_SIMD_H

#include "common/activity_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

using plain::FrameField;

inline FrameField activityFrameField(Block<Vek8u> p) {
#if VEKVC_VECTOR256
    // Rows y and y + 8 in one vector; the field pairs 6, 8 and 7, 9 lie across.
    const auto rows = [&](int y) { return loadPair16<u8x32>(p.at(0, y), p.at(0, y + 8)); };
    u8x32 a = rows(0), b = rows(1);
    const u8x16 row8 = highHalf(a), row9 = highHalf(b);
    u64x4 frame = sumAbsDiff(a, b), field = zero<u64x4>();
#pragma GCC unroll 6
    for (int y = 2; y < 8; ++y) {
        const u8x32 c = rows(y);
        frame += sumAbsDiff(b, c);
        field += sumAbsDiff(a, c);
        a = b;
        b = c;
    }
    const u64x2 across = sumAbsDiff(lowHalf(a), row8) + sumAbsDiff(lowHalf(b), row9);
    return {sumLanes(frame), sumLanes((lowHalf(field) + highHalf(field)) + across)};
#else
    const auto row = [&](int y) { return load<u8x16>(p.at(0, y)); };
    u8x16 a = row(0), b = row(1);
    u64x2 frame = sumAbsDiff(a, b), field = zero<u64x2>();
#pragma GCC unroll 14
    for (int y = 2; y < 16; ++y) {
        const u8x16 c = row(y);
        if (y != 8) frame += sumAbsDiff(b, c);
        field += sumAbsDiff(a, c);
        a = b;
        b = c;
    }
    return {sumLanes(frame), sumLanes(field)};
#endif
}

// Residuals of real video: every difference fits 16 bits with sign and the sums of a lane's 14 (or 28) differences too.
// Else a limited difference or sum leaves its lane at 32767 or above, and the definition does the work.
inline FrameField activityFrameField(Block<Vek16s> p) {
#if VEKVC_VECTOR256
    using V = i16x16;
#else
    using V = i16x8;
#endif
    using U = Vec<Vek16u, V::kBytes / 2>;
    constexpr int kColumns = V::kBytes / 2;
    U frame = zero<U>(), field = zero<U>();
    const auto distance = [](V a, V b) { return as<U>(abs(subSat(a, b))); };
    for (int x = 0; x < 16; x += kColumns) {
        const auto row = [&](int y) { return load<V>(p.at(x, y)); };
        V a = row(0), b = row(1);
        frame = addSat(frame, distance(a, b));
#pragma GCC unroll 14
        for (int y = 2; y < 16; ++y) {
            const V c = row(y);
            if (y != 8) frame = addSat(frame, distance(b, c));
            field = addSat(field, distance(a, c));
            a = b;
            b = c;
        }
    }
    const U limit = constant<U, 1>();
    if (byteMask(as<V>(addSat(frame, limit) | addSat(field, limit)) >> 15) != 0) return plain::activityFrameField(p);
    const V ones = constant<V, 1>();
    return {sumLanes(mulAddPairs(as<V>(frame), ones)), sumLanes(mulAddPairs(as<V>(field), ones))};
}

// The index of the next byte, of the last one its own.
template <class V>
[[gnu::always_inline]] inline V toTheRight() {
    if constexpr (is128<V>) return lanes<V>(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15);
#if VEKVC_VECTOR256
    else
        return lanes<V>(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15,  //
                        1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15);
#endif
}

// Pairs that do not differ by more than the level are counted, in bytes: 15 or 16 rows of at most two.
inline Vek32s countEdges(Block<Vek8u> s, Vek32s level) {
    constexpr Vek32s kPairs = 2 * 15 * 16;
    if (level < 0) return kPairs;
    if (level >= 255) return 0;
#if VEKVC_VECTOR256
    // Rows y and y + 8 in one vector; rows 7 and 8 lie across.
    using V = u8x32;
    constexpr int kRows = 8;
    const auto rows = [&](int y) { return loadPair16<V>(s.at(0, y), s.at(0, y + 8)); };
#else
    using V = u8x16;
    constexpr int kRows = 16;
    const auto rows = [&](int y) { return load<V>(s.at(0, y)); };
#endif
    const V limit = splat<V>(level), none = zero<V>();
    // -1 where the difference is at most the level.
    const auto near = [&](V a, V b) { return subSat(absDiff(a, b), limit) == none; };
    V count = none;
    // The last column's neighbour is itself: always near.
    const auto addHorizontal = [&](V v) { count -= near(v, shuffleBytes(v, toTheRight<V>())); };
    V above = rows(0);
    addHorizontal(above);
#if VEKVC_VECTOR256
    const u8x16 row8 = highHalf(above);
#endif
    for (int y = 1; y < kRows; ++y) {
        const V v = rows(y);
        addHorizontal(v);
        count -= near(above, v);
        above = v;
    }
    Vek32s notEdges = sumLanes(sumAbsDiff(count, none));
#if VEKVC_VECTOR256
    const u8x32 low = join(lowHalf(above), row8), high = join(row8, row8);
    notEdges += sumLanes(sumAbsDiff(none - near(low, high), none)) - 16;
#endif
    return kPairs - (notEdges - 16);
}

}  // namespace vekvc::simd

#endif
