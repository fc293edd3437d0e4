#include "deblocking.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "vekvc.h"

namespace vekdec::h264 {
namespace {

// Table 8-16 by indexA and indexB.
constexpr std::uint8_t kAlpha[52] = {0,  0,  0,  0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   0,   0,  4,  4,
                                     5,  6,  7,  8,  9,  10, 12,  13,  15,  17,  20,  22,  25,  28,  32,  36, 40, 45,
                                     50, 56, 63, 71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
constexpr std::uint8_t kBeta[52] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0, 2,  2,
                                    2,  3,  3,  3,  3,  4,  4,  4,  6,  6,  7,  7,  8,  8,  9,  9, 10, 10,
                                    11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
// Table 8-17: tC0 by indexA and bS; with bS 0 and 4 it is not used.
constexpr std::uint8_t kTc0[52][5] = {
    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},
    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},
    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},    {0, 0, 0, 0, 0},   {0, 0, 0, 0, 0},   {0, 0, 0, 1, 0},
    {0, 0, 0, 1, 0},   {0, 0, 0, 1, 0},    {0, 0, 0, 1, 0},    {0, 0, 1, 1, 0},   {0, 0, 1, 1, 0},   {0, 1, 1, 1, 0},
    {0, 1, 1, 1, 0},   {0, 1, 1, 1, 0},    {0, 1, 1, 1, 0},    {0, 1, 1, 2, 0},   {0, 1, 1, 2, 0},   {0, 1, 1, 2, 0},
    {0, 1, 1, 2, 0},   {0, 1, 2, 3, 0},    {0, 1, 2, 3, 0},    {0, 2, 2, 3, 0},   {0, 2, 2, 4, 0},   {0, 2, 3, 4, 0},
    {0, 2, 3, 4, 0},   {0, 3, 3, 5, 0},    {0, 3, 4, 6, 0},    {0, 3, 4, 6, 0},   {0, 4, 5, 7, 0},   {0, 4, 5, 8, 0},
    {0, 4, 6, 9, 0},   {0, 5, 7, 10, 0},   {0, 6, 8, 11, 0},   {0, 6, 8, 13, 0},  {0, 7, 10, 14, 0}, {0, 8, 11, 16, 0},
    {0, 9, 12, 18, 0}, {0, 10, 13, 20, 0}, {0, 11, 15, 23, 0}, {0, 13, 17, 25, 0}};

enum Direction { kVerticalEdges = 0, kHorizontalEdges = 1 };

// Boundary strengths of the four edges of a direction: element 4 * edge + segment.
struct Strengths {
    Vek8u bS[16];

    // Edges are written and read in one piece: a wider read would wait for the stores before it.
    std::uint32_t edge(int i) const {
        std::uint32_t word;
        std::memcpy(&word, bS + 4 * i, sizeof word);
        return word;
    }
    bool any() const { return (edge(0) | edge(1) | edge(2) | edge(3)) != 0; }
    void setEdge(int i, int value) { std::memset(bS + 4 * i, value, 4); }
    void setEdge(int i, const std::array<Vek8u, 4>& values) { std::memcpy(bS + 4 * i, values.data(), 4); }
};

// ---- boundary strengths, 8.7.2.1

// An edge's strengths where the set bits of the index mark segments beside coefficients.
constexpr auto kTwos = [] {
    std::array<std::array<Vek8u, 4>, 16> table{};
    for (std::size_t i = 0; i < 16; ++i)
        for (std::size_t s = 0; s < 4; ++s) table[i][s] = i >> s & 1 ? 2 : 0;
    return table;
}();

bool vectorsDiffer(MotionVector a, MotionVector b, int limitY) {
    return std::abs(a.x - b.x) >= 4 || std::abs(a.y - b.y) >= limitY;
}

// Different reference pictures, a different number of vectors, or vectors far apart: bS 1. i and j are blocks in raster
// order. limitY is 4 in quarter frame samples: 2 between field macroblocks.
bool motionDiffers(const Macroblock& p, int i, const Macroblock& q, int j, int limitY) {
    const int pq = (i >> 3) * 2 + (i >> 1 & 1), qq = (j >> 3) * 2 + (j >> 1 & 1);
    const int p0 = p.refPicId[0][pq], p1 = p.refPicId[1][pq], q0 = q.refPicId[0][qq], q1 = q.refPicId[1][qq];
    const auto straight = [&] {
        return vectorsDiffer(p.mv[0][i], q.mv[0][j], limitY) || vectorsDiffer(p.mv[1][i], q.mv[1][j], limitY);
    };
    const auto crossed = [&] {
        return vectorsDiffer(p.mv[0][i], q.mv[1][j], limitY) || vectorsDiffer(p.mv[1][i], q.mv[0][j], limitY);
    };
    if (p0 == q0 && p1 == q1) return straight() && (p0 != p1 || crossed());
    return p0 != q1 || p1 != q0 || crossed();
}

// Strengths of the macroblock's own edges 1 to 3, as if its transforms were 4x4.
void deriveInner(const Macroblock& mb, Strengths strengths[2]) {
    if (mb.intra()) {
        for (int edge = 1; edge < 4; ++edge)
            for (int direction = 0; direction < 2; ++direction) strengths[direction].setEdge(edge, 3);
        return;
    }
    const unsigned nonZero = mb.nonZero;
    if (nonZero != 0) {
        const unsigned beside = (nonZero | nonZero << 1) & 0xeeee, over = nonZero | nonZero << 4;
        for (int edge = 1; edge < 4; ++edge) {
            const unsigned column = beside >> edge & 0x1111;  // bits 0, 4, 8 and 12 are rows 0 to 3
            strengths[kVerticalEdges].setEdge(edge, kTwos[(column | column >> 3 | column >> 6 | column >> 9) & 15]);
            strengths[kHorizontalEdges].setEdge(edge, kTwos[over >> 4 * edge & 15]);
        }
    }
    if (mb.partitioning == Partitioning::Whole) return;
    const int limitY = mb.field ? 2 : 4;
    const int first = mb.partitioning == Partitioning::Smaller ? 1 : 2,
              by = mb.partitioning == Partitioning::Smaller ? 1 : 2;
    for (int edge = first; edge < 4; edge += by)
        for (int s = 0; s < 4; ++s) {
            Vek8u& vertical = strengths[kVerticalEdges].bS[4 * edge + s];
            if (vertical == 0 && mb.partitioning != Partitioning::Rows16x8)
                vertical = motionDiffers(mb, 4 * s + edge - 1, mb, 4 * s + edge, limitY);
            Vek8u& horizontal = strengths[kHorizontalEdges].bS[4 * edge + s];
            if (horizontal == 0 && mb.partitioning != Partitioning::Columns8x16)
                horizontal = motionDiffers(mb, 4 * (edge - 1) + s, mb, 4 * edge + s, limitY);
        }
}

// Strengths of the macroblock edge between p and q, both frame or both field macroblocks.
void deriveOuter(const Macroblock& p, const Macroblock& q, Direction direction, Vek8u bS[4]) {
    if (p.intra() || q.intra()) {
        std::memset(bS, direction == kHorizontalEdges && q.field ? 3 : 4, 4);
        return;
    }
    const int limitY = q.field ? 2 : 4;
    const bool vertical = direction == kVerticalEdges;
    const bool oneMotion = p.partitioning == Partitioning::Whole && q.partitioning == Partitioning::Whole;
    const Vek8u ofMotion = oneMotion ? motionDiffers(p, 0, q, 0, limitY) : Vek8u{0};
    for (int s = 0; s < 4; ++s) {
        const int i = vertical ? 4 * s + 3 : 12 + s, j = vertical ? 4 * s : s;
        if ((p.nonZero >> i & 1) | (q.nonZero >> j & 1))
            bS[s] = 2;
        else
            bS[s] = oneMotion ? ofMotion : static_cast<Vek8u>(motionDiffers(p, i, q, j, limitY));
    }
}

// A segment between a frame and a field macroblock (mixedModeEdgeFlag 1).
Vek8u mixedStrength(const Macroblock& p, int i, const Macroblock& q, int j, Direction direction) {
    if (p.intra() || q.intra()) return direction == kVerticalEdges ? 4 : 3;
    return (p.nonZero >> i & 1) | (q.nonZero >> j & 1) ? 2 : 1;
}

// ---- filtering

template <typename Sample>
class Filter {
  public:
    Filter(Picture& picture, int structure, const SequenceParameterSet& sps)
        : picture_(picture), structure_(structure), sps_(sps), planes_(sps.chromaFormatIdc == 0 ? 1 : 3) {
        const int count = static_cast<int>(picture.mbs.size()) / (structure == kFrame ? 1 : 2);
        mbs_ = picture.mbs.data() + (structure == kBottomField ? count : 0);
        for (int i = 0; i < 3; ++i) {
            mbWidth_[i] = i == 0 ? 16 : sps.chromaWidthMb();
            mbHeight_[i] = i == 0 ? 16 : sps.chromaHeightMb();
        }
    }

    void run(int firstRow, int endRow) {
        const bool pairs = picture_.mbaff && structure_ == kFrame;
        int address = firstRow * picture_.widthInMbs * (pairs ? 2 : 1);
        for (int row = firstRow; row < endRow; ++row)
            for (int column = 0; column < picture_.widthInMbs; ++column)
                for (int i = 0; i < (pairs ? 2 : 1); ++i) filterMacroblock(address++, column, row);
    }

  private:
    // Sample is also the type of alpha, beta and tC0.
    struct Thresholds {
        Sample alpha[2], beta[2];
        int indexA[2];
    };

    // `column` and `row` count macroblocks, or pairs of MBAFF frames.
    void filterMacroblock(int address, int column, int row);
    void filterMixedLeft(const Macroblock* left, const Macroblock& mb, bool bottom);
    void filterTopInFields(const Macroblock* above, const Macroblock& mb);
    void filterEdges(Direction direction, const Macroblock* outer, const Macroblock& mb, const Strengths& strengths,
                     int row = 0, int stepFactor = 1);
    void callEdges(Direction direction, int component, std::uint8_t* data, int step, const Thresholds& t,
                   const Strengths& strengths) const;
    void callMixed(int component, std::uint8_t* data, int step, const Thresholds& t, const Vek8u bS[4]) const;

    static int qpOf(const Macroblock& mb, int component) { return component == 0 ? mb.qp : mb.qpc[component - 1]; }
    int bitDepth(int component) const { return component == 0 ? sps_.bitDepthLuma : sps_.bitDepthChroma; }
    Sample scaled(int value, int component) const {
        return static_cast<Sample>(value << (std::is_same_v<Sample, Vek8u> ? 0 : bitDepth(component) - 8));
    }
    Thresholds thresholds(const Macroblock* outer, const Macroblock& mb, int component) const {
        Thresholds t{};
        const int own = qpOf(mb, component);
        for (int i = 0; i < 2; ++i) {
            const int qpAv = i == 1 || outer == nullptr ? own : (qpOf(*outer, component) + own + 1) >> 1;
            t.indexA[i] = std::clamp(qpAv + parameters_->alphaC0Offset, 0, 51);
            t.alpha[i] = scaled(kAlpha[t.indexA[i]], component);
            t.beta[i] = scaled(kBeta[std::clamp(qpAv + parameters_->betaOffset, 0, 51)], component);
        }
        return t;
    }

    Picture& picture_;
    const int structure_;
    const SequenceParameterSet& sps_;
    const int planes_;
    Macroblock* mbs_;
    int mbWidth_[3], mbHeight_[3];
    // Of the macroblock being filtered:
    const SliceParameters* parameters_ = nullptr;
    std::uint8_t* data_[3] = {};
    int step_[3] = {};
};

template <typename Sample>
void Filter<Sample>::filterMacroblock(int address, int column, int row) {
    const Macroblock& mb = mbs_[address];
    if (mb.type == MbType::Missing) return;
    parameters_ = &picture_.slices[mb.slice];
    if (parameters_->disableDeblockingIdc == 1) return;
    const int width = picture_.widthInMbs;
    const bool pairs = picture_.mbaff && structure_ == kFrame;
    const bool bottom = pairs && address % 2 != 0;
    const int macroblockRow = pairs ? 2 * row + (bottom && !mb.field) : structure_ == kFrame ? row : 2 * row;
    const int parityRow = pairs ? bottom && mb.field : structure_ == kBottomField;
    for (int i = 0; i < planes_; ++i) {
        const PlaneMemory& plane = picture_.plane[i];
        data_[i] = plane.data + plane.stride * (macroblockRow * mbHeight_[i] + parityRow) +
                   column * mbWidth_[i] * static_cast<int>(sizeof(Sample));
        step_[i] = static_cast<int>(plane.stride) * (mb.field ? 2 : 1);
    }
    const bool withinSlice = parameters_->disableDeblockingIdc == 2;
    const auto usable = [&](const Macroblock& other) {
        return other.type != MbType::Missing && (!withinSlice || other.slice == mb.slice);
    };
    const Macroblock* left = column == 0 ? nullptr : &mbs_[pairs ? address - 2 : address - 1];
    const Macroblock* above = nullptr;
    bool aboveInFields = false;  // a frame macroblock below a field pair
    bool mixedAbove = false;     // a field macroblock below a frame pair
    if (!pairs) {
        if (row > 0) above = &mbs_[address - width];
    } else if (bottom && !mb.field) {
        above = &mb - 1;
    } else if (row > 0) {
        const Macroblock* pair = &mbs_[address - bottom - 2 * width];
        aboveInFields = !mb.field && pair->field;
        mixedAbove = mb.field && !pair->field;
        above = aboveInFields ? pair : mb.field && !bottom && pair->field ? pair : pair + 1;
    }
    if (left != nullptr && !usable(*left)) left = nullptr;
    if (above != nullptr && !usable(*above)) above = nullptr;

    Strengths strengths[2] = {};
    deriveInner(mb, strengths);
    if (left != nullptr && pairs && left->field != mb.field) {
        filterMixedLeft(left - bottom, mb, bottom);
        left = nullptr;
    } else if (left != nullptr) {
        deriveOuter(*left, mb, kVerticalEdges, strengths[kVerticalEdges].bS);
    }
    filterEdges(kVerticalEdges, left, mb, strengths[kVerticalEdges]);
    if (above != nullptr && aboveInFields) {
        filterTopInFields(above, mb);
        above = nullptr;
    } else if (above != nullptr && mixedAbove) {
        for (int s = 0; s < 4; ++s)
            strengths[kHorizontalEdges].bS[s] = mixedStrength(*above, 12 + s, mb, s, kHorizontalEdges);
    } else if (above != nullptr) {
        deriveOuter(*above, mb, kHorizontalEdges, strengths[kHorizontalEdges].bS);
    }
    filterEdges(kHorizontalEdges, above, mb, strengths[kHorizontalEdges]);
}

// All edges of a direction, in all components. `outer` is the macroblock at the other side of edge 0. The block begins
// `row` rows further down, its rows lie `stepFactor` times as far apart.
template <typename Sample>
void Filter<Sample>::filterEdges(Direction direction, const Macroblock* outer, const Macroblock& mb,
                                 const Strengths& strengths, int row, int stepFactor) {
    if (!strengths.any()) return;
    for (int i = 0; i < planes_; ++i) {
        const Thresholds t = thresholds(outer, mb, i);
        if (t.alpha[0] == 0 && t.alpha[1] == 0) continue;
        std::uint8_t* data = data_[i] + std::ptrdiff_t{step_[i]} * row;
        if (i == 0 && mb.transform8x8) {
            Strengths of8x8 = strengths;
            of8x8.setEdge(1, 0);
            of8x8.setEdge(3, 0);
            callEdges(direction, i, data, step_[i] * stepFactor, t, of8x8);
        } else {
            callEdges(direction, i, data, step_[i] * stepFactor, t, strengths);
        }
    }
}

// The left edge between a frame and a field macroblock pair; `left` is the left pair's first macroblock.
template <typename Sample>
void Filter<Sample>::filterMixedLeft(const Macroblock* left, const Macroblock& mb, bool bottom) {
    for (int call = 0; call < 2; ++call) {
        const Macroblock& p = left[call];
        Vek8u bS[4];
        for (int k = 0; k < 4; ++k) {
            // Rows of 4x4 blocks on either side of the call's lines 2k and 2k + 1. Of a frame macroblock a call has the
            // even or the odd rows, of a field macroblock the upper or the lower half.
            const int rowP = mb.field ? k : 2 * bottom + k / 2, rowQ = mb.field ? 2 * call + k / 2 : k;
            bS[k] = mixedStrength(p, 4 * rowP + 3, mb, 4 * rowQ, kVerticalEdges);
        }
        for (int i = 0; i < planes_; ++i) {
            const Thresholds t = thresholds(&p, mb, i);
            std::uint8_t* data = data_[i] + std::ptrdiff_t{step_[i]} * (mb.field ? call * mbHeight_[i] / 2 : call);
            callMixed(i, data, mb.field ? step_[i] : 2 * step_[i], t, bS);
        }
    }
}

// The top edge of a frame macroblock below a field pair: each field's rows by themselves (8.7.1).
template <typename Sample>
void Filter<Sample>::filterTopInFields(const Macroblock* above, const Macroblock& mb) {
    for (int field = 0; field < 2; ++field) {
        Strengths strengths{};
        for (int s = 0; s < 4; ++s) strengths.bS[s] = mixedStrength(above[field], 12 + s, mb, s, kHorizontalEdges);
        filterEdges(kHorizontalEdges, &above[field], mb, strengths, field, 2);
    }
}

template <typename Sample>
void Filter<Sample>::callEdges(Direction direction, int component, std::uint8_t* data, int step, const Thresholds& t,
                               const Strengths& strengths) const {
    auto* samples = reinterpret_cast<Sample*>(data);
    const bool vertical = direction == kVerticalEdges, is422 = sps_.chromaFormatIdc == 2;
    // tC0 of all edges, or of edges 0 and 2 one behind the other.
    const bool allEdges = component == 0 || (is422 && !vertical);
    Sample tc0[16] = {};
    for (int edge = 0; edge < (allEdges ? 4 : 2); ++edge) {
        if (strengths.edge(allEdges ? edge : 2 * edge) == 0) continue;
        const std::uint8_t* row = kTc0[t.indexA[edge > 0]];
        const Vek8u* bS = strengths.bS + 4 * (allEdges ? edge : 2 * edge);
        for (int s = 0; s < 4; ++s) tc0[4 * edge + s] = scaled(row[bS[s]], component);
    }
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        if (component != 0 && is422) {
            const VekDeblockingParams8u p = {samples, step, t.alpha, t.beta, tc0, strengths.bS};
            (vertical ? vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR
                      : vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR)(&p);
            return;
        }
        const auto call = component == 0 ? (vertical ? vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR
                                                     : vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR)
                                         : (vertical ? vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR
                                                     : vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR);
        call(samples, step, t.alpha, t.beta, tc0, strengths.bS);
    } else {
        const VekDeblockingParams16u p = {samples, step / 2, t.alpha, t.beta, tc0, strengths.bS, bitDepth(component)};
        const auto call = component == 0 ? (vertical ? vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR)
                          : is422        ? (vertical ? vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR)
                                         : (vertical ? vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR);
        call(&p);
    }
}

template <typename Sample>
void Filter<Sample>::callMixed(int component, std::uint8_t* data, int step, const Thresholds& t,
                               const Vek8u bS[4]) const {
    Sample tc0[8] = {};
    for (int k = 0; k < 4; ++k) tc0[k] = scaled(kTc0[t.indexA[0]][bS[k]], component);
    auto* samples = reinterpret_cast<Sample*>(data);
    if (component != 0 && sps_.chromaFormatIdc == 2) {
        // Eight lines, two to a strength: what the 4:2:0 form does on its outer edge.
        Strengths strengths{};
        std::memcpy(strengths.bS, bS, 4);
        if constexpr (std::is_same_v<Sample, Vek8u>) {
            vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, tc0, strengths.bS);
        } else {
            const VekDeblockingParams16u p = {samples,      step / 2,           t.alpha, t.beta, tc0,
                                              strengths.bS, bitDepth(component)};
            vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR(&p);
        }
        return;
    }
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        (component == 0
             ? vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR
             : vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR)(samples, step, t.alpha[0], t.beta[0], tc0, bS);
    } else {
        const VekDeblockingParams16u p = {samples, step / 2, t.alpha, t.beta, tc0, bS, bitDepth(component)};
        (component == 0 ? vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR
                        : vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR)(&p);
    }
}

}  // namespace

void deblockRows(Picture& picture, int structure, const SequenceParameterSet& sps, int firstRow, int endRow) {
    if (picture.bytesPerSample == 2)
        Filter<Vek16u>(picture, structure, sps).run(firstRow, endRow);
    else
        Filter<Vek8u>(picture, structure, sps).run(firstRow, endRow);
}

}  // namespace vekdec::h264
