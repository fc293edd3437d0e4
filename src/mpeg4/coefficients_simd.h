// Fast form of the coefficient decoders. A look-up of the first ten bits gives run, level, sign and length of a whole
// code at once; only longer codes need a second one.
#ifndef VEKVC_MPEG4_COEFFICIENTS_SIMD_H
#define VEKVC_MPEG4_COEFFICIENTS_SIMD_H

#include <bit>

#include "mpeg4/coefficients_plain.h"

namespace vekvc::simd {

// ---- the look-up tables

// Bits 0 to 7: the code's length with its sign. Bits 8 to 15: by how much it moves the scan index on, run + 1, and
// kLastStep more for a block's last coefficient; from kSpecial on, something else. Bits 16 to 31: the level; of
// kLonger the number of the second table.
struct CoefficientEntry {
    Vek32s value = 0;

    constexpr int length() const { return value & 0xff; }
    constexpr int step() const { return value >> 8 & 0xff; }
    constexpr int level() const { return value >> 16; }
};
inline constexpr int kLastStep = 128;
inline constexpr int kSpecial = 252, kNothing = 252, kLonger = 253, kEndOfBlock = 254, kEscape = 255;

constexpr CoefficientEntry entryOf(int length, int step, int level) {
    return {static_cast<Vek32s>(static_cast<Vek32u>(level) << 16 | static_cast<Vek32u>(step << 8 | length))};
}

inline constexpr int kFirstBits = 10;

// In which order a window's bits count: forward tables are looked up by the most significant bits, backward ones by
// the least significant, since there the sign comes first and the code's first bit last.
enum class Order { forward, backward };

constexpr int longestWord(const mpeg4::CodeTable& table) {
    int longest = 0;
    for (const mpeg4::RunLevelCode& entry : table) longest = entry.code.length > longest ? entry.code.length : longest;
    return longest + 1;
}

// Numbers of look-up results: those of the first kFirstBits bits of the words that are longer.
constexpr int firstPart(Vek32u word, int length, Order order) {
    return static_cast<int>(order == Order::forward ? word >> (length - kFirstBits) : word & ((1 << kFirstBits) - 1));
}
constexpr int countLonger(const mpeg4::CodeTable& table, Order order) {
    bool seen[1 << kFirstBits] = {};
    int count = 0;
    for (const mpeg4::RunLevelCode& entry : table)
        for (Vek32u sign = 0; sign < 2 && entry.code.length >= kFirstBits; ++sign) {
            bool& there = seen[firstPart(Vek32u{entry.code.bits} << 1 | sign, entry.code.length + 1, order)];
            count += there ? 0 : 1;
            there = true;
        }
    return count;
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table, Order order = Order::forward>
struct CoefficientLookUp {
    static constexpr int kLongest = longestWord(table), kSecondBits = kLongest - kFirstBits;

    CoefficientEntry first[1 << kFirstBits];
    CoefficientEntry second[countLonger(table, order)][1 << kSecondBits];

    constexpr CoefficientLookUp() : first(), second() {
        using namespace mpeg4;
        for (CoefficientEntry& entry : first) entry = entryOf(0, kNothing, 0);
        for (auto& part : second)
            for (CoefficientEntry& entry : part) entry = entryOf(0, kNothing, 0);
        int longer = 0;
        for (const RunLevelCode& code : table)
            for (Vek32u sign = 0; sign < 2; ++sign) {
                const int step = code.run + 1 + (code.last != 0 ? kLastStep : 0), length = code.code.length + 1;
                const CoefficientEntry entry = entryOf(length, step, sign != 0 ? -code.level : code.level);
                const Vek32u word = Vek32u{code.code.bits} << 1 | sign;
                if (length <= kFirstBits) {
                    enter(first, kFirstBits, word, length, entry);
                    continue;
                }
                CoefficientEntry& link = first[firstPart(word, length, order)];
                if (link.step() != kLonger) link = entryOf(0, kLonger, longer++);
                const Vek32u rest =
                    order == Order::forward ? word & ((1u << (length - kFirstBits)) - 1) : word >> kFirstBits;
                enter(second[link.level()], kSecondBits, rest, length - kFirstBits, entry);
            }
        if (order == Order::backward) {
            for (Vek32u sign = 0; sign < 2; ++sign) enter(first, kFirstBits, sign, 5, entryOf(0, kEscape, 0));
        } else if (syntax == Syntax::reversible) {
            enterFixed(kReversibleEscapeCode, kReversibleEscapeLength, kEscape);
        } else if (!isH261(syntax)) {
            enterFixed(kEscapeCode, kEscapeLength, kEscape);
        } else {
            enterFixed(kH261EscapeCode, kH261EscapeLength, kEscape);
            enterFixed(mpeg4::kH261EndOfBlock, kH261EndOfBlockLength, kEndOfBlock);
        }
    }

    // The code that a window begins with; step() is kNothing where there is none.
    CoefficientEntry lookUp(std::uint64_t window) const {
        const CoefficientEntry entry = lookUpFirst(window);
        return entry.step() == kLonger ? lookUpSecond(entry, window) : entry;
    }
    CoefficientEntry lookUpFirst(std::uint64_t window) const {
        return first[order == Order::forward ? window >> (64 - kFirstBits) : window & ((1 << kFirstBits) - 1)];
    }
    CoefficientEntry lookUpSecond(CoefficientEntry entry, std::uint64_t window) const {
        return second[entry.level()][order == Order::forward ? window << kFirstBits >> (64 - kSecondBits)
                                                             : window >> kFirstBits & ((1 << kSecondBits) - 1)];
    }

  private:
    // Enters a word of `length` bits at all places of a table by `width` bits that begin with it.
    static constexpr void enter(CoefficientEntry* to, int width, Vek32u word, int length, CoefficientEntry entry) {
        for (Vek32u more = 0; more < 1u << (width - length); ++more)
            to[order == Order::forward ? word << (width - length) | more : more << length | word] = entry;
    }
    constexpr void enterFixed(int code, int length, int step) {
        enter(first, kFirstBits, static_cast<Vek32u>(code), length, entryOf(length, step, 0));
    }
};
template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table, Order order = Order::forward>
inline constexpr CoefficientLookUp<syntax, table, order> kLookUp;

// ---- blocks

using plain::asSigned;
using plain::RunLevel;

// What follows an escape code; level 0 stands for bits that hold no coefficient. Up to 33 bits with the code.
template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
[[gnu::always_inline]] inline RunLevel readEscape(ByteWindow& window, bool extended) {
    using namespace mpeg4;
    window.need(32);
    if constexpr (syntax == Syntax::mpeg4) {
        const Vek32u type = window.top(2);
        if (type == 3) {
            const Vek32u bits = window.take(2 + 1 + 6 + 1 + 12 + 1);  // 11, last, run, marker, level, marker
            const Vek32s level = asSigned(bits >> 1 & 0xfff, 12);
            if ((bits & 0x2001) != 0x2001 || level == -2048) return {};
            return {(bits >> 20 & 1) != 0, static_cast<int>(bits >> 14 & 63), level};
        }
        window.drop(type == 2 ? 2 : 1);
        const CoefficientEntry entry = kLookUp<syntax, table>.lookUp(window.bits());
        if (entry.step() >= kSpecial) return {};
        window.drop(entry.length());
        const bool last = entry.step() > kLastStep;
        const int run = (entry.step() & (kLastStep - 1)) - 1, level = entry.level();
        if (type == 2) return {last, run + table.largestRun[last][level < 0 ? -level : level], level};
        const int more = table.largestLevel[last][run];
        return {last, run, level + (level < 0 ? -more : more)};
    } else if constexpr (syntax == Syntax::reversible) {
        const Vek32u bits = window.take(1 + 6 + 1 + 11 + kReversibleEscapeEndLength + 1);
        const auto level = static_cast<Vek32s>(bits >> 6 & 0x7ff);
        if ((bits & 0x2003e) != (0x20000 | kReversibleEscapeEnd << 1)) return {};
        return {bits >> 24 != 0, static_cast<int>(bits >> 18 & 63), (bits & 1) != 0 ? -level : level};
    } else if constexpr (syntax == Syntax::h263) {
        const Vek32u bits = window.take(1 + 6 + 8);
        const bool last = bits >> 14 != 0;
        const int run = static_cast<int>(bits >> 8 & 63);
        const Vek32s level = asSigned(bits & 0xff, 8);
        if (level != -128) return {last, run, level};
        if (!extended) return {};
        const Vek32u low = window.take(5), high = window.take(6);
        return {last, run, asSigned(high << 5 | low, 11)};
    } else {
        const Vek32u bits = window.take(6 + 8);
        const Vek32s level = asSigned(bits & 0xff, 8);
        return {false, static_cast<int>(bits >> 8), level == -128 ? 0 : level};
    }
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
[[gnu::always_inline]] inline int readBlock(ByteWindow& window, Vek16s* pDstBlock, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    const auto& codes = kLookUp<syntax, table>;
    clearBlock(pDstBlock, layout.start);
    const auto put = [&](int at, Vek32s level) { store(pDstBlock + layout.scan[at], static_cast<Vek16s>(level)); };
    int i = layout.start - 1;
    if (syntax == Syntax::h261Inter && window.top(1) != 0) {
        put(++i, window.take(2) == 0b10 ? 1 : -1);
    }
    for (;;) {
        window.need(codes.kLongest);
        CoefficientEntry entry = codes.lookUpFirst(window.bits());
        int next = i + entry.step();
        if (next > 63) [[unlikely]] {
            if (isH261(syntax) && entry.step() == kEndOfBlock) {
                window.drop(kH261EndOfBlockLength);
                return i < 0 ? 0 : i;
            }
            if (entry.step() == kLonger) {
                entry = codes.lookUpSecond(entry, window.bits());
                next = i + entry.step();
            }
            if (entry.step() > kLastStep && entry.step() < kSpecial) {
                window.drop(entry.length());
                next -= kLastStep;
                if (next > 63) return kPastEnd;
                put(next, entry.level());
                return next;
            }
            if (next > 63) {
                if (entry.step() == kNothing) return kNoCode;
                if (entry.step() < kSpecial) return kPastEnd;
                window.drop(entry.length());
                const RunLevel symbol = readEscape<syntax, table>(window, layout.extended);
                if (symbol.level == 0) return kNoCode;
                i += symbol.run + 1;
                if (i > 63) return kPastEnd;
                put(i, symbol.level);
                if (symbol.last) return i;
                continue;
            }
        }
        window.drop(entry.length());
        put(next, entry.level());
        i = next;
    }
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
VekStatus decodeBlock(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock, Vek32s* pIndxLastNonZero,
                      mpeg4::BlockLayout layout) {
    ByteWindow window(ppBitStream, pBitOffset);
    const int last = readBlock<syntax, table>(window, pDstBlock, layout);
    if (last < 0) return vekStsErrCoeffDecode;
    window.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, last);
    return vekStsOk;
}

// An inter block of H.263 with annex S: coded by table I.2 if table 16 leads past the end of the block.
inline VekStatus decodeBlockAlternative(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                        Vek32s* pIndxLastNonZero, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    ByteWindow window(ppBitStream, pBitOffset);
    int last = readBlock<Syntax::h263, kInter>(window, pDstBlock, layout);
    if (last == kPastEnd)
        return decodeBlock<Syntax::h263, kAdvancedIntra>(ppBitStream, pBitOffset, pDstBlock, pIndxLastNonZero, layout);
    if (last < 0) return vekStsErrCoeffDecode;
    window.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, last);
    return vekStsOk;
}

// ---- reversible codes from their end

// The bits before the cursor lie right-aligned in a 64-bit register.
class BackwardWindow {
  public:
    BackwardWindow(Vek8u* const* ppBitStream, const Vek32s* pBitOffset, Vek32s left)
        : end_(load<Vek8u*>(ppBitStream)), position_(load<Vek32s>(pBitOffset)), left_(left) {
        fill();
    }

    std::uint64_t bits() const { return bits_; }
    Vek32s left() const { return left_; }

    // Makes at least n bits (0 to 57) valid, or as many as are left.
    void need(int n) {
        if (valid_ < n) [[unlikely]]
            fill();
    }
    void drop(int n) {
        bits_ >>= n;
        valid_ -= n;
        position_ -= n;
        left_ -= n;
    }

    void commit(Vek8u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, end_ + (position_ >> 3));
        store<Vek32s>(pBitOffset, position_ & 7);
    }

  private:
    // Loads the eight bytes that end with the one that holds the bit before the cursor, but none before the first.
    void fill() {
        const std::ptrdiff_t last = (position_ - 1) >> 3, first = (position_ - left_) >> 3;
        if (last - first >= 7) {
            bits_ = bigEndian(load<std::uint64_t>(end_ + last - 7));
        } else {
            bits_ = 0;
            for (std::ptrdiff_t at = first; at <= last; ++at) bits_ = bits_ << 8 | end_[at];
        }
        const int behind = -position_ & 7;  // bits of the last byte that lie behind the cursor
        bits_ >>= behind;
        valid_ = 64 - behind;
    }

    Vek8u* end_;
    Vek32s position_;  // of the cursor, in bits from the first bit at end_
    Vek32s left_;
    int valid_ = 0;
    std::uint64_t bits_ = 0;
};

template <const mpeg4::CodeTable& table>
VekStatus decodeBlockBackward(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s numBits, Vek16s* pDstBlock,
                              Vek32s* pIndxLastNonZero, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    const auto& codes = kLookUp<Syntax::reversible, table, Order::backward>;
    struct Symbol {
        Vek16s level;
        Vek8u positions;  // taken by the coefficients behind this one
    } symbols[64];
    BackwardWindow window(ppBitStream, pBitOffset, numBits);
    int n = 0, positions = 0;
    while (window.left() > 0) {
        window.need(30);
        const CoefficientEntry entry = codes.lookUp(window.bits());
        int length = entry.length(), level = entry.level();
        int step = entry.step() & (kLastStep - 1);
        bool last = entry.step() > kLastStep;
        if (entry.step() >= kSpecial) [[unlikely]] {
            if (entry.step() != kEscape) return vekStsErrCoeffDecode;
            // As a forward reader sees it: 00001, last, run, marker, level, 10000, sign.
            const auto bits = static_cast<Vek32u>(window.bits()) & 0x3fffffff;
            length = 30;
            if ((bits & 0x3e02003e) != (kReversibleEscapeCode << 25 | 0x20000 | kReversibleEscapeEnd << 1))
                return vekStsErrCoeffDecode;
            level = static_cast<int>(bits >> 6 & 0x7ff);
            if (level == 0) return vekStsErrCoeffDecode;
            if ((bits & 1) != 0) level = -level;
            step = static_cast<int>(bits >> 18 & 63) + 1;
            last = (bits >> 24 & 1) != 0;
        }
        if (length > window.left()) return vekStsErrCoeffDecode;
        if (last != (n == 0)) {
            if (n == 0) return vekStsErrCoeffDecode;
            break;  // the block before this one
        }
        if (layout.start + positions + step > 64) return vekStsErrCoeffDecode;
        symbols[n++] = {static_cast<Vek16s>(level), static_cast<Vek8u>(positions)};
        positions += step;
        window.drop(length);
    }
    clearBlock(pDstBlock, layout.start);
    const int i = layout.start + positions - 1;
    for (int k = 0; k < n; ++k) store(pDstBlock + layout.scan[i - symbols[k].positions], symbols[k].level);
    window.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, i);
    return vekStsOk;
}

// ---- DC

// The sizes of the codes that do not begin with 000, by their first three bits: the size and 16 times the code's
// length. Of the others the number of zeros tells the size.
struct DcSizeLookUp {
    Vek8u byBits[2][8] = {};
    bool zerosTell = true;

    constexpr DcSizeLookUp() {
        for (int chroma = 0; chroma < 2; ++chroma)
            for (int size = 0; size <= 12; ++size) {
                const mpeg4::Code code = mpeg4::kDcSizes[chroma].codes[size];
                if (code.length > 3) {
                    zerosTell = zerosTell && code.bits == 1 && size == longSize(code.length - 1, chroma);
                    continue;
                }
                for (int k = 0; k < 8 >> code.length; ++k)
                    byBits[chroma][code.bits << (3 - code.length) | k] = static_cast<Vek8u>(size | code.length << 4);
            }
    }
    static constexpr int longSize(int zeros, int chroma) { return zeros + 2 - chroma; }
};
inline constexpr DcSizeLookUp kDcSizeLookUp;
static_assert(kDcSizeLookUp.zerosTell);

inline VekStatus decodeDcMpeg4(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC, bool chroma) {
    ByteWindow window(ppBitStream, pBitOffset);
    const Vek8u found = kDcSizeLookUp.byBits[chroma][window.top(3)];
    int size = found & 15, length = found >> 4;
    if (found == 0) {
        const int zeros = std::countl_zero(window.bits() | 1);
        size = DcSizeLookUp::longSize(zeros, chroma);
        length = zeros + 1;
        if (size > 12) return vekStsErrCoeffDecode;
    }
    window.drop(length);
    const Vek32s dc = mpeg4::dcDifferential(window.take(size), size);
    if (size > 8 && window.take(1) == 0) return vekStsErrCoeffDecode;  // the marker
    store(pDC, static_cast<Vek16s>(dc));
    window.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

using plain::decodeDcH263;

}  // namespace vekvc::simd

#endif
