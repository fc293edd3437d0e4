// Writing of DV video segments: blocks' codes, and their distribution over the areas of a segment as an encoder does
// it.
#ifndef VEKVC_TESTS_DV_H
#define VEKVC_TESTS_DV_H

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "../../src/dv/code_table.h"
#include "vekvc.h"

namespace vekvc_test {

struct DvKind {
    int blocks;                  // of a macroblock as it is coded
    std::vector<int> areaBytes;  // by block
    std::vector<bool> dropped;   // filler blocks
};
inline const DvKind kDv{6, {14, 14, 14, 14, 10, 10}, {false, false, false, false, false, false}};
inline const DvKind kDv422{6, {14, 14, 14, 14, 10, 10}, {false, true, false, true, false, false}};
inline const DvKind kDv100{8, {10, 10, 10, 10, 10, 10, 8, 8}, std::vector<bool>(8, false)};

struct DvSegment {
    std::vector<Vek8u> bytes = std::vector<Vek8u>(400);
    std::vector<int> passes;  // by coded block: the pass that ends it; 0: none
};

inline const VekDVHuffmanTable_32s* dvTable() {
    static VekDVHuffmanTable_32s* table = nullptr;
    if (table == nullptr && vekiHuffmanTableInitAlloc_DV_32s(&table) != vekStsOk) std::abort();
    return table;
}

// `heads` are the 12 bits of DC, mode and class by coded block, `codes` the bits behind them; spare bits are `filler`s.
template <class Filler>
DvSegment writeSegment(const DvKind& kind, const std::vector<std::string>& heads, const std::vector<std::string>& codes,
                       const Vek8u (&thirdBytes)[5], Filler filler) {
    const int n = kind.blocks;
    DvSegment segment;
    segment.passes.assign(static_cast<std::size_t>(5 * n), 0);
    std::vector<std::string> areas(static_cast<std::size_t>(5 * n)), left(areas.size());
    const auto room = [&](std::size_t i) {
        return static_cast<std::size_t>(8 * kind.areaBytes[i % static_cast<std::size_t>(n)]) - areas[i].size();
    };
    for (std::size_t i = 0; i < areas.size(); ++i) {
        areas[i] = heads[i];
        const std::size_t fits = std::min(room(i), codes[i].size());
        areas[i] += codes[i].substr(0, fits);
        left[i] = codes[i].substr(fits);
        if (left[i].empty()) segment.passes[i] = 1;
    }
    // What is left goes into the areas of blocks that have ended, first of its macroblock, then of the segment.
    const auto distribute = [&](std::size_t first, std::size_t end, int pass) {
        for (std::size_t i = first; i < end; ++i) {
            if (left[i].empty()) continue;
            for (std::size_t k = first; k < end && !left[i].empty(); ++k) {
                if (!left[k].empty()) continue;
                const std::size_t fits = std::min(room(k), left[i].size());
                areas[k] += left[i].substr(0, fits);
                left[i] = left[i].substr(fits);
            }
            if (left[i].empty()) segment.passes[i] = pass;
        }
    };
    for (std::size_t m = 0; m < 5; ++m)
        distribute(m * static_cast<std::size_t>(n), (m + 1) * static_cast<std::size_t>(n), 2);
    distribute(0, areas.size(), 3);
    for (std::size_t m = 0; m < 5; ++m) {
        std::string bits;
        for (std::size_t b = 0; b < static_cast<std::size_t>(n); ++b) {
            std::string& area = areas[m * static_cast<std::size_t>(n) + b];
            while (room(m * static_cast<std::size_t>(n) + b) > 0) area += filler();
            bits += area;
        }
        Vek8u* dif = segment.bytes.data() + 80 * m;
        dif[3] = thirdBytes[m];
        for (std::size_t i = 0; i < bits.size(); ++i)
            if (bits[i] == '1') dif[4 + i / 8] = static_cast<Vek8u>(dif[4 + i / 8] | 0x80 >> i % 8);
    }
    return segment;
}

// The code of a run and a signed level; pairs without one of their own take two codes.
inline std::string dvCode(int run, int level) {
    const auto binary = [](int value, int bits) {
        std::string text;
        for (int i = bits; i-- > 0;) text += static_cast<char>('0' + (value >> i & 1));
        return text;
    };
    const int amplitude = std::abs(level);
    const std::string sign = level == 0 ? "" : level < 0 ? "1" : "0";
    for (const auto& code : vekvc::dv::kCodes)
        if (code.run == run && code.amplitude == amplitude) return code.bits + sign;
    if (level == 0) return vekvc::dv::kRunFamily + binary(run, 6);
    if (run == 0) return vekvc::dv::kAmplitudeFamily + binary(amplitude, 8) + sign;
    return dvCode(run - 1, 0) + dvCode(0, level);
}

// A segment of random blocks, with their coefficients by scan index where it is asked for; now and then too full.
inline DvSegment randomSegment(const DvKind& kind, std::mt19937_64& random,
                               std::vector<std::vector<int>>* coefficients = nullptr) {
    std::vector<std::string> heads, codes;
    const unsigned fullness = static_cast<unsigned>(random() % 24);
    for (int i = 0; i < 5 * kind.blocks; ++i) {
        std::string head;
        for (int bit = 0; bit < 12; ++bit) head += static_cast<char>('0' + random() % 2);
        std::vector<int> scan(64);
        std::string text;
        int count = static_cast<int>(random() % (fullness + 1));
        if (random() % 8 == 0) count *= 3;
        for (int position = 0; count > 0; --count) {
            const int run = random() % 3 == 0 ? static_cast<int>(random() % 12) : 0;
            position += run + 1;
            if (position > 63) break;
            int level = 1 + static_cast<int>(random() % (random() % 4 == 0 ? 30 : 3));
            if (random() % 40 == 0) level = static_cast<int>(random() % 256);
            if (random() % 2 == 0) level = -level;
            scan[static_cast<std::size_t>(position)] = level;
            text += dvCode(run, level);
        }
        heads.push_back(head);
        codes.push_back(text + vekvc::dv::kEndOfBlock);
        if (coefficients != nullptr) coefficients->push_back(scan);
    }
    Vek8u third[5];
    for (Vek8u& byte : third) byte = static_cast<Vek8u>(random());
    return writeSegment(kind, heads, codes, third, [&] { return static_cast<char>('0' + random() % 2); });
}

}  // namespace vekvc_test

#endif
