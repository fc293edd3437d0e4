// Rows of AVS dequantization, transform, intra prediction and reconstruction.
#include <cstring>

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

// ---- neighbours

constexpr int kAbove = 1, kLeft = 2, kAboveLeft = 32, kAboveRight = 64, kBelowLeft = 128;

int lumaNeeds(std::int64_t mode) {
    return mode == 0 ? kAbove : mode == 1 ? kLeft : mode == 3 ? 3 : mode == 4 ? 3 | kAboveLeft : 0;
}
int chromaNeeds(std::int64_t mode) { return mode == 1 ? kLeft : mode == 2 ? kAbove : mode == 3 ? 3 | kAboveLeft : 0; }

// Any neighbours that the mode can do with.
Argument availability(int (*needs)(std::int64_t)) {
    return integer("availability", [=](Random& random, const Call& c) {
        return static_cast<std::int64_t>((random() & 0xFFFFFFFF) | static_cast<unsigned>(needs(c["predMode"])));
    });
}
// A block of the picture with the neighbours that the mode reads; DC reads one sample beyond the ends.
Extent lumaBlock() {
    return [](const Call& c) {
        const auto mode = c["predMode"], a = c["availability"];
        const bool above = (a & kAbove) != 0 && mode != 1, left = (a & kLeft) != 0 && mode != 0;
        const int further = mode == 2 ? 1 : mode == 3 ? 8 : 0;
        return Rect{left ? -1 : 0, above ? -1 : 0, above && (a & kAboveRight) != 0 ? 8 + further : 8,
                    left && (a & kBelowLeft) != 0 ? 8 + further : 8};
    };
}
Extent chromaBlock() {
    return [](const Call& c) {
        const auto mode = c["predMode"], a = c["availability"];
        const bool above = (a & kAbove) != 0 && mode != 1, left = (a & kLeft) != 0 && mode != 2;
        return Rect{left ? -1 : 0, above ? -1 : 0, mode == 0 && above && (a & kAboveRight) != 0 ? 9 : 8, 8};
    };
}
Argument picture(const char* name, Extent touched, int size) {
    return inOut<Vek8u>(name, std::move(touched)).writes(block(size, size));
}

// ---- macroblocks: neighbours and modes follow a seed

struct LumaModes {
    Vek32u availability;
    Vek32u modes[4];
};
LumaModes lumaModes(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["modes"]));
    LumaModes m = {};
    m.availability = static_cast<Vek32u>(random());
    if (random() % 3 == 0) m.availability |= 3 | kAboveLeft;
    const auto above = (m.availability & kAbove) != 0, left = (m.availability & kLeft) != 0;
    for (int k = 0; k < 4; ++k) {
        const bool hasAbove = k > 1 || above, hasLeft = k % 2 == 1 || left;
        const bool corner = k == 0   ? above && left && (m.availability & kAboveLeft) != 0
                            : k == 1 ? above
                            : k == 2 ? left
                                     : true;
        const int has = (hasAbove ? kAbove : 0) | (hasLeft ? kLeft : 0) | (corner ? kAboveLeft : 0);
        do m.modes[k] = static_cast<Vek32u>(random() % 5);
        while ((lumaNeeds(m.modes[k]) & ~has) != 0);
    }
    return m;
}
Rect macroblock(const Call& c) {
    const auto a = c["availability"];
    return {(a & kLeft) != 0 ? -1 : 0, (a & kAbove) != 0 ? -1 : 0, (a & 65) == 65 ? 24 : 16, 16};
}
int codedBlocks(const Call& c, int first, int count) {
    int n = 0;
    for (int k = first; k < first + count; ++k) n += static_cast<int>(c["cbp"] >> k & 1);
    return n;
}
Argument packed(int first, int last) {
    return levels("ppCoeffs", [=](const Call& c) { return Rect{0, 0, 64 * codedBlocks(c, first, last), 1}; }).movedOn();
}
Argument cbp() { return range("cbp", 0, 255); }

std::vector<Argument> predict(int mostModes, int (*needs)(std::int64_t), Extent touched) {
    return {picture("pSrcDst", std::move(touched), 8), step("pSrcDst"),
            range("predMode", 0, mostModes).bad({-1, mostModes + 1, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange),
            availability(needs)};
}
Argument pair(const char* name) { return inOut<Vek8u>(name, block(8, 8)); }

[[maybe_unused]] const bool kRows[] = {
    row("vekiQuantInv8x8_AVS_16s_C1I", &vekiQuantInv8x8_AVS_16s_C1I, {coefficients(20), qp("QP", 63)}),
    row("vekiTransform8x8Inv_AVS_16s_C1I", &vekiTransform8x8Inv_AVS_16s_C1I, {coefficients(1500)}),
    row("vekiReconstruct8x8_AVS_16s8u_C1IR", &vekiReconstruct8x8_AVS_16s8u_C1IR,
        {levels("pCoeffs", count(64)), inOut<Vek8u>("pSrcDst", block(8, 8)), step("pSrcDst"), qp("QP", 63)}),
    row("vekiPredictIntraLuma8x8_AVS_8u_C1IR", &vekiPredictIntraLuma8x8_AVS_8u_C1IR,
        predict(4, lumaNeeds, lumaBlock())),
    row("vekiPredictIntraChroma8x8_AVS_8u_C1IR", &vekiPredictIntraChroma8x8_AVS_8u_C1IR,
        predict(3, chromaNeeds, chromaBlock())),
    row("vekiReconstructLumaIntraMB_AVS_16s8u_C1R", &vekiReconstructLumaIntraMB_AVS_16s8u_C1R,
        {packed(0, 4), picture("pSrcDst", macroblock, 16), step("pSrcDst"),
         in<Vek32u>("pPredModes", count(4)).seeded("modes").filled([](Random&, const Call& c, void* samples, int) {
             const LumaModes m = lumaModes(c);
             std::memcpy(samples, m.modes, sizeof m.modes);
         }),
         cbp(), qp("QP", 63),
         integer("availability",
                 [](Random&, const Call& c) { return static_cast<std::int64_t>(lumaModes(c).availability); })}),
    row("vekiReconstructLumaInterMB_AVS_16s8u_C1R", &vekiReconstructLumaInterMB_AVS_16s8u_C1R,
        {packed(0, 4), inOut<Vek8u>("pSrcDst", block(16, 16)), step("pSrcDst"), cbp(), qp("QP", 63)}),
    row("vekiReconstructChromaIntraMB_AVS_16s8u_P2R", &vekiReconstructChromaIntraMB_AVS_16s8u_P2R,
        {packed(4, 2), picture("pSrcDstU", chromaBlock(), 8), picture("pSrcDstV", chromaBlock(), 8),
         step({"pSrcDstU", "pSrcDstV"}),
         range("predMode", 0, 3).bad({-1, 4, INT32_MIN, INT32_MAX}, vekStsErrOutOfRange), cbp(), qp("chromaQP", 51),
         availability(chromaNeeds)}),
    row("vekiReconstructChromaInterMB_AVS_16s8u_P2R", &vekiReconstructChromaInterMB_AVS_16s8u_P2R,
        {packed(4, 2), pair("pSrcDstU"), pair("pSrcDstV"), step({"pSrcDstU", "pSrcDstV"}), cbp(), qp("chromaQP", 51)}),
};

}  // namespace
}  // namespace catalogue
