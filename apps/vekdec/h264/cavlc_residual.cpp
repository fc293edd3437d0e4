#include "h264/cavlc_residual.h"

#include <array>
#include <bit>
#include <cstring>
#include <new>
#include <type_traits>

#include "tables/h264_vlc_tables.h"

namespace vekdec::h264 {

CavlcTables::CavlcTables() {
    using namespace vekvc_tables;
    for (std::size_t i = 0; i < 3; ++i) coeffToken[i] = build(kCoeffTokenLists[i].data());
    coeffToken420Dc = build(kCoeffTokenLists[3].data());
    coeffToken422Dc = build(kCoeffTokenLists[4].data());
    for (std::size_t i = 1; i < 16; ++i) totalZeros4x4[i] = build(kTotalZerosLists4x4[i - 1].data());
    for (std::size_t i = 1; i < 4; ++i) totalZeros2x2[i] = build(kTotalZerosLists2x2[i - 1].data());
    for (std::size_t i = 1; i < 8; ++i) totalZeros2x4[i] = build(kTotalZerosLists2x4[i - 1].data());
    for (std::size_t i = 1; i < 15; ++i) runBefore[i] = i <= 7 ? build(kRunBeforeLists[i - 1].data()) : runBefore[7];
}

const Vek32s* CavlcTables::build(const Vek32s* list) {
    Vek32s* table = nullptr;
    if (vekiHuffmanTableInitAlloc_32s(list, &table) != vekStsOk) throw std::bad_alloc();
    tables_.emplace_back(table);
    return table;
}

namespace {

// Numbers of coefficients around and in the macroblock: one row of blocks above, one column at the left.
struct Counts {
    static constexpr int kStep = 8;
    static constexpr std::uint8_t kNotAvailable = 64;
    std::uint8_t count[5 * kStep];

    static constexpr int at(int x, int y) { return (y + 1) * kStep + x + 1; }
    int nC(int i) const {
        const int sum = count[i - 1] + count[i - kStep];
        return sum < kNotAvailable ? (sum + 1) >> 1 : sum & 31;
    }
};

// Of luma blocks in decoding order: their place in raster order, and among the counts.
struct BlockPlace {
    std::uint8_t raster, at;
};
constexpr auto kPlaces = [] {
    std::array<BlockPlace, 16> places{};
    for (std::size_t i = 0; i < 16; ++i) {
        const int raster = kBlockRaster[i];
        places[i] = {kBlockRaster[i], static_cast<std::uint8_t>(Counts::at(raster & 3, raster >> 2))};
    }
    return places;
}();
BlockPlace placeOf(int block) { return kPlaces[static_cast<std::size_t>(block)]; }

// coeff_token of TotalCoeff 0 (Table 9-5) by nC.
struct EmptyToken {
    std::uint8_t length, bits;
};
constexpr EmptyToken kEmptyTokens[17] = {{1, 1}, {1, 1}, {2, 3}, {2, 3}, {4, 15}, {4, 15}, {4, 15}, {4, 15}, {6, 3},
                                         {6, 3}, {6, 3}, {6, 3}, {6, 3}, {6, 3},  {6, 3},  {6, 3},  {6, 3}};

template <typename Coeff>
struct Parser {
    BitReader& bits;
    const CavlcTables& tables;
    const Vek32s* scan;
    Coeff* next;

    int block(int nC, int most, const Vek32s* order) {
        // A third of all blocks and more is empty: one look tells, without the call.
        const EmptyToken empty = kEmptyTokens[nC];
        if (bits.peek32() >> (32 - empty.length) == empty.bits) {
            bits.skip(empty.length);
            return 0;
        }
        Vek16s total = 0;
        VekStatus status;
        auto zeros = const_cast<const Vek32s**>(tables.totalZeros4x4);
        auto runs = const_cast<const Vek32s**>(tables.runBefore);
        auto tokens = const_cast<const Vek32s**>(tables.coeffToken);
        if constexpr (std::is_same_v<Coeff, Vek16s>)
            status = vekiDecodeCAVLCCoeffs_H264_1u16s(bits.word(), bits.offset(), &total, &next, nC,
                                                      static_cast<Vek16s>(most), tokens, zeros, runs, order);
        else
            status = vekiDecodeCAVLCCoeffs_H264_1u32s(bits.word(), bits.offset(), &total, &next, nC,
                                                      static_cast<Vek16s>(most), tokens, zeros, runs, order);
        if (status != vekStsOk) throw BadSyntax("no valid coefficient code");
        return total;
    }

    int chromaDc(bool is422) {
        Vek16s total = 0;
        VekStatus status;
        auto runs = const_cast<const Vek32s**>(tables.runBefore);
        auto zeros = const_cast<const Vek32s**>(is422 ? tables.totalZeros2x4 : tables.totalZeros2x2);
        const Vek32s* token = is422 ? tables.coeffToken422Dc : tables.coeffToken420Dc;
        constexpr bool narrow = std::is_same_v<Coeff, Vek16s>;
        if constexpr (narrow)
            status = (is422 ? vekiDecodeCAVLCChroma422DcCoeffs_H264_1u16s : vekiDecodeCAVLCChromaDcCoeffs_H264_1u16s)(
                bits.word(), bits.offset(), &total, &next, token, zeros, runs);
        else
            status = (is422 ? vekiDecodeCAVLCChroma422DcCoeffs_H264_1u32s : vekiDecodeCAVLCChromaDcCoeffs_H264_1u32s)(
                bits.word(), bits.offset(), &total, &next, token, zeros, runs);
        if (status != vekStsOk) throw BadSyntax("no valid chroma DC coefficient code");
        return total;
    }

    // An 8x8 block of CAVLC comes as four 4x4 blocks, of which coefficient k of block i is 4 * k + i in scan order
    // (7.3.5.3.2).
    bool block8x8(Counts& counts, std::uint8_t* totalCoeff, int quadrant, const std::uint8_t* scan8x8) {
        static constexpr Vek32s kInOrder[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
        Coeff* const whole = next;
        // Of 128 bytes in one piece the compiler makes a repeated string instruction, whose start alone takes longer.
        for (int i = 0; i < 4; ++i) std::memset(whole + 16 * i, 0, 16 * sizeof(Coeff));
        int total = 0;
        for (int i = 0; i < 4; ++i) {
            const auto [raster, at] = placeOf(4 * quadrant + i);
            Coeff part[16];
            next = part;
            const int n = block(counts.nC(at), 16, kInOrder);
            counts.count[at] = totalCoeff[raster] = static_cast<std::uint8_t>(n);
            total += n;
            if (n == 0) continue;
            // Most coefficients stand at the front.
            for (int k = 0; k < 16; k += 4)
                if ((part[k] | part[k + 1] | part[k + 2] | part[k + 3]) != 0)
                    for (int j = k; j < k + 4; ++j) whole[scan8x8[4 * j + i]] = part[j];
        }
        next = total == 0 ? whole : whole + 64;
        return total != 0;
    }
};

void gatherLuma(const Neighbours& n, Counts& counts) {
    std::uint8_t* const above = counts.count + Counts::at(0, -1);
    if (n.above != nullptr)
        std::memcpy(above, n.above->totalCoeff + 12, 4);
    else
        std::memset(above, Counts::kNotAvailable, 4);
    for (int i = 0; i < 4; ++i) {
        std::uint8_t& count = counts.count[Counts::at(-1, i)];
        const std::uint8_t entry = n.rows->luma[i];
        if (n.left[0] == nullptr)  // then the other one is neither
            count = Counts::kNotAvailable;
        else
            count = n.leftOf(entry)->totalCoeff[(entry & 3) * 4 + 3];
    }
}

void gatherChroma(const Neighbours& n, int component, int rows, Counts& counts) {
    for (int i = 0; i < rows; ++i) {
        const std::uint8_t entry = rows == 2 ? n.rows->chroma420[i] : n.rows->chroma422[i];
        const Macroblock* left = n.leftOf(entry);
        counts.count[Counts::at(-1, i)] =
            left != nullptr ? left->totalCoeffC[component][(entry & 3) * 2 + 1] : Counts::kNotAvailable;
    }
    for (int i = 0; i < 2; ++i)
        counts.count[Counts::at(i, -1)] =
            n.above != nullptr ? n.above->totalCoeffC[component][2 * (rows - 1) + i] : Counts::kNotAvailable;
}

}  // namespace

template <typename Coeff>
Coeff* parseCavlcResidual(BitReader& bits, const CavlcTables& tables, const Neighbours& neighbours, int chromaFormatIdc,
                          Macroblock& mb, Residual<Coeff>& residual) {
    Parser<Coeff> parser{bits, tables, kScan4x4[mb.field], residual.coeffs};
    Vek32u coded = 0, codedChroma = 0;
    Counts counts;
    std::memset(counts.count, 0, sizeof counts.count);
    const bool is16x16 = mb.type == MbType::I16x16;
    if (is16x16 || (mb.codedBlockPattern & 15) != 0) gatherLuma(neighbours, counts);
    if (is16x16 && parser.block(counts.nC(Counts::at(0, 0)), 16, parser.scan) != 0) coded |= 1;
    unsigned nonZero = 0;
    for (unsigned left = mb.codedBlockPattern & 15; left != 0; left &= left - 1) {
        const int quadrant = std::countr_zero(left);
        if (mb.transform8x8) {
            if (parser.block8x8(counts, mb.totalCoeff, quadrant, kScan8x8[mb.field])) {
                coded |= 2u << (4 * quadrant);
                nonZero |= 0x33u << (quadrant % 2 * 2 + quadrant / 2 * 8);
            }
            continue;
        }
        for (int i = 0; i < 4; ++i) {
            const auto [raster, at] = placeOf(4 * quadrant + i);
            const int n = parser.block(counts.nC(at), is16x16 ? 15 : 16, parser.scan);
            counts.count[at] = mb.totalCoeff[raster] = static_cast<std::uint8_t>(n);
            if (n != 0) {
                coded |= 2u << (4 * quadrant + i);
                nonZero |= 1u << raster;
            }
        }
    }
    mb.nonZero = static_cast<std::uint16_t>(nonZero);

    const int chromaPattern = chromaFormatIdc == 0 ? 0 : mb.codedBlockPattern >> 4;
    const bool is422 = chromaFormatIdc == 2;
    if (chromaPattern != 0)
        for (unsigned component = 0; component < 2; ++component)
            if (parser.chromaDc(is422) != 0) (is422 ? codedChroma : coded) |= (is422 ? 1u : 1u << 17) << component;
    if (chromaPattern == 2) {
        const int rows = is422 ? 4 : 2;
        for (int component = 0; component < 2; ++component) {
            std::memset(counts.count, 0, sizeof counts.count);
            gatherChroma(neighbours, component, rows, counts);
            for (int i = 0; i < 2 * rows; ++i) {
                const int at = Counts::at(i % 2, i / 2);
                const int n = parser.block(counts.nC(at), 15, parser.scan);
                counts.count[at] = mb.totalCoeffC[component][i] = static_cast<std::uint8_t>(n);
                if (n == 0) continue;
                if (is422)
                    codedChroma |= 1u << (2 + 8 * component + i);
                else
                    coded |= 1u << (19 + 4 * component + i);
            }
        }
    }
    // Only now: a block that begins in the zeros behind the end has no valid code.
    if (bits.beyondEnd()) throw BadSyntax("the data ends inside the coefficients");
    residual.coded = coded;
    residual.codedChroma = codedChroma;
    return parser.next;
}

template Vek16s* parseCavlcResidual<Vek16s>(BitReader&, const CavlcTables&, const Neighbours&, int, Macroblock&,
                                            Residual<Vek16s>&);
template Vek32s* parseCavlcResidual<Vek32s>(BitReader&, const CavlcTables&, const Neighbours&, int, Macroblock&,
                                            Residual<Vek32s>&);

}  // namespace vekdec::h264
