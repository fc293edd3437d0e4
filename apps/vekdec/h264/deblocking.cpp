#include "h264/deblocking.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

#include "h264/place.h"
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

// The same by the indices before 8.7.2.2 limits them to 0 to 51: QPs go down to -36, offsets from -12 to 12.
constexpr int kLowestIndex = -48, kHighestIndex = 63;
struct ByIndexA {
    std::uint8_t alpha, tc0[3];  // tC0 of bS 1 to 3
};
constexpr auto kByIndexA = [] {
    std::array<ByIndexA, kHighestIndex - kLowestIndex + 1> table{};
    for (int i = kLowestIndex; i <= kHighestIndex; ++i) {
        const int index = std::clamp(i, 0, 51);
        table[static_cast<std::size_t>(i - kLowestIndex)] = {kAlpha[index],
                                                             {kTc0[index][1], kTc0[index][2], kTc0[index][3]}};
    }
    return table;
}();
constexpr auto kByIndexB = [] {
    std::array<std::uint8_t, kHighestIndex - kLowestIndex + 1> beta{};
    for (int i = kLowestIndex; i <= kHighestIndex; ++i)
        beta[static_cast<std::size_t>(i - kLowestIndex)] = kBeta[std::clamp(i, 0, 51)];
    return beta;
}();

enum Direction { kVerticalEdges = 0, kHorizontalEdges = 1 };

// Boundary strengths of an edge's four segments in one word, a byte each: an edge is made, read and stored in one
// piece, and all segments are worked on at once.
using EdgeStrength = std::uint32_t;

// `value` in the segments whose bits are set in `segments`.
constexpr EdgeStrength strengthOf(unsigned segments, Vek8u value) {
    std::array<Vek8u, 4> bytes{};
    for (unsigned s = 0; s < 4; ++s) bytes[s] = segments >> s & 1 ? value : Vek8u{0};
    return std::bit_cast<EdgeStrength>(bytes);
}
constexpr auto kOnes = [] {
    std::array<EdgeStrength, 16> table{};
    for (unsigned i = 0; i < 16; ++i) table[i] = strengthOf(i, 1);
    return table;
}();

// Boundary strengths of the four edges of a direction.
struct Strengths {
    EdgeStrength edge[4];
    bool any() const { return (edge[0] | edge[1] | edge[2] | edge[3]) != 0; }
};

// ---- boundary strengths, 8.7.2.1

// Not zero: they do. No branches: the answers follow no pattern.
int vectorsDiffer(MotionVector a, MotionVector b, int limitY) {
    const auto x = static_cast<unsigned>(a.x - b.x + 3), y = static_cast<unsigned>(a.y - b.y + limitY - 1);
    return int{x > 6} | int{y > 2 * static_cast<unsigned>(limitY) - 2};
}

// Different reference pictures, a different number of vectors, or vectors far apart: bS 1. i and j are blocks in raster
// order. limitY is 4 in quarter frame samples: 2 between field macroblocks.
bool motionDiffers(const Macroblock& p, int i, const Macroblock& q, int j, int limitY) {
    const int pq = (i >> 3) * 2 + (i >> 1 & 1), qq = (j >> 3) * 2 + (j >> 1 & 1);
    const int p0 = p.refPicId[0][pq], p1 = p.refPicId[1][pq], q0 = q.refPicId[0][qq], q1 = q.refPicId[1][qq];
    if (p1 < 0 && q1 < 0) return p0 != q0 || vectorsDiffer(p.mv[0][i], q.mv[0][j], limitY) != 0;
    // References agree: a vector counts where p has it.
    const auto straight = [&] {
        return (int{p0 >= 0} & vectorsDiffer(p.mv[0][i], q.mv[0][j], limitY)) |
               (int{p1 >= 0} & vectorsDiffer(p.mv[1][i], q.mv[1][j], limitY));
    };
    const auto crossed = [&] {
        return (int{p0 >= 0} & vectorsDiffer(p.mv[0][i], q.mv[1][j], limitY)) |
               (int{p1 >= 0} & vectorsDiffer(p.mv[1][i], q.mv[0][j], limitY));
    };
    if (p0 == q0 && p1 == q1) return straight() != 0 && (p0 != p1 || crossed() != 0);
    return p0 != q1 || p1 != q0 || crossed() != 0;
}

// The strengths of an edge between the blocks i + by * s of p and j + by * s of q, for segments s from 0 to 3. Bits of
// `coded`: segments beside coefficients. `run` segments in a row have the same motion on both sides.
EdgeStrength strengthsBetween(const Macroblock& p, int i, const Macroblock& q, int j, int by, unsigned coded, int run,
                              int limitY) {
    if (coded == 15) return 2 * kOnes[15];
    unsigned differ = 0;
    for (int s = 0; s < 4; s += run) {
        const unsigned segments = ((1u << run) - 1) << s;
        if ((segments & ~coded) != 0 && motionDiffers(p, i + by * s, q, j + by * s, limitY)) differ |= segments;
    }
    return 2 * kOnes[coded] | kOnes[differ & ~coded];
}

// Of blocks in raster order, the first column's bits: rows 0 to 3.
constexpr unsigned columnBits(unsigned blocks) {
    blocks &= 0x1111;
    return (blocks | blocks >> 3 | blocks >> 6 | blocks >> 9) & 15;
}

// How many segments of an edge along the macroblock have the same motion.
int motionRun(Partitioning partitioning) {
    return partitioning == Partitioning::Whole ? 4 : partitioning == Partitioning::Smaller ? 1 : 2;
}

// Strengths of the macroblock's own edges 1 to 3. The edges inside 8x8 transforms are left out but where the chroma
// edges of 4:2:2 take their strengths from them.
void deriveInner(const Macroblock& mb, bool is422, Strengths strengths[2]) {
    const int by = mb.transform8x8 && !is422 ? 2 : 1;
    if (mb.intra()) {
        for (int edge = by; edge < 4; edge += by)
            for (int direction = 0; direction < 2; ++direction) strengths[direction].edge[edge] = 3 * kOnes[15];
        return;
    }
    const unsigned nonZero = mb.nonZero, beside = nonZero | nonZero << 1, over = nonZero | nonZero << 4;
    if (nonZero != 0)
        for (int edge = by; edge < 4; edge += by) {
            strengths[kVerticalEdges].edge[edge] = 2 * kOnes[columnBits(beside >> edge)];
            strengths[kHorizontalEdges].edge[edge] = 2 * kOnes[over >> 4 * edge & 15];
        }
    if (mb.partitioning == Partitioning::Whole) return;
    const int run = motionRun(mb.partitioning), limitY = mb.field ? 2 : 4;
    for (int edge = run; edge < 4; edge += run) {
        if (mb.partitioning != Partitioning::Rows16x8)
            strengths[kVerticalEdges].edge[edge] =
                strengthsBetween(mb, edge - 1, mb, edge, 4, columnBits(beside >> edge), run, limitY);
        if (mb.partitioning != Partitioning::Columns8x16)
            strengths[kHorizontalEdges].edge[edge] =
                strengthsBetween(mb, 4 * (edge - 1), mb, 4 * edge, 1, over >> 4 * edge & 15, run, limitY);
    }
}

// Strengths of the macroblock edge between p and q, both frame or both field macroblocks.
EdgeStrength deriveOuter(const Macroblock& p, const Macroblock& q, Direction direction) {
    if (p.intra() || q.intra()) return (direction == kHorizontalEdges && q.field ? 3 : 4) * kOnes[15];
    const int run = std::min(motionRun(p.partitioning), motionRun(q.partitioning)), limitY = q.field ? 2 : 4;
    return direction == kVerticalEdges
               ? strengthsBetween(p, 3, q, 0, 4, columnBits(p.nonZero >> 3 | q.nonZero), run, limitY)
               : strengthsBetween(p, 12, q, 0, 1, (p.nonZero >> 12 | q.nonZero) & 15, run, limitY);
}

// A segment between a frame and a field macroblock (mixedModeEdgeFlag 1).
Vek8u mixedStrength(const Macroblock& p, int i, const Macroblock& q, int j, Direction direction) {
    if (p.intra() || q.intra()) return direction == kVerticalEdges ? 4 : 3;
    return (p.nonZero >> i & 1) | (q.nonZero >> j & 1) ? 2 : 1;
}
template <typename OfSegment>
EdgeStrength mixedStrengths(OfSegment of) {
    return std::bit_cast<EdgeStrength>(std::array<Vek8u, 4>{of(0), of(1), of(2), of(3)});
}

// ---- filtering

// tC0 of the segments of two edges, a byte each: those of bS 1, 2 and 3, else 0.
std::uint64_t tc0Of(std::uint64_t bS, const ByIndexA& limits) {
    constexpr std::uint64_t kEach = 0x0101010101010101;
    const std::uint64_t odd = bS & kEach, high = bS >> 1 & kEach, tc1 = limits.tc0[0], tc2 = limits.tc0[1];
    return odd * tc1 + high * tc2 + (odd & high) * (limits.tc0[2] - tc1 - tc2);  // all sums fit their bytes
}

// Two numbers as they stand one behind the other in memory, where the library reads them in one piece: stored one by
// one they would make it wait.
template <typename Two, typename One>
Two joined(One first, One second) {
    constexpr int kBits = 8 * sizeof(One);
    return std::endian::native == std::endian::little ? static_cast<Two>(first | Two{second} << kBits)
                                                      : static_cast<Two>(second | Two{first} << kBits);
}

// `pairs`: of an MBAFF frame, whose macroblocks come in pairs of frame or of field macroblocks.
template <typename Sample, bool pairs>
class Filter {
  public:
    Filter(Picture& picture, int structure, const SequenceParameterSet& sps)
        : picture_(picture),
          structure_(structure),
          sps_(sps),
          planes_(sps.chromaFormatIdc == 0 ? 1 : 3),
          is422_(sps.chromaFormatIdc == 2),
          width_(picture.widthInMbs),
          slices_(picture.slices[structure == kBottomField].data()),
          mbs_(picture.mbs.data() + (structure == kBottomField ? picture.mbs.size() / 2 : 0)) {
        for (int i = 0; i < 3; ++i) {
            mbWidth_[i] = i == 0 ? 16 : sps.chromaWidthMb();
            mbHeight_[i] = i == 0 ? 16 : sps.chromaHeightMb();
        }
    }

    void run(int firstRow, int endRow) {
        for (int row = firstRow; row < endRow; ++row) {
            if constexpr (pairs) {
                const Macroblock* mb = mbs_ + row * width_ * 2;
                for (int column = 0; column < width_; ++column)
                    for (const bool bottom : {false, true}) filterOfPair(*mb++, column, row, bottom);
            } else {
                filterRow(row);
            }
        }
    }

  private:
    // What the library takes beside samples and strengths: [0] for the outer edge, [1] for the inner ones. Sample is
    // also the type of alpha, beta and tC0.
    struct Thresholds {
        Sample alpha[2], beta[2];
        Sample tc0[16];
    };

    void filterRow(int row);
    // The same for a macroblock of a pair; `column` and `row` count pairs.
    void filterOfPair(const Macroblock& mb, int column, int row, bool bottom);
    void filterMixedLeft(const Macroblock* left, const Macroblock& mb, bool bottom);
    void filterTopInFields(const Macroblock* above, const Macroblock& mb);
    template <Direction direction>
    void filterEdges(const Macroblock* outer, const Macroblock& mb, const Strengths& strengths, int row = 0,
                     int stepFactor = 1);
    void callEdges(Direction direction, int component, std::uint8_t* data, int step, const Thresholds& t,
                   const Strengths& strengths) const;
    void callMixed(int component, std::uint8_t* data, int step, const Thresholds& t, EdgeStrength bS) const;

    // Whether the macroblock's edges are filtered; takes its slice's parameters.
    bool enter(const Macroblock& mb) {
        if (mb.type == MbType::Missing) return false;
        parameters_ = slices_ + mb.slice;
        return parameters_->disableDeblockingIdc != 1;
    }
    // The neighbour, null where the edge towards it is not filtered.
    const Macroblock* usable(const Macroblock* other, const Macroblock& mb) const {
        if (other == nullptr || other->type == MbType::Missing) return nullptr;
        return parameters_->disableDeblockingIdc == 2 && other->slice != mb.slice ? nullptr : other;
    }
    void setPlace(const MacroblockPosition& position) {
        for (int i = 0; i < planes_; ++i) {
            const vekapp::Plane& plane = picture_.plane[i];
            const Place place = placeOf(position, mbWidth_[i], mbHeight_[i]);
            data_[i] = plane.data + plane.stride * place.y + place.x * static_cast<int>(sizeof(Sample));
            step_[i] = static_cast<int>(plane.stride) * place.rowDistance;
        }
    }

    static int qpOf(const Macroblock& mb, int component) { return component == 0 ? mb.qp : mb.qpc[component - 1]; }
    int bitDepth(int component) const { return component == 0 ? sps_.bitDepthLuma : sps_.bitDepthChroma; }
    const ByIndexA& byIndexA(int qpAv) const {
        return kByIndexA[static_cast<std::size_t>(qpAv + parameters_->alphaC0Offset - kLowestIndex)];
    }
    // A pair of alpha or beta: of the outer edge and of the inner ones.
    void storePair(Sample (&to)[2], unsigned outer, unsigned inner, int component) const {
        using Both = std::conditional_t<std::is_same_v<Sample, Vek8u>, std::uint16_t, std::uint32_t>;
        const int shift = std::is_same_v<Sample, Vek8u> ? 0 : bitDepth(component) - 8;
        const auto both = joined<Both>(static_cast<Sample>(outer << shift), static_cast<Sample>(inner << shift));
        std::memcpy(to, &both, sizeof both);
    }
    void storeTc0(Sample* tc0, std::uint64_t ofTwoEdges, int component) const {
        if constexpr (std::is_same_v<Sample, Vek8u>) {
            std::memcpy(tc0, &ofTwoEdges, sizeof ofTwoEdges);
        } else {
            const auto bytes = std::bit_cast<std::array<Vek8u, 8>>(ofTwoEdges);
            for (std::size_t s = 0; s < 8; ++s) tc0[s] = static_cast<Sample>(bytes[s] << (bitDepth(component) - 8));
        }
    }
    void setThresholds(Thresholds& t, int component, bool allEdges, const Macroblock* outer, const Macroblock& mb,
                       const EdgeStrength (&edge)[4]) const;

    Picture& picture_;
    const int structure_;
    const SequenceParameterSet& sps_;
    const int planes_;
    const bool is422_;
    const int width_;  // macroblocks
    const SliceParameters* const slices_;
    const Macroblock* const mbs_;
    int mbWidth_[3], mbHeight_[3];
    // Of the macroblock being filtered:
    const SliceParameters* parameters_ = nullptr;
    std::uint8_t* data_[3] = {};
    int step_[3] = {};
};

template <typename Sample, bool pairs>
void Filter<Sample, pairs>::filterRow(int row) {
    setPlace({structure_, false, 0, row});
    const Macroblock* mb = mbs_ + row * width_;
    for (int column = 0; column < width_; ++column, ++mb) {
        if (enter(*mb)) {
            const Macroblock* const left = usable(column > 0 ? mb - 1 : nullptr, *mb);
            const Macroblock* const above = usable(row > 0 ? mb - width_ : nullptr, *mb);
            Strengths strengths[2] = {};
            deriveInner(*mb, is422_, strengths);
            if (left != nullptr) strengths[kVerticalEdges].edge[0] = deriveOuter(*left, *mb, kVerticalEdges);
            if (above != nullptr) strengths[kHorizontalEdges].edge[0] = deriveOuter(*above, *mb, kHorizontalEdges);
            filterEdges<kVerticalEdges>(left, *mb, strengths[kVerticalEdges]);
            filterEdges<kHorizontalEdges>(above, *mb, strengths[kHorizontalEdges]);
        }
        for (int i = 0; i < planes_; ++i) data_[i] += mbWidth_[i] * static_cast<int>(sizeof(Sample));
    }
}

template <typename Sample, bool pairs>
void Filter<Sample, pairs>::filterOfPair(const Macroblock& mb, int column, int row, bool bottom) {
    if (!enter(mb)) return;
    const Macroblock* const left = usable(column > 0 ? &mb - 2 : nullptr, mb);
    const Macroblock* above = nullptr;
    bool aboveInFields = false;  // a frame macroblock below a field pair
    bool mixedAbove = false;     // a field macroblock below a frame pair
    if (bottom && !mb.field) {
        above = &mb - 1;
    } else if (row > 0) {
        const Macroblock* pair = &mb - bottom - 2 * width_;
        aboveInFields = !mb.field && pair->field;
        mixedAbove = mb.field && !pair->field;
        above = aboveInFields ? pair : mb.field && !bottom && pair->field ? pair : pair + 1;
    }
    above = usable(above, mb);
    const bool mixedLeft = left != nullptr && left->field != mb.field;

    Strengths strengths[2] = {};
    deriveInner(mb, is422_, strengths);
    if (left != nullptr && !mixedLeft) strengths[kVerticalEdges].edge[0] = deriveOuter(*left, mb, kVerticalEdges);
    if (above != nullptr && mixedAbove)
        strengths[kHorizontalEdges].edge[0] =
            mixedStrengths([&](int s) { return mixedStrength(*above, 12 + s, mb, s, kHorizontalEdges); });
    else if (above != nullptr && !aboveInFields)
        strengths[kHorizontalEdges].edge[0] = deriveOuter(*above, mb, kHorizontalEdges);
    if (!mixedLeft && !aboveInFields && !strengths[0].any() && !strengths[1].any()) return;

    setPlace({structure_, true, column, row, bottom, mb.field});
    if (mixedLeft) filterMixedLeft(left - bottom, mb, bottom);
    filterEdges<kVerticalEdges>(left, mb, strengths[kVerticalEdges]);
    if (above != nullptr && aboveInFields) filterTopInFields(above, mb);
    filterEdges<kHorizontalEdges>(above, mb, strengths[kHorizontalEdges]);
}

// All edges of a direction, in all components. `outer` is the macroblock at the other side of edge 0; it counts where
// that edge has a strength. The block begins `row` rows further down, its rows lie `stepFactor` times as far apart.
template <typename Sample, bool pairs>
template <Direction direction>
void Filter<Sample, pairs>::filterEdges(const Macroblock* outer, const Macroblock& mb, const Strengths& strengths,
                                        int row, int stepFactor) {
    if (!strengths.any()) return;
    Thresholds t{};
    for (int i = 0; i < planes_; ++i) {
        // Cr is most often as Cb.
        if (i < 2 || mb.qpc[0] != mb.qpc[1] || (outer != nullptr && outer->qpc[0] != outer->qpc[1]))
            setThresholds(t, i, i == 0 || (is422_ && direction == kHorizontalEdges), outer, mb, strengths.edge);
        if (t.alpha[0] == 0 && t.alpha[1] == 0) continue;
        std::uint8_t* data = data_[i] + std::ptrdiff_t{step_[i]} * row;
        if (i == 0 && mb.transform8x8 && is422_)
            callEdges(direction, i, data, step_[i] * stepFactor, t, {{strengths.edge[0], 0, strengths.edge[2], 0}});
        else
            callEdges(direction, i, data, step_[i] * stepFactor, t, strengths);
    }
}

// tC0 stands for edges 0 to 3, or for edges 0 and 2 one behind the other.
template <typename Sample, bool pairs>
void Filter<Sample, pairs>::setThresholds(Thresholds& t, int component, bool allEdges, const Macroblock* outer,
                                          const Macroblock& mb, const EdgeStrength (&edge)[4]) const {
    const int own = qpOf(mb, component);
    const int atOuter = edge[0] == 0 ? own : (qpOf(*outer, component) + own + 1) >> 1;
    const ByIndexA &outerA = byIndexA(atOuter), &innerA = byIndexA(own);
    const std::uint8_t* const beta = kByIndexB.data() + parameters_->betaOffset - kLowestIndex;
    storePair(t.alpha, outerA.alpha, innerA.alpha, component);
    storePair(t.beta, beta[atOuter], beta[own], component);
    constexpr EdgeStrength kNone = 0;
    const auto ofTwo = [](EdgeStrength first, EdgeStrength second) { return joined<std::uint64_t>(first, second); };
    const std::uint64_t first = tc0Of(ofTwo(edge[0], kNone), outerA);
    storeTc0(t.tc0, first | tc0Of(ofTwo(kNone, edge[allEdges ? 1 : 2]), innerA), component);
    if (allEdges) storeTc0(t.tc0 + 8, tc0Of(ofTwo(edge[2], edge[3]), innerA), component);
}

// The left edge between a frame and a field macroblock pair; `left` is the left pair's first macroblock.
template <typename Sample, bool pairs>
void Filter<Sample, pairs>::filterMixedLeft(const Macroblock* left, const Macroblock& mb, bool bottom) {
    for (int call = 0; call < 2; ++call) {
        const Macroblock& p = left[call];
        const EdgeStrength bS = mixedStrengths([&](int k) {
            // Rows of 4x4 blocks on either side of the call's lines 2k and 2k + 1. Of a frame macroblock a call has the
            // even or the odd rows, of a field macroblock the upper or the lower half.
            const int rowP = mb.field ? k : 2 * bottom + k / 2, rowQ = mb.field ? 2 * call + k / 2 : k;
            return mixedStrength(p, 4 * rowP + 3, mb, 4 * rowQ, kVerticalEdges);
        });
        for (int i = 0; i < planes_; ++i) {
            Thresholds t{};
            setThresholds(t, i, false, &p, mb, {bS, 0, 0, 0});
            std::uint8_t* data = data_[i] + std::ptrdiff_t{step_[i]} * (mb.field ? call * mbHeight_[i] / 2 : call);
            callMixed(i, data, mb.field ? step_[i] : 2 * step_[i], t, bS);
        }
    }
}

// The top edge of a frame macroblock below a field pair: each field's rows by themselves (8.7.1).
template <typename Sample, bool pairs>
void Filter<Sample, pairs>::filterTopInFields(const Macroblock* above, const Macroblock& mb) {
    for (int field = 0; field < 2; ++field) {
        Strengths strengths{};
        strengths.edge[0] =
            mixedStrengths([&](int s) { return mixedStrength(above[field], 12 + s, mb, s, kHorizontalEdges); });
        filterEdges<kHorizontalEdges>(&above[field], mb, strengths, field, 2);
    }
}

template <typename Sample, bool pairs>
void Filter<Sample, pairs>::callEdges(Direction direction, int component, std::uint8_t* data, int step,
                                      const Thresholds& t, const Strengths& strengths) const {
    auto* samples = reinterpret_cast<Sample*>(data);
    const auto* bS = reinterpret_cast<const Vek8u*>(strengths.edge);
    const bool vertical = direction == kVerticalEdges;
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        if (component == 0) {
            if (vertical)
                vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, t.tc0, bS);
            else
                vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, t.tc0, bS);
        } else if (is422_) {
            const VekDeblockingParams8u p = {samples, step, t.alpha, t.beta, t.tc0, bS};
            (vertical ? vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR
                      : vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR)(&p);
        } else if (vertical) {
            vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, t.tc0, bS);
        } else {
            vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, t.tc0, bS);
        }
    } else {
        const VekDeblockingParams16u p = {samples, step / 2, t.alpha, t.beta, t.tc0, bS, bitDepth(component)};
        const auto call = component == 0 ? (vertical ? vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR)
                          : is422_       ? (vertical ? vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR)
                                         : (vertical ? vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR
                                                     : vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR);
        call(&p);
    }
}

template <typename Sample, bool pairs>
void Filter<Sample, pairs>::callMixed(int component, std::uint8_t* data, int step, const Thresholds& t,
                                      EdgeStrength bS) const {
    auto* samples = reinterpret_cast<Sample*>(data);
    if (component != 0 && is422_) {
        // Eight lines, two to a strength: what the 4:2:0 form does on its outer edge.
        const Strengths edges = {{bS}};
        const auto* strengths = reinterpret_cast<const Vek8u*>(edges.edge);
        if constexpr (std::is_same_v<Sample, Vek8u>) {
            vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(samples, step, t.alpha, t.beta, t.tc0, strengths);
        } else {
            const VekDeblockingParams16u p = {samples,   step / 2,           t.alpha, t.beta, t.tc0,
                                              strengths, bitDepth(component)};
            vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR(&p);
        }
        return;
    }
    const auto* strengths = reinterpret_cast<const Vek8u*>(&bS);
    if constexpr (std::is_same_v<Sample, Vek8u>) {
        (component == 0 ? vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR
                        : vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR)(samples, step, t.alpha[0], t.beta[0],
                                                                                 t.tc0, strengths);
    } else {
        const VekDeblockingParams16u p = {samples, step / 2, t.alpha, t.beta, t.tc0, strengths, bitDepth(component)};
        (component == 0 ? vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR
                        : vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR)(&p);
    }
}

}  // namespace

void deblockRows(Picture& picture, int structure, const SequenceParameterSet& sps, int firstRow, int endRow) {
    const bool pairs = picture.mbaff && structure == kFrame, wide = picture.bytesPerSample == 2;
    if (pairs && wide)
        Filter<Vek16u, true>(picture, structure, sps).run(firstRow, endRow);
    else if (pairs)
        Filter<Vek8u, true>(picture, structure, sps).run(firstRow, endRow);
    else if (wide)
        Filter<Vek16u, false>(picture, structure, sps).run(firstRow, endRow);
    else
        Filter<Vek8u, false>(picture, structure, sps).run(firstRow, endRow);
}

}  // namespace vekdec::h264
