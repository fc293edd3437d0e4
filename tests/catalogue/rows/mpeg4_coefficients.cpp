// Rows of the coefficient decoders and writers of MPEG-4, H.263 and H.261. Streams follow a seed. Most hold one valid
// block and end with the seven bytes that a reader may look at; a few are damaged or noise.
#include <cstring>

#include "../../support/mpeg4.h"
#include "catalogue.h"
#include "mpeg4_quantizer_buffers.h"

namespace catalogue {
namespace {

using namespace vekvc_test;
using enum Mpeg4Coding::Syntax;

std::string noiseBits(Random& random, std::size_t n) {
    std::string bits;
    const bool sparse = random() % 2 == 0;
    for (std::size_t i = 0; i < n; ++i) bits += (random() & (sparse ? random() : ~0ull)) % 2 != 0 ? '1' : '0';
    return bits;
}

// The most bits that a reader may ask for before it sees a fault: twice 64 codes of at most 33 bits.
constexpr std::size_t kLongestFault = 2 * 64 * 33;

struct Block {
    Mpeg4Coding coding;
    int start;
};
using Kind = Block (*)(const Call&);

struct Stream {
    std::vector<Vek8u> bytes;
    Vek32s offset;
};

Stream finish(Random& random, const std::string& bits) {
    const auto offset = static_cast<Vek32s>(random() % 8);
    Stream stream{packBytes(noiseBits(random, static_cast<std::size_t>(offset)) + bits, random() % 2 == 0 ? '0' : '1'),
                  offset};
    for (int i = 0; i < 7; ++i) stream.bytes.push_back(static_cast<Vek8u>(random() % 3 == 0 ? 0 : random()));
    return stream;
}

template <Kind kind>
Stream blockStream(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    const auto what = random() % 16;
    if (what == 0) return finish(random, noiseBits(random, kLongestFault));
    const Block block = kind(c);
    const auto pairs = randomMpeg4Pairs(random, block.start, block.coding.largestLevel());
    std::string bits = what < 4 ? mpeg4BlockAnyWay(block.coding, pairs, random) : mpeg4Block(block.coding, pairs);
    if (what == 1) {
        bits[random() % bits.size()] ^= 1;
        bits += noiseBits(random, kLongestFault);
    }
    return finish(random, bits);
}

template <Kind kind>
Stream reconstructStream(const Call& c) {  // with a DC in front
    Random random(static_cast<std::uint64_t>(c["stream"]));
    const Block block = kind(c);
    BitWriter bits;
    bits.put(random() % 20 == 0 ? 128 * (random() % 2) : 1 + random() % 127 + 128 * (random() % 2), 8);
    if (block.coding.isH261() || c["codedFlag"] != 0)
        bits.put(mpeg4Block(block.coding, randomMpeg4Pairs(random, block.start, block.coding.largestLevel())));
    return finish(random, bits.bits);
}

Stream dcStream(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    BitWriter bits;
    if (random() % 4 == 0) bits.put(0, static_cast<int>(random() % 13));
    bits.put(noiseBits(random, 12 + 12 + 1));
    return finish(random, bits.bits);
}

using Maker = Stream (*)(const Call&);
Argument streamOf(Maker make) {
    return in<Vek8u>("ppBitStream",
                     [=](const Call& c) {
                         return Rect{0, 0, static_cast<int>(make(c).bytes.size()), 1};
                     })
        .seeded("stream")
        .movedOn()
        .filled([=](Random&, const Call& c, void* samples, int n) {
            std::memcpy(samples, make(c).bytes.data(), static_cast<std::size_t>(n));
        });
}
Argument offsetOf(Maker make) {
    return inOut<Vek32s>("pBitOffset", count(1)).of([=](Random&, const Call& c) { return make(c).offset; });
}

// ---- decoding

std::vector<Argument> decode(Maker make, std::vector<Argument> more, int start = 0) {
    std::vector<Argument> arguments = {streamOf(make), offsetOf(make),
                                       inOut<Vek16s>("pDstBlock", rect(start, 0, 64, 1)),
                                       inOut<Vek32s>("pIndxLastNonZero", count(1))};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
std::vector<Argument> decodeDc(std::vector<Argument> more = {}) {
    std::vector<Argument> arguments = {streamOf(dcStream), offsetOf(dcStream), inOut<Vek16s>("pDC", count(1))};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
Argument qp() { return range("QP", 1, 31).bad({0, 32, -1, INT32_MIN, INT32_MAX}, vekStsErrQPRange); }
Argument flag(const char* name) { return oneOf(name, {0, 1, 0, 2, -1}); }

// Positions 1 to 63 alone are touched where decoding begins at index 1.
Extent blockBehindDc() {
    return [](const Call& c) { return Rect{c["noDCFlag"] != 0 ? 1 : 0, 0, 64, 1}; };
}
std::vector<Argument> decodeIntra(Maker make) {
    auto arguments = decode(make, {flag("noDCFlag"), anyInt("scan")});
    arguments[2] = inOut<Vek16s>("pDstBlock", blockBehindDc());
    return arguments;
}

template <Mpeg4Coding::Syntax syntax, Mpeg4Table table>
Block intraOf(const Call& c) {
    return {{syntax, table}, c["noDCFlag"] != 0 ? 1 : 0};
}
template <Mpeg4Coding::Syntax syntax, Mpeg4Table table, int start>
Block blockOf(const Call&) {
    return {{syntax, table}, start};
}
Block intraOfH263(const Call& c) {
    const bool advanced = c["advIntraFlag"] != 0;
    return {{h263, advanced ? Mpeg4Table::advancedIntra : Mpeg4Table::inter, c["modQuantFlag"] != 0}, advanced ? 0 : 1};
}
template <int start>
Block ofH263(const Call& c) {
    return {{h263, Mpeg4Table::inter, c["modQuantFlag"] != 0}, start};
}
Block alternativeOfH263(const Call& c) {
    const bool other = c["stream"] % 3 == 0;
    return {{h263, other ? Mpeg4Table::advancedIntra : Mpeg4Table::inter, c["modQuantFlag"] != 0}, 0};
}
std::vector<Argument> decodeIntraH263() {
    auto arguments = decode(blockStream<intraOfH263>, {flag("advIntraFlag"), flag("modQuantFlag"), anyInt("scan")});
    arguments[2] = inOut<Vek16s>("pDstBlock", [](const Call& c) {
        return Rect{c["advIntraFlag"] != 0 ? 0 : 1, 0, 64, 1};
    });
    return arguments;
}

// ---- backward decoding

struct Backward {
    std::vector<Vek8u> bytes;  // those that hold the last numBits bits before the cursor
    int pointer;               // the cursor's byte among them, possibly behind them
    Vek32s offset;
    Vek32s numBits;
};

template <Mpeg4Table table>
Backward backward(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    const Mpeg4Coding coding{Mpeg4Coding::reversible, table};
    std::string bits;
    const auto what = random() % 12;
    if (what == 0) {
        bits = noiseBits(random, 64 * 30);
    } else {
        for (unsigned blocks = 1 + static_cast<unsigned>(random() % 3); blocks > 0; --blocks)
            bits += what < 4 ? mpeg4BlockAnyWay(coding, randomMpeg4Pairs(random, 1, 2047), random)
                             : mpeg4Block(coding, randomMpeg4Pairs(random, 1, 2047));
        if (what == 1) bits[random() % bits.size()] ^= 1;
    }
    const auto numBits = what == 2 ? 1 + random() % bits.size() : bits.size();
    bits = noiseBits(random, random() % 8) + bits;
    const std::size_t total = bits.size(), first = (total - numBits) / 8;
    const auto all = packBytes(bits, '1');
    return {{all.begin() + static_cast<std::ptrdiff_t>(first), all.end()},
            static_cast<int>(total / 8 - first),
            static_cast<Vek32s>(total % 8),
            static_cast<Vek32s>(numBits)};
}

template <Mpeg4Table table>
std::vector<Argument> decodeBackward(bool intra) {
    std::vector<Argument> arguments = {
        in<Vek8u>("ppBitStream",
                  [](const Call& c) {
                      const Backward b = backward<table>(c);
                      return Rect{-b.pointer, 0, static_cast<int>(b.bytes.size()) - b.pointer, 1};
                  })
            .seeded("stream")
            .movedOn()
            .filled([](Random&, const Call& c, void* samples, int n) {
                std::memcpy(samples, backward<table>(c).bytes.data(), static_cast<std::size_t>(n));
            }),
        inOut<Vek32s>("pBitOffset", count(1)).of([](Random&, const Call& c) { return backward<table>(c).offset; }),
        integer("numBits", [](Random&, const Call& c) { return backward<table>(c).numBits; })
            .bad({0, -1, INT32_MIN}, vekStsErrSize),
        intra ? inOut<Vek16s>("pDstBlock", blockBehindDc()) : inOut<Vek16s>("pDstBlock", count(64)),
        inOut<Vek32s>("pIndxLastNonZero", count(1))};
    if (intra) arguments.push_back(flag("noDCFlag"));
    arguments.push_back(anyInt("scan"));
    return arguments;
}

// ---- writing

struct Source {
    Vek16s block[64];  // raster order
    Vek32s offset;
    std::size_t bits;
};

template <Kind kind>
Source source(const Call& c, Vek32s scan) {
    Random random(static_cast<std::uint64_t>(c["block"]));
    const Block what = kind(c);
    Source s = {};
    s.offset = static_cast<Vek32s>(random() % 8);
    Vek16s levels[64] = {};
    if (random() % 12 != 0) {
        const bool beyond = random() % 12 == 0;  // levels that the writer limits
        int i = what.start - 1;
        for (const auto [run, level] :
             randomMpeg4Pairs(random, what.start, beyond ? 32767 : what.coding.largestLevel()))
            levels[i += run + 1] = static_cast<Vek16s>(level);
    }
    if (what.start == 1) levels[0] = static_cast<Vek16s>(random() % 256);
    vekiScanInv_16s_C1(levels, s.block, 63, scan);
    std::vector<Mpeg4Pair> pairs;
    for (int i = what.start, run = 0; i < 64; ++i, ++run) {
        if (levels[i] == 0) continue;
        const int largest = what.coding.largestLevel();
        pairs.push_back({run, std::clamp<int>(levels[i], -largest, largest)});
        run = -1;
    }
    s.bits = mpeg4Block(what.coding, pairs).size();
    return s;
}

Extent written(std::function<Source(const Call&)> make) {
    return [=](const Call& c) {
        const Source s = make(c);
        const auto bytes = s.bits == 0 ? 0 : (static_cast<std::size_t>(s.offset) + s.bits + 7) / 8;
        return Rect{0, 0, static_cast<int>(bytes), 1};
    };
}

template <Kind kind>
std::vector<Argument> encode(std::vector<Argument> more, std::function<Vek32s(const Call&)> scan) {
    const auto make = [=](const Call& c) { return source<kind>(c, scan(c)); };
    std::vector<Argument> arguments = {
        inOut<Vek8u>("ppBitStream", written(make)).seeded("block").movedOn(),
        inOut<Vek32s>("pBitOffset", count(1)).of([=](Random&, const Call& c) { return make(c).offset; }),
        in<Vek16s>("pSrcBlock", count(64)).filled([=](Random&, const Call& c, void* samples, int) {
            std::memcpy(samples, make(c).block, sizeof Source::block);
        })};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
Vek32s scanArgument(const Call& c) { return static_cast<Vek32s>(c["scan"]); }
Vek32s zigzag(const Call&) { return 0; }
Vek32s scanOfH263(const Call& c) { return c["advIntraFlag"] != 0 ? scanArgument(c) : 0; }

// A DC takes at most 12 + 12 + 1 bits; how many this one takes is a matter of the known answers.
std::vector<Argument> encodeDc(int low, int high, std::vector<Argument> more) {
    std::vector<Argument> arguments = {
        inOut<Vek8u>("ppBitStream", count(4)).movedOn(), inOut<Vek32s>("pBitOffset", count(1)).of(0, 7),
        range("dc", low, high).bad({low - 1, high + 1, -32768, 32767}, vekStsErrOutOfRange)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

constexpr Kind kIntra = intraOf<Mpeg4Coding::mpeg4, Mpeg4Table::intra>,
               kInter = blockOf<Mpeg4Coding::mpeg4, Mpeg4Table::inter, 0>,
               kIntraRvlc = intraOf<Mpeg4Coding::reversible, Mpeg4Table::reversibleIntra>,
               kInterRvlc = blockOf<Mpeg4Coding::reversible, Mpeg4Table::reversibleInter, 0>,
               kIntraH261 = blockOf<Mpeg4Coding::h261Intra, Mpeg4Table::h261, 1>,
               kInterH261 = blockOf<Mpeg4Coding::h261Inter, Mpeg4Table::h261, 0>;

[[maybe_unused]] const bool kRows[] = {
    row("vekiDecodeDCIntra_MPEG4_1u16s", &vekiDecodeDCIntra_MPEG4_1u16s, decodeDc({flag("videoComp")})),
    row("vekiDecodeDCIntra_H263_1u16s", &vekiDecodeDCIntra_H263_1u16s, decodeDc()),
    row("vekiDecodeCoeffsIntra_MPEG4_1u16s", &vekiDecodeCoeffsIntra_MPEG4_1u16s, decodeIntra(blockStream<kIntra>)),
    row("vekiDecodeCoeffsInter_MPEG4_1u16s", &vekiDecodeCoeffsInter_MPEG4_1u16s,
        decode(blockStream<kInter>, {anyInt("scan")})),
    row("vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s", &vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s,
        decodeIntra(blockStream<kIntraRvlc>)),
    row("vekiDecodeCoeffsInterRVLC_MPEG4_1u16s", &vekiDecodeCoeffsInterRVLC_MPEG4_1u16s,
        decode(blockStream<kInterRvlc>, {anyInt("scan")})),
    row("vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s", &vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s,
        decodeBackward<Mpeg4Table::reversibleIntra>(true)),
    row("vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s", &vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s,
        decodeBackward<Mpeg4Table::reversibleInter>(false)),
    row("vekiDecodeCoeffsIntra_H263_1u16s", &vekiDecodeCoeffsIntra_H263_1u16s, decodeIntraH263()),
    row("vekiDecodeCoeffsInter_H263_1u16s", &vekiDecodeCoeffsInter_H263_1u16s,
        decode(blockStream<alternativeOfH263>, {flag("altVLCFlag"), flag("modQuantFlag")})),
    row("vekiDecodeCoeffsIntra_H261_1u16s", &vekiDecodeCoeffsIntra_H261_1u16s, decode(blockStream<kIntraH261>, {}, 1)),
    row("vekiDecodeCoeffsInter_H261_1u16s", &vekiDecodeCoeffsInter_H261_1u16s, decode(blockStream<kInterH261>, {})),

    specificationRow<vekiQuantInvInterInit_MPEG4, 4>(
        "vekiReconstructDCTBlockInter_MPEG4_1u16s", &vekiReconstructDCTBlockInter_MPEG4_1u16s,
        decode(blockStream<kInter>, {mpeg4SpecificationNumber(), mpeg4Qp(), anyInt("scan")})),
    row("vekiReconstructDCTBlockIntra_H263_1u16s", &vekiReconstructDCTBlockIntra_H263_1u16s,
        decode(reconstructStream<ofH263<1>>, {flag("codedFlag"), flag("modQuantFlag"), qp()})),
    row("vekiReconstructDCTBlockInter_H263_1u16s", &vekiReconstructDCTBlockInter_H263_1u16s,
        decode(blockStream<alternativeOfH263>, {flag("altVLCFlag"), flag("modQuantFlag"), qp()})),
    row("vekiReconstructDCTBlockIntra_H261_1u16s", &vekiReconstructDCTBlockIntra_H261_1u16s,
        decode(reconstructStream<kIntraH261>, {qp()})),
    row("vekiReconstructDCTBlockInter_H261_1u16s", &vekiReconstructDCTBlockInter_H261_1u16s,
        decode(blockStream<kInterH261>, {qp()})),

    row("vekiEncodeDCIntra_MPEG4_16s1u", &vekiEncodeDCIntra_MPEG4_16s1u, encodeDc(-4095, 4095, {flag("videoComp")})),
    row("vekiEncodeDCIntra_H263_16s1u", &vekiEncodeDCIntra_H263_16s1u, encodeDc(1, 254, {})),
    row("vekiEncodeCoeffsIntra_MPEG4_16s1u", &vekiEncodeCoeffsIntra_MPEG4_16s1u,
        encode<kIntra>({flag("noDCFlag"), anyInt("scan")}, scanArgument)),
    row("vekiEncodeCoeffsInter_MPEG4_16s1u", &vekiEncodeCoeffsInter_MPEG4_16s1u,
        encode<kInter>({anyInt("scan")}, scanArgument)),
    row("vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u", &vekiEncodeCoeffsIntraRVLC_MPEG4_16s1u,
        encode<kIntraRvlc>({flag("noDCFlag"), anyInt("scan")}, scanArgument)),
    row("vekiEncodeCoeffsInterRVLC_MPEG4_16s1u", &vekiEncodeCoeffsInterRVLC_MPEG4_16s1u,
        encode<kInterRvlc>({anyInt("scan")}, scanArgument)),
    row("vekiEncodeCoeffsIntra_H263_16s1u", &vekiEncodeCoeffsIntra_H263_16s1u,
        encode<intraOfH263>({flag("advIntraFlag"), flag("modQuantFlag"), anyInt("scan")}, scanOfH263)),
    row("vekiEncodeCoeffsInter_H263_16s1u", &vekiEncodeCoeffsInter_H263_16s1u,
        encode<ofH263<0>>({flag("modQuantFlag")}, zigzag)),
    row("vekiEncodeCoeffsIntra_H261_16s1u", &vekiEncodeCoeffsIntra_H261_16s1u, encode<kIntraH261>({}, zigzag)),
    row("vekiEncodeCoeffsInter_H261_16s1u", &vekiEncodeCoeffsInter_H261_16s1u, encode<kInterH261>({}, zigzag)),
};

}  // namespace
}  // namespace catalogue
