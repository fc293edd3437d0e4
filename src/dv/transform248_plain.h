// The 2-4-8 DCT (SMPTE 314M, IEC 61834-2) in double precision. Its results are off by less than 2^-30: those of 16-bit
// values where roundings are to the nearest, those of values up to 2048 in any rounding mode. So no true tie falls
// below its boundary (kRound).
#ifndef VEKVC_DV_TRANSFORM248_PLAIN_H
#define VEKVC_DV_TRANSFORM248_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc::dv {

// cos(m pi / 16), m = 0 to 8.
inline constexpr double kCos16[9] = {1.0,
                                     0.98078528040323044913,
                                     0.92387953251128675613,
                                     0.83146961230254523708,
                                     0.70710678118654752440,
                                     0.55557023301960222474,
                                     0.38268343236508977173,
                                     0.19509032201612826785,
                                     0.0};
constexpr double cos16(int m) {
    m %= 32;
    if (m > 16) m = 32 - m;
    return m <= 8 ? kCos16[m] : -kCos16[16 - m];
}

// What lies on a tie, or less than 2^-30 below one, is rounded up.
inline constexpr double kRound = 0.5 + 0x1p-30;

// The basis functions with their norms: C(h) cos((2x + 1) h pi / 16) and C(k) cos((2z + 1) k pi / 8).
constexpr double basis8(int h, int x) { return (h == 0 ? kCos16[4] : 1) * cos16((2 * x + 1) * h); }
constexpr double basis4(int k, int z) { return (k == 0 ? kCos16[4] : 1) * cos16(2 * (2 * z + 1) * k); }

}  // namespace vekvc::dv

namespace vekvc::plain {

// floor(v + 1/2 + 2^-30), limited to 16 bits. |v| is below 2^31.
inline Vek16s roundUp(double v) {
    v += dv::kRound;
    const auto whole = static_cast<std::int64_t>(v);
    const std::int64_t floor = static_cast<double>(whole) > v ? whole - 1 : whole;
    return static_cast<Vek16s>(clip3<std::int64_t>(-32768, 32767, floor));
}

// The sum over h and k of one half's coefficients, rows 0 to 3 or 4 to 7.
inline double sample248(const Vek16s* half, int z, int x) {
    double sum = 0;
    for (int h = 0; h < 8; ++h)
        for (int k = 0; k < 4; ++k) sum += half[8 * k + h] * (dv::basis8(h, x) * dv::basis4(k, z));
    return sum / 4;
}

inline void inverse248(Vek16s* pSrcDst) {
    Vek16s block[64];
    for (int i = 0; i < 64; ++i) block[i] = load<Vek16s>(pSrcDst + i);
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 8; ++x) {
            const double s = sample248(block, z, x), d = sample248(block + 32, z, x);
            store<Vek16s>(pSrcDst + 16 * z + x, roundUp(s + d));
            store<Vek16s>(pSrcDst + 16 * z + 8 + x, roundUp(s - d));
        }
}

inline void forward248(Vek16s* pSrcDst) {
    int sum[4][8], difference[4][8];
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 8; ++x) {
            const int even = load<Vek16s>(pSrcDst + 16 * z + x), odd = load<Vek16s>(pSrcDst + 16 * z + 8 + x);
            sum[z][x] = even + odd;
            difference[z][x] = even - odd;
        }
    for (int k = 0; k < 4; ++k)
        for (int h = 0; h < 8; ++h) {
            double f = 0, g = 0;
            for (int x = 0; x < 8; ++x)
                for (int z = 0; z < 4; ++z) {
                    const double basis = dv::basis8(h, x) * dv::basis4(k, z);
                    f += sum[z][x] * basis;
                    g += difference[z][x] * basis;
                }
            store<Vek16s>(pSrcDst + 8 * k + h, roundUp(f / 4));
            store<Vek16s>(pSrcDst + 8 * (4 + k) + h, roundUp(g / 4));
        }
}

}  // namespace vekvc::plain

#endif
