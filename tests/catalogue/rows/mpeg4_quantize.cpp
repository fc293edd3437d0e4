// Rows of the quantizers of MPEG-4, H.263 and H.261 and of the prediction of intra coefficients.
#include "catalogue.h"
#include "mpeg4_quantizer_buffers.h"
#include "optional.h"

namespace catalogue {
namespace {

// Levels as in streams, now and then the largest for which the products are defined.
Argument levels() {
    return inOut<Vek16s>("pSrcDst", count(64)).of([](Random& random, const Call&) -> std::int64_t {
        const auto kind = random() % 8;
        return kind < 4 ? 0 : kind < 7 ? draw(random, -12, 12) : draw(random, -8191, 8191);
    });
}
// The formulas without a matrix hold for any level.
Argument anyLevels() {
    return inOut<Vek16s>("pSrcDst", count(64)).of([](Random& random, const Call&) -> std::int64_t {
        const auto kind = random() % 8;
        return kind < 4 ? 0 : kind < 7 ? draw(random, -200, 200) : draw(random, -32768, 32767);
    });
}
Argument coefficients() {
    return inOut<Vek16s>("pSrcDst", count(64)).of([](Random& random, const Call&) -> std::int64_t {
        const auto kind = random() % 8;
        return kind < 5 ? draw(random, -60, 60) : kind < 7 ? draw(random, -2048, 2047) : draw(random, -32768, 32767);
    });
}
Argument pCount() { return inOut<Vek32s>("pCount", count(1)); }
Argument flag(const char* name) { return oneOf(name, {0, 1, 2, -1}); }
Argument qp() { return range("QP", 1, 31).bad({0, 32, -1, INT32_MIN, INT32_MAX}, vekStsErrQPRange); }
Argument wideQp(const char* name) {
    return integer(name, [](Random& random,
                            const Call&) { return random() % 2 == 0 ? draw(random, 1, 31) : draw(random, 1, 511); })
        .bad({0, 512, -1, INT32_MIN, INT32_MAX}, vekStsErrQPRange);
}
std::vector<Argument> getSize() { return {inOut<Vek32u>("pSpecSize", count(1))}; }
template <int size>
std::vector<Argument> init() {
    return {inOut<Vek8u>("pSpec", count(size)),
            in<Vek8u>("pQuantMatrix", whenGiven("pQuantMatrix", 64)).of(1, 255).nullable(),
            range("bitsPerPixel", 4, 12).bad({3, 13, -1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange)};
}
Argument neighbour(const char* name) { return in<Vek16s>(name, whenGiven(name, 8)).of(-2048, 2047).nullable(); }

[[maybe_unused]] const bool kRows[] = {
    row("vekiQuantIntraGetSize_MPEG4", &vekiQuantIntraGetSize_MPEG4, getSize()),
    row("vekiQuantInterGetSize_MPEG4", &vekiQuantInterGetSize_MPEG4, getSize()),
    row("vekiQuantInvIntraGetSize_MPEG4", &vekiQuantInvIntraGetSize_MPEG4, getSize()),
    row("vekiQuantInvInterGetSize_MPEG4", &vekiQuantInvInterGetSize_MPEG4, getSize()),
    optionalRow<1>("vekiQuantIntraInit_MPEG4", &vekiQuantIntraInit_MPEG4, init<412>()),
    optionalRow<1>("vekiQuantInterInit_MPEG4", &vekiQuantInterInit_MPEG4, init<412>()),
    optionalRow<1>("vekiQuantInvIntraInit_MPEG4", &vekiQuantInvIntraInit_MPEG4, init<156>()),
    optionalRow<1>("vekiQuantInvInterInit_MPEG4", &vekiQuantInvInterInit_MPEG4, init<156>()),

    specificationRow<vekiQuantIntraInit_MPEG4, 1>(
        "vekiQuantIntra_MPEG4_16s_C1I", &vekiQuantIntra_MPEG4_16s_C1I,
        {coefficients(), mpeg4SpecificationNumber(), mpeg4Qp(), flag("videoComp"), pCount()}),
    specificationRow<vekiQuantInterInit_MPEG4, 1>("vekiQuantInter_MPEG4_16s_C1I", &vekiQuantInter_MPEG4_16s_C1I,
                                                  {coefficients(), mpeg4SpecificationNumber(), mpeg4Qp(), pCount()}),
    specificationRow<vekiQuantInvIntraInit_MPEG4, 1>(
        "vekiQuantInvIntra_MPEG4_16s_C1I", &vekiQuantInvIntra_MPEG4_16s_C1I,
        {levels(), mpeg4SpecificationNumber(), mpeg4Qp(), flag("videoComp")}),
    specificationRow<vekiQuantInvInterInit_MPEG4, 1>("vekiQuantInvInter_MPEG4_16s_C1I",
                                                     &vekiQuantInvInter_MPEG4_16s_C1I,
                                                     {levels(), mpeg4SpecificationNumber(), mpeg4Qp()}),

    row("vekiQuantIntra_H263_16s_C1I", &vekiQuantIntra_H263_16s_C1I,
        {coefficients(), qp(), flag("advIntraFlag"), flag("modQuantFlag"), pCount()}),
    row("vekiQuantInter_H263_16s_C1I", &vekiQuantInter_H263_16s_C1I,
        {coefficients(), qp(), flag("modQuantFlag"), pCount()}),
    row("vekiQuantInvIntra_H263_16s_C1I", &vekiQuantInvIntra_H263_16s_C1I, {anyLevels(), qp(), flag("advIntraFlag")}),
    row("vekiQuantInvInter_H263_16s_C1I", &vekiQuantInvInter_H263_16s_C1I, {anyLevels(), qp()}),

    row("vekiPredictIntra_MPEG4_16s_C1I", &vekiPredictIntra_MPEG4_16s_C1I,
        {coefficients(), in<Vek16s>("pPred", count(8)).of([](Random& random, const Call&) -> std::int64_t {
             return random() % 4 != 0 ? draw(random, -60, 60) : draw(random, -32768, 32767);
         }),
         wideQp("predQP"), wideQp("QP"), flag("videoComp"), flag("predDir"), flag("acPredFlag")}),
    optionalRow<1, 2>("vekiPredictIntraAIC_H263_16s_C1I", &vekiPredictIntraAIC_H263_16s_C1I,
                      {coefficients(), neighbour("pLeft"), neighbour("pAbove"),
                       range("intraMode", 0, 2).bad({-1, 3, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange)}),
};

}  // namespace
}  // namespace catalogue
