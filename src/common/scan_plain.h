// Coefficient scans and the zero count. The definition.
#ifndef VEKVC_COMMON_SCAN_PLAIN_H
#define VEKVC_COMMON_SCAN_PLAIN_H

#include "common/scan_tables.h"
#include "core/memory.h"

namespace vekvc::plain {

// pDst[i] = pSrc[table[i]]; below 20 expected coefficients the walk ends when so many were found, the rest is 0.
template <const Vek8u (&table)[64]>
void scanForward(const Vek16s* pSrc, Vek16s* pDst, Vek32s countNonZero) {
    constexpr Vek32s kWholeBlock = 20;
    Vek32s found = 0;
    for (int i = 0; i < 64; ++i) {
        const bool done = countNonZero < kWholeBlock && found == countNonZero;
        const Vek16s value = done ? Vek16s{0} : load<Vek16s>(pSrc + table[i]);
        found += value != 0;
        store(pDst + i, value);
    }
}

// pDst[table[i]] = pSrc[i] up to indxLastNonZero; the rest is 0.
template <const Vek8u (&table)[64]>
void scanInverse(const Vek16s* pSrc, Vek16s* pDst, Vek32s indxLastNonZero) {
    for (int i = 0; i < 64; ++i) store(pDst + table[i], i <= indxLastNonZero ? load<Vek16s>(pSrc + i) : Vek16s{0});
}

inline Vek32u countZeros(const Vek16s* pSrc) {
    Vek32u zeros = 0;
    for (int i = 0; i < 64; ++i) zeros += load<Vek16s>(pSrc + i) == 0;
    return zeros;
}

}  // namespace vekvc::plain

#endif
