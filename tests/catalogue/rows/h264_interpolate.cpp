// Rows of H.264 sub-pixel interpolation.
#include <algorithm>

#include "catalogue.h"

namespace catalogue {
namespace {

// ---- what a block reads around itself

struct Margins {
    int before, behind;
};
constexpr Margins kLuma{2, 3}, kChroma{0, 1};

Rect around(VekiSize size, bool dx, bool dy, Margins m, int channels) {
    return {dx ? -m.before * channels : 0, dy ? -m.before : 0, (size.width + (dx ? m.behind : 0)) * channels,
            size.height + (dy ? m.behind : 0)};
}
Extent reference(Margins m, int channels = 1) {
    return [=](const Call& c) { return around(c.size("roiSize"), c["dx"] != 0, c["dy"] != 0, m, channels); };
}
// With rows above the picture's first (below its last) one replaced by that one.
Extent referenceBelow(Margins m) {
    return [=](const Call& c) {
        Rect r = around(c.size("roiSize"), c["dx"] != 0, c["dy"] != 0, m, 1);
        const int first = static_cast<int>(c["outPixels"]);
        r.bottom = std::max(r.bottom - 1, first) + 1;
        r.top = std::max(r.top, first);
        return r;
    };
}
Extent referenceAbove(Margins m) {
    return [=](const Call& c) {
        Rect r = around(c.size("roiSize"), c["dx"] != 0, c["dy"] != 0, m, 1);
        const int last = c.size("roiSize").height - 1 - static_cast<int>(c["outPixels"]);
        r.top = std::min(r.top, last);
        r.bottom = std::min(r.bottom - 1, last) + 1;
        return r;
    };
}

// ---- arguments

template <class T>
Argument source(const char* name, Extent e) {
    Argument a = in<T>(name, std::move(e));
    if constexpr (sizeof(T) == 2)
        return a.of([](Random& random, const Call& c) { return draw(random, 0, (1 << c["bitDepth"]) - 1); });
    else
        return a;
}
template <class T>
Argument sourceStep(std::vector<std::string> planes) {
    return sizeof(T) == 2 ? step(std::move(planes)).apart() : step(std::move(planes));
}
Argument lumaSize() {
    return size("roiSize",
                {{4, 4}, {4, 8}, {8, 4}, {8, 8}, {8, 16}, {16, 8}, {16, 16}, {12, 4}, {20, 12}, {24, 32}, {28, 20}})
        .badSize({{2, 4}, {5, 4}, {32, 4}, {-4, 4}, {4, 2}, {8, 15}, {0, 4}, {4, 0}, {4, -4}}, vekStsErrSize);
}
Argument chromaSize() {
    return size("roiSize", {{2, 2},
                            {2, 4},
                            {4, 2},
                            {4, 4},
                            {4, 6},
                            {4, 8},
                            {8, 2},
                            {8, 4},
                            {8, 6},
                            {8, 8},
                            {8, 16},
                            {6, 2},
                            {10, 6},
                            {12, 4},
                            {14, 32}})
        .badSize({{1, 2}, {3, 2}, {16, 2}, {-2, 2}, {2, 1}, {8, 15}, {0, 2}, {2, 0}, {2, -2}}, vekStsErrSize);
}
Argument fraction(const char* name, int units) {
    return range(name, 0, units - 1).bad({-1, units, 1 << 20}, vekStsErrBadArg);
}
Argument depth() { return range("bitDepth", 8, 14).bad({0, 7, 15, -8}, vekStsErrOutOfRange); }

template <class T>
std::vector<Argument> interpolation(Extent reads, int units, bool edge) {
    std::vector<Argument> a = {source<T>("pSrc", std::move(reads)),
                               sourceStep<T>({"pSrc"}),
                               out<T>("pDst", region("roiSize")),
                               step("pDst"),
                               fraction("dx", units),
                               fraction("dy", units)};
    if (edge) a.push_back(range("outPixels", -24, 40));
    a.push_back(units == 4 ? lumaSize() : chromaSize());
    if (sizeof(T) == 2) a.push_back(depth());
    return a;
}

// ---- records: the vector's whole part and the block's position move the operand's extent

Extent moved(Margins m, int fractionBits, int channels) {
    return [=](const Call& c) {
        const int mask = (1 << fractionBits) - 1, x = static_cast<int>(c["mvX"]), y = static_cast<int>(c["mvY"]);
        Rect r = around(c.size("roiSize"), (x & mask) != 0, (y & mask) != 0, m, channels);
        const int right = (static_cast<int>(c["blockX"]) + (x >> fractionBits)) * channels;
        const int down = static_cast<int>(c["blockY"]) + (y >> fractionBits);
        return Rect{r.left + right, r.top + down, r.right + right, r.bottom + down};
    };
}
// The planes first, then step, blocks, step, size, position, vector, depth.
template <class T>
std::vector<Argument> blockRecord(bool luma, int sources) {
    const Extent reads = luma ? moved(kLuma, 2, 1) : moved(kChroma, 3, sources == 1 ? 2 : 1);
    const bool two = !luma && sources == 2;
    std::vector<Argument> a = {record("pBlock"), source<T>("pSrcPlane", reads)};
    a.push_back(two ? source<T>("pSrcPlane2", reads) : source<T>("pSrcPlane2", rect(0, 0, 0, 0)).nullable());
    a.push_back(two ? sourceStep<T>({"pSrcPlane", "pSrcPlane2"}) : sourceStep<T>({"pSrcPlane"}));
    a.push_back(out<T>("pDstBlock", region("roiSize")));
    a.push_back(luma ? out<T>("pDstBlock2", rect(0, 0, 0, 0)).nullable() : out<T>("pDstBlock2", region("roiSize")));
    a.push_back(luma ? step("pDstBlock") : step(std::vector<std::string>{"pDstBlock", "pDstBlock2"}));
    a.push_back(luma ? lumaSize() : chromaSize());
    for (const char* name : {"blockX", "blockY", "mvX", "mvY"}) a.push_back(range(name, -40, 40));
    a.push_back(sizeof(T) == 2 ? depth() : range("bitDepth", 8, 8));
    return a;
}
template <class T, class Record>
VekStatus callWithBlock(void* function, const Slot* s) {
    const auto n = [&](int i) { return static_cast<Vek32s>(s[i].integer); };
    Record block = {};
    block.pSrcPlane = static_cast<const T*>(s[1].pointer);
    block.pSrcPlane2 = static_cast<const T*>(s[2].pointer);
    block.srcPlaneStep = n(3);
    block.pDstBlock = static_cast<T*>(s[4].pointer);
    block.pDstBlock2 = static_cast<T*>(s[5].pointer);
    block.dstBlockStep = n(6);
    block.blockWidth = s[7].size.width;
    block.blockHeight = s[7].size.height;
    block.blockX = n(8);
    block.blockY = n(9);
    block.mvX = n(10);
    block.mvY = n(11);
    if constexpr (sizeof(T) == 2) block.bitDepth = n(12);
    return reinterpret_cast<VekStatus (*)(const Record*)>(function)(s[0].integer != 0 ? &block : nullptr);
}
constexpr Thunk kBlock8 = callWithBlock<Vek8u, VekInterpolationBlock>;
constexpr Thunk kBlock16 = callWithBlock<Vek16u, VekInterpolationBlock16u>;

// ---- averages and borders

Extent widthByHeight() {
    return [](const Call& c) { return Rect{0, 0, static_cast<int>(c["width"]), static_cast<int>(c["height"])}; };
}
Argument side(const char* name) { return range(name, 2, 16).bad({-2, 0, 1, 17}, vekStsErrSize); }

std::vector<Argument> expansion() {
    const Extent bordered = [](const Call& c) {
        const VekiSize s = c.size("roiSize");
        const int w = static_cast<int>(c["borderWidth"]), h = static_cast<int>(c["borderHeight"]);
        return Rect{-w, -h, s.width + w, s.height + h};
    };
    return {inOut<Vek8u>("pSrcDst", bordered), step("pSrcDst"),
            size("roiSize", {{1, 1}, {7, 3}, {16, 16}, {33, 20}})
                .badSize({{0, 1}, {1, 0}, {-5, 4}, {4, -5}}, vekStsErrSize),
            range("borderWidth", 0, 40).bad({-1, -100}, vekStsErrSize),
            range("borderHeight", 0, 24).bad({-1, -100}, vekStsErrSize)};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiInterpolateLuma_H264_8u_C1R", &vekiInterpolateLuma_H264_8u_C1R,
        interpolation<Vek8u>(reference(kLuma), 4, false)),
    row("vekiInterpolateLuma_H264_16u_C1R", &vekiInterpolateLuma_H264_16u_C1R,
        interpolation<Vek16u>(reference(kLuma), 4, false)),
    row("vekiInterpolateLumaTop_H264_8u_C1R", &vekiInterpolateLumaTop_H264_8u_C1R,
        interpolation<Vek8u>(referenceBelow(kLuma), 4, true)),
    row("vekiInterpolateLumaTop_H264_16u_C1R", &vekiInterpolateLumaTop_H264_16u_C1R,
        interpolation<Vek16u>(referenceBelow(kLuma), 4, true)),
    row("vekiInterpolateLumaBottom_H264_8u_C1R", &vekiInterpolateLumaBottom_H264_8u_C1R,
        interpolation<Vek8u>(referenceAbove(kLuma), 4, true)),
    row("vekiInterpolateLumaBottom_H264_16u_C1R", &vekiInterpolateLumaBottom_H264_16u_C1R,
        interpolation<Vek16u>(referenceAbove(kLuma), 4, true)),
    row("vekiInterpolateChroma_H264_8u_C1R", &vekiInterpolateChroma_H264_8u_C1R,
        interpolation<Vek8u>(reference(kChroma), 8, false)),
    row("vekiInterpolateChroma_H264_16u_C1R", &vekiInterpolateChroma_H264_16u_C1R,
        interpolation<Vek16u>(reference(kChroma), 8, false)),
    row("vekiInterpolateChromaTop_H264_8u_C1R", &vekiInterpolateChromaTop_H264_8u_C1R,
        interpolation<Vek8u>(referenceBelow(kChroma), 8, true)),
    row("vekiInterpolateChromaTop_H264_16u_C1R", &vekiInterpolateChromaTop_H264_16u_C1R,
        interpolation<Vek16u>(referenceBelow(kChroma), 8, true)),
    row("vekiInterpolateChromaBottom_H264_8u_C1R", &vekiInterpolateChromaBottom_H264_8u_C1R,
        interpolation<Vek8u>(referenceAbove(kChroma), 8, true)),
    row("vekiInterpolateChromaBottom_H264_16u_C1R", &vekiInterpolateChromaBottom_H264_16u_C1R,
        interpolation<Vek16u>(referenceAbove(kChroma), 8, true)),
    row("vekiInterpolateChroma_H264_8u_C2P2R", &vekiInterpolateChroma_H264_8u_C2P2R,
        {in<Vek8u>("pSrc", reference(kChroma, 2)), step("pSrc"), out<Vek8u>("pDstCb", region("roiSize")),
         out<Vek8u>("pDstCr", region("roiSize")), step({"pDstCb", "pDstCr"}), fraction("dx", 8), fraction("dy", 8),
         chromaSize()}),
    row("vekiInterpolateBlock_H264_8u_P2P1R", &vekiInterpolateBlock_H264_8u_P2P1R,
        {in<Vek8u>("pSrc1", widthByHeight()), in<Vek8u>("pSrc2", widthByHeight()), out<Vek8u>("pDst", widthByHeight()),
         side("width"), side("height"), step({"pSrc1", "pSrc2", "pDst"})}),
    row("vekiInterpolateBlock_H264_8u_P3P1R", &vekiInterpolateBlock_H264_8u_P3P1R,
        {in<Vek8u>("pSrc1", widthByHeight()), in<Vek8u>("pSrc2", widthByHeight()), out<Vek8u>("pDst", widthByHeight()),
         side("width"), side("height"), step("pSrc1"), step("pSrc2"), step("pDst")}),
    row("vekiExpandPlane_H264_8u_C1R", &vekiExpandPlane_H264_8u_C1R, expansion(), 500),
    recordRow("vekiInterpolateLumaBlock_H264_8u_P1R", blockRecord<Vek8u>(true, 1), kBlock8),
    recordRow("vekiInterpolateLumaBlock_H264_16u_P1R", blockRecord<Vek16u>(true, 1), kBlock16),
    recordRow("vekiInterpolateChromaBlock_H264_8u_P2R", blockRecord<Vek8u>(false, 2), kBlock8),
    recordRow("vekiInterpolateChromaBlock_H264_8u_C2P2R", blockRecord<Vek8u>(false, 1), kBlock8),
    recordRow("vekiInterpolateChromaBlock_H264_16u_P2R", blockRecord<Vek16u>(false, 2), kBlock16),
};

}  // namespace
}  // namespace catalogue
