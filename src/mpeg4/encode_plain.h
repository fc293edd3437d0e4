// Writing of coefficient blocks and DC values: the inverse of coefficients_plain.h.
#ifndef VEKVC_MPEG4_ENCODE_PLAIN_H
#define VEKVC_MPEG4_ENCODE_PLAIN_H

#include <bit>

#include "core/arith.h"
#include "mpeg4/coefficients_syntax.h"

namespace vekvc::plain {

// Does the table hold this level behind this run?
template <const mpeg4::CodeTable& table>
constexpr bool holds(int last, int run, int level) {
    return run >= 0 && level >= 1 && level <= table.largestLevel[last][run];
}

// Finds the code of something that the table holds.
template <const mpeg4::CodeTable& table>
struct ListedCodes {
    static constexpr mpeg4::Code of(int last, int run, int level) {
        for (const mpeg4::RunLevelCode& entry : table)
            if (entry.last == last && entry.run == run && entry.level == level) return entry.code;
        return {};
    }
};

// n bits of a number in two's complement.
constexpr Vek32u lowBits(Vek32s value, int n) { return static_cast<Vek32u>(value) & ((Vek32u{1} << n) - 1); }

inline void putCode(ByteWriter& writer, mpeg4::Code code, Vek32s level) {
    writer.put(code.bits, code.length);
    writer.put(level < 0 ? 1 : 0, 1);
}

// A coefficient that the table does not hold, by the shortest escape (14496-2 7.4.1.3).
template <const mpeg4::CodeTable& table, class Codes>
void putEscapeMpeg4(ByteWriter& writer, int last, int run, Vek32s level) {
    const auto size = static_cast<int>(magnitude(level));
    const int size1 = size - table.largestLevel[last][run];
    const int run2 = size < 64 && table.largestRun[last][size] > 0 ? run - table.largestRun[last][size] : -1;
    const bool type1 = holds<table>(last, run, size1), type2 = holds<table>(last, run2, size);
    const mpeg4::Code code1 = type1 ? Codes::of(last, run, size1) : mpeg4::Code();
    const mpeg4::Code code2 = type2 ? Codes::of(last, run2, size) : mpeg4::Code();
    writer.put(mpeg4::kEscapeCode, mpeg4::kEscapeLength);
    if (type1 && (!type2 || 1 + code1.length <= 2 + code2.length)) {
        writer.put(0b0, 1);
        putCode(writer, code1, level);
    } else if (type2) {
        writer.put(0b10, 2);
        putCode(writer, code2, level);
    } else {
        writer.put(0b11, 2);
        writer.put(static_cast<Vek32u>(last << 6 | run), 7);
        writer.put(1, 1);
        writer.put(lowBits(level, 12), 12);
        writer.put(1, 1);
    }
}

inline void putEscapeReversible(ByteWriter& writer, int last, int run, Vek32s level) {
    writer.put(mpeg4::kReversibleEscapeCode, mpeg4::kReversibleEscapeLength);
    writer.put(static_cast<Vek32u>(last << 6 | run), 7);
    writer.put(1, 1);
    writer.put(magnitude(level), 11);
    writer.put(mpeg4::kReversibleEscapeEnd, mpeg4::kReversibleEscapeEndLength);
    writer.put(level < 0 ? 1 : 0, 1);
}

inline void putEscapeH263(ByteWriter& writer, int last, int run, Vek32s level) {
    writer.put(mpeg4::kEscapeCode, mpeg4::kEscapeLength);
    writer.put(static_cast<Vek32u>(last << 6 | run), 7);
    if (magnitude(level) <= 127) {
        writer.put(lowBits(level, 8), 8);
    } else {  // EXTENDED-LEVEL, the five low bits first (annex T.4)
        writer.put(0x80, 8);
        writer.put(lowBits(level, 5), 5);
        writer.put(lowBits(level >> 5, 6), 6);
    }
}

inline void putEscapeH261(ByteWriter& writer, int run, Vek32s level) {
    writer.put(mpeg4::kH261EscapeCode, mpeg4::kH261EscapeLength);
    writer.put(static_cast<Vek32u>(run), 6);
    writer.put(lowBits(level, 8), 8);
}

// The levels of a block are limited to what the escapes can say.
constexpr Vek32s largestLevel(mpeg4::Syntax syntax, bool extended) {
    using enum mpeg4::Syntax;
    return syntax == mpeg4 || syntax == reversible ? 2047 : extended ? 1023 : 127;
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table, class Codes>
void putEscape(ByteWriter& writer, int last, int run, Vek32s level) {
    using namespace mpeg4;
    if constexpr (syntax == Syntax::mpeg4)
        putEscapeMpeg4<table, Codes>(writer, last, run, level);
    else if constexpr (syntax == Syntax::reversible)
        putEscapeReversible(writer, last, run, level);
    else if constexpr (syntax == Syntax::h263)
        putEscapeH263(writer, last, run, level);
    else
        putEscapeH261(writer, run, level);
}

template <mpeg4::Syntax syntax, const mpeg4::CodeTable& table>
void encodeBlock(Vek8u** ppBitStream, Vek32s* pBitOffset, const Vek16s* pSrcBlock, mpeg4::BlockLayout layout) {
    using namespace mpeg4;
    const auto levelAt = [&](int i) { return Vek32s{load<Vek16s>(pSrcBlock + layout.scan[i])}; };
    int lastIndex = 63;
    while (lastIndex >= layout.start && levelAt(lastIndex) == 0) --lastIndex;
    if (lastIndex < layout.start && syntax != Syntax::h261Intra) return;
    ByteWriter writer(ppBitStream, pBitOffset);
    const Vek32s largest = largestLevel(syntax, layout.extended);
    int run = 0;
    for (int i = layout.start; i <= lastIndex; ++i) {
        const Vek32s level = clip3(-largest, largest, levelAt(i));
        if (level == 0) {
            ++run;
            continue;
        }
        const int last = !isH261(syntax) && i == lastIndex ? 1 : 0;
        const auto size = static_cast<int>(magnitude(level));
        if (syntax == Syntax::h261Inter && i == 0 && size == 1)
            writer.put(level < 0 ? 0b11 : 0b10, 2);
        else if (holds<table>(last, run, size))
            putCode(writer, ListedCodes<table>::of(last, run, size), level);
        else
            putEscape<syntax, table, ListedCodes<table>>(writer, last, run, level);
        run = 0;
    }
    if (isH261(syntax)) writer.put(kH261EndOfBlock, kH261EndOfBlockLength);
    writer.finish(ppBitStream, pBitOffset);
}

// ---- DC

inline void encodeDcMpeg4(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s dc, bool chroma) {
    const auto size = static_cast<int>(std::bit_width(magnitude(dc)));
    const mpeg4::Code code = mpeg4::kDcSizes[chroma].codes[size];
    ByteWriter writer(ppBitStream, pBitOffset);
    writer.put(code.bits, code.length);
    writer.put(lowBits(dc < 0 ? dc + (1 << size) - 1 : dc, size), size);
    if (size > 8) writer.put(1, 1);
    writer.finish(ppBitStream, pBitOffset);
}

inline void encodeDcH263(Vek8u** ppBitStream, Vek32s* pBitOffset, Vek32s dc) {
    ByteWriter writer(ppBitStream, pBitOffset);
    writer.put(dc == 128 ? 255 : static_cast<Vek32u>(dc), 8);
    writer.finish(ppBitStream, pBitOffset);
}

}  // namespace vekvc::plain

#endif
