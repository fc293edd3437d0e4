// Rows of deblocking, deringing, the loop filter and resampling of MPEG-4, H.263 and H.261.
#include <cstring>

#include "catalogue.h"

namespace catalogue {
namespace {

Argument qp() { return range("QP", 1, 31).bad({0, 32, -1, INT32_MIN, INT32_MAX}, vekStsErrQPRange); }

// All samples of a call within a span of its own, so that every branch of a filter is taken.
Argument picture(Argument a) {
    return a.seeded("span").of([](Random& random, const Call& c) {
        constexpr int kSpans[] = {2, 3, 4, 8, 15, 16, 31, 32, 63, 64, 120, 255};
        const auto seed = c["span"];
        const int span = kSpans[seed % 12], low = static_cast<int>(seed / 12 % (256 - span));
        return draw(random, low, low + span);
    });
}

// `read` samples on both sides of an edge of eight, of which `written` are written.
std::vector<Argument> deblock(bool vertical, int read, int written) {
    const auto across = [=](int n) { return vertical ? rect(-n, 0, n, 8) : rect(0, -n, 8, n); };
    return {picture(inOut<Vek8u>("pSrcDst", across(read)).writes(across(written))), step("pSrcDst"), qp()};
}
std::vector<Argument> dering(int n) {
    return {picture(in<Vek8u>("pSrc", rect(-1, -1, n + 1, n + 1))), step("pSrc"), out<Vek8u>("pDst", block(n, n)),
            step("pDst"), qp()};
}

Argument checkedStep(const char* of) { return step(of).atLeastWidth(); }
Argument map(const char* name, bool vertical) {
    return in<Vek32s>(name, count(4)).filled([=](Random& random, const Call& c, void* samples, int) {
        Vek32s m[4];  // what is filled has no alignment
        const double one = static_cast<double>(std::int64_t{1} << c["shift"]);
        const auto number = [&](double low, double high) {
            const double n = (low + (high - low) * static_cast<double>(random() % 4096) / 4096) * one;
            return static_cast<Vek32s>(n < -2e9 ? -2e9 : n > 2e9 ? 2e9 : n);
        };
        const bool mild = random() % 4 != 0;
        m[0] = mild ? number(-40, 200) : number(-100, 800);
        m[vertical ? 2 : 1] = mild ? number(12, 18) : number(4, 32);
        m[vertical ? 1 : 2] = number(-2, 2);
        m[3] = mild ? number(-0.01, 0.01) : number(-0.1, 0.1);
        if (random() % 16 == 0)
            for (Vek32s& value : m) value = static_cast<Vek32s>(random());
        std::memcpy(samples, m, sizeof m);
    });
}
// Bad ones are tested by hand: a row's failures do not know of each other, and here a step's limit is the width.
Argument sides(const char* name) {
    return size(name, {{1, 1}, {2, 1}, {1, 7}, {7, 2}, {16, 16}, {33, 9}, {48, 40}, {70, 5}});
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR", &vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR,
        deblock(false, 2, 2)),
    row("vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR", &vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR,
        deblock(true, 2, 2)),
    row("vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR", &vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR,
        deblock(false, 5, 4)),
    row("vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR", &vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR,
        deblock(true, 5, 4)),
    row("vekiFilterDeringingLuma_MPEG4_8u_C1R", &vekiFilterDeringingLuma_MPEG4_8u_C1R, dering(16)),
    row("vekiFilterDeringingChroma_MPEG4_8u_C1R", &vekiFilterDeringingChroma_MPEG4_8u_C1R, dering(8)),
    row("vekiFilterLoop8x8_H261_8u_C1R", &vekiFilterLoop8x8_H261_8u_C1R,
        {in<Vek8u>("pSrc", block(8, 8)), step("pSrc"), out<Vek8u>("pDst", block(8, 8)), step("pDst")}),
    row("vekiUpsample2x_H263_8u_C1R", &vekiUpsample2x_H263_8u_C1R,
        {in<Vek8u>("pSrc", region("srcSize")), checkedStep("pSrc"), sides("srcSize"),
         out<Vek8u>(
             "pDst",
             [](const Call& c) {
                 const VekiSize s = c.size("srcSize");
                 const auto direction = c["direction"];
                 return Rect{0, 0, direction == 2 ? s.width : 2 * s.width, direction == 1 ? s.height : 2 * s.height};
             }),
         step("pDst").atLeastWidthOf(region("srcSize")),  // twice that is tested by hand: it follows the direction
         range("direction", 1, 3).bad({0, 4, -1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange)}),
    row("vekiResample_H263_8u_C1R", &vekiResample_H263_8u_C1R,
        {in<Vek8u>("pSrc", region("srcSize")), checkedStep("pSrc"), sides("srcSize"),
         out<Vek8u>("pDst", region("dstSize")), checkedStep("pDst"), sides("dstSize"), map("pMapX", false),
         map("pMapY", true), range("shift", 0, 31).bad({-1, 32, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
         anyInt("roundControl"),
         integer("fillValue",
                 [](Random& random, const Call&) {
                     return random() % 2 == 0 ? draw(random, 0, 255) : draw(random, INT32_MIN, -1);
                 })
             .bad({256, INT32_MAX}, vekStsErrOutOfRange)}),
};

}  // namespace
}  // namespace catalogue
