// The results of an 8x8 transform on their way to memory, shared by the fast forms of both kinds.
#ifndef VEKVC_COMMON_DCT_ROWS_SIMD_H
#define VEKVC_COMMON_DCT_ROWS_SIMD_H

#include "common/dct_plain.h"
#include "core/simd.h"

namespace vekvc::simd {

struct DctRows {
#if VEKVC_VECTOR256
    i16x16 pair[4];  // rows i and i + 4
#else
    i16x8 row[8];
#endif
};

[[gnu::always_inline]] inline void storeRows(const dct::Residual& to, const DctRows& rows) {
#if VEKVC_VECTOR256
    for (int i = 0; i < 4; ++i) storePair16(to.dst.at(0, i), to.dst.at(0, i + 4), rows.pair[i]);
#else
    for (int i = 0; i < 8; ++i) store(to.dst.at(0, i), rows.row[i]);
#endif
}

[[gnu::always_inline]] inline void storeRows(const dct::Picture& to, const DctRows& rows) {
#if VEKVC_VECTOR256
    for (int i = 0; i < 4; i += 2) {
        const u8x32 samples = narrowU8(rows.pair[i], rows.pair[i + 1]);
        storePair8(to.dst.at(0, i), to.dst.at(0, i + 1), lowHalf(samples));
        storePair8(to.dst.at(0, i + 4), to.dst.at(0, i + 5), highHalf(samples));
    }
#else
    for (int i = 0; i < 8; i += 2)
        storePair8(to.dst.at(0, i), to.dst.at(0, i + 1), narrowU8(rows.row[i], rows.row[i + 1]));
#endif
}

// Limiting the sum of two to 16 bits first loses nothing.
[[gnu::always_inline]] inline void storeRows(const dct::Prediction& to, const DctRows& rows) {
    DctRows sums;
#if VEKVC_VECTOR256
    for (int i = 0; i < 4; ++i)
        sums.pair[i] = addSat(rows.pair[i], widen(loadPair8<u8x16>(to.dst.at(0, i), to.dst.at(0, i + 4))));
#else
    for (int i = 0; i < 8; ++i) sums.row[i] = addSat(rows.row[i], widenLow(loadBytes<u8x16, 8>(to.dst.at(0, i))));
#endif
    storeRows(dct::Picture{to.dst}, sums);
}

}  // namespace vekvc::simd

#endif
