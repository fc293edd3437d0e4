// Fast form of the segment decoders: whole table entries on a 64-bit window. Bits that blocks leave for others are
// gathered in two buffers; a block goes on with its incomplete code put right before what it reads next.
#ifndef VEKVC_DV_SEGMENT_SIMD_H
#define VEKVC_DV_SEGMENT_SIMD_H

#include <cstring>

#include "dv/huffman_table.h"
#include "dv/segment.h"
#include "dv/tables.h"

namespace vekvc::simd {

inline std::uint64_t loadBigEndian(const Vek8u* p) { return __builtin_bswap64(load<std::uint64_t>(p)); }
inline void storeBigEndian(Vek8u* p, std::uint64_t v) { store(p, __builtin_bswap64(v)); }

// Bits begin to end of a buffer, the next one first. Buffers are read up to 8 bytes behind the end.
struct BitRun {
    Vek8u* base;
    int begin, end;

    int size() const { return end - begin; }
    // At least 57 bits from `begin` on.
    std::uint64_t window() const { return loadBigEndian(base + begin / 8) << begin % 8; }
};

// Bits that blocks left, joined. In front there is room for the rest of a code.
template <int mostBits>
struct SpareBits {
    static constexpr int kHeadroom = 16;
    Vek8u bytes[(kHeadroom + mostBits) / 8 + 16];
    BitRun run{bytes, kHeadroom, kHeadroom};

    // What stands behind the end is overwritten.
    void append(const BitRun& from) {
        for (int at = from.begin; at < from.end;) {
            const int count = from.end - at < 56 ? from.end - at : 56;
            const std::uint64_t piece = loadBigEndian(from.base + at / 8) << at % 8 >> run.end % 8;
            Vek8u* to = bytes + run.end / 8;
            const std::uint64_t kept = ~(~std::uint64_t{0} >> run.end % 8);
            storeBigEndian(to, (loadBigEndian(to) & kept) | (piece & ~kept));
            run.end += count;
            at += count;
        }
    }
    // Puts `count` (0 to 15) bits, the top ones of `rest`, before the next one.
    void putBack(std::uint64_t rest, int count) {
        run.begin -= count;
        Vek8u* to = bytes + run.begin / 8;
        const std::uint64_t mask = ~(~std::uint64_t{0} >> count) >> run.begin % 8;
        storeBigEndian(to, (loadBigEndian(to) & ~mask) | (rest >> run.begin % 8 & mask));
    }
};

struct DvBlock {
    Vek16s* coeffs;
    const Vek8u* scan;
    VekDVBlockInfo* info;
    int position = 0;
    int restBits = 0;        // of an incomplete code,
    std::uint64_t rest = 0;  // at the top
    bool ended = false;

    // Takes codes until the block ends or the bits do. An incomplete code becomes the rest, and nothing is left then.
    void run(BitRun& bits, const VekDVHuffmanTable_32s* table, int pass) {
        int at = position, lastNonZero = info->last, left = bits.size();
        for (bool going = true; going;) {
            std::uint64_t window = bits.window();
            for (int codes = 0; codes < 3; ++codes) {  // of 16 bits at most: as many as a window surely holds
                const dv::Entry entry = dv::lookUp(table, window);
                // A look-up on bits behind the end finds a code longer than what is there.
                if (entry.length() > left) [[unlikely]] {
                    restBits = left;
                    rest = window;
                    left = 0;
                    going = false;
                    break;
                }
                left -= entry.length();
                window <<= entry.length();
                at += entry.advance();
                if (at > 63) [[unlikely]] {
                    ended = true;
                    info->end = static_cast<Vek8u>(entry.advance() == dv::kEndOfBlockAdvance ? pass : 4);
                    going = false;
                    break;
                }
                store(coeffs + scan[at], static_cast<Vek16s>(entry.level()));
                lastNonZero = entry.level() != 0 ? at : lastNonZero;
            }
            bits.begin = bits.end - left;
        }
        position = at;
        info->last = static_cast<Vek8u>(lastNonZero);
    }
    template <int mostBits>
    void goOn(SpareBits<mostBits>& spare, const VekDVHuffmanTable_32s* table, int pass) {
        if (spare.run.size() == 0) return;  // nothing that would complete the code
        spare.putBack(rest, restBits);
        run(spare.run, table, pass);
    }
};

template <dv::Kind kind>
void decodeSegment(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo, const VekDVHuffmanTable_32s* table) {
    using Layout = dv::Layout<kind>;
    constexpr int n = Layout::kBlocks;
    Vek8u segment[dv::kSegmentBytes + 16];
    std::memcpy(segment, pSrc, dv::kSegmentBytes);
    std::memset(segment + dv::kSegmentBytes, 0, 16);
    Vek16s droppedCoeffs[64];
    VekDVBlockInfo droppedInfo[dv::kMacroblocks * n];
    DvBlock blocks[dv::kMacroblocks * n];
    DvBlock* unfinished[dv::kMacroblocks * n];
    int unfinishedCount = 0;
    SpareBits<dv::kMacroblocks * 608> segmentSpare;
    std::memset(segmentSpare.bytes, 0, sizeof segmentSpare.bytes);
    for (int m = 0; m < dv::kMacroblocks; ++m) {
        Vek8u* const dif = segment + m * dv::kDifBytes;
        SpareBits<608> spare;
        std::memset(spare.bytes, 0, sizeof spare.bytes);
        const int unfinishedBefore = unfinishedCount;
        for (int b = 0; b < n; ++b) {
            DvBlock& block = blocks[m * n + b];
            block = {};
            const bool dropped = Layout::dropped(b);
            block.coeffs = dropped ? droppedCoeffs : pDst;
            block.info = dropped ? &droppedInfo[m * n + b] : pInfo;
            if (!dropped) {
                pDst += 64;
                ++pInfo;
            }
            std::memset(block.coeffs, 0, 128);
            const int areaStart = Layout::areaStart(b);
            const auto head = static_cast<Vek32u>(dif[areaStart] << 8 | dif[areaStart + 1]);
            store<Vek16s>(block.coeffs, static_cast<Vek16s>(static_cast<Vek16s>(head) >> 7));
            const auto mode = static_cast<Vek8u>(head >> 6 & 1);
            *block.info = {mode,
                           static_cast<Vek8u>(head >> 4 & 3),
                           static_cast<Vek8u>(dif[3] & 15),
                           static_cast<Vek8u>(dif[3] >> 4),
                           0,
                           0,
                           {0, 0}};
            block.scan = dv::kScan[Layout::kAlways88 ? 0 : mode];
            BitRun area{segment, 8 * (m * dv::kDifBytes + areaStart) + dv::kAreaHead,
                        8 * (m * dv::kDifBytes + Layout::areaStart(b + 1))};
            block.run(area, table, 1);
            if (block.ended)
                spare.append(area);
            else
                unfinished[unfinishedCount++] = &block;
        }
        int left = unfinishedBefore;
        for (int i = unfinishedBefore; i < unfinishedCount; ++i) {
            unfinished[i]->goOn(spare, table, 2);
            if (!unfinished[i]->ended) unfinished[left++] = unfinished[i];
        }
        unfinishedCount = left;
        if (left == unfinishedBefore) segmentSpare.append(spare.run);
    }
    for (int i = 0; i < unfinishedCount; ++i) unfinished[i]->goOn(segmentSpare, table, 3);
}

}  // namespace vekvc::simd

#endif
