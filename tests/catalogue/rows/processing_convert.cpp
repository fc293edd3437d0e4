// Rows of the conversions of sample layouts, with resizing and rotation.
#include <algorithm>

#include "catalogue.h"

namespace catalogue {
namespace {

int halved(int n) { return (n + 1) >> 1; }
bool swapsSides(const Call& c) { return c["rotation"] == 90 || c["rotation"] == 270; }
Rect turned(VekiSize s, bool swap) { return swap ? Rect{0, 0, s.height, s.width} : Rect{0, 0, s.width, s.height}; }

// ---- what belongs to the picture of roiSize

Extent of(Rect (*rect)(VekiSize)) {
    return [=](const Call& c) { return rect(c.size("roiSize")); };
}
Extent pixels(int bytes) {
    return [=](const Call& c) { return Rect{0, 0, bytes * c.size("roiSize").width, c.size("roiSize").height}; };
}
const Extent kLuma = region("roiSize");
const Extent kChroma422 = of([](VekiSize s) { return Rect{0, 0, halved(s.width), s.height}; });
const Extent kChroma420 = of([](VekiSize s) { return Rect{0, 0, halved(s.width), halved(s.height)}; });
const Extent kChromaPairs = of([](VekiSize s) { return Rect{0, 0, 2 * halved(s.width), halved(s.height)}; });
// The fourth byte of an odd row's last group is written but not read.
const Extent kCbYCrRead = of([](VekiSize s) { return Rect{0, 0, 2 * s.width + s.width % 2, s.height}; });
const Extent kCbYCrWritten = of([](VekiSize s) { return Rect{0, 0, 4 * halved(s.width), s.height}; });
const Extent kRotatedLuma = [](const Call& c) { return turned(c.size("roiSize"), swapsSides(c)); };
const Extent kRotatedChroma = [](const Call& c) {
    const VekiSize s = c.size("roiSize");
    return turned({halved(s.width), halved(s.height)}, swapsSides(c));
};
const Extent kResized = [](const Call& c) {
    const int factor = static_cast<int>(c["factor"]);
    const auto scaled = [&](int n) { return factor < 0 ? n * -factor : (n + factor - 1) / factor; };
    const VekiSize s = c.size("roiSize");
    const Rect r = turned({scaled(s.width), scaled(s.height)}, swapsSides(c));
    return Rect{0, 0, c["conversion"] == 0 ? 4 * halved(r.right) : 2 * r.right, r.bottom};
};

// ---- arguments

using Arguments = std::vector<Argument>;

Arguments list(std::initializer_list<Arguments> parts) {
    Arguments all;
    for (const Arguments& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Argument roiSize(std::vector<VekiSize> more = {}) {
    std::vector<VekiSize> sizes = {{1, 1},  {2, 1},   {1, 2},   {3, 3},   {5, 2},   {16, 16}, {17, 9}, {24, 24},
                                   {33, 7}, {34, 20}, {40, 31}, {64, 48}, {67, 34}, {90, 70}, {96, 3}};
    sizes.insert(sizes.end(), more.begin(), more.end());
    return size("roiSize", sizes)
        .badSize({{0, 1}, {1, 0}, {-1, 5}, {5, -1}, {INT32_MIN, 2}, {2, INT32_MIN}}, vekStsErrSize);
}
const std::vector<VekiSize> kWide = {{130, 4}, {195, 6}, {258, 3}};

Argument selector(const char* name, std::vector<std::int64_t> values, std::vector<std::int64_t> bad) {
    return oneOf(name, std::move(values)).bad(std::move(bad), vekStsErrBadArg);
}
Argument flag(const char* name) { return selector(name, {0, 1}, {-1, 2, INT32_MAX}); }
Argument matrix() { return selector("matrix", {0, 1, 2, 3}, {-1, 4, INT32_MIN}); }
Argument rotation() { return selector("rotation", {0, 90, 180, 270}, {-90, 1, 45, 360}); }
// Results have to fit the guarded memory, 96 rows, if they are rotated too.
Argument factor() {
    return integer("factor",
                   [](Random& random, const Call& c) {
                       const VekiSize s = c.size("roiSize");
                       const int side = std::max(s.width, s.height);
                       std::vector<std::int64_t> factors = {2, 4, 8};
                       if (side <= 96) factors.push_back(1);
                       if (side <= 48) factors.push_back(-2);
                       if (side <= 24) factors.push_back(-4);
                       return factors[random() % factors.size()];
                   })
        .bad({0, 3, 16, -1, -8}, vekStsErrResizeFactor);
}

Arguments plane(Argument pixels) {
    const std::string name = pixels.name;
    return {std::move(pixels), step({name})};
}
template <class Make>
Arguments planes(const std::string& name, Make make, const Extent& luma, const Extent& chroma) {
    return {make(name + "Y", luma), step({name + "Y"}), make(name + "Cb", chroma), make(name + "Cr", chroma),
            step({name + "Cb", name + "Cr"})};
}
Arguments source(Extent e) { return plane(in<Vek8u>("pSrc", std::move(e))); }
Arguments source(const Extent& luma, const Extent& chroma) { return planes("pSrc", in<Vek8u>, luma, chroma); }
Arguments destination(Extent e) { return plane(out<Vek8u>("pDst", std::move(e))); }
Arguments destination(const Extent& luma, const Extent& chroma) { return planes("pDst", out<Vek8u>, luma, chroma); }

[[maybe_unused]] const bool kRows[] = {
    row("vekiResizeCCRotate_8u_C2R", &vekiResizeCCRotate_8u_C2R,
        list({source(kCbYCrRead),
              {roiSize({{9, 23}, {12, 6}, {20, 24}, {44, 18}, {180, 70}, {191, 33}})},
              destination(kResized),
              {factor(), range("interpolation", 0, 2).bad({-1, 3}, vekStsErrInterpolation),
               selector("conversion", {0, 1, 2}, {-1, 3}), rotation()}}),
        500),
    row("vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R", &vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R,
        list({source(kCbYCrRead), destination(kRotatedLuma, kRotatedChroma), {roiSize(), rotation()}})),
    row("vekiCbYCr422ToYCbCr420_Rotate_8u_P3R", &vekiCbYCr422ToYCbCr420_Rotate_8u_P3R,
        list({source(kLuma, kChroma422), destination(kRotatedLuma, kRotatedChroma), {roiSize(), rotation()}})),
    row("vekiCbYCr422ToYCbCr420_8u_C2P3R", &vekiCbYCr422ToYCbCr420_8u_C2P3R,
        list({source(kCbYCrRead), destination(kLuma, kChroma420), {roiSize(kWide), flag("interlaced")}})),
    row("vekiCbYCr422ToYCbCr422_8u_C2P3R", &vekiCbYCr422ToYCbCr422_8u_C2P3R,
        list({source(kCbYCrRead), destination(kLuma, kChroma422), {roiSize(kWide)}})),
    row("vekiYCbCr422ToCbYCr422_8u_P3C2R", &vekiYCbCr422ToCbYCr422_8u_P3C2R,
        list({source(kLuma, kChroma422), destination(kCbYCrWritten), {roiSize(kWide)}})),
    row("vekiYCbCr420ToCbYCr422_8u_P3C2R", &vekiYCbCr420ToCbYCr422_8u_P3C2R,
        list({source(kLuma, kChroma420), destination(kCbYCrWritten), {roiSize(kWide), flag("interlaced")}})),
    row("vekiYCbCr420ToYCbCr420_8u_P3P2R", &vekiYCbCr420ToYCbCr420_8u_P3P2R,
        list({source(kLuma, kChroma420),
              plane(out<Vek8u>("pDstY", kLuma)),
              plane(out<Vek8u>("pDstCbCr", kChromaPairs)),
              {roiSize(kWide)}})),
    row("vekiYCbCr420ToYCbCr420_8u_P2P3R", &vekiYCbCr420ToYCbCr420_8u_P2P3R,
        list({plane(in<Vek8u>("pSrcY", kLuma)),
              plane(in<Vek8u>("pSrcCbCr", kChromaPairs)),
              destination(kLuma, kChroma420),
              {roiSize(kWide)}})),
    row("vekiYCbCr420ToBGR_8u_P3C3R", &vekiYCbCr420ToBGR_8u_P3C3R,
        list({source(kLuma, kChroma420), destination(pixels(3)), {roiSize(kWide), matrix()}})),
    row("vekiYCbCr420ToBGR_8u_P3C4R", &vekiYCbCr420ToBGR_8u_P3C4R,
        list({source(kLuma, kChroma420), destination(pixels(4)), {roiSize(kWide), matrix()}})),
    row("vekiYCbCr420ToBGR565_8u16u_P3C1R", &vekiYCbCr420ToBGR565_8u16u_P3C1R,
        list({source(kLuma, kChroma420),
              plane(out<Vek16u>("pDst", kLuma)),
              {roiSize(kWide), matrix(), flag("dither")}})),
    row("vekiCbYCr422ToBGR_8u_C2C3R", &vekiCbYCr422ToBGR_8u_C2C3R,
        list({source(kCbYCrRead), destination(pixels(3)), {roiSize(kWide), matrix()}})),
    row("vekiCbYCr422ToBGR_8u_C2C4R", &vekiCbYCr422ToBGR_8u_C2C4R,
        list({source(kCbYCrRead), destination(pixels(4)), {roiSize(kWide), matrix()}})),
    row("vekiBGRToCbYCr422_8u_C4C2R", &vekiBGRToCbYCr422_8u_C4C2R,
        list({source(pixels(4)), destination(kCbYCrWritten), {roiSize(kWide), matrix()}})),
    row("vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R", &vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R,
        list({source(block(32, 16)), destination(block(16, 16), block(8, 8))})),
    row("vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R", &vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R,
        list({source(block(16, 16), block(8, 8)), destination(block(32, 16))})),
    row("vekiYCbCr420ToBGR_16x16_8u_P3C4R", &vekiYCbCr420ToBGR_16x16_8u_P3C4R,
        list({source(block(16, 16), block(8, 8)), destination(block(64, 16)), {anyInt("matrix")}})),
};

}  // namespace
}  // namespace catalogue
