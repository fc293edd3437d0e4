// Rows of DV: segments follow a seed; half of them are written as an encoder does, the others are noise.
#include <cstring>

#include "../../support/dv.h"
#include "catalogue.h"

namespace catalogue {
namespace {

using namespace vekvc_test;

Argument segment(const DvKind& kind) {
    return in<Vek8u>("pSrc", count(400)).filled([&kind](Random& random, const Call&, void* samples, int n) {
        auto* bytes = static_cast<Vek8u*>(samples);
        const unsigned what = static_cast<unsigned>(random() % 8);
        if (what > 3) {
            std::memcpy(bytes, randomSegment(kind, random).bytes.data(), static_cast<std::size_t>(n));
            return;
        }
        for (int i = 0; i < n; ++i) {
            const auto noise = static_cast<Vek8u>(random());
            bytes[i] = what == 0 ? noise : static_cast<Vek8u>(what == 1 ? noise & random() : what == 2 ? 0 : 0xff);
        }
    });
}
std::vector<Argument> decode(const DvKind& kind, int blocks) {
    return {segment(kind), out<Vek16s>("pDst", count(64 * blocks)), out<Vek8u>("pInfo", count(8 * blocks)),
            fixed("pTable", [] { return dvTable(); })};
}

Extent blocksOf(int bytesOrSamples) {
    return [=](const Call& c) { return Rect{0, 0, bytesOrSamples * static_cast<int>(c["count"]), 1}; };
}
std::vector<Argument> quantInv() {
    return {inOut<Vek16s>("pSrcDst", blocksOf(64)).of(-255, 255), in<Vek8u>("pInfo", blocksOf(8)),
            range("count", 1, 9).bad({0, -1, INT32_MIN}, vekStsErrSize)};
}
std::vector<Argument> with(std::vector<Argument> arguments, std::vector<Argument> more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

Argument coefficients() {
    return inOut<Vek16s>("pSrcDst", count(64)).of([](Random& random, const Call&) -> std::int64_t {
        return random() % 3 == 0 ? draw(random, -2048, 2047) : random() % 20 == 0 ? draw(random, -32768, 32767) : 0;
    });
}

// Samples mostly near 8 bits, and the size of what is written.
std::vector<Argument> convert(int blocks, Extent written, std::vector<Argument> selectors) {
    return with({in<Vek16s>("pSrc", count(64 * blocks)).of([](Random& random, const Call&) {
                     return random() % 16 == 0 ? draw(random, -32768, 32767) : draw(random, -160, 160);
                 }),
                 out<Vek8u>("pDst", std::move(written)), step("pDst")},
                std::move(selectors));
}
Extent size(int width, int height) { return block(2 * width, height); }
Extent reduced(Extent whole) {
    return [whole = std::move(whole)](const Call& c) {
        const Rect r = whole(c);
        const int zoom = static_cast<int>(c["zoom"] & 3);
        return Rect{0, 0, r.right >> zoom, r.bottom >> zoom};
    };
}
Extent sizeOf411() {
    return [](const Call& c) { return (c["edge"] & 1) != 0 ? Rect{0, 0, 32, 16} : Rect{0, 0, 64, 8}; };
}
Extent sizeOf100() {
    return [](const Call& c) { return (c["layout"] & 2) == 0 ? Rect{0, 0, 32, 16} : Rect{0, 0, 64, 8}; };
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiDecodeCoeffsSegment_DV_1u16s", &vekiDecodeCoeffsSegment_DV_1u16s, decode(kDv, 30)),
    row("vekiDecodeCoeffsSegment422_DV_1u16s", &vekiDecodeCoeffsSegment422_DV_1u16s, decode(kDv422, 20)),
    row("vekiDecodeCoeffsSegment_DV100_1u16s", &vekiDecodeCoeffsSegment_DV100_1u16s, decode(kDv100, 40)),
    row("vekiQuantInv8x8xN_DV_16s_C1I", &vekiQuantInv8x8xN_DV_16s_C1I, quantInv()),
    row("vekiQuantInv8x8xN_DV100_16s_C1I", &vekiQuantInv8x8xN_DV100_16s_C1I, with(quantInv(), {anyInt("weightSet")})),
    row("vekiDCT8x8Inv248_DV_16s_C1I", &vekiDCT8x8Inv248_DV_16s_C1I, {coefficients()}),
    row("vekiDCT8x8Fwd248_DV_16s_C1I", &vekiDCT8x8Fwd248_DV_16s_C1I, {coefficients()}),
    row("vekiYCrCb411ToCbYCr422_DV_16s8u_C2R", &vekiYCrCb411ToCbYCr422_DV_16s8u_C2R,
        convert(6, sizeOf411(), {anyInt("edge")})),
    row("vekiYCrCb420ToCbYCr422_DV_16s8u_C2R", &vekiYCrCb420ToCbYCr422_DV_16s8u_C2R, convert(6, size(16, 16), {})),
    row("vekiYCrCb422ToCbYCr422_DV_16s8u_C2R", &vekiYCrCb422ToCbYCr422_DV_16s8u_C2R, convert(4, size(16, 8), {})),
    row("vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R", &vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R,
        convert(8, sizeOf100(), {anyInt("layout")})),
    row("vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R", &vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R,
        convert(6, reduced(sizeOf411()), {anyInt("edge"), anyInt("zoom")})),
    row("vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R", &vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R,
        convert(6, reduced(size(16, 16)), {anyInt("zoom")})),
    row("vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R", &vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R,
        convert(4, reduced(size(16, 8)), {anyInt("zoom")})),
    row("vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R", &vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R,
        convert(8, reduced(sizeOf100()), {anyInt("layout"), anyInt("zoom")})),
};

}  // namespace
}  // namespace catalogue
