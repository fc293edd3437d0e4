// The loop filter in vectors: each sample of 8 or 16 lines in 16-bit lanes. Both halves of an edge go together where
// their strengths are of a kind.
#ifndef VEKVC_AVS_DEBLOCK_SIMD_H
#define VEKVC_AVS_DEBLOCK_SIMD_H

#include "avs/deblock_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// The samples p2 p1 p0 q0 q1 q2 of all lines; false if no line changes.
template <avs::Plane plane, bool strong, class V>
[[gnu::always_inline]] inline bool filterAvsLines(V (&s)[6], const avs::EdgeLimits& limits) {
    constexpr bool kLuma = plane == avs::Plane::luma;
    const V p2 = s[0], p1 = s[1], p0 = s[2], q0 = s[3], q1 = s[4], q2 = s[5];
    const V beta = splat<V>(limits.beta), gap = abs(p0 - q0);
    const V mask = (splat<V>(limits.alpha) > gap) & (beta > max(abs(p1 - p0), abs(q1 - q0)));
    if (allZero(mask)) return false;
    const V flatP = (beta > abs(p2 - p0)) & mask, flatQ = (beta > abs(q2 - q0)) & mask;
    if constexpr (strong) {
        const V sum = p0 + q0 + constant<V, 2>();
        const V close = splat<V>((limits.alpha >> 2) + 2) > gap;
        const V useP = flatP & close, useQ = flatQ & close;
        const V outerP = (p1 + p1 + sum) >> 2, outerQ = (q1 + q1 + sum) >> 2;
        s[2] = select(mask, select(useP, (p1 + p0 + sum) >> 2, outerP), p0);
        s[3] = select(mask, select(useQ, (q1 + q0 + sum) >> 2, outerQ), q0);
        if constexpr (kLuma) {
            s[1] = select(useP, outerP, p1);
            s[4] = select(useQ, outerQ, q1);
        }
    } else {
        const V c = splat<V>(limits.c), none = zero<V>(), most = constant<V, 255>();
        // Clip3(-C, C, (3 a + b + 4) >> 3)
        const auto step = [&](V a, V b) { return max(min((a + a + a + b + constant<V, 4>()) >> 3, c), none - c); };
        const V delta = step(q0 - p0, p1 - q1) & mask;
        const V newP0 = max(min(p0 + delta, most), none), newQ0 = max(min(q0 - delta, most), none);
        s[2] = newP0, s[3] = newQ0;
        if constexpr (kLuma) {  // the narrowing limits them
            s[1] = p1 + (step(newP0 - p1, p2 - newQ0) & flatP);
            s[4] = q1 - (step(q1 - newQ0, newP0 - q2) & flatQ);
        }
    }
    return true;
}

// L lines of samples in V, from and to bytes in order.
template <int L>
struct AvsLines {
    using V = i16x8;

    [[gnu::always_inline]] static V widened(u8x16 v) { return widenLow(v); }
    [[gnu::always_inline]] static u8x16 narrowed(V v) { return narrowU8(v, v); }
};
#if VEKVC_VECTOR256
template <>
struct AvsLines<16> {
    using V = i16x16;

    [[gnu::always_inline]] static V widened(u8x16 v) { return widen(v); }
    [[gnu::always_inline]] static u8x16 narrowed(V v) { return narrowU8(lowHalf(v), highHalf(v)); }
};
#endif

// Four columns of L rows from p on: column k in bytes L k to L k + L - 1 of the vectors one after the other.
template <int L>
[[gnu::always_inline]] inline void loadAvsColumns(const Vek8u* p, std::ptrdiff_t step, u8x16 (&x)[L / 4]) {
    for (int i = 0; i < L / 4; ++i) x[i] = loadLanes32<u8x16>([=](int y) { return p + (4 * i + y) * step; });
    if constexpr (L == 4)
        x[0] = shuffleBytes(x[0], lanes<u8x16>(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
    else
        for (int turn = 0; turn < (L == 16 ? 4 : 3); ++turn) interleaveBytes(x);
}
// Column k of them, in the low bytes.
template <int L, int k>
[[gnu::always_inline]] inline u8x16 avsColumnOf(const u8x16 (&x)[L / 4]) {
    return bytesRight<k * L % 16>(x[k * L / 16]);
}

template <avs::Edges edges, int L>
[[gnu::always_inline]] inline void loadAvsLines(const Vek8u* q, std::ptrdiff_t step, typename AvsLines<L>::V (&s)[6]) {
    using A = AvsLines<L>;
    if constexpr (edges == avs::Edges::horizontal) {
        for (int k = 0; k < 6; ++k) s[k] = A::widened(loadBytes<u8x16, L>(q + (k - 3) * step));
    } else {
        u8x16 left[L / 4], right[L / 4];  // columns -3 to 0, -1 to 2
        loadAvsColumns<L>(q - 3, step, left);
        loadAvsColumns<L>(q - 1, step, right);
        s[0] = A::widened(avsColumnOf<L, 0>(left)), s[1] = A::widened(avsColumnOf<L, 1>(left));
        s[2] = A::widened(avsColumnOf<L, 0>(right)), s[3] = A::widened(avsColumnOf<L, 1>(right));
        s[4] = A::widened(avsColumnOf<L, 2>(right)), s[5] = A::widened(avsColumnOf<L, 3>(right));
    }
}

template <avs::Plane plane, avs::Edges edges, int L>
[[gnu::always_inline]] inline void storeAvsLines(Vek8u* q, std::ptrdiff_t step, const typename AvsLines<L>::V (&s)[6]) {
    constexpr bool kLuma = plane == avs::Plane::luma;
    u8x16 n[4];  // p1 p0 q0 q1
    for (int k = kLuma ? 0 : 1; k < (kLuma ? 4 : 3); ++k) n[k] = AvsLines<L>::narrowed(s[k + 1]);
    if constexpr (edges == avs::Edges::horizontal) {
        for (int k = kLuma ? 0 : 1; k < (kLuma ? 4 : 3); ++k) storeBytes<L>(q + (k - 2) * step, n[k]);
    } else if constexpr (!kLuma) {
        const auto pairs = as<u16x8>(interleaveLow(n[1], n[2]));
        if constexpr (L == 8) {
            storeLanes16([=](int y) { return q - 1 + y * step; }, pairs);
        } else {
            storeBytes<2>(q - 1, pairs);
            storeBytes<2>(q - 1 + step, bytesRight<2>(pairs));
            storeBytes<2>(q - 1 + 2 * step, bytesRight<4>(pairs));
            storeBytes<2>(q - 1 + 3 * step, bytesRight<6>(pairs));
        }
    } else {
        // Rows of four samples, from pairs of columns.
        const auto four = [=](int row, u8x16 v) {
            storeLanes32([=](int y) { return q - 2 + (row + y) * step; }, as<u32x4>(v));
        };
        const auto eight = [=](int row, u8x16 p, u8x16 q01) {
            four(row, as<u8x16>(interleaveLow(as<u16x8>(p), as<u16x8>(q01))));
            four(row + 4, as<u8x16>(interleaveHigh(as<u16x8>(p), as<u16x8>(q01))));
        };
        eight(0, interleaveLow(n[0], n[1]), interleaveLow(n[2], n[3]));
        if constexpr (L == 16) eight(8, interleaveHigh(n[0], n[1]), interleaveHigh(n[2], n[3]));
    }
}

template <avs::Plane plane, avs::Edges edges, int L, bool strong>
[[gnu::always_inline]] inline void filterAvsPart(Vek8u* q, std::ptrdiff_t step, const avs::EdgeLimits& limits) {
    typename AvsLines<L>::V s[6];
    loadAvsLines<edges, L>(q, step, s);
    if (filterAvsLines<plane, strong>(s, limits)) storeAvsLines<plane, edges, L>(q, step, s);
}

template <avs::Plane plane, avs::Edges edges>
void deblockAvs(const avs::DeblockOperands& o) {
    constexpr bool kLuma = plane == avs::Plane::luma;
    constexpr int kLines = kLuma ? 8 : 4;  // of half an edge
    const std::ptrdiff_t across = edges == avs::Edges::vertical ? 1 : o.step;
    const std::ptrdiff_t along = edges == avs::Edges::vertical ? o.step : 1;
    const auto part = [&]<int L>(std::integral_constant<int, L>, Vek8u* q, int bS, const avs::EdgeLimits& limits) {
        if (bS >= 2)
            filterAvsPart<plane, edges, L, true>(q, o.step, limits);
        else if (bS == 1)
            filterAvsPart<plane, edges, L, false>(q, o.step, limits);
    };
    for (int e = 0; e < (kLuma ? 2 : 1); ++e) {
        const int first = o.bS[2 * e], second = o.bS[2 * e + 1];
        const avs::EdgeLimits limits = {o.alpha[e], o.beta[e], o.c[e]};
        Vek8u* const q = o.pixels + 8 * e * across;
        if constexpr (VEKVC_VECTOR256 || !kLuma) {
            if (first != 0 && second != 0 && (first >= 2) == (second >= 2)) {
                part(std::integral_constant<int, 2 * kLines>(), q, first, limits);
                continue;
            }
        }
        part(std::integral_constant<int, kLines>(), q, first, limits);
        part(std::integral_constant<int, kLines>(), q + kLines * along, second, limits);
    }
}

}  // namespace vekvc::simd

#endif
