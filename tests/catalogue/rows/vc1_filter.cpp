// Rows of the VC-1 loop filter, overlap smoothing and range mapping.
#include <algorithm>

#include "catalogue.h"

namespace catalogue {
namespace {

// ---- loop filter

// The span of the segments of an edge that are not disabled: what lies within it, but in a disabled segment between two
// others, is only known not to change.
Rect acrossEdge(bool horizontal, unsigned enabled, int reach, int bytes) {
    if (enabled == 0) return {0, 0, 0, 0};
    int first = 0, last = 0;
    while ((enabled >> first & 1) == 0) ++first;
    for (int i = 0; i < 4; ++i)
        if ((enabled >> i & 1) != 0) last = i;
    if (horizontal) return {4 * first * bytes, -reach, 4 * (last + 1) * bytes, reach};
    return {-reach * bytes, 4 * first, reach * bytes, 4 * (last + 1)};
}
using Enabled = std::function<unsigned(const Call&)>;
unsigned bitsOf(const Call& c, const char* flag, int firstBit, unsigned mask) {
    return ~static_cast<unsigned>(c[flag]) >> firstBit & mask;
}
std::vector<Argument> filter(bool horizontal, int bytes, Enabled enabled, std::vector<Argument> flags) {
    const auto extent = [=](int reach) {
        return Extent([=](const Call& c) { return acrossEdge(horizontal, enabled(c), reach, bytes); });
    };
    // Content of small contrasts, so that all conditions of the filter are met now and then.
    std::vector<Argument> a = {
        inOut<Vek8u>("pSrcDst", extent(4)).writes(extent(1)).seeded("contrast").of([](Random& random, const Call& c) {
            switch (c["contrast"] % 4) {
                case 0:
                    return draw(random, 0, 255);
                case 1:
                    return draw(random, 126, 129);
                case 2:
                    return draw(random, 100, 116);
                default:
                    return random() % 8 == 0 ? draw(random, 90, 110) : std::int64_t{100};
            }
        }),
        integer("pQuant",
                [](Random& random, const Call&) {
                    return random() % 8 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, -1, 31);
                }),
        step("pSrcDst")};
    a.insert(a.end(), flags.begin(), flags.end());
    return a;
}
Argument flags(const char* name) {
    return integer(name, [](Random& random, const Call&) -> std::int64_t {
        return random() % 2 == 0 ? 0 : random() % 4 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, 0, 15);
    });
}
std::vector<Argument> filterLuma(bool horizontal) {
    return filter(horizontal, 1, [](const Call& c) { return bitsOf(c, "edgeDisableFlag", 0, 15); },
                  {flags("edgeDisableFlag")});
}
std::vector<Argument> filterChroma(bool horizontal) {
    return filter(horizontal, 1, [](const Call& c) { return bitsOf(c, "edgeDisableFlag", 1, 3); },
                  {flags("edgeDisableFlag")});
}
std::vector<Argument> filterPairs(bool horizontal) {
    return filter(
        horizontal, 2,
        [](const Call& c) { return bitsOf(c, "edgeDisableFlagU", 1, 3) | bitsOf(c, "edgeDisableFlagV", 1, 3); },
        {flags("edgeDisableFlagU"), flags("edgeDisableFlagV")});
}

// ---- overlap smoothing

Argument values(const char* name, Extent e) {
    return in<Vek16s>(name, std::move(e)).seeded("style").of([](Random& random, const Call& c) {
        switch (c["style"] % 4) {
            case 0:
                return draw(random, -32768, 32767);
            case 1:
                return random() % 2 == 0 ? draw(random, -32768, -32700) : draw(random, 4600, 4700);
            default:
                return draw(random, -40, 300);
        }
    });
}
// The halves of a luma edge that are smoothed, as places 0 to 16 along it.
struct Span {
    int first, end;
};
Span smoothed(const Call& c, bool fields) {
    const auto flag = c["edgeSmoothFlag"];
    const int fieldFlag = fields ? static_cast<int>(c["fieldNeighbourFlag"]) : 0;
    if (fieldFlag != 0) return fieldFlag >= 1 && fieldFlag <= 3 && flag != 0 ? Span{0, 16} : Span{0, 0};
    const bool first = (flag & 3) != 0, second = (flag & 12) != 0;
    return first || second ? Span{first ? 0 : 8, second ? 16 : 8} : Span{0, 0};
}
Extent along(bool horizontal, bool fields, int low, int high) {
    return [=](const Call& c) {
        const Span s = smoothed(c, fields);
        if (s.end == 0) return Rect{0, 0, 0, 0};
        return horizontal ? Rect{s.first, low, s.end, high} : Rect{low, s.first, high, s.end};
    };
}
Argument smoothFlag() {
    return integer("edgeSmoothFlag", [](Random& random, const Call&) -> std::int64_t {
        return random() % 2 == 0 ? 15 : random() % 4 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, 0, 31);
    });
}
std::vector<Argument> plane(const char* upper, const char* bottom, const Extent& block) {
    return {values(upper, block), step(upper), values(bottom, block), step(bottom)};
}
std::vector<Argument> joined(std::vector<Argument> a, const std::vector<Argument>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
std::vector<Argument> smoothing(const Extent& written, std::vector<Argument> sources) {
    return joined(std::move(sources), {out<Vek8u>("pDst", written), step("pDst")});
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR", &vekiFilterDeblockingLuma_HorEdge_VC1_8u_C1IR,
        filterLuma(true)),
    row("vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR", &vekiFilterDeblockingLuma_VerEdge_VC1_8u_C1IR,
        filterLuma(false)),
    row("vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR", &vekiFilterDeblockingChroma_HorEdge_VC1_8u_C1IR,
        filterChroma(true)),
    row("vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR", &vekiFilterDeblockingChroma_VerEdge_VC1_8u_C1IR,
        filterChroma(false)),
    row("vekiFilterDeblockingChroma_HorEdge_VC1_8u_C2IR", &vekiFilterDeblockingChroma_HorEdge_VC1_8u_C2IR,
        filterPairs(true)),
    row("vekiFilterDeblockingChroma_VerEdge_VC1_8u_C2IR", &vekiFilterDeblockingChroma_VerEdge_VC1_8u_C2IR,
        filterPairs(false)),
    row("vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R", &vekiSmoothingLuma_HorEdge_VC1_16s8u_C1R,
        joined(smoothing(along(true, false, -2, 2), plane("pSrcUpper", "pSrcBottom", along(true, false, 0, 2))),
               {smoothFlag()})),
    row("vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R", &vekiSmoothingLuma_VerEdge_VC1_16s8u_C1R,
        joined(smoothing(along(false, true, -2, 2), plane("pSrcLeft", "pSrcRight", along(false, true, 0, 2))),
               {oneOf("fieldNeighbourFlag", {0, 0, 0, 1, 2, 3, 4, -1}), smoothFlag()})),
    row("vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R", &vekiSmoothingChroma_HorEdge_VC1_16s8u_C1R,
        smoothing(rect(0, -2, 8, 2), plane("pSrcUpper", "pSrcBottom", block(8, 2)))),
    row("vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R", &vekiSmoothingChroma_VerEdge_VC1_16s8u_C1R,
        smoothing(rect(-2, 0, 2, 8), plane("pSrcLeft", "pSrcRight", block(2, 8)))),
    row("vekiSmoothingChroma_HorEdge_VC1_16s8u_P2C2R", &vekiSmoothingChroma_HorEdge_VC1_16s8u_P2C2R,
        smoothing(rect(0, -2, 16, 2), joined(plane("pSrcUpperU", "pSrcBottomU", block(8, 2)),
                                             plane("pSrcUpperV", "pSrcBottomV", block(8, 2))))),
    row("vekiSmoothingChroma_VerEdge_VC1_16s8u_P2C2R", &vekiSmoothingChroma_VerEdge_VC1_16s8u_P2C2R,
        smoothing(rect(-4, 0, 4, 8), joined(plane("pSrcLeftU", "pSrcRightU", block(2, 8)),
                                            plane("pSrcLeftV", "pSrcRightV", block(2, 8))))),
    row("vekiRangeMapping_VC1_8u_C1R", &vekiRangeMapping_VC1_8u_C1R,
        {in<Vek8u>("pSrc", region("roiSize")), step("pSrc"), out<Vek8u>("pDst", region("roiSize")), step("pDst"),
         size("roiSize",
              {{1, 1}, {16, 16}, {32, 8}, {64, 2}, {33, 3}, {7, 5}, {15, 2}, {24, 4}, {55, 3}, {0, 3}, {3, 0}}),
         range("rangeMapValue", 0, 7).bad({-1, 8, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange)}),
};

}  // namespace
}  // namespace catalogue
