// Decoding of coefficient blocks as ISO 14496-2 7.4.1, H.263 5.4.2 and H.261 4.2.4 describe it, one code after the
// other.
#ifndef VEKVC_MPEG4_COEFFICIENTS_PLAIN_H
#define VEKVC_MPEG4_COEFFICIENTS_PLAIN_H

#include "mpeg4/coefficients_syntax.h"

namespace vekvc::plain {

// A coefficient; level 0 stands for bits that hold none.
struct RunLevel {
    bool last = false;
    int run = 0;
    Vek32s level = 0;
};

// The code that the bits begin with, or null. `bits` holds kLongestCode bits.
template <const mpeg4::CodeTable& table>
const mpeg4::RunLevelCode* findCode(Vek32u bits) {
    for (const mpeg4::RunLevelCode& entry : table)
        if (bits >> (mpeg4::kLongestCode - entry.code.length) == entry.code.bits) return &entry;
    return nullptr;
}

template <const mpeg4::CodeTable& table>
RunLevel readTableCode(ByteReader& reader) {
    const mpeg4::RunLevelCode* const entry = findCode<table>(reader.peek(mpeg4::kLongestCode));
    if (entry == nullptr) return {};
    reader.skip(entry->code.length);
    return {entry->last != 0, entry->run, reader.read(1) != 0 ? -entry->level : entry->level};
}

// n bits as a number in two's complement.
constexpr Vek32s asSigned(Vek32u bits, int n) {
    return static_cast<Vek32s>(bits) - (bits >> (n - 1) != 0 ? 1 << n : 0);
}

// What follows the escape code of MPEG-4 (7.4.1.3).
template <const mpeg4::CodeTable& table>
RunLevel readEscapeMpeg4(ByteReader& reader) {
    if (reader.read(1) == 0) {  // type 1: a level beyond the table's
        RunLevel symbol = readTableCode<table>(reader);
        const int more = table.largestLevel[symbol.last][symbol.run];
        if (symbol.level != 0) symbol.level += symbol.level < 0 ? -more : more;
        return symbol;
    }
    if (reader.read(1) == 0) {  // type 2: a run beyond the table's
        RunLevel symbol = readTableCode<table>(reader);
        symbol.run += table.largestRun[symbol.last][symbol.level < 0 ? -symbol.level : symbol.level];
        return symbol;
    }
    const bool last = reader.read(1) != 0;
    const int run = static_cast<int>(reader.read(6));
    const bool firstMarker = reader.read(1) != 0;
    const Vek32s level = asSigned(reader.read(12), 12);
    const bool secondMarker = reader.read(1) != 0;
    if (!firstMarker || !secondMarker || level == -2048) return {};
    return {last, run, level};
}

// What follows the escape code of the reversible codes (7.4.1.3, table B.23).
inline RunLevel readEscapeReversible(ByteReader& reader) {
    const bool last = reader.read(1) != 0;
    const int run = static_cast<int>(reader.read(6));
    const bool marker = reader.read(1) != 0;
    const auto level = static_cast<Vek32s>(reader.read(11));
    const bool end = reader.read(mpeg4::kReversibleEscapeEndLength) == mpeg4::kReversibleEscapeEnd;
    const bool negative = reader.read(1) != 0;
    if (!marker || !end) return {};
    return {last, run, negative ? -level : level};
}

// What follows the escape code of H.263 (5.4.2; EXTENDED-LEVEL: annex T.4).
inline RunLevel readEscapeH263(ByteReader& reader, bool extended) {
    const bool last = reader.read(1) != 0;
    const int run = static_cast<int>(reader.read(6));
    const Vek32s level = asSigned(reader.read(8), 8);
    if (level != -128) return {last, run, level};
    if (!extended) return {};
    const Vek32u low = reader.read(5), high = reader.read(6);
    return {last, run, asSigned(high << 5 | low, 11)};
}

// What follows the escape code of H.261 (4.2.4.1).
inline RunLevel readEscapeH261(ByteReader& reader) {
    const int run = static_cast<int>(reader.read(6));
    const Vek32s level = asSigned(reader.read(8), 8);
    if (level == -128) return {};
    return {false, run, level};
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
RunLevel readSymbol(ByteReader& reader, bool extended) {
    using namespace mpeg4;
    const auto escape = [&](int code, int length) {
        if (reader.peek(length) != static_cast<Vek32u>(code)) return false;
        reader.skip(length);
        return true;
    };
    if constexpr (syntax == Syntax::mpeg4) {
        if (escape(kEscapeCode, kEscapeLength)) return readEscapeMpeg4<table>(reader);
    } else if constexpr (syntax == Syntax::reversible) {
        if (escape(kReversibleEscapeCode, kReversibleEscapeLength)) return readEscapeReversible(reader);
    } else if constexpr (syntax == Syntax::h263) {
        if (escape(kEscapeCode, kEscapeLength)) return readEscapeH263(reader, extended);
    } else {
        if (escape(kH261EscapeCode, kH261EscapeLength)) return readEscapeH261(reader);
    }
    return readTableCode<table>(reader);
}

// Fills the block; the scan index of the last coefficient or what is wrong.
template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
int readBlock(ByteReader& reader, Vek16s* pDstBlock, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    clearBlock(pDstBlock, layout.start);
    int i = layout.start - 1;
    // A first bit of 1 in an inter block of H.261 is no end of block but run 0 and level 1.
    bool first = syntax == Syntax::h261Inter;
    for (;;) {
        RunLevel symbol;
        if (first && reader.peek(1) == 1) {
            symbol = {false, 0, reader.read(2) == 0b10 ? 1 : -1};
        } else if (isH261(syntax) && reader.peek(kH261EndOfBlockLength) == kH261EndOfBlock) {
            reader.skip(kH261EndOfBlockLength);
            return i < 0 ? 0 : i;
        } else {
            symbol = readSymbol<syntax, table>(reader, layout.extended);
        }
        first = false;
        if (symbol.level == 0) return kNoCode;
        i += symbol.run + 1;
        if (i > 63) return kPastEnd;
        store(pDstBlock + layout.scan[i], static_cast<Vek16s>(symbol.level));
        if (symbol.last) return i;
    }
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
VekStatus decodeBlock(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock, Vek32s* pIndxLastNonZero,
                      mpeg4::BlockLayout layout) {
    ByteReader reader(ppBitStream, pBitOffset);
    const int last = readBlock<syntax, table>(reader, pDstBlock, layout);
    if (last < 0) return vekStsErrCoeffDecode;
    reader.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, last);
    return vekStsOk;
}

// An inter block of H.263 with annex S: coded by table I.2 if table 16 leads past the end of the block.
inline VekStatus decodeBlockAlternative(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDstBlock,
                                        Vek32s* pIndxLastNonZero, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    ByteReader reader(ppBitStream, pBitOffset);
    int last = readBlock<Syntax::h263, kInter>(reader, pDstBlock, layout);
    if (last == kPastEnd) {
        reader = ByteReader(ppBitStream, pBitOffset);
        last = readBlock<Syntax::h263, kAdvancedIntra>(reader, pDstBlock, layout);
    }
    if (last < 0) return vekStsErrCoeffDecode;
    reader.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, last);
    return vekStsOk;
}

// ---- reversible codes from their end

// Reads bits one before the other. No byte that holds none of the `left` bits before the cursor is touched.
class BackwardReader {
  public:
    BackwardReader(Vek8u* const* ppBitStream, const Vek32s* pBitOffset, Vek32s left)
        : byte_(load<Vek8u*>(ppBitStream)), offset_(load<Vek32s>(pBitOffset)), left_(left) {}

    Vek32s left() const { return left_; }

    // The n bits (0 to 32) before the cursor, the nearest one most significant; those that are not left are 0.
    Vek32u peek(int n) const {
        Vek32u bits = 0;
        for (int k = 0; k < n; ++k) bits = bits << 1 | (k < left_ ? bitBefore(k) : 0);
        return bits;
    }

    void skip(int n) {
        left_ -= n;
        offset_ -= n;
        byte_ += offset_ >> 3;
        offset_ &= 7;
    }

    Vek32u read(int n) {
        const Vek32u bits = peek(n);
        skip(n);
        return bits;
    }

    // A number of n bits, which comes with its least significant bit first.
    Vek32u readNumber(int n) {
        Vek32u number = 0;
        for (int k = 0; k < n; ++k) number |= read(1) << k;
        return number;
    }

    void commit(Vek8u** ppBitStream, Vek32s* pBitOffset) const {
        store(ppBitStream, byte_);
        store(pBitOffset, offset_);
    }

  private:
    Vek32u bitBefore(int k) const {
        const int at = offset_ - 1 - k;
        return byte_[at >> 3] >> (7 - (at & 7)) & 1;
    }

    Vek8u* byte_;
    Vek32s offset_;
    Vek32s left_;
};

// The bits of a code in the order in which they come from behind.
constexpr Vek32u reversed(mpeg4::Code code) {
    Vek32u bits = 0;
    for (int k = 0; k < code.length; ++k) bits = bits << 1 | (code.bits >> k & 1);
    return bits;
}

// A whole symbol, its sign first; level 0 where the bits that are left hold none.
template <const mpeg4::CodeTable& table>
RunLevel readSymbolBackward(BackwardReader& reader) {
    using namespace mpeg4;
    constexpr int kEscapeBits = kReversibleEscapeLength + 1 + 6 + 1 + 11 + kReversibleEscapeEndLength + 1;
    const bool negative = reader.read(1) != 0;
    if (reader.peek(4) == 0) {  // the end of an escape, 10000; no code ends in 0000
        if (reader.left() < kEscapeBits - 1) return {};
        const bool end = reader.readNumber(kReversibleEscapeEndLength) == kReversibleEscapeEnd;
        const auto level = static_cast<Vek32s>(reader.readNumber(11));
        const bool marker = reader.read(1) != 0;
        const int run = static_cast<int>(reader.readNumber(6));
        const bool last = reader.read(1) != 0;
        const bool escape = reader.readNumber(kReversibleEscapeLength) == kReversibleEscapeCode;
        if (!end || !marker || !escape) return {};
        return {last, run, negative ? -level : level};
    }
    const Vek32u bits = reader.peek(kLongestCode);
    for (const RunLevelCode& entry : table) {
        if (bits >> (kLongestCode - entry.code.length) != reversed(entry.code)) continue;
        if (reader.left() < entry.code.length) return {};
        reader.skip(entry.code.length);
        return {entry.last != 0, entry.run, negative ? -entry.level : entry.level};
    }
    return {};
}

template <const mpeg4::CodeTable& table>
VekStatus decodeBlockBackward(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s numBits, Vek16s* pDstBlock,
                              Vek32s* pIndxLastNonZero, mpeg4::BlockLayout layout) {
    BackwardReader reader(ppBitStream, pBitOffset, numBits);
    RunLevel symbols[64];  // from the last one on
    int n = 0, positions = layout.start;
    while (reader.left() > 0) {
        BackwardReader next = reader;
        const RunLevel symbol = readSymbolBackward<table>(next);
        if (symbol.level == 0) return vekStsErrCoeffDecode;
        if (symbol.last != (n == 0)) {
            if (n == 0) return vekStsErrCoeffDecode;
            break;  // the block before this one
        }
        positions += symbol.run + 1;
        if (positions > 64) return vekStsErrCoeffDecode;
        symbols[n++] = symbol;
        reader = next;
    }
    mpeg4::clearBlock(pDstBlock, layout.start);
    int i = layout.start - 1;
    while (n > 0) {
        --n;
        i += symbols[n].run + 1;
        store(pDstBlock + layout.scan[i], static_cast<Vek16s>(symbols[n].level));
    }
    reader.commit(ppBitStream, pBitOffset);
    store<Vek32s>(pIndxLastNonZero, i);
    return vekStsOk;
}

// ---- DC

inline VekStatus decodeDcMpeg4(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC, bool chroma) {
    ByteReader reader(ppBitStream, pBitOffset);
    for (int size = 0; size <= 12; ++size) {
        const mpeg4::Code code = mpeg4::kDcSizes[chroma].codes[size];
        if (reader.peek(code.length) != code.bits) continue;
        reader.skip(code.length);
        const Vek32s dc = mpeg4::dcDifferential(reader.read(size), size);
        if (size > 8 && reader.read(1) == 0) return vekStsErrCoeffDecode;  // the marker
        store(pDC, static_cast<Vek16s>(dc));
        reader.commit(ppBitStream, pBitOffset);
        return vekStsOk;
    }
    return vekStsErrCoeffDecode;
}

inline VekStatus decodeDcH263(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDC) {
    ByteReader reader(ppBitStream, pBitOffset);
    const Vek32s dc = mpeg4::dcLevel(reader.read(8));
    if (dc == 0) return vekStsErrCoeffDecode;
    store(pDC, static_cast<Vek16s>(dc));
    reader.commit(ppBitStream, pBitOffset);
    return vekStsOk;
}

}  // namespace vekvc::plain

#endif
