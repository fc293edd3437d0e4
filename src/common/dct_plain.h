// The 8x8 DCTs: the correctly rounded ones by an exact sum (ISO 13818-2 annex A), and the fast fixed-point inverse.
#ifndef VEKVC_COMMON_DCT_PLAIN_H
#define VEKVC_COMMON_DCT_PLAIN_H

#include <cstdint>

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::dct {

// ---- the correctly rounded transforms

// C(m): 2^42 cos(m pi / 16), rounded.
constexpr std::int64_t cosine(int m) {
    constexpr std::int64_t quarter[9] = {4398046511104, 4313539280620, 4063265154642,
                                         3656842027476, 3109888511975, 2443423725005,
                                         1683059534571, 858016310093,  0};
    m &= 31;
    if (m > 16) m = 32 - m;
    return m > 8 ? -quarter[16 - m] : quarter[m];
}
// The angle of frequency u at place x in units of pi / 16; a frequency of 0 has the factor 1 / sqrt(2) = cos(4 pi /
// 16).
constexpr int angle(int u, int x) { return u == 0 ? 4 : (2 * x + 1) * u; }

// The product of two cosines is half the sum of two.
constexpr std::int64_t basis(int a, int b) { return cosine(a + b) + cosine(a - b); }

// The sums are 2^45 times the results. They fit: the magnitudes of all 64 basis values add up to less than 7 * 2^45,
// times 2^15 less than 2^63.
inline std::int64_t inverseSum(const Vek16s* coefficients, int x, int y) {
    std::int64_t sum = 0;
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) sum += coefficients[8 * v + u] * basis(angle(u, x), angle(v, y));
    return sum;
}
inline std::int64_t forwardSum(const Vek16s* samples, int u, int v) {
    std::int64_t sum = 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) sum += samples[8 * y + x] * basis(angle(u, x), angle(v, y));
    return sum;
}
constexpr Vek16s roundSum(std::int64_t sum) {
    return static_cast<Vek16s>(clip3(-32768, 32767, (sum + (std::int64_t{1} << 44)) >> 45));
}

// Where an inverse transform's results go.
struct Residual {
    MutableBlock<Vek16s> dst;
    void put(int x, int y, Vek16s value) const { dst.put(x, y, value); }
};
struct Picture {
    MutableBlock<Vek8u> dst;
    void put(int x, int y, Vek16s value) const { dst.put(x, y, clip255(value)); }
};
struct Prediction {  // to which they are added
    MutableBlock<Vek8u> dst;
    void put(int x, int y, Vek16s value) const { dst.put(x, y, clip255(dst(x, y) + value)); }
};

// ---- the fast inverse

// K(u, x): 16384 for u = 0, else 2^14 sqrt(2) cos((2x + 1) u pi / 16), rounded.
constexpr Vek16s fastBasis(int u, int x) {
    constexpr Vek16s quarter[9] = {0, 22725, 21407, 19266, 16384, 12873, 8867, 4520, 0};
    if (u == 0) return 16384;
    int m = (2 * x + 1) * u & 31;
    if (m > 16) m = 32 - m;
    return static_cast<Vek16s>(m > 8 ? -quarter[16 - m] : quarter[m]);
}

}  // namespace vekvc::dct

namespace vekvc::plain {

// Of the coefficients, those of the first `corner` rows and columns count. The source may be the destination.
template <int corner, class Destination>
void dctInverse(const Vek16s* src, const Destination& dst) {
    const Block<Vek16s> in(src, 16);
    Vek16s coefficients[64] = {};
    for (int v = 0; v < corner; ++v)
        for (int u = 0; u < corner; ++u) coefficients[8 * v + u] = in(u, v);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) dst.put(x, y, dct::roundSum(dct::inverseSum(coefficients, x, y)));
}

template <class T>
void dctForward(Block<T> src, Vek16s* dst) {
    Vek16s samples[64];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) samples[8 * y + x] = src(x, y);
    const MutableBlock<Vek16s> out(dst, 16);
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) out.put(u, v, dct::roundSum(dct::forwardSum(samples, u, v)));
}

// The source has columns for rows: src(v, u) is F(v, u). 32-bit sums wrap.
template <class Destination>
void dctInverseFast(const Vek16s* coefficients, const Destination& dst) {
    const Block<Vek16s> src(coefficients, 16);
    Vek16s rows[8][8];
    for (int v = 0; v < 8; ++v)
        for (int x = 0; x < 8; ++x) {
            Vek32s sum = 1024;
            for (int u = 0; u < 8; ++u) sum = wrapAdd(sum, src(v, u) * dct::fastBasis(u, x));
            rows[v][x] = saturate16(sum >> 11);
        }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Vek32s sum = 524288;
            for (int v = 0; v < 8; ++v) sum = wrapAdd(sum, rows[v][x] * dct::fastBasis(v, y));
            dst.put(x, y, saturate16(sum >> 20));
        }
}

// The second block's samples stand between the first's.
inline void dctInverseFastPair(const Vek16s* even, const Vek16s* odd, MutableBlock<Vek8u> dst) {
    struct EverySecond {
        MutableBlock<Vek8u> dst;
        int offset;
        void put(int x, int y, Vek16s value) const { dst.put(2 * x + offset, y, clip255(value)); }
    };
    dctInverseFast(even, EverySecond{dst, 0});
    dctInverseFast(odd, EverySecond{dst, 1});
}

}  // namespace vekvc::plain

#endif
