// Fast forms of the quantizers: magnitudes in unsigned 16-bit lanes, the sign given back at the end. Divisions are
// multiplications by reciprocals.
#ifndef VEKVC_MPEG4_QUANTIZE_SIMD_H
#define VEKVC_MPEG4_QUANTIZE_SIMD_H

#include <algorithm>
#include <bit>

#include "core/reciprocal.h"
#include "core/simd.h"
#include "mpeg4/quantize_plain.h"

namespace vekvc::simd {

#if VEKVC_VECTOR256
using LevelVector = i16x16;
using MagnitudeVector = u16x16;
#else
using LevelVector = i16x8;
using MagnitudeVector = u16x8;
#endif
inline constexpr int kLevelLanes = LevelVector::kBytes / 2;

// ---- inverse

// A magnitude with the sign of its level, limited to -limit .. limit - 1; 0 where the level is 0.
[[gnu::always_inline]] inline LevelVector limited(MagnitudeVector c, LevelVector level, MagnitudeVector limit) {
    const auto positive = as<MagnitudeVector>(level > zero<LevelVector>());  // -1 there
    return withSign(as<LevelVector>(min(c, limit + positive)), level);
}

// sign(level) * (2 * QP * |level| + added), limited; `limit` is at most 32768, `added` at most QP. Magnitudes are
// first limited to 2^k, with which the product lies in 32768..65535: no larger one changes the result.
[[gnu::always_inline]] inline void scaleLevels(Vek16s* block, Vek32s QP, Vek32s added, Vek32s limit) {
    const int k = 15 - static_cast<int>(std::bit_width(static_cast<Vek32u>(QP)));
    const auto largest = splat<MagnitudeVector>(1 << k), factor = splat<MagnitudeVector>(2 * QP);
    const auto more = splat<MagnitudeVector>(added), limits = splat<MagnitudeVector>(limit);
    for (int i = 0; i < 64; i += kLevelLanes) {
        const auto level = load<LevelVector>(block + i);
        const auto size = min(as<MagnitudeVector>(abs(level)), largest);
        store(block + i, limited(addSat(size * factor, more), level, limits));
    }
}

template <bool intra>
void quantInvH263(Vek16s* block, Vek32s QP) {
    const Vek32s dc = intra ? clip3(-2048, 2047, 8 * load<Vek16s>(block)) : 0;
    scaleLevels(block, QP, (QP - 1) | 1, 2048);  // QP, or QP - 1 if it is even
    if (intra) store(block, static_cast<Vek16s>(dc));
}

inline void quantInvAdvancedIntra(Vek16s* block, Vek32s QP) { scaleLevels(block, QP, 0, 32768); }

// The MPEG method for factors W * QP of 16 bits. (2 |level| + 1) * W * QP has 32 bits, of which those from bit 4 on
// count; where the high half is 8 or more the result is limited in any case.
template <bool intra>
[[gnu::always_inline]] inline void quantInvMatrix(Vek16s* block, const mpeg4::InverseQuantizer& q, Vek32s QP,
                                                  Vek32s dc) {
    const auto scale = splat<MagnitudeVector>(QP), limits = splat<MagnitudeVector>(q.largest() + 1);
    const auto largest = splat<MagnitudeVector>(32767), eight = splat<MagnitudeVector>(8);
    auto odd = zero<LevelVector>();
    for (int i = 0; i < 64; i += kLevelLanes) {
        const auto level = load<LevelVector>(block + i);
        const auto factor = load<MagnitudeVector>(q.weight + i) * scale;
        const auto size = min(as<MagnitudeVector>(abs(level)), largest);
        const auto doubled = intra ? size + size : size + size + splat<MagnitudeVector>(1);
        const auto low = doubled * factor, high = min(mulHigh(doubled, factor), eight);
        const auto c = limited(high << 12 | low >> 4, level, limits);
        odd = odd ^ c;
        store(block + i, c);
    }
    auto sum = static_cast<Vek32u>(std::popcount(byteMask(odd << 15)));
    if (intra) {
        sum += static_cast<Vek32u>(load<Vek16s>(block) + dc);
        store(block, static_cast<Vek16s>(dc));
    }
    const Vek32s last = load<Vek16s>(block + 63);
    store(block + 63, static_cast<Vek16s>(last ^ static_cast<Vek32s>(~sum & 1)));
}

template <bool intra>
void quantInvMpeg4(Vek16s* block, const mpeg4::InverseQuantizer& q, Vek32s QP, Vek32s dc) {
    const Vek32s first = intra ? clip3(-q.largest() - 1, q.largest(), dc * load<Vek16s>(block)) : 0;
    if (q.hasMatrix == 0) {
        scaleLevels(block, QP, (QP - 1) | 1, q.largest() + 1);
        if (intra) store(block, static_cast<Vek16s>(first));
    } else if (QP < 256) {
        quantInvMatrix<intra>(block, q, QP, first);
    } else {
        plain::quantInvMpeg4<intra>(block, q, QP, dc);  // 12 bits per sample only
    }
}

// ---- forward

// The divisors 2 QP; magnitudes reach 32768.
inline constexpr Reciprocals<2 * 511, 32768, 2> kReciprocalsMpeg4;
static_assert(kReciprocalsMpeg4.proven);

// mpeg4::divideRound without a branch: no predictor foresees a DC's sign.
[[gnu::always_inline]] inline Vek32s divideRoundSigned(Vek32s a, Vek32s b) {
    const Vek32s sign = opaque(a >> 31);
    const Vek32u quotient =
        (static_cast<Vek32u>((a ^ sign) - sign) + static_cast<Vek32u>(b) / 2) / static_cast<Vek32u>(b);
    return (static_cast<Vek32s>(quotient) ^ sign) - sign;
}

// Quantizes all elements; gives the number of levels other than 0, in an intra block without the DC.
template <bool intra>
[[gnu::always_inline]] inline Vek32s divideLevels(Vek16s* block, Vek32s QP, Vek32s largest) {
    const Reciprocal& r = *opaque(&kReciprocalsMpeg4.of(2 * QP));  // the factor is broadcast from memory
    const int shift = r.shift;
    const auto factor = splatFrom<MagnitudeVector>(&r.factor), most = splat<MagnitudeVector>(largest);
    const auto dead = splat<MagnitudeVector>(intra ? 0 : QP / 2);
    const auto divide = [&](Vek16s* p) {
        const auto f = load<LevelVector>(p);
        const auto a = subSat(as<MagnitudeVector>(abs(f)), dead);
        const auto level = withSign(as<LevelVector>(min(mulHigh(a, factor) >> shift, most)), f);
        store(p, level);
        return level;
    };
    std::uint64_t zeros = intra ? 1 : 0;  // a bit each, the DC's the lowest
    for (int i = 0; i < 64; i += 2 * kLevelLanes) {
        const LevelVector first = divide(block + i), second = divide(block + i + kLevelLanes);
        const auto levels = narrowI8(first, second);
        zeros |= std::uint64_t{byteMask(levels == zero<decltype(levels)>())} << i;
    }
    return 64 - std::popcount(zeros);
}

// The same by the MPEG method. Both divisions are one: floor((floor((16 a + W / 2) / W) + c) / (2 QP)) is floor(n / d)
// with n = 16 a + W / 2 + c W and d = 2 QP W. In single precision n + 1/2 is exact (n < 2^20), and lies half or more
// from any multiple of d. The four roundings (of 1 / W, of 1 / (2 QP), of their product and of the last one) err by
// less than 4.1 * 2^-23 of the quotient in any rounding mode; times n < 622500 that is less than half.
template <bool intra>
[[gnu::always_inline]] inline Vek32s divideWeighted(Vek16s* block, const mpeg4::ForwardQuantizer& q, Vek32s QP) {
#if VEKVC_VECTOR256
    using Floats = f32x8;
#else
    using Floats = f32x4;
#endif
    const auto half = splatFloat<Floats>(0.5f), reciprocal = splatFloat<Floats>(1.0f / static_cast<float>(2 * QP));
    const Vek32s added = (3 * QP + 2) / 4;
    const auto bias = splatFloat<Floats>(static_cast<float>(added));
    const auto divide = [&](auto a, auto weight, const float* reciprocals) {
        const auto more = intra ? toFloat(weight) * bias + half : half;
        const auto n = toFloat((a << 4) + (weight >> 1)) + more;
        return truncate(n * (load<Floats>(reciprocals) * reciprocal));
    };
    const auto most = splat<i16x8>(q.largest());
    auto zeros = zero<i16x8>();
    for (int i = 0; i < 64; i += 8) {
        const auto f = load<i16x8>(block + i), weight = load<i16x8>(q.weight + i);
        const auto a = as<u16x8>(abs(f));
#if VEKVC_VECTOR256
        const auto levels = divide(widen(a), widen(weight), q.reciprocal + i);
        const auto low = lowHalf(levels), high = highHalf(levels);
#else
        const auto low = divide(widenLow(a), widenLow(weight), q.reciprocal + i);
        const auto high = divide(widenHigh(a), widenHigh(weight), q.reciprocal + i + 4);
#endif
        const auto level = min(narrowI16(low, high), most);
        zeros += level == zero<i16x8>();
        store(block + i, withSign(level, f));
    }
    const Vek32s count = 64 + sumLanes(zeros);
    return intra ? count - (load<Vek16s>(block) != 0 ? 1 : 0) : count;
}

template <bool intra>
[[gnu::always_inline]] inline Vek32s quantMpeg4(Vek16s* block, const mpeg4::ForwardQuantizer& q, Vek32s QP, Vek32s dc) {
    const Vek32s first = intra ? clip3(-q.largest() - 1, q.largest(), divideRoundSigned(load<Vek16s>(block), dc)) : 0;
    const Vek32s count =
        q.hasMatrix != 0 ? divideWeighted<intra>(block, q, QP) : divideLevels<intra>(block, QP, q.largest());
    if (intra) store(block, static_cast<Vek16s>(first));
    return count;
}

template <bool intra>
[[gnu::always_inline]] inline Vek32s quantH263(Vek16s* block, Vek32s QP, Vek32s largest) {
    // Negative quotients become 1. g++ would go to vectors and back for both limits at once.
    const Vek32s first = intra ? std::min(opaque(std::max((load<Vek16s>(block) + 4) >> 3, 1)), 254) : 0;
    const Vek32s count = divideLevels<intra>(block, QP, largest);
    if (intra) store(block, static_cast<Vek16s>(first));
    return count;
}

inline Vek32s quantAdvancedIntra(Vek16s* block, Vek32s QP, Vek32s largest) {
    const Vek32s f = load<Vek16s>(block);
    const Reciprocal r = kReciprocalsMpeg4.of(2 * QP);
    const auto size = static_cast<Vek32s>((magnitude(f) + static_cast<Vek32u>(QP)) * r.factor >> (16 + r.shift));
    const Vek32s count = divideLevels<true>(block, QP, largest) + (size != 0 ? 1 : 0);
    store(block, static_cast<Vek16s>(f < 0 ? -size : size));
    return count;
}

}  // namespace vekvc::simd

#endif
