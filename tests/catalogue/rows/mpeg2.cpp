// Rows of MPEG-1/MPEG-2: single codes, block decoders and writers, quantization. Streams follow a seed and end with the
// word behind the last bit that is consumed; some are noise.
#include <cstring>

#include "../../support/mpeg2.h"
#include "catalogue.h"

namespace catalogue {
namespace {

using namespace vekvc_test;

struct Stream {
    std::vector<Vek32u> words;
    Vek32s offset;
};

int geometric(Random& random, int most) {
    int n = 0;
    while (n < most && random() % 3 != 0) ++n;
    return n;
}

enum class Coded { value, pair, nonIntra, intra };

// Run/level codes and escapes until the block is full or ends.
void putCoefficients(BitWriter& bits, Random& random, bool first, bool mpeg2) {
    using namespace vekvc_tables;
    int i = first ? -1 : 0;
    while (random() % 12 != 0) {
        if (first && random() % 2 == 0) {
            bits.put(random() % 2 == 0 ? "10" : "11");
            ++i;
        } else if (random() % 10 == 0) {
            const int run = static_cast<int>(random() % 4);
            if (i + run + 1 > 63) break;
            bits.put(kDctEscape);
            bits.put(static_cast<unsigned>(run), 6);
            if (mpeg2) {
                bits.put(random(), 12);
            } else {
                const std::uint64_t level = random() % 3 == 0 ? random() % 2 * 128 : random() & 0xFF;
                bits.put(level, 8);
                if (level % 128 == 0) bits.put(random(), 8);
            }
            i += run + 1;
        } else {
            const bool common = random() % 4 == 0;
            const Code& code = common ? kDctCoefficientsBoth[random() % std::size(kDctCoefficientsBoth)]
                                      : kDctCoefficientsZero[random() % std::size(kDctCoefficientsZero)];
            if (first && code.bits[0] == '1') continue;  // would read as the short code
            if (i + code.value + 1 > 63) break;
            bits.put(code.bits);
            bits.put(random(), 1);
            i += code.value + 1;
        }
        first = false;
    }
    if (!first) bits.put(kDctEndOfBlock[0]);
    if (first) bits.put("1010");  // one coefficient and the end
}

template <Coded coded, bool mpeg2>
Stream stream(const Call& c) {
    using namespace vekvc_tables;
    Random random(static_cast<std::uint64_t>(c["stream"]));
    const auto offset = static_cast<Vek32s>(random() % 32);
    if (random() % 8 == 0) {
        std::vector<Vek32u> words(80);
        for (auto& word : words) word = static_cast<Vek32u>(random() % 3 == 0 ? random() & random() : random());
        return {words, offset};
    }
    BitWriter bits;
    const int size = geometric(random, 11);
    if (coded == Coded::value || coded == Coded::intra) bits.put(kDcSizeLuminanceCodes[size]);
    if (coded == Coded::pair) {
        const Code& code = kDctCoefficientsBoth[random() % std::size(kDctCoefficientsBoth)];
        bits.put(code.bits);
        bits.put(random(), 1);
    }
    if (coded == Coded::intra) bits.put(random(), size);
    if (coded == Coded::intra || coded == Coded::nonIntra)
        putCoefficients(bits, random, coded == Coded::nonIntra, mpeg2);
    return {bits.words(offset, random() % 2 == 0 ? '0' : '1'), offset};
}

using Maker = Stream (*)(const Call&);

Argument streamOf(Maker make) {
    return in<Vek32u>("ppBitStream",
                      [=](const Call& c) {
                          return Rect{0, 0, static_cast<int>(make(c).words.size()), 1};
                      })
        .seeded("stream")
        .movedOn()
        .filled([=](Random&, const Call& c, void* samples, int n) {
            std::memcpy(samples, make(c).words.data(), 4 * static_cast<std::size_t>(n));
        });
}
Argument offsetOf(Maker make) {
    return inOut<Vek32s>("pBitOffset", count(1)).of([=](Random&, const Call& c) { return make(c).offset; });
}
Argument table(const char* name, const void* p) {
    return fixed(name, [p] { return p; });
}
// A scan: a random order of the raster positions.
Argument scan() {
    return in<Vek32s>("pScanMatrix", count(64)).filled([](Random& random, const Call&, void* samples, int n) {
        Vek32s order[64];
        for (int i = 0; i < n; ++i) {
            const auto k = static_cast<int>(random() % (static_cast<unsigned>(i) + 1));
            order[i] = order[k];
            order[k] = i;
        }
        std::memcpy(samples, order, sizeof order);
    });
}
Argument scale() {
    return integer("QP", [](Random& random, const Call&) {
        return random() % 8 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, 1, 112);
    });
}

template <bool mpeg2>
std::vector<Argument> decodeNonIntra() {
    const void* ac = mpeg2Tables().coefficients[0];
    constexpr Maker make = stream<Coded::nonIntra, mpeg2>;
    return {streamOf(make),
            offsetOf(make),
            table("pFirstCoefTable", ac),
            table("pACTable", ac),
            scan(),
            scale(),
            in<Vek16s>("pQuantMatrix", count(64)),
            out<Vek16s>("pDstBlock", count(64)),
            inOut<Vek32s>("pDstSize", count(1))};
}

template <bool mpeg2>
std::vector<Argument> decodeIntra() {
    constexpr Maker make = stream<Coded::intra, mpeg2>;
    std::vector<Argument> arguments = {streamOf(make),
                                       offsetOf(make),
                                       table("pDCSizeTable", mpeg2Tables().dcSize),
                                       table("pACTable", mpeg2Tables().coefficients[0]),
                                       scan(),
                                       scale(),
                                       in<Vek16s>("pQuantMatrix", count(64)),
                                       inOut<Vek16s>("pDCPred", count(1))};
    if (mpeg2) arguments.push_back(range("shiftDCVal", 0, 16));
    arguments.push_back(out<Vek16s>("pDstBlock", count(64)));
    arguments.push_back(inOut<Vek32s>("pDstSize", count(1)));
    return arguments;
}

// ---- writers: 64 escapes of 24 bits are the most that a block takes

Argument levels() {
    return in<Vek16s>("pSrcBlock", count(64)).of([](Random& random, const Call&) -> std::int64_t {
        if (random() % 4 != 0) return 0;
        return random() % 16 == 0 ? draw(random, -2047, 2047) : (random() % 2 ? 1 : -1) * (1 + geometric(random, 40));
    });
}
Argument sink() { return inOut<Vek32u>("ppBitStream", count(54)).movedOn(); }
Argument cursor() { return inOut<Vek32s>("pBitOffset", count(1)).of(0, 31); }
std::vector<Argument> endOfBlock() { return {range("EOBLen", 0, 32), anyInt("EOBCode"), range("count", 0, 64)}; }
std::vector<Argument> join(std::vector<Argument> a, const std::vector<Argument>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<Argument> putIntra() {
    return join({sink(), cursor(), levels(), inOut<Vek32s>("pDCPred", count(1)).of(-2047, 2047),
                 // codes for the sizes of all differences, whatever they be
                 in<Vek32s>("pDCSizeCodes", count(26)).filled([](Random& random, const Call&, void* samples, int n) {
                     Vek32s codes[26];
                     for (int i = 0; i < n; i += 2) {
                         codes[i] = static_cast<Vek32s>(random());
                         codes[i + 1] = static_cast<Vek32s>(random() % 33);
                     }
                     std::memcpy(samples, codes, sizeof codes);
                 }),
                 table("pACTable", mpeg2Tables().encode[1]), scan()},
                endOfBlock());
}
std::vector<Argument> putNonIntra() {
    return join({sink(), cursor(), levels(), table("pACTable", mpeg2Tables().encode[0]), scan()}, endOfBlock());
}

// ---- quantization

Argument coefficients() { return inOut<Vek16s>("pSrcDst", count(64)); }
Argument forwardScale() { return scale().bad({0}, vekStsErrDivByZero); }
Argument reciprocals() {
    return in<Vek32f>("pQuantMatrix", count(64)).filled([](Random& random, const Call&, void* samples, int n) {
        Vek32f m[64];
        for (int i = 0; i < n; ++i) {
            m[i] = 1.0f / static_cast<Vek32f>(draw(random, 1, 255));
            if (random() % 64 == 0) m[i] *= random() % 2 == 0 ? 1e30f : -1e9f;
        }
        std::memcpy(samples, m, sizeof m);
    });
}
Argument weights() { return in<Vek16s>("pQuantMatrix", count(64)); }

[[maybe_unused]] const bool kRows[] = {
    row("vekiDecodeHuffmanOne_1u32s", &vekiDecodeHuffmanOne_1u32s,
        {streamOf(stream<Coded::value, true>), offsetOf(stream<Coded::value, true>), out<Vek32s>("pDst", count(1)),
         table("pDecodeTable", mpeg2Tables().dcSize)}),
    row("vekiDecodeHuffmanPair_1u16s", &vekiDecodeHuffmanPair_1u16s,
        {streamOf(stream<Coded::pair, true>), offsetOf(stream<Coded::pair, true>),
         table("pDecodeTable", mpeg2Tables().coefficients[0]), inOut<Vek8u>("pFirst", count(1)),
         inOut<Vek16s>("pSecond", count(1))}),
    row("vekiReconstructDCTBlock_MPEG1_32s", &vekiReconstructDCTBlock_MPEG1_32s, decodeNonIntra<false>()),
    row("vekiReconstructDCTBlock_MPEG2_32s", &vekiReconstructDCTBlock_MPEG2_32s, decodeNonIntra<true>()),
    row("vekiReconstructDCTBlockIntra_MPEG1_32s", &vekiReconstructDCTBlockIntra_MPEG1_32s, decodeIntra<false>()),
    row("vekiReconstructDCTBlockIntra_MPEG2_32s", &vekiReconstructDCTBlockIntra_MPEG2_32s, decodeIntra<true>()),
    row("vekiPutIntraBlock", &vekiPutIntraBlock, putIntra()),
    row("vekiPutNonIntraBlock", &vekiPutNonIntraBlock, putNonIntra()),
    row("vekiQuantIntra_MPEG2_16s_C1I", &vekiQuantIntra_MPEG2_16s_C1I,
        {coefficients(), forwardScale(), reciprocals().optional(), out<Vek32s>("pCount", count(1))}),
    row("vekiQuant_MPEG2_16s_C1I", &vekiQuant_MPEG2_16s_C1I,
        {coefficients(), forwardScale(), reciprocals().optional(), out<Vek32s>("pCount", count(1))}),
    row("vekiQuantInvIntra_MPEG2_16s_C1I", &vekiQuantInvIntra_MPEG2_16s_C1I, {coefficients(), scale(), weights()}),
    row("vekiQuantInv_MPEG2_16s_C1I", &vekiQuantInv_MPEG2_16s_C1I, {coefficients(), scale(), weights().optional()}),
};

}  // namespace
}  // namespace catalogue
