// What the tests of predictors and of macroblock reconstruction work on.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "vekvc.h"

constexpr int kStep = 40;  // samples from row to row

// A macroblock with neighbours on all sides, filled with noise.
template <class P>
struct Picture {
    std::vector<P> samples = std::vector<P>(kStep * 20);

    explicit Picture(unsigned seed, int depth = 8) {
        std::mt19937 random(seed);
        for (auto& s : samples) s = static_cast<P>(random() & ((1u << depth) - 1));
    }
    P* at(int x, int y) { return samples.data() + (y + 2) * kStep + x + 8; }
    static constexpr Vek32s step = kStep * static_cast<Vek32s>(sizeof(P));
};

template <class C>
std::vector<C> levels(unsigned seed, int n = 400, int range = 8) {
    std::mt19937 random(seed);
    std::vector<C> c(static_cast<std::size_t>(n));
    for (auto& v : c)
        if (random() % 3 == 0) v = static_cast<C>(std::uniform_int_distribution<int>(-range, range)(random));
    return c;
}

inline int blockX(int k) { return (k & 1) * 4 + (k & 4) * 2; }
inline int blockY(int k) { return (k & 2) * 2 + (k & 8); }

// LevelScale4x4 and 8x8 of weights that differ everywhere.
struct Scales {
    Vek16s s4[16], s8[64], unused[64];

    explicit Scales(int qp) {
        Vek8u weights[64];
        for (int k = 0; k < 64; ++k) weights[k] = static_cast<Vek8u>(8 + k);
        EXPECT_EQ(vekiGenScaleLevel4x4_H264_8u16s_C1(weights, s4, unused, qp % 6), vekStsOk);
        EXPECT_EQ(vekiGenScaleLevel8x8_H264_8u16s_D2(weights, s8, unused, qp % 6), vekStsOk);
    }
};
