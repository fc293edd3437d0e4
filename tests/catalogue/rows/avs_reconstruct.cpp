// Rows of AVS dequantization, transform, intra prediction and reconstruction.
#include "catalogue.h"

namespace catalogue {
namespace {

Argument qp(const char* name, int most) {
    return range(name, 0, most).bad({-1, most + 1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange);
}
// Few values, mostly small: levels or coefficients.
std::int64_t sparse(Random& random, int size) {
    if (random() % 60 == 0) return draw(random, -32768, 32767);
    return random() % 4 == 0 ? draw(random, -size, size) : 0;
}
Argument coefficients(int size) {
    return inOut<Vek16s>("pSrcDst", count(64)).of([=](Random& random, const Call&) { return sparse(random, size); });
}
Argument levels(const char* name, Extent extent) {
    return in<Vek16s>(name, std::move(extent)).of([](Random& random, const Call&) { return sparse(random, 20); });
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiQuantInv8x8_AVS_16s_C1I", &vekiQuantInv8x8_AVS_16s_C1I, {coefficients(20), qp("QP", 63)}),
    row("vekiTransform8x8Inv_AVS_16s_C1I", &vekiTransform8x8Inv_AVS_16s_C1I, {coefficients(1500)}),
    row("vekiReconstruct8x8_AVS_16s8u_C1IR", &vekiReconstruct8x8_AVS_16s8u_C1IR,
        {levels("pCoeffs", count(64)), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst"), qp("QP", 63)}),
};

}  // namespace
}  // namespace catalogue
