// Coefficient scans and the zero count. The fast form of scan_plain.h.
#ifndef VEKVC_COMMON_SCAN_SIMD_H
#define VEKVC_COMMON_SCAN_SIMD_H

#include <bit>
#include <utility>

#include "common/scan_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

// A permutation of 64 coefficients as byte shuffles: output vector o is the OR of all input vectors i shuffled by
// select[o][i]; used[o] has a bit for each input that contributes.
struct Permutation {
    alignas(16) Vek8u select[8][8][16] = {};
    Vek8u used[8] = {};

    // output[k] = input[source[k]]
    constexpr explicit Permutation(const Vek8u (&source)[64]) {
        for (auto& output : select)
            for (auto& input : output)
                for (auto& byte : input) byte = 0x80;
        for (int k = 0; k < 64; ++k) {
            const int from = source[k];
            used[k / 8] = static_cast<Vek8u>(used[k / 8] | 1 << from / 8);
            for (int b = 0; b < 2; ++b)
                select[k / 8][from / 8][2 * (k % 8) + b] = static_cast<Vek8u>(2 * (from % 8) + b);
        }
    }
};

struct InverseTable {
    Vek8u position[64] = {};
    constexpr explicit InverseTable(const Vek8u (&table)[64]) {
        for (int i = 0; i < 64; ++i) position[table[i]] = static_cast<Vek8u>(i);
    }
};

template <const Vek8u (&table)[64]>
inline constexpr Permutation kForward{table};
template <const Vek8u (&table)[64]>
inline constexpr InverseTable kPositions{table};
template <const Vek8u (&table)[64]>
inline constexpr Permutation kInverse{kPositions<table>.position};

template <const Permutation& permutation, int output, int input = 0>
[[gnu::always_inline]] inline i16x8 gather(const i16x8 (&in)[8], i16x8 sum = zero<i16x8>()) {
    if constexpr (input == 8) {
        return sum;
    } else {
        if constexpr (permutation.used[output] >> input & 1)
            sum = sum | shuffleBytes(in[input], load<u8x16>(permutation.select[output][input]));
        return gather<permutation, output, input + 1>(in, sum);
    }
}

template <const Permutation& permutation>
[[gnu::always_inline]] inline void permute(const i16x8 (&in)[8], i16x8 (&out)[8]) {
    [&]<int... o>(std::integer_sequence<int, o...>) { ((out[o] = gather<permutation, o>(in)), ...); }
    (std::make_integer_sequence<int, 8>());
}

// One bit per coefficient: is it 0?
inline std::uint64_t zeroBits(const i16x8 (&v)[8]) {
    std::uint64_t bits = 0;
    for (int i = 0; i < 4; ++i) {
        const auto equal = [&](int k) { return v[k] == zero<i16x8>(); };
        bits |= std::uint64_t{byteMask(narrowI8(equal(2 * i), equal(2 * i + 1)))} << 16 * i;
    }
    return bits;
}

template <const Vek8u (&table)[64]>
void scanForward(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero) {
    i16x8 in[8], out[8];
    for (int i = 0; i < 8; ++i) in[i] = load<i16x8>(pSrc + 8 * i);
    permute<kForward<table>>(in, out);
    for (int i = 0; i < 8; ++i) store(pDst + 8 * i, out[i]);
    if (countNonZero < 20) {
        std::uint64_t late =
            withoutLowestBits(~zeroBits(out), countNonZero);  // what stands behind the expected count is dropped
        for (; late != 0; late &= late - 1) store(pDst + std::countr_zero(late), Vek16s{0});
    }
}

template <const Vek8u (&table)[64]>
void scanInverse(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero) {
    if (indxLastNonZero < 7) {  // less than one vector
        for (int i = 0; i < 8; ++i) store(pDst + 8 * i, zero<i16x8>());
        for (Vek32s i = 0; i <= indxLastNonZero; ++i) store(pDst + table[i], load<Vek16s>(pSrc + i));
        return;
    }
    // Whole vectors up to the last coefficient; the one that holds it ends there, so it is read backwards and shifted.
    i16x8 in[8], out[8];
    const Vek32s whole = (indxLastNonZero + 1) / 8, rest = (indxLastNonZero + 1) % 8;
    for (Vek32s i = 0; i < 8; ++i) in[i] = i < whole ? load<i16x8>(pSrc + 8 * i) : zero<i16x8>();
    if (rest > 0) {
        alignas(16) static constexpr Vek8u kShift[32] = {0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,
                                                         11,  12,  13,  14,  15,  128, 128, 128, 128, 128, 128,
                                                         128, 128, 128, 128, 128, 128, 128, 128, 128, 128};
        const i16x8 last = load<i16x8>(pSrc + indxLastNonZero - 7);
        in[whole] = shuffleBytes(last, load<u8x16>(kShift + 16 - 2 * rest));
    }
    permute<kInverse<table>>(in, out);
    for (int i = 0; i < 8; ++i) store(pDst + 8 * i, out[i]);
}

inline Vek32u countZeros(const Vek16s* pSrc) {
    i16x8 v[8];
    for (int i = 0; i < 8; ++i) v[i] = load<i16x8>(pSrc + 8 * i);
    return static_cast<Vek32u>(std::popcount(zeroBits(v)));
}

}  // namespace vekvc::simd

#endif
