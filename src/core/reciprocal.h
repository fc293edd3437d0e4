// Division of 16-bit numbers by a multiplication and a shift.
#ifndef VEKVC_CORE_RECIPROCAL_H
#define VEKVC_CORE_RECIPROCAL_H

#include <cstdint>

#include "vekvc/types.h"

namespace vekvc {

// floor(n / d) = (n * factor) >> (16 + shift). With k = 16 + shift, e = factor * d - 2^k is at least 0; the product is
// then n / d * 2^k + n * e / d, and the second term does not reach the next integer while n * e < 2^k.
struct Reciprocal {
    Vek16u factor = 0, shift = 0;
};

// The reciprocals of the divisors step, 2 step, ... up to `largest`, from 2 on; proven for dividends up to
// `largestDividend`.
template <int largest, int largestDividend, int step = 1>
struct Reciprocals {
    Reciprocal at[largest / step + 1] = {};
    bool proven = true;

    constexpr Reciprocals() {
        for (int d = step < 2 ? 2 : step; d <= largest; d += step) {
            int shift = 0;
            while (2 << shift < d) ++shift;  // the factor has 16 bits: 2^shift < d <= 2 * 2^shift
            const Vek32u power = Vek32u{1} << (16 + shift);
            const Vek32u factor = (power + static_cast<Vek32u>(d) - 1) / static_cast<Vek32u>(d);
            const Vek32u excess = factor * static_cast<Vek32u>(d) - power;
            at[d / step] = {static_cast<Vek16u>(factor), static_cast<Vek16u>(shift)};
            proven = proven && factor < 65536 && std::uint64_t{largestDividend} * excess < power;
        }
    }

    constexpr const Reciprocal& of(int divisor) const { return at[divisor / step]; }
};

}  // namespace vekvc

#endif
