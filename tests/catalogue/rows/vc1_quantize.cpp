// Rows of VC-1 quantization and of the Hadamard sums.
#include "catalogue.h"

namespace catalogue {
namespace {

constexpr Vek32s kMin = INT32_MIN, kMax = INT32_MAX;

std::vector<Argument> dequantize() {
    std::vector<VekiSize> sizes;
    for (const int width : {4, 8})
        for (int height = 1; height <= 8; ++height) sizes.push_back({width, height});
    return {inOut<Vek16s>("pSrcDst", region("roiSize")), step("pSrcDst"),
            size("roiSize", sizes)
                .badSize({{0, 8}, {3, 8}, {5, 8}, {12, 8}, {-4, 8}, {8, 0}, {8, 9}, {4, -1}, {kMax, 4}, {4, kMin}},
                         vekStsErrSize),
            range("quant", 1, 31).bad({0, -1, 32, kMin, kMax}, vekStsErrOutOfRange), anyInt("halfStep")};
}
std::vector<Argument> quantize() {
    std::vector<Argument> a = dequantize();
    a.push_back(integer("offset", [](Random& random, const Call& c) {
                    return draw(random, 0, 2 * c["quant"] + (c["halfStep"] & 1) - 1);
                }).bad({-1, 63, kMin, kMax}, vekStsErrOutOfRange));
    a.push_back(out<Vek32s>("pCount", count(1)));
    return a;
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiQuantInvIntraUniform_VC1_16s_C1IR", &vekiQuantInvIntraUniform_VC1_16s_C1IR, dequantize()),
    row("vekiQuantInvIntraNonuniform_VC1_16s_C1IR", &vekiQuantInvIntraNonuniform_VC1_16s_C1IR, dequantize()),
    row("vekiQuantInvInterUniform_VC1_16s_C1IR", &vekiQuantInvInterUniform_VC1_16s_C1IR, dequantize()),
    row("vekiQuantInvInterNonuniform_VC1_16s_C1IR", &vekiQuantInvInterNonuniform_VC1_16s_C1IR, dequantize()),
    row("vekiQuantIntraUniform_VC1_16s_C1IR", &vekiQuantIntraUniform_VC1_16s_C1IR, quantize()),
    row("vekiQuantIntraNonuniform_VC1_16s_C1IR", &vekiQuantIntraNonuniform_VC1_16s_C1IR, quantize()),
    row("vekiQuantInterUniform_VC1_16s_C1IR", &vekiQuantInterUniform_VC1_16s_C1IR, quantize()),
    row("vekiQuantInterNonuniform_VC1_16s_C1IR", &vekiQuantInterNonuniform_VC1_16s_C1IR, quantize()),
    row("vekiHadamard8x8Sum_VC1_8u16s", &vekiHadamard8x8Sum_VC1_8u16s,
        {in<Vek8u>("pSrc", block(8, 8)), step("pSrc"), out<Vek16s>("pSum", count(1))}),
    row("vekiHadamard8x8Sum_VC1_16s", &vekiHadamard8x8Sum_VC1_16s,
        {in<Vek16s>("pSrc", block(8, 8)), step("pSrc"), out<Vek16s>("pSum", count(1))}),
};

}  // namespace
}  // namespace catalogue
