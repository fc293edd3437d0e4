// Fast form of the 2-4-8 DCT: the same double precision, separated into rows and columns.
//
// The two forms round differently on their way, and agree where no result lies between theirs and a boundary. Let all
// values have magnitudes of at most 2048. A value with the basis value B in a result passes through at most 37
// roundings in the definition and 14 here, constants counted, each by at most 2^-52 of its size in any rounding mode.
// The |value| |B| of a result add up to at most 2^16: in the inverse, where the |B| of a half add up to less than 14.4,
// to 2 * 14.4 * 2048; in the forward transform, of sums of two with |B| that add up to 16, to 16 * 4096. So a quarter
// of it, the result, is off by less than 51 * 2^-52 * 2^14 < 2^-32.3 in both together, and the addition of kRound by
// less than 2^-37 more. Results that lie further than 2^-32 from a boundary are the same; ties do, lifted by 2^-30.
// For a block that has others, or larger values, the definition does the work.
#ifndef VEKVC_DV_TRANSFORM248_SIMD_H
#define VEKVC_DV_TRANSFORM248_SIMD_H

#include "core/simd.h"
#include "dv/transform248_plain.h"

namespace vekvc::simd {

// A row of eight values.
struct Row248 {
    static constexpr int kVectors = 8 / f64v::kLanes;
    f64v v[kVectors];
};

inline constexpr double kC1 = dv::kCos16[1], kC2 = dv::kCos16[2], kC3 = dv::kCos16[3], kC4 = dv::kCos16[4],
                        kC5 = dv::kCos16[5], kC6 = dv::kCos16[6], kC7 = dv::kCos16[7];

// Inverse 4-point DCT with the norms of basis4().
[[gnu::always_inline]] inline void inverse4(f64v f0, f64v f1, f64v f2, f64v f3, f64v& p0, f64v& p1, f64v& p2,
                                            f64v& p3) {
    const f64v even0 = (f0 + f2) * kC4, even1 = (f0 - f2) * kC4;
    const f64v odd0 = f1 * kC2 + f3 * kC6, odd1 = f1 * kC6 - f3 * kC2;
    p0 = even0 + odd0;
    p1 = even1 + odd1;
    p2 = even1 - odd1;
    p3 = even0 - odd0;
}
[[gnu::always_inline]] inline void forward4(f64v p0, f64v p1, f64v p2, f64v p3, f64v& f0, f64v& f1, f64v& f2,
                                            f64v& f3) {
    const f64v even0 = p0 + p3, even1 = p1 + p2, odd0 = p0 - p3, odd1 = p1 - p2;
    f0 = (even0 + even1) * kC4;
    f2 = (even0 - even1) * kC4;
    f1 = odd0 * kC2 + odd1 * kC6;
    f3 = odd0 * kC6 - odd1 * kC2;
}
// The 8-point DCT with the norms of basis8(), lane by lane.
[[gnu::always_inline]] inline void inverse8(f64v (&f)[8]) {
    f64v even[4];
    inverse4(f[0], f[2], f[4], f[6], even[0], even[1], even[2], even[3]);
    const f64v odd[4] = {
        f[1] * kC1 + f[3] * kC3 + (f[5] * kC5 + f[7] * kC7), f[1] * kC3 - f[3] * kC7 - (f[5] * kC1 + f[7] * kC5),
        f[1] * kC5 - f[3] * kC1 + (f[5] * kC7 + f[7] * kC3), f[1] * kC7 - f[3] * kC5 + (f[5] * kC3 - f[7] * kC1)};
    for (int i = 0; i < 4; ++i) {
        f[i] = even[i] + odd[i];
        f[7 - i] = even[i] - odd[i];
    }
}
[[gnu::always_inline]] inline void forward8(f64v (&p)[8]) {
    f64v sum[4], d[4];
    for (int i = 0; i < 4; ++i) {
        sum[i] = p[i] + p[7 - i];
        d[i] = p[i] - p[7 - i];
    }
    forward4(sum[0], sum[1], sum[2], sum[3], p[0], p[2], p[4], p[6]);
    p[1] = d[0] * kC1 + d[1] * kC3 + (d[2] * kC5 + d[3] * kC7);
    p[3] = d[0] * kC3 - d[1] * kC7 - (d[2] * kC1 + d[3] * kC5);
    p[5] = d[0] * kC5 - d[1] * kC1 + (d[2] * kC7 + d[3] * kC3);
    p[7] = d[0] * kC7 - d[1] * kC5 + (d[2] * kC3 - d[3] * kC1);
}

// Along the rows of a block: rows become lanes and columns again.
[[gnu::always_inline]] inline void alongRows(Row248 (&row)[8], auto transform) {
    constexpr int n = f64v::kLanes;
    for (int first = 0; first < 8; first += n) {
        f64v column[8];
        for (int i = 0; i < 8; i += n) {
            f64v square[n];
            for (int k = 0; k < n; ++k) square[k] = row[first + k].v[i / n];
            transposeSquare(square);
            for (int k = 0; k < n; ++k) column[i + k] = square[k];
        }
        transform(column);
        for (int i = 0; i < 8; i += n) {
            f64v square[n];
            for (int k = 0; k < n; ++k) square[k] = column[i + k];
            transposeSquare(square);
            for (int k = 0; k < n; ++k) row[first + k].v[i / n] = square[k];
        }
    }
}

[[gnu::always_inline]] inline Row248 loadRow(const Vek16s* p) {
    const i16x8 x = load<i16x8>(p);
    Row248 row;
    toDoubles(widenLow(x), row.v);
    toDoubles(widenHigh(x), row.v + Row248::kVectors / 2);
    return row;
}
// A block's results, a quarter of the values that are put in. Lifted by the margin, one that lies as near to a boundary
// as that leaves a fraction below twice the margin.
class Results248 {
  public:
    static constexpr double kMargin = 0x1p-32;

    [[gnu::always_inline]] void put(int i, const Row248& row) {
        f64v whole[Row248::kVectors];
        for (int k = 0; k < Row248::kVectors; ++k) {
            const f64v lifted = row.v[k] * 0.25 + (dv::kRound + kMargin);
            whole[k] = floor(lifted);
            least_[k] = i == 0 ? lifted - whole[k] : min(least_[k], lifted - whole[k]);
        }
        row_[i] = narrowI16(toInts(whole), toInts(whole + Row248::kVectors / 2));
    }
    // Is every result further than the margin from a boundary?
    bool certain() const {
        f64v least = least_[0];
        for (int k = 1; k < Row248::kVectors; ++k) least = min(least, least_[k]);
        return !anyLess(least, 2 * kMargin);
    }
    void store(Vek16s* p) const {
        for (int i = 0; i < 8; ++i) vekvc::store(p + 8 * i, row_[i]);
    }

  private:
    i16x8 row_[8];
    f64v least_[Row248::kVectors];  // fractions
};

[[gnu::always_inline]] inline bool allUpTo2048(const Vek16s* p) {
    u16x8 most = zero<u16x8>();
    for (int i = 0; i < 8; ++i) most = max(most, as<u16x8>(abs(load<i16x8>(p + 8 * i))));
    return allZero(subSat(most, splat<u16x8>(2048)));
}

inline void inverse248(Vek16s* pSrcDst) {
    if (!allUpTo2048(pSrcDst)) [[unlikely]]
        return plain::inverse248(pSrcDst);
    Row248 row[8];
    for (int i = 0; i < 8; ++i) row[i] = loadRow(pSrcDst + 8 * i);
    alongRows(row, [](f64v(&column)[8]) { inverse8(column); });
    for (int i = 0; i < Row248::kVectors; ++i)
        for (int half = 0; half < 8; half += 4) {
            Row248* r = row + half;
            inverse4(r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i], r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i]);
        }
    Results248 results;
    for (int z = 0; z < 4; ++z) {
        Row248 even, odd;
        for (int i = 0; i < Row248::kVectors; ++i) {
            even.v[i] = row[z].v[i] + row[4 + z].v[i];
            odd.v[i] = row[z].v[i] - row[4 + z].v[i];
        }
        results.put(2 * z, even);
        results.put(2 * z + 1, odd);
    }
    if (!results.certain()) [[unlikely]]
        return plain::inverse248(pSrcDst);
    results.store(pSrcDst);
}

inline void forward248(Vek16s* pSrcDst) {
    if (!allUpTo2048(pSrcDst)) [[unlikely]]
        return plain::forward248(pSrcDst);
    Row248 row[8];
    for (int z = 0; z < 4; ++z) {
        const Row248 even = loadRow(pSrcDst + 16 * z), odd = loadRow(pSrcDst + 16 * z + 8);
        for (int i = 0; i < Row248::kVectors; ++i) {
            row[z].v[i] = even.v[i] + odd.v[i];
            row[4 + z].v[i] = even.v[i] - odd.v[i];
        }
    }
    for (int i = 0; i < Row248::kVectors; ++i)
        for (int half = 0; half < 8; half += 4) {
            Row248* r = row + half;
            forward4(r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i], r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i]);
        }
    alongRows(row, [](f64v(&column)[8]) { forward8(column); });
    Results248 results;
    for (int i = 0; i < 8; ++i) results.put(i, row[i]);
    if (!results.certain()) [[unlikely]]
        return plain::forward248(pSrcDst);
    results.store(pSrcDst);
}

}  // namespace vekvc::simd

#endif
