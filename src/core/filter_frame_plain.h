// The passes of the 3x3 binomial filter: weights 1 2 1 by 1 2 1, (sum + 8) >> 4. The definition.
#ifndef VEKVC_CORE_FILTER_FRAME_PLAIN_H
#define VEKVC_CORE_FILTER_FRAME_PLAIN_H

#include <type_traits>

#include "core/memory.h"

namespace vekvc {

// Intermediate sums: 4 * 255 fits 16 bits, 4 * 65535 fits 32.
template <class T>
using FilterSum = std::conditional_t<sizeof(T) == 1, Vek16u, Vek32u>;

namespace plain {

template <class T>
void filterHorizontally(const T* pSrc, FilterSum<T>* pSum, Vek32s width) {
    for (Vek32s x = 0; x < width; ++x) {
        const auto at = [&](Vek32s column) {
            return Vek32u{load<T>(pSrc + (column < 0 ? 0 : column >= width ? width - 1 : column))};
        };
        pSum[x] = static_cast<FilterSum<T>>(at(x - 1) + 2 * at(x) + at(x + 1));
    }
}

template <class T>
void filterVertically(const FilterSum<T>* above, const FilterSum<T>* here, const FilterSum<T>* below, T* pDst,
                      Vek32s width) {
    for (Vek32s x = 0; x < width; ++x)
        store(pDst + x, static_cast<T>((Vek32u{above[x]} + 2 * Vek32u{here[x]} + below[x] + 8) >> 4));
}

}  // namespace plain
}  // namespace vekvc

#endif
