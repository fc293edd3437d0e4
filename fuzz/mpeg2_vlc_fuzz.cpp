// MPEG-1/MPEG-2 tables and blocks: any code list builds a table inside its memory, any stream decodes through it, and
// the fast form does what the definition does.
#include "fuzz_input.h"
#include "mpeg2/block_decode_plain.h"
#include "mpeg2/block_decode_simd.h"
#include "vekvc.h"
#include "vlc/huffman_plain.h"
#include "vlc/huffman_simd.h"

namespace {

using namespace vekvc;
using namespace vekvc_fuzz;

// A list of up to 20 code lengths; now and then with codes that are no prefix code, or with levels of no bits.
std::vector<Vek32s> codeList(Input& input, bool runLevel) {
    const int levels = input.number(1, 4);
    std::vector<Vek32s> list = {0, levels};
    for (int i = 0; i < levels; ++i) list.push_back(input.number(i == 0 ? 1 : 0, 8));
    const int longest = input.number(1, 20);
    for (int length = 1; length <= longest; ++length) {
        const int count = input.number(0, 3);
        list.push_back(count);
        for (int i = 0; i < count; ++i) {
            list.push_back(
                static_cast<Vek32s>(input.word() >> (32 - length) ^ (input.byte() == 255 ? ~0u << length : 0)));
            const unsigned value = input.byte();
            list.push_back(value < 32    ? static_cast<Vek32s>(254 + value % 2)
                           : value < 240 ? static_cast<Vek32s>(value % 12)
                                         : static_cast<Vek32s>(input.word()));
            if (runLevel) list.push_back(static_cast<Vek32s>(input.byte()) - 128);
        }
    }
    list.push_back(-1);
    return list;
}

struct Result {
    VekStatus status;
    std::ptrdiff_t word;
    Vek32s offset;
    Vek32s size = -7;
    Vek16s pred = 100;
    Vek16s block[64];
    Vek32s value = -7;
    Vek8u run = 77;
    Vek16s level = 777;

    template <class Decode>
    Result(Decode decode, const Words& words, Vek32s start) : offset(start) {
        std::memset(block, 0x55, sizeof block);
        Vek32u* cursor = words.begin();
        status = decode(*this, &cursor, &offset);
        word = cursor - words.begin();
    }
    bool operator==(const Result& other) const {
        return status == other.status && word == other.word && offset == other.offset && size == other.size &&
               pred == other.pred && std::memcmp(block, other.block, sizeof block) == 0 && value == other.value &&
               run == other.run && level == other.level;
    }
};

template <class Plain, class Fast>
void compare(const Words& words, Vek32s start, Plain plainForm, Fast fastForm) {
    const Result law(plainForm, words, start);
    FUZZ_REQUIRE(law == Result(fastForm, words, start));
    if (law.status != vekStsOk) return;
    const std::ptrdiff_t lastWord = law.offset == 31 ? law.word - 1 : law.word;
    const Words tight = words.prefix(static_cast<std::size_t>(lastWord) + 2);
    FUZZ_REQUIRE(law == Result(fastForm, tight, start));
    FUZZ_REQUIRE(law == Result(plainForm, tight, start));
}

template <Standard standard>
void fuzzBlocks(const Words& words, Vek32s start, const Vek32s* dcTable, const Vek32s* acTable, Vek32s QP) {
    Vek32s scan[64];
    Vek16s weights[64];
    for (int i = 0; i < 64; ++i) {
        scan[i] = 63 - i;
        weights[i] = static_cast<Vek16s>(i * 37 - 500);
    }
    const auto target = [&](Result& r) { return BlockTarget{scan, QP, weights, r.block, &r.size}; };
    compare(
        words, start,
        [&](Result& r, Vek32u** p, Vek32s* o) {
            return plain::reconstructBlock<standard>(p, o, acTable, acTable, target(r));
        },
        [&](Result& r, Vek32u** p, Vek32s* o) {
            return simd::reconstructBlock<standard>(p, o, acTable, acTable, target(r));
        });
    compare(
        words, start,
        [&](Result& r, Vek32u** p, Vek32s* o) {
            return plain::reconstructBlockIntra<standard>(p, o, {dcTable, &r.pred, 3}, acTable, target(r));
        },
        [&](Result& r, Vek32u** p, Vek32s* o) {
            return simd::reconstructBlockIntra<standard>(p, o, {dcTable, &r.pred, 3}, acTable, target(r));
        });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::vector<Vek32s> dcList = codeList(input, false), acList = codeList(input, true);
    VekVlcTable_32s *dcTable = nullptr, *acTable = nullptr;
    VekRLEncodeTable* encodeTable = nullptr;
    FUZZ_REQUIRE(vekiHuffmanTableInitAlloc_32s(dcList.data(), &dcTable) == vekStsOk);
    FUZZ_REQUIRE(vekiHuffmanRunLevelTableInitAlloc_32s(acList.data(), &acTable) == vekStsOk);
    FUZZ_REQUIRE(vekiCreateRLEncodeTable(acList.data(), &encodeTable) == vekStsOk);
    const Vek32s start = input.number(0, 31);
    const Vek32s QP = static_cast<Vek32s>(input.word());
    // A first coefficient and 63 more of at most 32 + 22 bits each end within 128 words.
    const Words words(input, static_cast<std::size_t>(input.number(1, 60)), 128);
    fuzzBlocks<Standard::mpeg1>(words, start, dcTable, acTable, QP);
    fuzzBlocks<Standard::mpeg2>(words, start, dcTable, acTable, QP);
    compare(
        words, start,
        [&](Result& r, Vek32u** p, Vek32s* o) { return plain::decodeHuffmanOne(p, o, &r.value, dcTable); },
        [&](Result& r, Vek32u** p, Vek32s* o) { return simd::decodeHuffmanOne(p, o, &r.value, dcTable); });
    compare(
        words, start,
        [&](Result& r, Vek32u** p, Vek32s* o) { return plain::decodeHuffmanPair(p, o, acTable, &r.run, &r.level); },
        [&](Result& r, Vek32u** p, Vek32s* o) { return simd::decodeHuffmanPair(p, o, acTable, &r.run, &r.level); });

    // Whatever the encode table holds, a writer stays within its words.
    Vek16s block[64];
    for (auto& level : block) level = static_cast<Vek16s>(static_cast<int>(input.byte()) - 128);
    const Words sink = Words(input, 0, 96);
    Vek32s scan[64];
    for (int i = 0; i < 64; ++i) scan[i] = i;
    Vek32u* cursor = sink.begin();
    Vek32s offset = start;
    FUZZ_REQUIRE(vekiPutNonIntraBlock(&cursor, &offset, block, encodeTable, scan, 2, 2, 64) == vekStsOk);
    vekiHuffmanTableFree_32s(dcTable);
    vekiHuffmanTableFree_32s(acTable);
    vekFree(encodeTable);
    return 0;
}
