// Coefficient scans and the zero count. The fast form of scan_plain.h.
#ifndef VEKVC_COMMON_SCAN_SIMD_H
#define VEKVC_COMMON_SCAN_SIMD_H

#include <bit>
#include <utility>

#include "common/scan_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using Coefficients = i16x16;
#else
using Coefficients = i16x8;
#endif

// A permutation of 64 coefficients as byte shuffles. The input is eight runs of eight, each in every 128 bits of a
// vector, the output is eight runs too, of which a vector holds one or two: vector o is the OR of all input vectors i
// shuffled by select[o][i]; used[o] has a bit for each input that contributes.
struct Permutation {
    static constexpr int kTogether = Coefficients::kBytes / 16;
    static constexpr int kVectors = 8 / kTogether;
    alignas(32) Vek8u select[kVectors][8][Coefficients::kBytes] = {};
    Vek8u used[kVectors] = {};
    Vek8u run[kVectors][kTogether] = {};

    // output[k] = input[source[k]]
    constexpr explicit Permutation(const Vek8u (&source)[64]) {
        Vek8u from[8] = {};  // the runs of the input that a run of the output takes from
        for (int k = 0; k < 64; ++k) from[k / 8] = static_cast<Vek8u>(from[k / 8] | 1 << source[k] / 8);
        unsigned placed = 0;
        for (int o = 0; o < kVectors; ++o)
            for (int part = 0; part < kTogether; ++part) {
                // The first run that is left, then the one that adds the fewest inputs.
                int best = -1, fewest = 9;
                for (int r = 0; r < 8; ++r) {
                    const int inputs = part == 0 ? 0 : std::popcount(unsigned{from[r]} | used[o]);
                    if ((placed >> r & 1) == 0 && inputs < fewest) {
                        best = r;
                        fewest = inputs;
                    }
                }
                placed |= 1u << best;
                used[o] = static_cast<Vek8u>(used[o] | from[best]);
                run[o][part] = static_cast<Vek8u>(best);
            }
        for (int o = 0; o < kVectors; ++o)
            for (int i = 0; i < 8; ++i)
                for (int k = 0; k < 8 * kTogether; ++k) {
                    const int place = source[8 * run[o][k / 8] + k % 8];
                    for (int b = 0; b < 2; ++b)
                        select[o][i][2 * k + b] = static_cast<Vek8u>(place / 8 == i ? 2 * (place % 8) + b : 0x80);
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
[[gnu::always_inline]] inline Coefficients gather(const Coefficients (&in)[8],
                                                  Coefficients sum = zero<Coefficients>()) {
    if constexpr (input == 8) {
        return sum;
    } else {
        if constexpr (permutation.used[output] >> input & 1)
            sum = sum |
                  shuffleBytes(in[input], load<Vec<Vek8u, Coefficients::kBytes>>(permutation.select[output][input]));
        return gather<permutation, output, input + 1>(in, sum);
    }
}

// Stores the permuted runs, all of them when the last is known: pDst may be where the input came from.
template <const Permutation& permutation>
[[gnu::always_inline]] inline void permute(const Coefficients (&in)[8], Vek16s* pDst) {
    Coefficients out[Permutation::kVectors];
    [&]<int... o>(std::integer_sequence<int, o...>) { ((out[o] = gather<permutation, o>(in)), ...); }
    (std::make_integer_sequence<int, Permutation::kVectors>());
#if VEKVC_VECTOR256
    for (int o = 0; o < Permutation::kVectors; ++o)
        storePair16(pDst + 8 * permutation.run[o][0], pDst + 8 * permutation.run[o][1], out[o]);
#else
    for (int o = 0; o < Permutation::kVectors; ++o) store(pDst + 8 * o, out[o]);
#endif
}

// A run of eight in each 128 bits.
[[gnu::always_inline]] inline Coefficients loadRun(const void* p) {
#if VEKVC_VECTOR256
    return loadTwice16<Coefficients>(p);
#else
    return load<Coefficients>(p);
#endif
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

inline int countNonZeroOf64(const Vek16s* p) {
    constexpr int kLanes = Coefficients::kBytes / 2;
    int zeroBytes = 0;
    for (const Vek16s* const end = p + 64; p < end; p += 2 * kLanes) {
        const auto isZero = [](const Vek16s* q) { return load<Coefficients>(q) == zero<Coefficients>(); };
        zeroBytes += std::popcount(byteMask(narrowI8(isZero(p), isZero(p + kLanes))));
    }
    return 64 - zeroBytes;
}

// What stands behind the expected count is dropped.
[[gnu::noinline, gnu::cold]] inline VekStatus dropBehind(Vek16s* p, Vek32s countNonZero) {
    i16x8 v[8];
    for (int i = 0; i < 8; ++i) v[i] = load<i16x8>(p + 8 * i);
    for (std::uint64_t late = withoutLowestBits(~zeroBits(v), countNonZero); late != 0; late &= late - 1)
        store(p + std::countr_zero(late), Vek16s{0});
    return vekStsOk;
}

template <const Vek8u (&table)[64]>
VekStatus scanForward(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero) {
    const auto allExpected = [&](const Vek16s* p) { return countNonZero >= 20 || countNonZeroOf64(p) <= countNonZero; };
    const auto run = [&](int i) { return loadRun(pSrc + 8 * i); };
    const Coefficients in[] = {run(0), run(1), run(2), run(3), run(4), run(5), run(6), run(7)};
#if VEKVC_VECTOR256
    const bool whole = allExpected(pSrc);
    permute<kForward<table>>(in, pDst);
#else
    permute<kForward<table>>(in, pDst);
    const bool whole = allExpected(pDst);  // behind it, with all registers free
#endif
    if (!whole) [[unlikely]]
        return dropBehind(pDst, countNonZero);
    return vekStsOk;
}

template <const Vek8u (&table)[64]>
VekStatus scanInverse(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero) {
    if (indxLastNonZero < 7) {  // less than one vector
        // To opaque addresses: g++ would make one slow string instruction of the loop.
        for (int i = 0; i < 8; ++i) store(opaque(pDst + 8 * i), zero<i16x8>());
        for (Vek32s i = 0; i <= indxLastNonZero; ++i) store(pDst + table[i], load<Vek16s>(pSrc + i));
        return vekStsOk;
    }
    // Whole vectors up to the last coefficient; the one that holds it ends there, so it is read backwards and shifted.
    const Vek32s whole = (indxLastNonZero + 1) / 8, rest = (indxLastNonZero + 1) % 8;
    alignas(16) static constexpr Vek8u kShift[32] = {0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,
                                                     11,  12,  13,  14,  15,  128, 128, 128, 128, 128, 128,
                                                     128, 128, 128, 128, 128, 128, 128, 128, 128, 128};
    const auto end = [&] {
        return shuffleBytes(loadRun(pSrc + indxLastNonZero - 7),
                            as<Vec<Vek8u, Coefficients::kBytes>>(loadRun(kShift + 16 - 2 * rest)));
    };
    const auto run = [&](Vek32s i) {
        return i < whole ? loadRun(pSrc + 8 * i) : i == whole ? end() : zero<Coefficients>();
    };
    const Coefficients in[] = {run(0), run(1), run(2), run(3), run(4), run(5), run(6), run(7)};
    permute<kInverse<table>>(in, pDst);
    return vekStsOk;
}

inline Vek32u countZeros(const Vek16s* pSrc) {
    i16x8 v[8];
    for (int i = 0; i < 8; ++i) v[i] = load<i16x8>(pSrc + 8 * i);
    return static_cast<Vek32u>(std::popcount(zeroBits(v)));
}

}  // namespace vekvc::simd

#endif
