// Macroblock reconstruction: whole macroblocks against single-block exports put together by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "h264/macroblock_picture.h"
#include "vekvc.h"

namespace {

// Adds one block with the single-block export.
void addBlock(Vek8u* p, Vek16s* coeffs, const Vek16s* dc, int qp, bool hasAC, const Vek16s* scale) {
    EXPECT_EQ(vekiTransformQuantInvAddPred4x4_H264_16s_C1IR(p, kStep, coeffs, dc, p, kStep, qp, hasAC, scale),
              vekStsOk);
}

void addBlock8x8(Vek8u* p, const Vek16s* coeffs, int qp, const Vek16s* scale) {
    Vek16s w[64];
    std::copy_n(coeffs, 64, w);
    EXPECT_EQ(vekiQuantLuma8x8Inv_H264_16s_C1I(w, qp / 6, scale), vekStsOk);
    EXPECT_EQ(vekiTransformLuma8x8InvAddPred_H264_16s8u_C1R(p, kStep, w, p, kStep), vekStsOk);
}

constexpr Vek32u kMasks[] = {0x7FFFFFF, 0, 0x1FFFE, 0x0A5C3 << 1, 0x2 | 0x7000000, 0x5555555, 0x2AAAAAA, 1, 0x2060001};

TEST(H264Reconstruct, InterLumaIsItsBlocks) {
    for (const Vek32u cbp : kMasks)
        for (const int qp : {0, 7, 23, 24, 40, 51}) {
            const Scales s(qp);
            auto c = levels<Vek16s>(cbp + static_cast<Vek32u>(qp));
            Picture<Vek8u> expected(1), expected8(1), flat(1), p4(1), p8(1), pFlat(1);
            Vek16s* next = c.data();
            for (int k = 0; k < 16; ++k) {
                if (!(cbp >> (k + 1) & 1)) continue;
                addBlock(expected.at(blockX(k), blockY(k)), next, nullptr, qp, true, s.s4);
                addBlock(flat.at(blockX(k), blockY(k)), next, nullptr, qp, true, nullptr);
                next += 16;
            }
            Vek16s *end4 = c.data(), *endFlat = c.data(), *end8 = c.data();
            ASSERT_EQ(vekiReconstructLumaInter4x4MB_H264_16s8u_C1R(&end4, p4.at(0, 0), kStep, cbp, qp, s.s4, 0),
                      vekStsOk);
            ASSERT_EQ(vekiReconstructLumaInterMB_H264_16s8u_C1R(&endFlat, pFlat.at(0, 0), kStep, cbp, qp), vekStsOk);
            EXPECT_EQ(p4.samples, expected.samples) << cbp << ' ' << qp;
            EXPECT_EQ(pFlat.samples, flat.samples) << cbp << ' ' << qp;
            EXPECT_EQ(end4, next);
            EXPECT_EQ(endFlat, next);

            next = c.data();
            for (int k = 0; k < 4; ++k) {
                if (!(cbp >> (4 * k + 1) & 15)) continue;
                addBlock8x8(expected8.at(k % 2 * 8, k / 2 * 8), next, qp, s.s8);
                next += 64;
            }
            ASSERT_EQ(vekiReconstructLumaInter8x8MB_H264_16s8u_C1R(&end8, p8.at(0, 0), kStep, cbp, qp, s.s8, 0),
                      vekStsOk);
            EXPECT_EQ(p8.samples, expected8.samples) << cbp << ' ' << qp;
            EXPECT_EQ(end8, next);
        }
}

// Availability of block k, all of the macroblock's neighbours being there but those in `edgeFlags`; written out from
// the decoding order of 6.4.3.
int availability(int k, int edgeFlags) {
    constexpr bool noAboveRight[16] = {false, false, false, true, false, false, false, true,
                                       false, false, false, true, false, true,  false, true};
    const bool left = !(edgeFlags & 1), above = !(edgeFlags & 4), corner = !(edgeFlags & 16);
    const bool top = k == 0 || k == 1 || k == 4 || k == 5, first = k == 0 || k == 2 || k == 8 || k == 10;
    int a = 0;
    if (!top || above) a |= 1;
    if (!first || left) a |= 2;
    if (k == 0 ? corner : top ? above : first ? left : true) a |= 32;
    if ((top ? above : !noAboveRight[k]) && !(k == 5 && (edgeFlags & 32))) a |= 64;
    return a;
}

TEST(H264Reconstruct, IntraLumaIsItsBlocks) {
    std::mt19937 random(5);
    for (const Vek8u edges : std::vector<Vek8u>{0, 1, 4, 16, 32, 21, 37, 20})
        for (const Vek32u cbp : {0x1FFFEu, 0u, 0xA5C2u}) {
            const int qp = 30;
            const Scales s(qp);
            auto c = levels<Vek16s>(cbp + edges);
            Vek32u modes[16];
            for (auto& m : modes) m = static_cast<Vek32u>(random() % 9);
            Picture<Vek8u> expected(1), p4(1), flat(1), pFlat(1), half(1);
            bool warned = false;
            Vek16s* next = c.data();
            for (int k = 0; k < 16; ++k) {
                for (auto* p : {&expected, &flat})
                    warned |= vekiPredictIntra_4x4_H264_8u_C1IR(p->at(blockX(k), blockY(k)), kStep,
                                                                static_cast<int>(modes[k]),
                                                                availability(k, edges)) != vekStsOk;
                if (!(cbp >> (k + 1) & 1)) continue;
                addBlock(expected.at(blockX(k), blockY(k)), next, nullptr, qp, true, s.s4);
                addBlock(flat.at(blockX(k), blockY(k)), next, nullptr, qp, true, nullptr);
                next += 16;
            }
            const auto status = warned ? vekStsWrnUnavailableNeighbour : vekStsOk;
            Vek16s *end4 = c.data(), *endFlat = c.data(), *endHalf = c.data();
            EXPECT_EQ(
                vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R(&end4, p4.at(0, 0), kStep, modes, cbp, qp, edges, s.s4, 0),
                status);
            EXPECT_EQ(vekiReconstructLumaIntraMB_H264_16s8u_C1R(&endFlat, pFlat.at(0, 0), kStep, modes, cbp, qp, edges),
                      status);
            const auto halves = static_cast<Vek8u>(edges | (edges & 1) << 1);
            EXPECT_EQ(vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(&endHalf, half.at(0, 0), kStep, modes, cbp, qp,
                                                                       halves, s.s4, 0),
                      status);
            EXPECT_EQ(p4.samples, expected.samples) << int{edges} << ' ' << cbp;
            EXPECT_EQ(half.samples, expected.samples);
            EXPECT_EQ(pFlat.samples, flat.samples);
            EXPECT_EQ(end4, next);
        }
}

TEST(H264Reconstruct, HalfFormsSeeEachHalf) {
    // DC everywhere: blocks 0 and 2 lie beside the upper half, 8 and 10 beside the lower.
    for (const Vek8u edges : std::vector<Vek8u>{4 | 1, 4 | 2}) {
        const std::vector<Vek32u> modes(16, 2);
        Picture<Vek8u> p(1), q(1);
        std::vector<Vek16s> none(1);
        Vek16s* coeffs = none.data();
        const Scales s(0);
        ASSERT_EQ(vekiReconstructLumaIntraHalfMB_H264_16s8u_C1R(&coeffs, p.at(0, 0), kStep, modes.data(), 0, 20, edges),
                  vekStsOk);
        ASSERT_EQ(vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(&coeffs, q.at(0, 0), kStep, modes.data(), 0, 20,
                                                                   edges, s.s8, 0),
                  vekStsOk);
        const int firstSum = *p.at(-1, 0) + *p.at(-1, 1) + *p.at(-1, 2) + *p.at(-1, 3);
        EXPECT_EQ(*p.at(0, 0), edges & 1 ? 128 : (firstSum + 2) >> 2);
        int lower = 0;
        for (int k = 0; k < 4; ++k) lower += *p.at(-1, 8 + k) * ((edges & 2) == 0) + *p.at(k, 7);
        EXPECT_EQ(*p.at(0, 8), edges & 2 ? (lower + 2) >> 2 : (lower + 4) >> 3);
        EXPECT_EQ(*q.at(0, 0) == 128, (edges & 1) != 0);
    }
}

TEST(H264Reconstruct, Intra16x16IsItsBlocks) {
    for (const Vek32u cbp : kMasks)
        for (int mode = 0; mode < 4; ++mode) {
            const int qp = 20 + mode * 9;
            const Scales s(qp);
            for (const bool flat : {false, true}) {
                auto c = levels<Vek16s>(cbp);
                Picture<Vek8u> expected(1), p(1);
                ASSERT_EQ(vekiPredictIntra_16x16_H264_8u_C1IR(expected.at(0, 0), kStep, mode, 35), vekStsOk);
                Vek16s dc[16] = {}, *next = c.data();
                if (cbp & 1) {
                    std::copy_n(next, 16, dc);
                    ASSERT_EQ(vekiTransformQuantInvLumaDC4x4_H264_16s_C1I(dc, qp, flat ? nullptr : s.s4), vekStsOk);
                    next += 16;
                }
                for (int k = 0; k < 16; ++k) {
                    const bool coded = cbp >> (k + 1) & 1;
                    addBlock(expected.at(blockX(k), blockY(k)), next, dc + blockY(k) + blockX(k) / 4, qp, coded,
                             flat ? nullptr : s.s4);
                    next += coded ? 16 : 0;
                }
                Vek16s* end = c.data();
                const auto status =
                    flat ? vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&end, p.at(0, 0), kStep, mode, cbp, qp, 0)
                         : vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R(&end, p.at(0, 0), kStep, mode, cbp, qp, 0,
                                                                          s.s4, 0);
                ASSERT_EQ(status, vekStsOk);
                EXPECT_EQ(p.samples, expected.samples) << cbp << ' ' << mode;
                EXPECT_EQ(end, next);
            }
        }
}

TEST(H264Reconstruct, ChromaIsItsBlocks) {
    for (const Vek32u cbp : kMasks)
        for (const int qp : {3, 22, 25, 39}) {
            const int qpV = 39 - qp;
            const Scales su(qp), sv(qpV);
            auto c = levels<Vek16s>(cbp);
            Picture<Vek8u> eu(1), ev(2), pu(1), pv(2), fu(1), fv(2), gu(1), gv(2);
            const auto build = [&](Picture<Vek8u>& u, Picture<Vek8u>& v, bool flat) {
                Vek16s dc[2][4] = {}, *next = c.data();
                for (int plane = 0; plane < 2; ++plane) {
                    if (!(cbp >> (17 + plane) & 1)) continue;
                    std::copy_n(next, 4, dc[plane]);
                    next += 4;
                    const auto* scale = plane ? sv.s4 : su.s4;
                    EXPECT_EQ(flat ? vekiTransformDequantChromaDC_H264_16s_C1I(dc[plane], qp)
                                   : vekiTransformQuantInvChromaDC2x2_H264_16s_C1I(dc[plane], plane ? qpV : qp, scale),
                              vekStsOk);
                }
                for (int plane = 0; plane < 2; ++plane)
                    for (int k = 0; k < 4; ++k) {
                        const bool coded = cbp >> (19 + 4 * plane + k) & 1;
                        addBlock((plane ? v : u).at(k % 2 * 4, k / 2 * 4), next, dc[plane] + k,
                                 plane && !flat ? qpV : qp, coded,
                                 flat    ? nullptr
                                 : plane ? sv.s4
                                         : su.s4);
                        next += coded ? 16 : 0;
                    }
                return next;
            };
            Vek16s *end = build(eu, ev, false), *flatEnd = build(fu, fv, true), *a = c.data(), *b = c.data();
            ASSERT_EQ(vekiReconstructChromaInter4x4MB_H264_16s8u_P2R(&a, pu.at(0, 0), pv.at(0, 0), kStep, cbp, qp, qpV,
                                                                     su.s4, sv.s4, su.s4[0], sv.s4[0], 0),
                      vekStsOk);
            ASSERT_EQ(vekiReconstructChromaInterMB_H264_16s8u_P2R(&b, gu.at(0, 0), gv.at(0, 0), kStep, cbp, qp),
                      vekStsOk);
            EXPECT_EQ(pu.samples, eu.samples) << cbp << ' ' << qp;
            EXPECT_EQ(pv.samples, ev.samples) << cbp << ' ' << qp;
            EXPECT_EQ(gu.samples, fu.samples) << cbp << ' ' << qp;
            EXPECT_EQ(gv.samples, fv.samples) << cbp << ' ' << qp;
            EXPECT_EQ(a, end);
            EXPECT_EQ(b, flatEnd);
        }
}

TEST(H264Reconstruct, Chroma422IsItsBlocks) {
    for (const Vek32u cbp : {0x3FFFFu, 0u, 3u, 0x2A5A5u, 0x15A59u}) {
        const int qp = 17, qpV = 38;
        const Scales su(qp), sv(qpV), dcU(qp + 3), dcV(qpV + 3);
        auto c = levels<Vek16s>(cbp);
        Picture<Vek8u> e[2] = {Picture<Vek8u>(1), Picture<Vek8u>(2)}, p[2] = {Picture<Vek8u>(1), Picture<Vek8u>(2)};
        Vek16s dc[2][8] = {}, *next = c.data();
        for (int plane = 0; plane < 2; ++plane) {
            if (!(cbp >> plane & 1)) continue;
            std::copy_n(next, 8, dc[plane]);
            next += 8;
            ASSERT_EQ(
                vekiTransformQuantInvChromaDC2x4_H264_16s_C1I(dc[plane], plane ? qpV : qp, plane ? dcV.s4 : dcU.s4),
                vekStsOk);
        }
        for (int plane = 0; plane < 2; ++plane)
            for (int k = 0; k < 8; ++k) {
                const bool coded = cbp >> (2 + 8 * plane + k) & 1;
                addBlock(e[plane].at(k % 2 * 4, k / 2 * 4), next, dc[plane] + k, plane ? qpV : qp, coded,
                         plane ? sv.s4 : su.s4);
                next += coded ? 16 : 0;
            }
        Vek16s* end = c.data();
        ASSERT_EQ(vekiReconstructChroma422Inter4x4_H264High_16s8u_IP2R(&end, p[0].at(0, 0), p[1].at(0, 0), kStep, cbp,
                                                                       qp, qpV, su.s4, sv.s4, dcU.s4[0], dcV.s4[0], 0),
                  vekStsOk);
        EXPECT_EQ(p[0].samples, e[0].samples) << cbp;
        EXPECT_EQ(p[1].samples, e[1].samples) << cbp;
        EXPECT_EQ(end, next);
    }
}

// ---- bit depths: 8-bit pictures give the same samples through the 16-bit forms; lossless macroblocks

struct Both {
    std::vector<Vek16s> c16;
    std::vector<Vek32s> c32;
    Picture<Vek8u> a, b;
    Picture<Vek16u> wideA, wideB;

    explicit Both(unsigned seed)
        : c16(levels<Vek16s>(seed, 400, 2)), c32(c16.begin(), c16.end()), a(seed), b(seed + 1), wideA(1), wideB(1) {
        std::copy(a.samples.begin(), a.samples.end(), wideA.samples.begin());
        std::copy(b.samples.begin(), b.samples.end(), wideB.samples.begin());
    }
    void expectSame(const char* what) const {
        EXPECT_TRUE(std::equal(a.samples.begin(), a.samples.end(), wideA.samples.begin())) << what;
        EXPECT_TRUE(std::equal(b.samples.begin(), b.samples.end(), wideB.samples.begin())) << what;
    }
};

TEST(H264Reconstruct, WideFormsAtDepth8EqualNarrowOnes) {
    std::mt19937 random(3);
    for (unsigned round = 0; round < 40; ++round) {
        const int qp = round % 4 == 0 ? 0 : static_cast<int>(random() % 24);  // no sum leaves 16 bits
        const Vek8u bypass = round % 2 == 0;
        const Vek32u cbp = static_cast<Vek32u>(random());
        const Vek8u edges = static_cast<Vek8u>(round % 3 ? 0 : random() & 63);
        const Scales s(qp), dc(qp + 3);
        const int mode16 = edges ? 2 : static_cast<int>(random() % 4),
                  modeChroma = edges ? 0 : static_cast<int>(random() % 4);
        Vek32u modes[16];
        for (auto& m : modes) m = static_cast<Vek32u>(random() % 9);
        const int w = Picture<Vek16u>::step;
        const auto check = [&](const char* what, auto narrow, auto wide) {
            Both t(round);
            Vek16s* p = t.c16.data();
            Vek32s* q = t.c32.data();
            EXPECT_EQ(narrow(&p, t.a.at(0, 0), t.b.at(0, 0)), wide(&q, t.wideA.at(0, 0), t.wideB.at(0, 0))) << what;
            EXPECT_EQ(p - t.c16.data(), q - t.c32.data()) << what;
            t.expectSame(what);
        };
#define VEKVC_NARROW [&](Vek16s * *c, Vek8u * u, [[maybe_unused]] Vek8u * v)
#define VEKVC_WIDE [&](Vek32s * *c, Vek16u * u, [[maybe_unused]] Vek16u * v)
        check(
            "inter 4x4",
            VEKVC_NARROW { return vekiReconstructLumaInter4x4MB_H264_16s8u_C1R(c, u, kStep, cbp, qp, s.s4, bypass); },
            VEKVC_WIDE { return vekiReconstructLumaInter4x4_H264High_32s16u_IP1R(c, u, w, cbp, qp, s.s4, bypass, 8); });
        check(
            "inter 8x8",
            VEKVC_NARROW { return vekiReconstructLumaInter8x8MB_H264_16s8u_C1R(c, u, kStep, cbp, qp, s.s8, bypass); },
            VEKVC_WIDE { return vekiReconstructLumaInter8x8_H264High_32s16u_IP1R(c, u, w, cbp, qp, s.s8, bypass, 8); });
        check(
            "intra 4x4",
            VEKVC_NARROW {
                return vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R(c, u, kStep, modes, cbp, qp, edges, s.s4, bypass);
            },
            VEKVC_WIDE {
                return vekiReconstructLumaIntra4x4_H264High_32s16u_IP1R(c, u, w, modes, cbp, qp, edges, s.s4, bypass,
                                                                        8);
            });
        check(
            "intra 8x8",
            VEKVC_NARROW {
                return vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(c, u, kStep, modes, cbp, qp, edges, s.s8, bypass);
            },
            VEKVC_WIDE {
                return vekiReconstructLumaIntra8x8_H264High_32s16u_IP1R(c, u, w, modes, cbp, qp, edges, s.s8, bypass,
                                                                        8);
            });
        check(
            "half 4x4",
            VEKVC_NARROW {
                return vekiReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(c, u, kStep, modes, cbp, qp, edges, s.s4,
                                                                        bypass);
            },
            VEKVC_WIDE {
                return vekiReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(c, u, w, modes, cbp, qp, edges, s.s4,
                                                                            bypass, 8);
            });
        check(
            "half 8x8",
            VEKVC_NARROW {
                return vekiReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(c, u, kStep, modes, cbp, qp, edges, s.s8,
                                                                        bypass);
            },
            VEKVC_WIDE {
                return vekiReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(c, u, w, modes, cbp, qp, edges, s.s8,
                                                                            bypass, 8);
            });
        check(
            "intra 16x16",
            VEKVC_NARROW {
                return vekiReconstructLumaIntra16x16MB_H264_16s8u_C1R(c, u, kStep, mode16, cbp, qp, edges, s.s4,
                                                                      bypass);
            },
            VEKVC_WIDE {
                return vekiReconstructLumaIntra16x16_H264High_32s16u_IP1R(c, u, w, mode16, cbp, qp, edges, s.s4, bypass,
                                                                          8);
            });
#define VEKVC_SCALES qp, qp, s.s4, s.s4, s.s4[0], s.s4[0], bypass
#define VEKVC_EDGE_SCALES qp, qp, edges, s.s4, s.s4, s.s4[0], s.s4[0], bypass
#define VEKVC_SCALES422 qp, qp, edges, s.s4, s.s4, dc.s4[0], dc.s4[0], bypass
        check(
            "chroma inter",
            VEKVC_NARROW { return vekiReconstructChromaInter4x4MB_H264_16s8u_P2R(c, u, v, kStep, cbp, VEKVC_SCALES); },
            VEKVC_WIDE {
                return vekiReconstructChromaInter4x4_H264High_32s16u_IP2R(c, u, v, w, cbp, VEKVC_SCALES, 8);
            });
        check(
            "chroma intra",
            VEKVC_NARROW {
                return vekiReconstructChromaIntra4x4MB_H264_16s8u_P2R(c, u, v, kStep, modeChroma, cbp,
                                                                      VEKVC_EDGE_SCALES);
            },
            VEKVC_WIDE {
                return vekiReconstructChromaIntra4x4_H264High_32s16u_IP2R(c, u, v, w, modeChroma, cbp,
                                                                          VEKVC_EDGE_SCALES, 8);
            });
        check(
            "chroma half",
            VEKVC_NARROW {
                return vekiReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(c, u, v, kStep, modeChroma, cbp,
                                                                           VEKVC_EDGE_SCALES);
            },
            VEKVC_WIDE {
                return vekiReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(c, u, v, w, modeChroma, cbp,
                                                                              VEKVC_EDGE_SCALES, 8);
            });
        check(
            "422 intra",
            VEKVC_NARROW {
                return vekiReconstructChroma422Intra4x4_H264High_16s8u_IP2R(c, u, v, kStep, modeChroma, cbp,
                                                                            VEKVC_SCALES422);
            },
            VEKVC_WIDE {
                return vekiReconstructChroma422Intra4x4_H264High_32s16u_IP2R(c, u, v, w, modeChroma, cbp,
                                                                             VEKVC_SCALES422, 8);
            });
        check(
            "422 half",
            VEKVC_NARROW {
                return vekiReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(c, u, v, kStep, modeChroma, cbp,
                                                                                VEKVC_SCALES422);
            },
            VEKVC_WIDE {
                return vekiReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(c, u, v, w, modeChroma, cbp,
                                                                                 VEKVC_SCALES422, 8);
            });
#undef VEKVC_NARROW
#undef VEKVC_WIDE
#undef VEKVC_SCALES
#undef VEKVC_EDGE_SCALES
#undef VEKVC_SCALES422
    }
}

TEST(H264Reconstruct, LosslessAddsTheCoefficients) {
    const Scales s(0);
    auto c = levels<Vek16s>(8, 400, 40);
    for (const int qp : {0, 1}) {  // QP 1: the flag does not count for luma
        Picture<Vek8u> p(1), before(1);
        Vek16s* next = c.data();
        ASSERT_EQ(vekiReconstructLumaInter4x4MB_H264_16s8u_C1R(&next, p.at(0, 0), kStep, 1 << 6, qp, s.s4, 1),
                  vekStsOk);
        int differing = 0;
        for (int k = 0; k < 16; ++k)
            differing += *p.at(12 + k % 4, k / 4) !=
                         std::clamp(*before.at(12 + k % 4, k / 4) + c[static_cast<std::size_t>(k)], 0, 255);
        EXPECT_EQ(differing == 0, qp == 0);
    }
    // Chroma: a DC value stands at position 0 of its block and nowhere else.
    std::vector<Vek16s> dc = {0, 0, 0, 5};
    Picture<Vek8u> u(1), v(2), before(1);
    *u.at(4, 4) = *before.at(4, 4) = 100;
    Vek16s* next = dc.data();
    ASSERT_EQ(vekiReconstructChromaInter4x4MB_H264_16s8u_P2R(&next, u.at(0, 0), v.at(0, 0), kStep, 1 << 17, 30, 30,
                                                             s.s4, s.s4, 160, 160, 1),
              vekStsOk);
    *before.at(4, 4) = 105;
    EXPECT_EQ(u.samples, before.samples);
    EXPECT_EQ(next, dc.data() + 4);
}

TEST(H264Reconstruct, RefusalsTouchNothing) {
    const Scales s(20);
    auto c = levels<Vek16s>(1);
    Picture<Vek8u> p(1), v(2);
    const auto before = p.samples;
    Vek32u modes[16] = {};
    modes[15] = 9;
    Vek16s* next = c.data();
    EXPECT_EQ(vekiReconstructLumaIntra4x4MB_H264_16s8u_C1R(&next, p.at(0, 0), kStep, modes, ~0u, 20, 0, s.s4, 0),
              vekStsErrOutOfRange);
    modes[3] = 9;
    EXPECT_EQ(vekiReconstructLumaIntra8x8MB_H264_16s8u_C1R(&next, p.at(0, 0), kStep, modes, ~0u, 20, 0, s.s8, 0),
              vekStsErrOutOfRange);
    for (const Vek8u edges : std::vector<Vek8u>{1, 4, 16})  // plane needs all three
        EXPECT_EQ(vekiReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&next, p.at(0, 0), kStep, 3, ~0u, 20, edges),
                  vekStsErrUnavailableNeighbour);
    EXPECT_EQ(vekiReconstructChromaIntraMB_H264_16s8u_P2R(&next, p.at(0, 0), v.at(0, 0), kStep, 2, ~0u, 20, 4),
              vekStsErrUnavailableNeighbour);
    EXPECT_EQ(
        vekiDequantTransformResidualAndAdd_H264_16s_C1I(p.at(0, 0), kStep, nullptr, nullptr, p.at(0, 0), kStep, 20, 1),
        vekStsErrNullPtr);
    EXPECT_EQ(next, c.data());
    EXPECT_EQ(p.samples, before);
}

TEST(H264Reconstruct, HighBitDepthsClip) {
    for (const int depth : {9, 10, 14}) {
        const int qp = 51 + 6 * (depth - 8);
        const Scales s(qp);
        std::vector<Vek32s> c(32);
        c[0] = 1000;
        c[16] = -1000;
        Picture<Vek16u> p(1, depth);
        Vek32s* next = c.data();
        ASSERT_EQ(
            vekiReconstructLumaInter4x4_H264High_32s16u_IP1R(&next, p.at(0, 0), p.step, 3 << 1, qp, s.s4, 1, depth),
            vekStsOk);
        EXPECT_EQ(*p.at(3, 3), (1 << depth) - 1);
        EXPECT_EQ(*p.at(4, 0), 0);
        EXPECT_EQ(
            vekiReconstructLumaInter4x4_H264High_32s16u_IP1R(&next, p.at(0, 0), p.step, 6, qp + 1, s.s4, 1, depth),
            vekStsErrOutOfRange);
    }
}

}  // namespace
