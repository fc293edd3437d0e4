// Rows of CAVLC and Exp-Golomb coding. Streams follow a seed: most hold one valid block or code and end with the word
// behind its last bit, so that any longer look ahead is seen; the others are noise.
#include <cstring>

#include "../../support/cavlc.h"
#include "catalogue.h"

namespace catalogue {
namespace {

using namespace vekvc_test;

struct Stream {
    std::vector<Vek32u> words;
    Vek32s offset;
};

Stream noise(Random& random) {
    Stream stream{std::vector<Vek32u>(100), static_cast<Vek32s>(random() % 32)};
    for (auto& word : stream.words) word = static_cast<Vek32u>(random() % 3 == 0 ? random() & random() : random());
    return stream;
}

Stream finish(const BitWriter& bits, Random& random) {
    const auto offset = static_cast<Vek32s>(random() % 32);
    return {bits.words(offset, random() % 2 == 0 ? '0' : '1'), offset};
}

int clampedGeometric(Random& random, int most) {
    int n = 0;
    while (n < most && random() % 3 == 0) n += 1 + static_cast<int>(random() % 3);
    return n < most ? n : most;
}

// The size of a level that is read with a suffix of suffixLength bits: often at the threshold of a longer suffix, on
// either side of it, or where the escape begins.
Vek32s drawLevelSize(Random& random, int suffixLength, int largest) {
    const Vek32s threshold = 3 << (suffixLength > 0 ? suffixLength - 1 : 0);
    const Vek32s escape = suffixLength > 0 ? 15 << suffixLength >> 1 : 7 + static_cast<Vek32s>(random() % 2) * 8;
    switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            return threshold + static_cast<Vek32s>(random() % 2);
        case 3:
            return escape - 1 + static_cast<Vek32s>(random() % 4);
        default:
            return 1 + clampedGeometric(random, largest - 1) * (largest > 12 ? largest / 12 : 1);
    }
}

// A block that is dense for a large nC, as in pictures.
CavlcSyntax drawBlock(Random& random, int nC, int maxNumCoeff) {
    CavlcSyntax s;
    int total = nC < 0 ? static_cast<int>(random() % (static_cast<unsigned>(maxNumCoeff) + 1))
                       : nC + static_cast<int>(random() % 5) - 2;
    total = total < 0 ? 0 : total > maxNumCoeff ? maxNumCoeff : total;
    s.totalCoeff = static_cast<Vek8u>(total);
    s.trailingOnes = static_cast<Vek8u>(random() % static_cast<unsigned>(total < 3 ? total + 1 : 4));
    s.signs = static_cast<Vek8u>(random() % (1u << s.trailingOnes));
    const int largest = random() % 16 == 0 ? 32767 : random() % 4 == 0 ? 300 : 12;
    int suffixLength = total > 10 && s.trailingOnes < 3 ? 1 : 0;
    for (int i = 0; i < total - s.trailingOnes; ++i) {
        Vek32s size = drawLevelSize(random, suffixLength, largest);
        if (i == 0 && s.trailingOnes < 3 && size == 1) size = 2;
        s.levels[i] = random() % 2 == 0 ? size : -size;
        suffixLength = suffixLengthBehind(suffixLength, size);
    }
    int zeros = total == 0 ? 0 : clampedGeometric(random, maxNumCoeff - total);
    s.totalZeros = static_cast<Vek8u>(zeros);
    for (int i = 0; i < total - 1; ++i) {
        const int run = zeros == 0 ? 0 : static_cast<int>(random() % (static_cast<unsigned>(zeros) + 1));
        s.runs[i] = static_cast<Vek8u>(run);
        zeros -= run;
    }
    return s;
}

using Maker = Stream (*)(const Call&);

template <CavlcBlock kind>
Stream blockStream(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    if (random() % 8 == 0) return noise(random);
    const int nC = kind == CavlcBlock::k4x4 ? static_cast<int>(c["nC"]) : -1;
    const int maxNumCoeff = kind == CavlcBlock::k2x2   ? 4
                            : kind == CavlcBlock::k2x4 ? 8
                                                       : static_cast<int>(c["maxNumCoeff"]);
    BitWriter bits;
    putCavlcBlock(bits, drawBlock(random, nC, maxNumCoeff), kind, nC, maxNumCoeff);
    return finish(bits, random);
}

Stream expGolombStream(const Call& c) {
    Random random(static_cast<std::uint64_t>(c["stream"]));
    if (random() % 8 == 0) return noise(random);
    BitWriter bits;
    const int zeros = random() % 4 == 0 ? static_cast<int>(random() % 33) : clampedGeometric(random, 8);
    bits.put(1, zeros + 1);
    bits.put(random(), zeros);
    return finish(bits, random);
}

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

template <class T>
Argument tables(const char* name, const T& array) {
    return fixed(name, [&array] { return static_cast<const void*>(array); });
}

template <class T>
std::vector<Argument> decode4x4() {
    constexpr Maker make = blockStream<CavlcBlock::k4x4>;
    return {streamOf(make),
            offsetOf(make),
            inOut<Vek16s>("pTotalCoeff", count(1)),
            inOut<T>("ppCoeffs", count(16)).movedOn(),
            range("nC", 0, 17).bad({-1, INT32_MIN}, vekStsErrOutOfRange),
            range("maxNumCoeff", 15, 16).bad({14, 17, 0, -16}, vekStsErrOutOfRange),
            tables("ppCoeffTokenTables", cavlcTables().coeffToken),
            tables("ppTotalZerosTables", cavlcTables().totalZeros4x4),
            tables("ppRunBeforeTables", cavlcTables().runBefore),
            in<Vek32s>("pScan", count(16)).filled([](Random& random, const Call&, void* samples, int n) {
                Vek32s scan[16];
                for (int i = 0; i < n; ++i) {
                    const auto k = static_cast<int>(random() % (static_cast<unsigned>(i) + 1));
                    scan[i] = scan[k];
                    scan[k] = i;
                }
                std::memcpy(samples, scan, sizeof scan);
            })};
}

template <class T, CavlcBlock kind>
std::vector<Argument> decodeChromaDc() {
    constexpr Maker make = blockStream<kind>;
    constexpr bool is2x2 = kind == CavlcBlock::k2x2;
    const CavlcDecodeTables& t = cavlcTables();
    return {streamOf(make),
            offsetOf(make),
            inOut<Vek16s>("pTotalCoeff", count(1)),
            inOut<T>("ppCoeffs", count(is2x2 ? 4 : 8)).movedOn(),
            fixed("pCoeffTokenTable", [&t] { return static_cast<const void*>(t.coeffToken[is2x2 ? 3 : 4]); }),
            is2x2 ? tables("ppTotalZerosTables", t.totalZeros2x2) : tables("ppTotalZerosTables", t.totalZeros2x4),
            tables("ppRunBeforeTables", t.runBefore)};
}

template <class T>
std::vector<Argument> expGolomb() {
    return {streamOf(expGolombStream), offsetOf(expGolombStream), inOut<T>("pDst", count(1)), range("isSigned", 0, 2)};
}

// ---- analysis

struct Levels {
    Vek32s level[16];  // raster order
    Vek32s scan[16];
    int others, runs;  // entries of pLevels and pRuns that are written
};

template <int size>
Levels drawLevels(const Call& c) {
    static constexpr int kOrder2x4[8] = {0, 2, 1, 4, 6, 3, 5, 7};
    Random random(static_cast<std::uint64_t>(c["levels"]));
    Levels l;
    const auto density = random() % 9;
    for (int i = 0; i < 16; ++i) {
        const Vek32s magnitude = random() % 16 == 0 ? 0x7FFF8000 : 1 + clampedGeometric(random, 60);
        l.level[i] = random() % 8 >= density ? 0 : random() % 2 == 0 ? magnitude : -magnitude;
        l.scan[i] = size == 4 ? i : size == 8 ? kOrder2x4[i % 8] : kZigzag4x4[random() % 2 == 0 ? i : (i * 7) % 16];
    }
    int total = 0, ones = 0;
    bool mayFollow = true;
    for (int k = size == 16 ? static_cast<int>(c["lastIdx"]) : size - 1; k >= (size == 16 ? c["startIdx"] : 0); --k) {
        const Vek32s level = l.level[l.scan[k]];
        if (level == 0) continue;
        ++total;
        mayFollow = mayFollow && (level == 1 || level == -1) && ones < 3;
        ones += mayFollow ? 1 : 0;
    }
    l.others = total - ones;
    l.runs = total > 0 ? total - 1 : 0;
    return l;
}

template <class T, int size>
std::vector<Argument> analysis() {
    const auto entries = [](int Levels::*n) {
        return [=](const Call& c) { return Rect{0, 0, drawLevels<size>(c).*n, 1}; };
    };
    const Argument src =
        in<T>("pSrc", count(size)).seeded("levels").filled([](Random&, const Call& c, void* samples, int n) {
            const Levels l = drawLevels<size>(c);
            for (int i = 0; i < n; ++i) {
                const auto level = static_cast<T>(l.level[i]);
                std::memcpy(static_cast<std::byte*>(samples) + static_cast<std::size_t>(i) * sizeof(T), &level,
                            sizeof(T));
            }
        });
    std::vector<Argument> arguments = {src};
    if (size == 16) {
        arguments.push_back(range("startIdx", 0, 15));
        arguments.push_back(in<Vek32s>("pScan", count(16)).filled([](Random&, const Call& c, void* samples, int) {
            std::memcpy(samples, drawLevels<size>(c).scan, sizeof(Levels::scan));
        }));
        arguments.push_back(integer("lastIdx", [](Random& random, const Call& c) {
                                return draw(random, c["startIdx"], 15);
                            }).bad({16, 255}, vekStsErrOutOfRange));
    }
    for (const char* name : {"pTrailingOnes", "pTrailingOneSigns", "pTotalCoeff", "pTotalZeros"})
        arguments.push_back(out<Vek8u>(name, count(1)));
    arguments.push_back(out<T>("pLevels", entries(&Levels::others)));
    arguments.push_back(out<Vek8u>("pRuns", entries(&Levels::runs)));
    return arguments;
}

[[maybe_unused]] const bool kRows[] = {
    row("vekiDecodeCAVLCCoeffs_H264_1u16s", &vekiDecodeCAVLCCoeffs_H264_1u16s, decode4x4<Vek16s>()),
    row("vekiDecodeCAVLCCoeffs_H264_1u32s", &vekiDecodeCAVLCCoeffs_H264_1u32s, decode4x4<Vek32s>()),
    row("vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s", &vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s,
        decodeChromaDc<Vek16s, CavlcBlock::k2x2>()),
    row("vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s", &vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s,
        decodeChromaDc<Vek32s, CavlcBlock::k2x2>()),
    row("vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s", &vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s,
        decodeChromaDc<Vek16s, CavlcBlock::k2x4>()),
    row("vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s", &vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s,
        decodeChromaDc<Vek32s, CavlcBlock::k2x4>()),
    row("vekiDecodeExpGolombOne_H264_1u16s", &vekiDecodeExpGolombOne_H264_1u16s, expGolomb<Vek16s>()),
    row("vekiDecodeExpGolombOne_H264_1u32s", &vekiDecodeExpGolombOne_H264_1u32s, expGolomb<Vek32s>()),
    row("vekiEncodeCoeffsCAVLC_H264_16s", &vekiEncodeCoeffsCAVLC_H264_16s, analysis<Vek16s, 16>()),
    row("vekiEncodeCoeffsCAVLC_H264_32s", &vekiEncodeCoeffsCAVLC_H264_32s, analysis<Vek32s, 16>()),
    row("vekiEncodeChromaDcCoeffsCAVLC_H264_16s", &vekiEncodeChromaDcCoeffsCAVLC_H264_16s, analysis<Vek16s, 4>()),
    row("vekiEncodeCoeffsCAVLCChromaDC2x2_H264_32s", &vekiEncodeCoeffsCAVLCChromaDC2x2_H264_32s, analysis<Vek32s, 4>()),
    row("vekiEncodeCoeffsCAVLCChromaDC2x4_H264_16s", &vekiEncodeCoeffsCAVLCChromaDC2x4_H264_16s, analysis<Vek16s, 8>()),
    row("vekiEncodeCoeffsCAVLCChromaDC2x4_H264_32s", &vekiEncodeCoeffsCAVLCChromaDC2x4_H264_32s, analysis<Vek32s, 8>()),
};

}  // namespace
}  // namespace catalogue
