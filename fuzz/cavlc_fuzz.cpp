// CAVLC and Exp-Golomb decoding: any stream through the standard's tables or through tables with any values. The fast
// form must do what the definition does, stay inside the block, and read no word beyond the one that follows the last
// bit consumed.
#include "fuzz_input.h"
#include "h264/cavlc_decode_plain.h"
#include "h264/cavlc_decode_simd.h"
#include "support/cavlc.h"

namespace {

using namespace vekvc;
using namespace vekvc_fuzz;
using vekvc_test::cavlcTables;

struct Tables {
    const Vek32s* token[3];
    const Vek32s* zeros[16];
    const Vek32s* runs[16];
};

// A complete table of up to 3 bits, each code with a value of the input.
Vek32s* strangeTable(Input& input) {
    const int bits = input.number(1, 3);
    std::vector<Vek32s> list = {bits, 1, bits};
    list.resize(static_cast<std::size_t>(3 + bits - 1), 0);
    list.push_back(1 << bits);
    for (int code = 0; code < 1 << bits; ++code) {
        const unsigned kind = input.byte();
        list.push_back(code);
        list.push_back(kind < 200 ? static_cast<Vek32s>(kind % 17 * 256 + kind % 4)
                                  : static_cast<Vek32s>(input.word()));
    }
    list.push_back(-1);
    VekVlcTable_32s* table = nullptr;
    FUZZ_REQUIRE(vekiHuffmanTableInitAlloc_32s(list.data(), &table) == vekStsOk);
    return table;
}

template <class T>
struct Run {
    VekStatus status;
    std::ptrdiff_t word;
    Vek32s offset;
    Vek16s total = -5;
    std::ptrdiff_t advanced;
    T coeffs[17];

    template <class Decode>
    Run(Decode decode, const Words& words, Vek32s start) : offset(start) {
        std::memset(coeffs, 0x55, sizeof coeffs);
        Vek32u* cursor = words.begin();
        T* next = coeffs;
        status = decode(&cursor, &offset, CavlcTarget<T>{&total, &next});
        word = cursor - words.begin();
        advanced = next - coeffs;
    }
    bool operator==(const Run& other) const {
        return status == other.status && word == other.word && offset == other.offset && total == other.total &&
               advanced == other.advanced && std::memcmp(coeffs, other.coeffs, sizeof coeffs) == 0;
    }
};

template <class T, class Plain, class Fast>
void compare(const Words& words, Vek32s start, Plain plainForm, Fast fastForm) {
    const Run<T> law(plainForm, words, start);
    FUZZ_REQUIRE(law == Run<T>(fastForm, words, start));
    FUZZ_REQUIRE(law.offset >= 0 && law.offset <= 31);
    FUZZ_REQUIRE(law.status != vekStsErrVlcData || (law.word == 0 && law.offset == start && law.advanced == 0));
    if (law.status != vekStsOk) return;
    // Again with nothing behind the word that follows the last bit consumed.
    const std::ptrdiff_t lastWord = law.offset == 31 ? law.word - 1 : law.word;
    const Words tight = words.prefix(static_cast<std::size_t>(lastWord) + 2);
    FUZZ_REQUIRE(law == Run<T>(fastForm, tight, start));
    FUZZ_REQUIRE(law == Run<T>(plainForm, tight, start));
}

template <class T>
void fuzzBlock(Input& input, const Tables& tables, const Words& words) {
    const Vek32s start = input.number(0, 31);
    const int kind = input.number(0, 5);
    const Vek32s nC = input.number(0, 17);
    const CavlcTables lists = {tables.zeros, tables.runs};
    if (kind < 4) {
        Vek32s scan[16];
        for (int i = 0; i < 16; ++i) scan[i] = 15 - i;
        const CavlcLayout4x4 layout{15 + kind % 2, scan};
        compare<T>(
            words, start,
            [&](Vek32u** p, Vek32s* o, CavlcTarget<T> t) {
                return plain::decodeCavlc4x4<T>(p, o, t, nC, tables.token, lists, layout);
            },
            [&](Vek32u** p, Vek32s* o, CavlcTarget<T> t) {
                return simd::decodeCavlc4x4<T>(p, o, t, nC, tables.token, lists, layout);
            });
        return;
    }
    const auto chroma = [&](auto layout) {
        compare<T>(
            words, start,
            [&](Vek32u** p, Vek32s* o, CavlcTarget<T> t) {
                return plain::decodeCavlcChromaDc<T>(p, o, t, tables.token[0], lists, layout);
            },
            [&](Vek32u** p, Vek32s* o, CavlcTarget<T> t) {
                return simd::decodeCavlcChromaDc<T>(p, o, t, tables.token[0], lists, layout);
            });
    };
    if (kind == 4)
        chroma(CavlcLayout2x2{});
    else
        chroma(CavlcLayout2x4{});
}

void fuzzExpGolomb(Input& input, const Words& words) {
    const Vek32s start = input.number(0, 31);
    Vek32u* cursor = words.begin();
    Vek32s offset = start;
    Vek32s value = 0;
    const VekStatus status =
        vekiDecodeExpGolombOne_H264_1u32s(&cursor, &offset, &value, static_cast<Vek8u>(input.byte()));
    const auto consumed = 32 * (cursor - words.begin()) + start - offset;
    FUZZ_REQUIRE(status == vekStsOk ? consumed % 2 == 1 && consumed <= 65 : consumed == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const unsigned mode = input.byte();
    Tables tables;
    Vek32s* strange[3] = {};
    if (mode % 2 == 0) {
        const auto& t = cavlcTables();
        const bool chroma = mode % 4 == 0;
        for (int i = 0; i < 3; ++i)
            tables.token[i] = t.coeffToken[chroma ? 3 + mode / 4 % 2 : static_cast<unsigned>(i)];
        for (int i = 0; i < 16; ++i) {
            tables.zeros[i] = t.totalZeros4x4[i];
            tables.runs[i] = t.runBefore[i < 15 ? i : 14];
        }
    } else {
        for (auto& table : strange) table = strangeTable(input);
        for (auto& table : tables.token) table = strange[0];
        for (auto& table : tables.zeros) table = mode % 8 == 3 ? nullptr : strange[1];
        for (auto& table : tables.runs) table = mode % 8 == 5 ? nullptr : strange[2];
    }
    // 16 levels of at most 36 + 32 bits, and the rest: no block reaches the end of 64 words.
    const Words words(input, static_cast<std::size_t>(input.number(1, 40)), 64);
    fuzzBlock<Vek16s>(input, tables, words);
    fuzzBlock<Vek32s>(input, tables, words);
    fuzzExpGolomb(input, words);
    for (Vek32s* table : strange)
        if (table != nullptr) vekiHuffmanTableFree_32s(table);
    return 0;
}
