#include "vc1/tables.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "vc1/code_lists.h"

namespace vekdec::vc1 {
namespace {

// Small tables (SMPTE 421M 7.1.1, 8.7.3, 8.1.2.2), in the notation of code_lists.h.
constexpr const char* kPlaneMode = "0000 10 11 010 011 001 0001";
constexpr const char* kNorm2 = "0 100 101 11";
constexpr const char* kRange = "0 10 110 111";
constexpr const char* kBFraction =
    "000 001 010 011 100 101 110 1110000 1110001 1110010 1110011 1110100 1110101 1110110 1110111 1111000 1111001 "
    "1111010 1111011 1111100 1111101 1111110 1111111";
// In the order of TTMB's types.
constexpr const char* kTtBlock[3] = {"11 10001 10000 00 10010 10011 01 101", "11 1000 1001 011 000 001 101 010",
                                     "01 100 1011 1010 110 111 000 001"};

struct TextCode {
    Vek32s bits;
    int length, value;
};

// One code of a text in the notation of code_lists.h; moves behind it.
bool nextCode(const char*& text, TextCode& code) {
    while (*text == ' ') ++text;
    const std::size_t size = std::strcspn(text, " ");
    if (size == 0) return false;
    const std::size_t digits = std::strcspn(text, "/ ");
    const bool slash = digits < size;
    code.bits = static_cast<Vek32s>(std::strtoul(text, nullptr, slash ? 16 : 2));
    code.length = slash ? static_cast<int>(std::strtoul(text + digits + 1, nullptr, 10)) : static_cast<int>(size);
    text += size;
    return true;
}

std::vector<TextCode> codesOf(const char* text) {
    std::vector<TextCode> codes;
    for (TextCode code{}; nextCode(text, code);) {
        code.value = static_cast<int>(codes.size());
        codes.push_back(code);
    }
    return codes;
}

// As the library takes it: see vekvc/vlc.h. The first lookup holds nearly all codes that occur.
std::vector<Vek32s> listOf(const std::vector<TextCode>& codes) {
    int longest = 0;
    for (const TextCode& code : codes) longest = std::max(longest, code.length);
    std::vector<Vek32s> widths;
    for (int rest = longest; rest > 0; rest -= widths.back()) widths.push_back(std::min(rest, widths.empty() ? 9 : 6));
    std::vector<Vek32s> list{longest, static_cast<Vek32s>(widths.size())};
    list.insert(list.end(), widths.begin(), widths.end());
    for (int length = 1; length <= longest; ++length) {
        const std::size_t count = list.size();
        list.push_back(0);
        for (const TextCode& code : codes)
            if (code.length == length) {
                ++list[count];
                list.push_back(code.bits);
                list.push_back(code.value);
            }
    }
    list.push_back(-1);
    return list;
}

std::vector<int> numbersOf(const char* text) {
    std::vector<int> numbers;
    for (char* end = nullptr; *text != 0; text = end) numbers.push_back(static_cast<int>(std::strtol(text, &end, 10)));
    return numbers;
}

}  // namespace

const Vek32s* Tables::keep(const std::vector<Vek32s>& list) {
    Vek32s* table = nullptr;
    if (vekiHuffmanTableInitAlloc_32s(list.data(), &table) != vekStsOk) throw std::bad_alloc();
    std::unique_ptr<Vek32s, Free> owner(table);
    return tables_.emplace_back(std::move(owner)).get();
}

const Vek32s* Tables::numbered(const char* text, int first) {
    std::vector<TextCode> codes = codesOf(text);
    for (TextCode& code : codes) code.value += first;
    return keep(listOf(codes));
}

CoefficientSet Tables::coefficientSet(int index) {
    const CoefficientCodes& source = kCoefficients[index];
    std::vector<TextCode> codes = codesOf(source.codes);
    CoefficientSet set;
    std::size_t next = 0;
    for (const int last : {0, 1}) {
        const std::vector<int> levels = numbersOf(last == 0 ? source.levels : source.levelsLast);
        for (std::size_t run = 0; run < levels.size(); ++run) {
            set.maxLevel[last][run] = static_cast<std::uint8_t>(levels[run]);
            for (int level = 1; level <= levels[run]; ++level) {
                set.maxRun[last][level] = static_cast<std::uint8_t>(run);
                codes[next++].value = Coefficient::pack(last, static_cast<int>(run), level);
            }
        }
    }
    codes[next].value = kEscape;
    set.table = keep(listOf(codes));
    return set;
}

Tables::Tables() {
    planeMode = numbered(kPlaneMode);
    norm2 = numbered(kNorm2);
    norm6 = numbered(kNorm6);
    range = numbered(kRange);
    bFraction = numbered(kBFraction);
    cbpI = numbered(kCbpI);
    for (int i = 0; i < 2; ++i) {
        dcLuma[i] = numbered(kDcLuma[i]);
        dcChroma[i] = numbered(kDcChroma[i]);
    }
    for (int i = 0; i < 3; ++i) {
        ttMb[i] = numbered(kTtMb[i]);
        ttBlock[i] = numbered(kTtBlock[i]);
        subBlockPattern[i] = numbered(kSubBlockPattern[i], 1);
    }
    for (int i = 0; i < 4; ++i) {
        mvData[i] = numbered(kMvData[i]);
        cbpP[i] = numbered(kCbpP[i]);
        fieldMvOne[i] = numbered(kFieldMvOne[i]);
        fourMvBlocks[i] = numbered(kFourMvBlocks[i]);
    }
    for (int i = 0; i < 8; ++i) {
        coefficients[i] = coefficientSet(i);
        fieldCbp[i] = numbered(kFieldCbp[i], 1);
        fieldMvTwo[i] = numbered(kFieldMvTwo[i]);
        fieldMbMode[i] = numbered(kFieldMbMode[i]);
        fieldMbModeMixed[i] = numbered(kFieldMbModeMixed[i]);
    }
}

const Tables& tables() {
    static const Tables kTables;
    return kTables;
}

int decode(WordReader& bits, const Vek32s* table, const char* element) {
    Vek32s value = 0;
    if (vekiDecodeHuffmanOne_1u32s(bits.word(), bits.offset(), &value, table) != vekStsOk)
        throw BadSyntax(std::string("no valid ") + element);
    return value;
}

// clang-format off
const std::uint8_t kScanInter8x8[64] = {
    0, 8, 1, 2, 9, 16, 24, 17, 10, 3, 4, 11, 18, 25, 32, 40, 48, 56, 41, 33, 26, 19, 12, 5, 6, 13, 20, 27, 34,
    49, 57, 58, 50, 42, 35, 28, 21, 14, 7, 15, 22, 29, 36, 43, 51, 59, 60, 52, 44, 37, 30, 23, 31, 38, 45, 53,
    61, 62, 54, 46, 39, 47, 55, 63};
const std::uint8_t kScanIntra[64] = {
    0, 8, 1, 2, 9, 16, 24, 17, 10, 3, 4, 11, 18, 25, 32, 40, 33, 48, 26, 19, 12, 5, 6, 13, 20, 27, 34, 41, 56,
    49, 57, 42, 35, 28, 21, 14, 7, 15, 22, 29, 36, 43, 50, 58, 51, 59, 44, 37, 30, 23, 31, 38, 45, 52, 60, 53,
    61, 46, 39, 47, 54, 62, 55, 63};
const std::uint8_t kScanIntraHorizontal[64] = {
    0, 1, 8, 2, 3, 9, 16, 24, 17, 10, 4, 5, 11, 18, 25, 32, 40, 48, 33, 26, 19, 12, 6, 7, 13, 20, 27, 34, 41,
    56, 49, 57, 42, 35, 28, 21, 14, 15, 22, 29, 36, 43, 50, 58, 51, 44, 37, 30, 23, 31, 38, 45, 52, 59, 60, 53,
    46, 39, 47, 54, 61, 62, 55, 63};
const std::uint8_t kScanIntraVertical[64] = {
    0, 8, 16, 1, 24, 32, 40, 9, 2, 3, 10, 17, 25, 48, 56, 41, 33, 26, 18, 11, 4, 5, 12, 19, 27, 34, 49, 57, 50,
    42, 35, 28, 20, 13, 6, 7, 14, 21, 29, 36, 43, 51, 58, 59, 52, 44, 37, 30, 22, 15, 23, 31, 38, 45, 60, 53,
    46, 39, 47, 54, 61, 62, 55, 63};
const std::uint8_t kScan8x4[32] = {
    0, 1, 2, 8, 3, 9, 10, 16, 4, 11, 17, 24, 18, 12, 5, 19, 25, 13, 20, 26, 27, 6, 21, 28, 14, 22, 29, 7, 30,
    15, 23, 31};
const std::uint8_t kScan4x8[32] = {
    0, 8, 1, 16, 9, 24, 17, 2, 32, 10, 25, 40, 18, 48, 33, 26, 56, 41, 34, 3, 49, 57, 11, 42, 19, 50, 27, 58,
    35, 43, 51, 59};
const std::uint8_t kScan8x4Advanced[32] = {
    0, 8, 1, 16, 2, 9, 10, 3, 24, 17, 4, 11, 18, 12, 5, 19, 25, 13, 20, 26, 27, 6, 21, 28, 14, 22, 29, 7, 30,
    15, 23, 31};
const std::uint8_t kScan4x8Advanced[32] = {
    0, 1, 8, 2, 9, 16, 17, 24, 10, 32, 25, 18, 40, 3, 33, 26, 48, 11, 56, 41, 34, 49, 57, 42, 19, 50, 27, 58,
    35, 43, 51, 59};
const std::uint8_t kScan4x4[16] = {
    0, 8, 16, 1, 9, 24, 17, 2, 10, 18, 25, 3, 11, 26, 19, 27};
const std::uint8_t kScanInterlaced8x8[64] = {
    0, 8, 1, 16, 24, 9, 2, 32, 40, 48, 56, 17, 10, 3, 25, 18, 11, 4, 33, 41, 49, 57, 26, 34, 42, 50, 58, 19, 12,
    5, 27, 20, 13, 6, 35, 28, 21, 14, 7, 15, 22, 29, 36, 43, 51, 59, 60, 52, 44, 37, 30, 23, 31, 38, 45, 53, 61,
    62, 54, 46, 39, 47, 55, 63};
const std::uint8_t kScanInterlaced8x4[32] = {
    0, 8, 16, 24, 1, 9, 2, 17, 25, 10, 3, 18, 26, 4, 11, 19, 12, 5, 13, 20, 27, 6, 21, 28, 14, 22, 29, 7, 30,
    15, 23, 31};
const std::uint8_t kScanInterlaced4x8[32] = {
    0, 1, 2, 8, 16, 9, 24, 17, 10, 3, 32, 40, 48, 56, 25, 18, 33, 26, 41, 34, 49, 57, 11, 42, 19, 50, 27, 58,
    35, 43, 51, 59};
const std::uint8_t kScanInterlaced4x4[16] = {
    0, 8, 16, 24, 1, 9, 17, 2, 25, 10, 18, 3, 26, 11, 19, 27};  // clang-format on

}  // namespace vekdec::vc1
