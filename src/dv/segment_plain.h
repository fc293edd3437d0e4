// Decoding of video segments as IEC 61834-2 and SMPTE 314M distribute their bits, on strings of single bits.
#ifndef VEKVC_DV_SEGMENT_PLAIN_H
#define VEKVC_DV_SEGMENT_PLAIN_H

#include "dv/code_table.h"
#include "dv/segment.h"
#include "dv/tables.h"

namespace vekvc::plain {

// A string of bits that is taken from the front. Longest is what a segment holds, and a rest before it.
struct BitString {
    Vek8u bits[8 * dv::kSegmentBytes];
    int begin = 0, end = 0;

    int size() const { return end - begin; }
    void append(const BitString& other) {
        for (int i = other.begin; i < other.end; ++i) bits[end++] = other.bits[i];
    }
    void appendBytes(const Vek8u* p, int firstBit, int endBit) {
        for (int i = firstBit; i < endBit; ++i) bits[end++] = p[i / 8] >> (7 - i % 8) & 1;
    }
    int take(int count) {
        int value = 0;
        for (; count > 0; --count) value = 2 * value + bits[begin++];
        return value;
    }
    void clear() { begin = end = 0; }
};

struct DvBlock {
    Vek16s* coeffs;
    VekDVBlockInfo info;
    int position;    // the scan index reached
    BitString rest;  // of an incomplete code
    bool ended;

    // Takes codes until the block ends or the string does; what is left of an ended block's string stays in it.
    void run(BitString& string, bool always88, int pass) {
        BitString whole = rest;
        whole.append(string);
        rest.clear();
        const Vek8u* scan = dv::kScan[always88 ? 0 : info.dctMode];
        while (!ended) {
            Vek32u window = 0;
            for (int i = 0; i < dv::kLongestCode; ++i)
                window = 2 * window + (i < whole.size() ? whole.bits[whole.begin + i] : 0);
            const dv::Symbol symbol = dv::readCode(window);
            if (symbol.length > whole.size()) break;  // incomplete
            whole.take(symbol.length);
            position += symbol.run + 1;
            if (symbol.endOfBlock || position > 63) {
                ended = true;
                info.end = static_cast<Vek8u>(symbol.endOfBlock ? pass : 4);
            } else if (symbol.level != 0) {
                coeffs[scan[position]] = static_cast<Vek16s>(symbol.level);
                info.last = static_cast<Vek8u>(position);
            }
        }
        string.clear();
        (ended ? string : rest).append(whole);
    }
};

// Blocks are `coded` and numbered as they are coded; the output leaves out those that are dropped.
template <dv::Kind kind>
void decodeSegment(const Vek8u* pSrc, Vek16s* pDst, VekDVBlockInfo* pInfo, const Vek32s*) {
    using Layout = dv::Layout<kind>;
    constexpr int n = Layout::kBlocks;
    Vek16s coeffs[dv::kMacroblocks * n][64] = {};
    DvBlock blocks[dv::kMacroblocks * n];
    BitString segmentSpare;
    for (int m = 0; m < dv::kMacroblocks; ++m) {
        const Vek8u* dif = pSrc + m * dv::kDifBytes;
        DvBlock* const mb = blocks + m * n;
        BitString spare;
        for (int b = 0; b < n; ++b) {  // pass 1: each block on its own area
            DvBlock& block = mb[b];
            block = {coeffs[m * n + b], {}, 0, {}, false};
            BitString area;
            area.appendBytes(dif, 8 * Layout::areaStart(b), 8 * Layout::areaStart(b + 1));
            const int dc = area.take(9);
            block.coeffs[0] = static_cast<Vek16s>(dc < 256 ? dc : dc - 512);
            block.info.dctMode = static_cast<Vek8u>(area.take(1));
            block.info.classNo = static_cast<Vek8u>(area.take(2));
            block.info.qNo = dif[3] & 15;
            block.info.sta = dif[3] >> 4;
            block.run(area, Layout::kAlways88, 1);
            if (block.ended) spare.append(area);
        }
        bool allEnded = true;
        for (int b = 0; b < n; ++b) {  // pass 2: on what the macroblock's others left
            if (!mb[b].ended) mb[b].run(spare, Layout::kAlways88, 2);
            allEnded = allEnded && mb[b].ended;
        }
        if (allEnded) segmentSpare.append(spare);
    }
    for (DvBlock& block : blocks)  // pass 3: on what the segment's macroblocks left
        if (!block.ended) block.run(segmentSpare, Layout::kAlways88, 3);
    for (int i = 0; i < dv::kMacroblocks * n; ++i) {
        if (Layout::dropped(i % n)) continue;
        for (int k = 0; k < 64; ++k) store<Vek16s>(pDst++, coeffs[i][k]);
        store(pInfo++, blocks[i].info);
    }
}

}  // namespace vekvc::plain

#endif
