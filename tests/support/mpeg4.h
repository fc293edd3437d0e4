// Coefficient blocks of MPEG-4, H.263 and H.261 as an encoder writes them. The code tables stand here in the other
// direction: what each word means, the words in order of length, then of value.
#ifndef VEKVC_TESTS_MPEG4_H
#define VEKVC_TESTS_MPEG4_H

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bit_writer.h"

namespace vekvc_test {

namespace mpeg4_tables {

// Two characters for each word: its run and its level, '#' being 0. The words of MPEG-4's intra table (B.16) that end a
// block are others than those of table B.17 and of H.263's tables 16 and I.2.
inline constexpr const char* kWords =
    "10 110 1110 1111 01011 01100 01101 010000 010001 010010 010011 010100 010101 0010100 0010101 0010110 "
    "0010111 00011011 00011100 00011101 00011110 00011111 000011010 000011011 000011100 000011101 000011110 "
    "000011111 000100000 000100001 000100010 000100011 000100100 000100101 0000001000 0000001001 0000001010 "
    "0000001011 0000001100 0000001101 0000001110 0000001111 0000100000 0000100001 00000000110 00000000111 "
    "00000100000 00000100001 00000100010 00000100011 000001010000 000001010001 000001010010 000001010011 "
    "000001010100 000001010101 000001010110 000001010111";
inline constexpr const char* kLastWords =
    "0111 001100 001101 001110 001111 0010000 0010001 0010010 0010011 00010011 00010100 00010101 00010110 "
    "00010111 00011000 00011001 00011010 000010001 000010010 000010011 000010100 000010101 000010110 "
    "000010111 000011000 000011001 0000000100 0000000101 0000000110 0000000111 00000000100 00000000101 "
    "00000100100 00000100101 00000100110 00000100111 000001011000 000001011001 000001011010 000001011011 "
    "000001011100 000001011101 000001011110 000001011111";
inline constexpr const char* kInter =
    "#$$$%$#%($'$&$,$+$*$)$$%#&/$.$-$#'1$0$%%$&#(9$8$7$6$5$4$3$2$'%&%#*#),%+%*%)%(%&&%&$'#,#+#.#-#/$(:$;$$)%'"
    "'&(&)&-%<$=$";
inline constexpr const char* kInterLast =
    "#$'$&$%$$$+$*$)$($3$2$1$0$/$.$-$,$;$:$9$8$7$6$5$4$#%?$>$=$<$$%#&@$A$B$C$D$E$F$G$H$I$J$K$";
inline constexpr const char* kIntraWords =
    "10 110 1110 1111 01011 01100 01101 001101 010000 010001 010010 010011 010100 010101 0010010 0010100 "
    "0010101 0010110 0010111 00010111 00011000 00011001 00011011 00011100 00011101 00011110 00011111 "
    "000011000 000011001 000011010 000011011 000011100 000011101 000011110 000011111 000100000 000100001 "
    "000100010 000100011 000100100 000100101 0000000111 0000001000 0000001001 0000001010 0000001011 "
    "0000001100 0000001101 0000001110 0000001111 0000100000 0000100001 00000000110 00000000111 00000100000 "
    "00000100001 00000100010 00000100011 000001010000 000001010001 000001010010 000001010011 000001010100 "
    "000001010101 000001010110 000001010111 000001011000";
inline constexpr const char* kIntraLastWords =
    "0111 001100 001110 001111 0010000 0010001 0010011 00010011 00010100 00010101 00010110 00011010 "
    "000010001 000010010 000010011 000010100 000010101 000010110 000010111 0000000100 0000000101 0000000110 "
    "00000000100 00000000101 00000100100 00000100101 00000100110 00000100111 000001011001 000001011010 "
    "000001011011 000001011100 000001011101 000001011110 000001011111";
inline constexpr const char* kIntra =
    "#$#%$$#&%$#(#'($'$&$#+#*$%#))$*$%%$&#,-$,$+$&%$'#/#.#-/$.$*%)%(%&&%&$)$(#3'%#2#1#00$(&+%'&&'%'$*#7#6#5#4"
    "#9#8#:#;$+,%#<#=#>$,)&$-%(*&1$";
inline constexpr const char* kIntraLast = "#$#%%$$$'$&$($+$*$)$#&,$1$0$/$.$-$$%#'%%$&#(#*#)&%'%2$3$#+(%)%4$5$6$7$";
inline constexpr const char* kAdvanced =
    "#$#%#&$$%$#'#(#)#*#+'$$%&$$&%%#,($#-)$&%$'*$#0#1#2#3#4#5#.#/(%'%,$+$/$%'+%*%)%&&%&$(.$-$,%'&0$$)#7#6$*&'"
    "(&#<#;#:#9#8";
inline constexpr const char* kAdvancedLast =
    "#$#%&$%$$$#&'$)$($#'*$+$0$/$.$-$,$#(#)$%%%2$3$5$4$1$#*$&&%'%6$7$%&$'#,#+8$9$:$*%)%(%&&#-";
inline constexpr const char* kReversibleIsLast =
    "00001000011000011110000011111000000001111000000011111110000000000011111000000000000011111000000000011111"
    "11111000000000000001111111100000000000000001111111100000001111111";
inline constexpr const char* kReversibleInter =
    "#$$$#%%$#$#&&$'$($$$%$$%)$*$+$&$'$($)$#'%%,$-$.$*$+$,$-$.$#(#)$&&%'%/$0$1$#%/$0$1$#*$'%&(%2$3$4$$%2$3$4$"
    "5$6$7$#+#,$(&&)%*%+%,%5$6$7$8$9$:$;$<$#-#.$)%''&(&-%8$9$:$;$<$=$#&%%=$>$?$#/$*%(&')&*&.%>$?$@$$&&%'%@$A$"
    "B$C$D$E$F$#0#1#2#3$+&(''('+&/%A$B$C$D$#'(%)%*%+%,%G$H$#4#5$,$-%)%*&))',&0%1%2%3%E$F$G$#($'-%.%/%I$J$K$#6"
    "&*'(*'4%H$I$$(%&0%L$M$N$O$";
inline constexpr const char* kReversibleIntra =
    "#$#%$$#&#$%$&$$%#'$$%$'$($#(#)&$'$($)$)$*$%%$&#**$+$,$-$.$+$,$&%'%$'$(#+#,#%/$0$1$-$(%%&&&$)#-#.$%2$3$4$"
    "5$6$7$.$/$)%*%+%'&%'$*#/#0#18$9$:$;$<$0$,%(&)&*&&'%(%)$+$,#2#3#4#&%%=$>$?$-%''(')'&('($-#5#6#9$&&%'%@$A$"
    "B$C$D$E$F$1$2$.%+&,&*'&)%*%+%,$.#7#8#:#'(%)%*%+%,%G$H$3$4$5$+'((')()&*&+%-%.$/$0#;#<#=#($'-%.%/%I$J$K$#>"
    "&,)(*(,'/%6$$(%&0%L$M$N$O$";
inline constexpr const char* kH261Words =
    "11 011 0100 0101 00101 00110 00111 000100 000101 000110 000111 0000100 0000101 0000110 0000111 00100000 "
    "00100001 00100010 00100011 00100100 00100101 00100110 00100111 0000001000 0000001001 0000001010 "
    "0000001011 0000001100 0000001101 0000001110 0000001111 000000010000 000000010001 000000010010 "
    "000000010011 000000010100 000000010101 000000010110 000000010111 000000011000 000000011001 000000011010 "
    "000000011011 000000011100 000000011101 000000011110 000000011111 0000000010000 0000000010001 "
    "0000000010010 0000000010011 0000000010100 0000000010101 0000000010110 0000000010111 0000000011000 "
    "0000000011001 0000000011010 0000000011011 0000000011100 0000000011101 0000000011110 0000000011111";
inline constexpr const char* kH261 =
    "#$$$#%%$#&'$&$*$)$$%($%%,$#'+$0$#)/$.$&%$&#(-$3$(%#*%&$'2$1$'%#.+%'&#-%'*%8$7$#,6$5$$(&&#+)%4$-%,%(&&'%("
    "$*$)#2#1#0#/=$<$;$:$9$";
}  // namespace mpeg4_tables

enum class Mpeg4Table { inter, intra, advancedIntra, reversibleInter, reversibleIntra, h261 };

struct Mpeg4Code {
    std::string word;
    bool last;
    int run, level;
};

inline std::vector<std::string> splitWords(const char* words) {
    std::istringstream in(words);
    std::vector<std::string> result;
    for (std::string word; in >> word;) result.push_back(word);
    return result;
}

// The words 0 1..1 0 1..1 0 x and 1 0..0 1 x (x a bit) without 0000; the table takes the first 169 of them.
inline std::vector<std::string> reversibleWords() {
    std::vector<std::string> words;
    for (int length = 3; length <= 15; ++length) {
        std::vector<std::string> same;
        for (const char* x : {"0", "1"}) {
            const auto ones = [](int n) { return std::string(static_cast<std::size_t>(n), '1'); };
            for (int a = 0; a <= length - 4; ++a) same.push_back("0" + ones(a) + "0" + ones(length - 4 - a) + "0" + x);
            same.push_back("1" + std::string(static_cast<std::size_t>(length - 3), '0') + "1" + x);
        }
        std::sort(same.begin(), same.end());
        for (auto& word : same)
            if (word != "0000" && words.size() < 169) words.push_back(word);
    }
    return words;
}

inline const std::vector<Mpeg4Code>& mpeg4Codes(Mpeg4Table table) {
    using namespace mpeg4_tables;
    static const std::vector<std::vector<Mpeg4Code>> all = [] {
        std::vector<std::vector<Mpeg4Code>> tables(6);
        const auto add = [&](Mpeg4Table to, const std::vector<std::string>& words, const char* meanings,
                             auto&& isLast) {
            for (std::size_t i = 0; i < words.size(); ++i)
                tables[static_cast<std::size_t>(to)].push_back(
                    {words[i], isLast(i), meanings[2 * i] - '#', meanings[2 * i + 1] - '#'});
        };
        const auto no = [](std::size_t) { return false; };
        const auto yes = [](std::size_t) { return true; };
        const auto reversibleLast = [](std::size_t i) { return kReversibleIsLast[i] == '1'; };
        add(Mpeg4Table::inter, splitWords(kWords), kInter, no);
        add(Mpeg4Table::inter, splitWords(kLastWords), kInterLast, yes);
        add(Mpeg4Table::intra, splitWords(kIntraWords), kIntra, no);
        add(Mpeg4Table::intra, splitWords(kIntraLastWords), kIntraLast, yes);
        add(Mpeg4Table::advancedIntra, splitWords(kWords), kAdvanced, no);
        add(Mpeg4Table::advancedIntra, splitWords(kLastWords), kAdvancedLast, yes);
        add(Mpeg4Table::reversibleInter, reversibleWords(), kReversibleInter, reversibleLast);
        add(Mpeg4Table::reversibleIntra, reversibleWords(), kReversibleIntra, reversibleLast);
        add(Mpeg4Table::h261, splitWords(kH261Words), kH261, no);
        return tables;
    }();
    return all[static_cast<std::size_t>(table)];
}

// The word, or none.
inline std::string mpeg4Word(Mpeg4Table table, bool last, int run, int level) {
    for (const Mpeg4Code& code : mpeg4Codes(table))
        if (code.last == last && code.run == run && code.level == level) return code.word;
    return "";
}
inline int mpeg4LargestLevel(Mpeg4Table table, bool last, int run) {
    int level = 0;
    for (const Mpeg4Code& code : mpeg4Codes(table))
        if (code.last == last && code.run == run) level = std::max(level, code.level);
    return level;
}
// -1: the table has no such level.
inline int mpeg4LargestRun(Mpeg4Table table, bool last, int level) {
    int run = -1;
    for (const Mpeg4Code& code : mpeg4Codes(table))
        if (code.last == last && code.level == level) run = std::max(run, code.run);
    return run;
}

// A kind of block.
struct Mpeg4Coding {
    enum Syntax { mpeg4, reversible, h263, h261Intra, h261Inter } syntax;
    Mpeg4Table table;
    bool extended = false;  // H.263 with EXTENDED-LEVEL

    bool isH261() const { return syntax == h261Intra || syntax == h261Inter; }
    int largestLevel() const { return syntax <= reversible ? 2047 : extended ? 1023 : 127; }
};

enum class Mpeg4Way { table, type1, type2, type3 };

// A symbol written in one way, type 3 standing for the escape of the other syntaxes; "" if that way is none.
inline std::string mpeg4Symbol(const Mpeg4Coding& coding, Mpeg4Way way, bool last, int run, int level) {
    const int size = std::abs(level);
    const std::string sign = level < 0 ? "1" : "0";
    const auto coded = [&](int itsRun, int itsSize) {
        const std::string word = mpeg4Word(coding.table, last, itsRun, itsSize);
        return word.empty() ? word : word + sign;
    };
    const auto after = [](const char* start, const std::string& end) { return end.empty() ? end : start + end; };
    BitWriter bits;
    const auto lastAndRun = [&] { bits.put(static_cast<unsigned>(64 * last + run), 7); };
    switch (way) {
        case Mpeg4Way::table:
            return coded(run, size);
        case Mpeg4Way::type1:
            if (coding.syntax != Mpeg4Coding::mpeg4) return "";
            return after("00000110", coded(run, size - mpeg4LargestLevel(coding.table, last, run)));
        case Mpeg4Way::type2:
            if (coding.syntax != Mpeg4Coding::mpeg4) return "";
            return after("000001110", coded(run - mpeg4LargestRun(coding.table, last, size) - 1, size));
        case Mpeg4Way::type3:
            break;
    }
    switch (coding.syntax) {
        case Mpeg4Coding::mpeg4:
            bits.put("000001111"), lastAndRun(), bits.put("1");
            bits.put(static_cast<unsigned>(level), 12), bits.put("1");
            break;
        case Mpeg4Coding::reversible:
            bits.put("00001"), lastAndRun(), bits.put("1");
            bits.put(static_cast<unsigned>(size), 11), bits.put("10000" + sign);
            break;
        case Mpeg4Coding::h263:
            bits.put("0000011"), lastAndRun();
            if (size > 127) {
                bits.put("10000000"), bits.put(static_cast<unsigned>(level), 5);
                bits.put(static_cast<unsigned>(level >> 5), 6);
            } else {
                bits.put(static_cast<unsigned>(level), 8);
            }
            break;
        default:
            bits.put("000001"), bits.put(static_cast<unsigned>(run), 6), bits.put(static_cast<unsigned>(level), 8);
    }
    return bits.bits;
}

// The same as an encoder chooses: the table's code, else the shorter of types 1 and 2, else type 3.
inline std::string mpeg4Symbol(const Mpeg4Coding& coding, bool last, int run, int level) {
    const std::string code = mpeg4Symbol(coding, Mpeg4Way::table, last, run, level);
    if (!code.empty()) return code;
    const std::string type1 = mpeg4Symbol(coding, Mpeg4Way::type1, last, run, level);
    const std::string type2 = mpeg4Symbol(coding, Mpeg4Way::type2, last, run, level);
    if (!type1.empty() && (type2.empty() || type1.size() <= type2.size())) return type1;
    return !type2.empty() ? type2 : mpeg4Symbol(coding, Mpeg4Way::type3, last, run, level);
}

struct Mpeg4Pair {
    int run, level;
};

// A whole block; `symbol` writes one coefficient.
template <class Symbol>
std::string mpeg4Block(const Mpeg4Coding& coding, const std::vector<Mpeg4Pair>& pairs, Symbol&& symbol) {
    std::string bits;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [run, level] = pairs[i];
        if (i == 0 && coding.syntax == Mpeg4Coding::h261Inter && run == 0 && std::abs(level) == 1)
            bits += level < 0 ? "11" : "10";
        else
            bits += symbol(!coding.isH261() && i + 1 == pairs.size(), run, level);
    }
    if (coding.isH261() && (!pairs.empty() || coding.syntax == Mpeg4Coding::h261Intra)) bits += "10";
    return bits;
}
inline std::string mpeg4Block(const Mpeg4Coding& coding, const std::vector<Mpeg4Pair>& pairs) {
    return mpeg4Block(coding, pairs,
                      [&](bool last, int run, int level) { return mpeg4Symbol(coding, last, run, level); });
}
// The same with every way of writing a coefficient.
template <class Random>
std::string mpeg4BlockAnyWay(const Mpeg4Coding& coding, const std::vector<Mpeg4Pair>& pairs, Random& random) {
    return mpeg4Block(coding, pairs, [&](bool last, int run, int level) {
        const auto way = static_cast<Mpeg4Way>(random() % 4);
        const std::string bits = mpeg4Symbol(coding, way, last, run, level);
        return bits.empty() || random() % 2 == 0 ? mpeg4Symbol(coding, last, run, level) : bits;
    });
}

// A random block of at least one coefficient that begins at scan index `start`.
template <class Random>
std::vector<Mpeg4Pair> randomMpeg4Pairs(Random& random, int start, int largestLevel) {
    std::vector<Mpeg4Pair> pairs;
    const unsigned density = static_cast<unsigned>(random() % 4), size = static_cast<unsigned>(random() % 4);
    for (int positions = start;;) {
        Mpeg4Pair pair = {};
        if (density > 0)
            while (random() % (5 - density) == 0) ++pair.run;
        if (random() % 60 == 0) pair.run = static_cast<int>(random() % 64);
        positions += pair.run + 1;
        if (positions > 64) break;
        const int most = random() % 40 == 0 ? largestLevel : size == 0 ? 1 : size == 1 ? 3 : size == 2 ? 12 : 40;
        pair.level = (1 + static_cast<int>(random() % static_cast<unsigned>(most))) * (random() % 2 == 0 ? 1 : -1);
        pairs.push_back(pair);
        if (random() % (density == 0 ? 90 : 8) == 0) break;
    }
    return pairs.empty() ? std::vector<Mpeg4Pair>{{63 - start, 1}} : pairs;
}

// Bytes that hold `before`, then the bits; what is left of the last byte is `fill`.
inline std::vector<Vek8u> packBytes(std::string all, char fill) {
    all.resize((all.size() + 7) / 8 * 8, fill);
    std::vector<Vek8u> bytes(all.size() / 8);
    for (std::size_t i = 0; i < all.size(); ++i)
        bytes[i / 8] = static_cast<Vek8u>(bytes[i / 8] << 1 | (all[i] == '1' ? 1 : 0));
    return bytes;
}

}  // namespace vekvc_test

#endif
