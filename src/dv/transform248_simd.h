// Fast form of the 2-4-8 DCT: the same double precision, separated into rows and columns.
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
// A quarter of the values, rounded as the definition says.
[[gnu::always_inline]] inline void storeRow(Vek16s* p, const Row248& row) {
    f64v rounded[Row248::kVectors];
    for (int i = 0; i < Row248::kVectors; ++i) rounded[i] = floor(row.v[i] * 0.25 + dv::kRound);
    store(p, narrowI16(toInts(rounded), toInts(rounded + Row248::kVectors / 2)));
}

inline void inverse248(Vek16s* pSrcDst) {
    Row248 row[8];
    for (int i = 0; i < 8; ++i) row[i] = loadRow(pSrcDst + 8 * i);
    alongRows(row, [](f64v(&column)[8]) { inverse8(column); });
    for (int i = 0; i < Row248::kVectors; ++i)
        for (int half = 0; half < 8; half += 4) {
            Row248* r = row + half;
            inverse4(r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i], r[0].v[i], r[1].v[i], r[2].v[i], r[3].v[i]);
        }
    for (int z = 0; z < 4; ++z) {
        Row248 even, odd;
        for (int i = 0; i < Row248::kVectors; ++i) {
            even.v[i] = row[z].v[i] + row[4 + z].v[i];
            odd.v[i] = row[z].v[i] - row[4 + z].v[i];
        }
        storeRow(pSrcDst + 16 * z, even);
        storeRow(pSrcDst + 16 * z + 8, odd);
    }
}

inline void forward248(Vek16s* pSrcDst) {
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
    for (int i = 0; i < 8; ++i) storeRow(pSrcDst + 8 * i, row[i]);
}

}  // namespace vekvc::simd

#endif
