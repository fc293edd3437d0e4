// Rows of AVS coefficient decoding. Streams follow a seed and end with the word behind the last bit that is consumed;
// some are noise.
#include <cstring>

#include "../../support/avs.h"
#include "catalogue.h"

namespace catalogue {
namespace {

using namespace vekvc_test;

struct Stream {
    std::vector<Vek32u> words;
    Vek32s offset;
};

Stream stream(const AvsGroup& group, const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    const auto offset = static_cast<Vek32s>(random() % 32);
    BitWriter bits;
    const auto kind = random() % 16;
    if (kind == 0) {
        std::vector<Vek32u> words(80);  // 64 codes of at most 17 bits and as many numbers
        for (auto& word : words) word = static_cast<Vek32u>(random() % 3 == 0 ? random() & random() : random());
        words.push_back(0), words.push_back(0);
        return {words, offset};
    }
    AvsBlockWriter writer(group, bits);
    for (const AvsPair pair : randomAvsPairs(random)) writer.put(pair);
    if (kind == 1) {  // one pair too many, or a code of the second table where a first one is read, and so on
        writer.put({static_cast<int>(random() % 64), 1});
        bits.bits[random() % bits.bits.size()] ^= 1;
        bits.put(0, 64);
    }
    writer.end();
    return {bits.words(offset, random() % 2 == 0 ? '0' : '1'), offset};
}

std::vector<Argument> decode(const AvsGroup& group) {
    return {
        in<Vek32u>("ppBitStream",
                   [&group](const Call& c) {
                       return Rect{0, 0, static_cast<int>(stream(group, c).words.size()), 1};
                   })
            .seeded("stream")
            .movedOn()
            .filled([&group](Random&, const Call& c, void* samples, int n) {
                std::memcpy(samples, stream(group, c).words.data(), 4 * static_cast<std::size_t>(n));
            }),
        inOut<Vek32s>("pBitOffset", count(1)).of([&group](Random&, const Call& c) { return stream(group, c).offset; }),
        inOut<Vek16s>("ppDstCoeffs", count(64)).movedOn(),
        range("scanMode", 0, 1).bad({-1, 2, INT32_MIN, INT32_MAX}, vekStsErrBadArg)};
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiDecodeCoeffsLumaIntra_AVS_1u16s", &vekiDecodeCoeffsLumaIntra_AVS_1u16s, decode(kAvsLumaIntra)),
    row("vekiDecodeCoeffsLumaInter_AVS_1u16s", &vekiDecodeCoeffsLumaInter_AVS_1u16s, decode(kAvsLumaInter)),
    row("vekiDecodeCoeffsChroma_AVS_1u16s", &vekiDecodeCoeffsChroma_AVS_1u16s, decode(kAvsChroma)),
};

}  // namespace
}  // namespace catalogue
