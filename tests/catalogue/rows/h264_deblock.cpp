// Rows of H.264 deblocking. Each row begins with two numbers that are no arguments: `edge` and `segment` restrict the
// strengths to one edge (0 to 3) and to one strength of each edge (0 to 3), or let all be (4); the block's extent
// follows, so that a touch of lines without a strength is caught.
#include <algorithm>
#include <cstring>

#include "catalogue.h"

namespace catalogue {
namespace {

// What a form filters. Strengths and thresholds of its edges lie `strengths` and 4 entries apart.
struct Shape {
    int edges;
    int strengths;
    int linesPerStrength;  // samples along the edge
    bool vertical;
    int samples;  // read on either side of an edge
    int channels = 1;
};
constexpr Shape kLumaVer{4, 4, 4, true, 4}, kLumaHor{4, 4, 4, false, 4}, kLumaLeft{1, 4, 2, true, 4};
constexpr Shape kChromaVer{2, 8, 2, true, 2}, kChromaHor{2, 8, 2, false, 2}, kChromaLeft{1, 4, 1, true, 2};
constexpr Shape kChroma422Ver{2, 8, 4, true, 2}, kChroma422Hor{4, 4, 2, false, 2};
constexpr Shape kPairsVer{2, 8, 2, true, 2, 2}, kPairsHor{2, 8, 4, false, 2};

// The samples that the chosen edges and segments have; the inner forms have at least the first.
Extent filtered(Shape s, bool onlyChanged) {
    return [=](const Call& c) {
        const int edge = static_cast<int>(c["edge"]), segment = static_cast<int>(c["segment"]);
        const int reach = (s.samples - (onlyChanged ? 1 : 0)) * s.channels;
        const int first = 4 * (edge == 4 ? 0 : std::min(edge, s.edges - 1)) * s.channels;
        const int last = edge == 4 ? 4 * (s.edges - 1) * s.channels : first;
        const int from = segment == 4 ? 0 : segment * s.linesPerStrength;
        const int to = segment == 4 ? 4 * s.linesPerStrength : from + s.linesPerStrength;
        return s.vertical ? Rect{first - reach, from, last + reach, to} : Rect{from, first - reach, to, last + reach};
    };
}
// Strengths of every kind, alone or mixed, and as macroblocks have them; 0 outside the chosen edge and segment.
Argument strengths(Shape s) {
    return in<Vek8u>("pBs", count(s.edges == 1 ? 4 : 16)).filled([=](Random& random, const Call& c, void* to, int n) {
        const int edge = std::min(static_cast<int>(c["edge"]), s.edges - 1), style = static_cast<int>(random() % 8);
        for (int i = 0; i < n; ++i) {
            const bool chosen =
                (c["edge"] == 4 || i / s.strengths == edge) && (c["segment"] == 4 || i % 4 == c["segment"]);
            const bool used = i % s.strengths < 4;
            const int bS = style < 2    ? static_cast<int>(random() % 5)
                           : style == 2 ? static_cast<int>(random() % 4)
                           : style == 3 ? static_cast<int>(i < 4 ? random() % 2 * 4 : random() % 4)
                           : style == 4 ? 4
                           : style == 5 ? 3
                           : style == 6 ? (i < 4 ? 4 : 3)
                                        : static_cast<int>(random());
            static_cast<Vek8u*>(to)[i] = static_cast<Vek8u>(chosen || !used ? bS : 0);
        }
    });
}
int depthOf(const Call& c, std::size_t sampleBytes) { return sampleBytes == 1 ? 8 : static_cast<int>(c["bitDepth"]); }

// Table values at the bit depth; for 8 bits now and then any byte.
template <class T>
Argument values(const char* name, int n, int high) {
    return in<T>(name, count(n)).of([=](Random& random, const Call& c) {
        if (sizeof(T) == 1 && random() % 16 == 0) return draw(random, 0, 255);
        return draw(random, 0, high) << (depthOf(c, sizeof(T)) - 8);
    });
}
// Rows that a filter changes often: levels with small differences and some jumps, at any place of the range.
template <class T>
Argument picture(Shape s) {
    return inOut<T>("pSrcDst", filtered(s, false))
        .writes(filtered(s, true))
        .filled([](Random& random, const Call& c, void* to, int n) {
            const int top = (1 << depthOf(c, sizeof(T))) - 1;
            static thread_local int level = 0;
            if (random() % 8 == 0) level = static_cast<int>(draw(random, 0, top));
            const int noise = static_cast<int>(random() % 4) * (top >> 5) / 2 + 1,
                      jump = static_cast<int>(random() % 3) * top / 32 + 1;
            for (int i = 0; i < n; ++i) {
                if (random() % 4 == 0) level += static_cast<int>(draw(random, -jump, jump));
                if (random() % 64 == 0) level = static_cast<int>(draw(random, 0, top));
                level = std::clamp(level, 0, top);
                const int sample = std::clamp(level + static_cast<int>(draw(random, -noise, noise)), 0, top);
                const T value = static_cast<T>(sample);
                std::memcpy(static_cast<char*>(to) + i * static_cast<int>(sizeof(T)), &value, sizeof value);
            }
        });
}
std::vector<Argument> choice() { return {range("edge", 0, 4), range("segment", 0, 4)}; }

template <class T>
void addPlaneAndValues(std::vector<Argument>& a, Shape s) {
    const int values16 = s.edges == 1 ? 4 : 16;
    for (const Argument& next : {picture<T>(s), step("pSrcDst").inUnitsOf(sizeof(T)), values<T>("pAlpha", 2, 255),
                                 values<T>("pBeta", 2, 18), values<T>("pThresholds", values16, 25), strengths(s)})
        a.push_back(next);
}

bool six(const char* name, Shape s) {
    std::vector<Argument> a = choice();
    addPlaneAndValues<Vek8u>(a, s);
    return recordRow(name, a, [](void* function, const Slot* slots) {
        const auto bytes = [&](int i) { return static_cast<const Vek8u*>(slots[i].pointer); };
        return reinterpret_cast<VekStatus (*)(Vek8u*, Vek32s, const Vek8u*, const Vek8u*, const Vek8u*, const Vek8u*)>(
            function)(static_cast<Vek8u*>(slots[2].pointer), static_cast<Vek32s>(slots[3].integer), bytes(4), bytes(5),
                      bytes(6), bytes(7));
    });
}
bool leftEdge(const char* name, Shape s) {
    std::vector<Argument> a = choice();
    const auto limit = [](const char* which, int high) {
        return integer(which, [=](Random& random, const Call&) {
            return random() % 16 == 0 ? draw(random, 0, UINT32_MAX) : draw(random, 0, high);
        });
    };
    for (const Argument& next : {picture<Vek8u>(s), step("pSrcDst"), limit("alpha", 255), limit("beta", 18),
                                 values<Vek8u>("pThresholds", 4, 25), strengths(s)})
        a.push_back(next);
    return recordRow(name, a, [](void* function, const Slot* slots) {
        return reinterpret_cast<VekStatus (*)(Vek8u*, Vek32s, Vek32u, Vek32u, const Vek8u*, const Vek8u*)>(function)(
            static_cast<Vek8u*>(slots[2].pointer), static_cast<Vek32s>(slots[3].integer),
            static_cast<Vek32u>(slots[4].integer), static_cast<Vek32u>(slots[5].integer),
            static_cast<const Vek8u*>(slots[6].pointer), static_cast<const Vek8u*>(slots[7].pointer));
    });
}
template <class T>
bool params(const char* name, Shape s) {
    std::vector<Argument> a = choice();
    a.push_back(record("pParams"));
    addPlaneAndValues<T>(a, s);
    a.push_back(range("bitDepth", 8, sizeof(T) == 1 ? 8 : 14));
    return recordRow(name, a, [](void* function, const Slot* slots) {
        const auto list = [&](int i) { return static_cast<const T*>(slots[i].pointer); };
        using Record = std::conditional_t<sizeof(T) == 1, VekDeblockingParams8u, VekDeblockingParams16u>;
        Record p = {};
        p.pSrcDstPlane = static_cast<T*>(slots[3].pointer);
        p.srcDstStep = static_cast<Vek32s>(slots[4].integer);
        p.pAlpha = list(5);
        p.pBeta = list(6);
        p.pThresholds = list(7);
        p.pBs = static_cast<const Vek8u*>(slots[8].pointer);
        if constexpr (sizeof(T) == 2) p.bitDepth = static_cast<Vek32s>(slots[9].integer);
        return reinterpret_cast<VekStatus (*)(const Record*)>(function)(slots[2].integer != 0 ? &p : nullptr);
    });
}
template <class Record>
bool notProvided(const char* name) {
    return recordRow(
        name, {range("pParams", 0, 0)},
        [](void* function, const Slot*) { return reinterpret_cast<VekStatus (*)(const Record*)>(function)(nullptr); },
        1);
}

[[maybe_unused]] const bool kRows[] = {
    six("vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR", kLumaVer),
    six("vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR", kLumaHor),
    six("vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR", kChromaVer),
    six("vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR", kChromaHor),
    six("vekiFilterDeblockingChroma_VerEdge_H264_8u_C2IR", kPairsVer),
    six("vekiFilterDeblockingChroma_HorEdge_H264_8u_C2IR", kPairsHor),
    leftEdge("vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR", kLumaLeft),
    leftEdge("vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR", kChromaLeft),
    params<Vek8u>("vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR", kChroma422Ver),
    params<Vek8u>("vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR", kChroma422Hor),
    params<Vek16u>("vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR", kLumaVer),
    params<Vek16u>("vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR", kLumaHor),
    params<Vek16u>("vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR", kLumaLeft),
    params<Vek16u>("vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR", kChromaVer),
    params<Vek16u>("vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR", kChromaHor),
    params<Vek16u>("vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR", kChromaLeft),
    params<Vek16u>("vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR", kChroma422Ver),
    params<Vek16u>("vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR", kChroma422Hor),
    notProvided<VekDeblockingParams8u>("vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR"),
    notProvided<VekDeblockingParams16u>("vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR"),
};

}  // namespace
}  // namespace catalogue
