// Rows of the 8x8 DCTs.
#include <cstring>

#include "catalogue.h"

namespace catalogue {
namespace {

// Values in a style of the whole block: noise of any size, extremes, few of low frequency, the first alone, those whose
// sum is often a tie, and as many as a coded block has, which decay with the frequency.
std::int64_t valueOf(Random& random, std::int64_t style, int i) {
    const int u = i % 8, v = i / 8;
    switch (style % 8) {
        case 0:
            return draw(random, -32768, 32767);
        case 1:
            return random() % 2 == 0 ? -32768 : 32767;
        case 2:
            return u + v < 4 && random() % 3 == 0 ? draw(random, -60, 60) : 0;
        case 3:
            return i == 0 ? draw(random, -32768, 32767) : 0;
        case 4:
            return ((u | v) & 3) == 0 ? draw(random, -40, 40) : 0;
        case 5:
            return draw(random, -255, 255);
        default: {
            const int most = 800 / (1 + u + v) / (1 + u + v);
            return random() % (1 + static_cast<unsigned>(u + v)) < 2 ? draw(random, -most, most) : 0;
        }
    }
}
void fillBlock(Random& random, const Call&, void* samples, int count) {
    const auto style = static_cast<std::int64_t>(random() % 8);
    for (int i = 0; i < count; ++i) {
        const auto value = static_cast<Vek16s>(valueOf(random, style, i));
        std::memcpy(static_cast<std::byte*>(samples) + 2 * i, &value, 2);
    }
}
// The same, sample by sample, for blocks with a step.
Argument styled(Argument a) {
    return a.seeded("style").of([](Random& random, const Call& c) {
        return c["style"] % 4 == 0 ? draw(random, 0, 255) : valueOf(random, c["style"] / 4 % 2 == 0 ? 5 : 0, 1);
    });
}
Argument coefficients(const char* name) { return in<Vek16s>(name, count(64)).filled(fillBlock); }
// Up to the last value of the corner; those between its rows are noise too and count for nothing.
Argument corner(int n) { return in<Vek16s>("pSrc", count(9 * n - 8)).filled(fillBlock); }

std::vector<Argument> toBlock(Argument dst) { return {coefficients("pSrc"), std::move(dst), step("pDst")}; }

[[maybe_unused]] const bool kRows[] = {
    row("vekiDCT8x8Fwd_16s_C1", &vekiDCT8x8Fwd_16s_C1, {coefficients("pSrc"), out<Vek16s>("pDst", count(64))}),
    row("vekiDCT8x8Fwd_16s_C1I", &vekiDCT8x8Fwd_16s_C1I, {inOut<Vek16s>("pSrcDst", count(64)).filled(fillBlock)}),
    row("vekiDCT8x8Fwd_16s_C1R", &vekiDCT8x8Fwd_16s_C1R,
        {styled(in<Vek16s>("pSrc", block(8, 8))), step("pSrc"), out<Vek16s>("pDst", count(64))}),
    row("vekiDCT8x8Fwd_8u16s_C1R", &vekiDCT8x8Fwd_8u16s_C1R,
        {in<Vek8u>("pSrc", block(8, 8)), step("pSrc"), out<Vek16s>("pDst", count(64))}),
    row("vekiDCT8x8Inv_16s_C1", &vekiDCT8x8Inv_16s_C1, {coefficients("pSrc"), out<Vek16s>("pDst", count(64))}),
    row("vekiDCT8x8Inv_16s_C1I", &vekiDCT8x8Inv_16s_C1I, {inOut<Vek16s>("pSrcDst", count(64)).filled(fillBlock)}),
    row("vekiDCT8x8Inv_16s_C1R", &vekiDCT8x8Inv_16s_C1R, toBlock(out<Vek16s>("pDst", block(8, 8)))),
    row("vekiDCT8x8Inv_16s8u_C1R", &vekiDCT8x8Inv_16s8u_C1R, toBlock(out<Vek8u>("pDst", block(8, 8)))),
    row("vekiDCT8x8InvAdd_16s8u_C1IR", &vekiDCT8x8InvAdd_16s8u_C1IR,
        {coefficients("pSrc"), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst")}),
    row("vekiDCT8x8InvNZ4x4_16s_C1I", &vekiDCT8x8InvNZ4x4_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(64)).filled(fillBlock)}),
    row("vekiDCT8x8InvNZ2x2_16s_C1I", &vekiDCT8x8InvNZ2x2_16s_C1I,
        {inOut<Vek16s>("pSrcDst", count(64)).filled(fillBlock)}),
    row("vekiDCT8x8InvNZ4x4_16s8u_C1R", &vekiDCT8x8InvNZ4x4_16s8u_C1R,
        {corner(4), out<Vek8u>("pDst", block(8, 8)), step("pDst")}),
    row("vekiDCT8x8InvNZ2x2_16s8u_C1R", &vekiDCT8x8InvNZ2x2_16s8u_C1R,
        {corner(2), out<Vek8u>("pDst", block(8, 8)), step("pDst")}),
    row("vekiDCT8x8InvAddNZ4x4_16s8u_C1IR", &vekiDCT8x8InvAddNZ4x4_16s8u_C1IR,
        {corner(4), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst")}),
    row("vekiDCT8x8InvAddNZ2x2_16s8u_C1IR", &vekiDCT8x8InvAddNZ2x2_16s8u_C1IR,
        {corner(2), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst")}),
    row("vekiDCT8x8Inv_AANTransposed_16s_C1R", &vekiDCT8x8Inv_AANTransposed_16s_C1R,
        {coefficients("pSrc"), out<Vek16s>("pDst", block(8, 8)), step("pDst").atLeast(16)}),
    row("vekiDCT8x8Inv_AANTransposed_16s8u_C1R", &vekiDCT8x8Inv_AANTransposed_16s8u_C1R,
        {coefficients("pSrc"), out<Vek8u>("pDst", block(8, 8)), step("pDst").atLeast(8)}),
    row("vekiDCT8x8Inv_AANTransposed_16s8u_P2C2R", &vekiDCT8x8Inv_AANTransposed_16s8u_P2C2R,
        {coefficients("pSrcU"), coefficients("pSrcV"), out<Vek8u>("pDst", block(16, 8)), step("pDst").atLeast(16)}),
};

}  // namespace
}  // namespace catalogue
