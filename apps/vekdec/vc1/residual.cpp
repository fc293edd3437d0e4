#include "vc1/residual.h"

#include <bit>

namespace vekdec::vc1 {

TransformCode transformCode(int symbol) {
    static constexpr TransformCode kCodes[8] = {{Transform::T8x8, 3}, {Transform::T8x4, 1}, {Transform::T8x4, 2},
                                                {Transform::T8x4, 3}, {Transform::T4x8, 1}, {Transform::T4x8, 2},
                                                {Transform::T4x8, 3}, {Transform::T4x4, 3}};
    return kCodes[symbol];
}

void ResidualDecoder::begin(const PictureContext& context) {
    context_ = &context;
    const PictureHeader& header = *context.header;
    // Coding sets 0 to 3: high rate, low motion, high motion, mid rate (Tables of 11.8).
    const auto set = [&](int index) { return index == 0 ? (header.pqIndex <= 8 ? 0 : 1) : index + 1; };
    const Tables& t = tables();
    intraLuma_ = &t.coefficients[set(header.acTableLuma)];
    intraChroma_ = inter_ = &t.coefficients[4 + set(header.acTable)];
    quantClass_ = header.pquant <= 4 ? 0 : header.pquant <= 12 ? 1 : 2;
    const bool advanced = context.sequence->advanced();
    const bool interlaced = header.coding != Coding::Progressive;
    scans_[0] = interlaced ? kScanInterlaced8x8 : kScanInter8x8;
    scans_[1] = interlaced ? kScanInterlaced8x4 : advanced ? kScan8x4Advanced : kScan8x4;
    scans_[2] = interlaced ? kScanInterlaced4x8 : advanced ? kScan4x8Advanced : kScan4x8;
    scans_[3] = interlaced ? kScanInterlaced4x4 : kScan4x4;
    beginSlice();
}

// ---- run-level codes, 8.1.1.10

inline ResidualDecoder::Symbol ResidualDecoder::parseSymbol(WordReader& bits, const CoefficientSet& set) {
    const int code = decode(bits, set.table, "coefficient code");
    if (code == kEscape) [[unlikely]]
        return parseEscape(bits, set);
    const Coefficient c = Coefficient::unpack(code);
    const bool negative = bits.flag();
    return {c.run, negative ? -c.level : c.level, c.last != 0};
}

ResidualDecoder::Symbol ResidualDecoder::parseEscape(WordReader& bits, const CoefficientSet& set) {
    const bool first = bits.flag();
    if (first || bits.flag()) {
        const int code = decode(bits, set.table, "coefficient code");
        if (code == kEscape) throw BadSyntax("an escape inside an escape");
        Coefficient c = Coefficient::unpack(code);
        if (first)
            c.level += set.maxLevel[c.last][c.run];
        else
            c.run += set.maxRun[c.last][c.level] + 1;
        const bool negative = bits.flag();
        return {c.run, negative ? -c.level : c.level, c.last != 0};
    }
    const bool last = bits.flag();
    if (!escapeLengthsKnown_) {
        const PictureHeader& header = *context_->header;
        if (header.pquant < 8 || header.quantizers.present) {
            escapeLevelLength_ = static_cast<int>(bits.u(3));
            if (escapeLevelLength_ == 0) escapeLevelLength_ = 8 + static_cast<int>(bits.u(2));
        } else {
            escapeLevelLength_ = 2;
            while (escapeLevelLength_ < 8 && !bits.flag()) ++escapeLevelLength_;
        }
        escapeRunLength_ = 3 + static_cast<int>(bits.u(2));
        escapeLengthsKnown_ = true;
    }
    const int run = static_cast<int>(bits.u(escapeRunLength_));
    const bool negative = bits.flag();
    const int level = static_cast<int>(bits.u(escapeLevelLength_));
    return {run, negative ? -level : level, last};
}

// The `count` coefficients of a (sub-)block whose first one lies at `offset`.
void ResidualDecoder::parseLevels(WordReader& bits, const CoefficientSet& set, const std::uint8_t* scan, int from,
                                  int count, int offset, Coefficients& block) {
    for (int i = from;; ++i) {
        const Symbol s = parseSymbol(bits, set);
        i += s.run;
        if (i >= count) throw BadSyntax("a coefficient behind the end of its block");
        const int position = scan[i] + offset;
        block.value[position] = static_cast<Vek16s>(s.level);
        block.include(position);
        if (s.level == 0) [[unlikely]]
            block.zeroLevels |= std::uint64_t{1} << position;
        if (s.last) return;
    }
}

// ---- intra blocks

void ResidualDecoder::parseIntra(WordReader& bits, bool luma, const std::uint8_t* scan, Coefficients& block) {
    parseLevels(bits, luma ? *intraLuma_ : *intraChroma_, scan, 1, 64, 0, block);
}

int ResidualDecoder::parseDc(WordReader& bits, bool luma, int quant) {
    static constexpr int kEscapeSymbol = 119;
    const int table = context_->header->dcTable;
    int value = decode(bits, luma ? tables().dcLuma[table] : tables().dcChroma[table], "DC differential");
    if (value == 0) return 0;
    if (value == kEscapeSymbol)
        value = static_cast<int>(bits.u(quant == 1 ? 10 : quant == 2 ? 9 : 8));
    else if (quant == 1)
        value = 4 * value + static_cast<int>(bits.u(2)) - 3;
    else if (quant == 2)
        value = 2 * value + static_cast<int>(bits.u(1)) - 1;
    return bits.flag() ? -value : value;
}

void ResidualDecoder::dequantizeIntra(const Macroblock& mb, Coefficients& block) const {
    (context_->header->uniform ? vekiQuantInvIntraUniform_VC1_16s_C1IR : vekiQuantInvIntraNonuniform_VC1_16s_C1IR)(
        block.value, 16, {block.columns <= 4 ? 4 : 8, block.rows}, mb.quant, mb.halfStep);
}

// ---- inter blocks

void ResidualDecoder::parseInter(WordReader& bits, const TransformCode* told, bool patternTold, Macroblock& mb,
                                 int block, Coefficients& residual) {
    TransformCode code;
    if (told != nullptr) {
        code = *told;
    } else {
        code = transformCode(decode(bits, tables().ttBlock[quantClass_], "TTBLK"));
        patternTold = true;
    }
    mb.transform[block] = code.type;
    residual.clear();
    const bool uniform = context_->header->uniform;
    const auto dequantize = [&](int offset, int width, int height) {
        (uniform ? vekiQuantInvInterUniform_VC1_16s_C1IR : vekiQuantInvInterNonuniform_VC1_16s_C1IR)(
            residual.value + offset, 16, {width, height}, mb.quant, mb.halfStep);
        // A level 0 that an escape sends counts as positive in the non-uniform quantizer.
        for (; !uniform && residual.zeroLevels != 0; residual.zeroLevels &= residual.zeroLevels - 1)
            residual.value[std::countr_zero(residual.zeroLevels)] = mb.quant;
    };
    const std::uint8_t* scan = scans_[static_cast<int>(code.type)];
    if (code.type == Transform::T8x8) {
        parseLevels(bits, *inter_, scan, 0, 64, 0, residual);
        dequantize(0, residual.columns <= 4 ? 4 : 8, residual.rows);
        vekiTransform8x8Inv_VC1_16s_C1IR(residual.value, 16, {residual.columns, residual.rows});
        mb.corners[block] = 15;
        return;
    }
    if (code.type == Transform::T4x4) {
        const int pattern = decode(bits, tables().subBlockPattern[quantClass_], "SUBBLKPAT");
        for (int k = 0; k < 4; ++k) {
            if ((pattern >> (3 - k) & 1) == 0) continue;
            const int offset = 32 * (k / 2) + 4 * (k % 2);
            residual.columns = residual.rows = 0;
            parseLevels(bits, *inter_, scan, 0, 16, offset, residual);
            const int columns = residual.columns - 4 * (k % 2), rows = residual.rows - 4 * (k / 2);
            dequantize(offset, 4, rows);
            vekiTransform4x4Inv_VC1_16s_C1IR(residual.value + offset, 16, {columns, rows});
        }
        mb.corners[block] = static_cast<std::uint8_t>(pattern);
        return;
    }
    if (!patternTold) code.pattern = !bits.flag() ? 3 : bits.flag() ? 2 : 1;
    const bool wide = code.type == Transform::T8x4;
    for (int k = 0; k < 2; ++k) {
        if ((code.pattern >> (1 - k) & 1) == 0) continue;
        const int offset = wide ? 32 * k : 4 * k;
        residual.columns = residual.rows = 0;
        parseLevels(bits, *inter_, scan, 0, 32, offset, residual);
        const int columns = residual.columns - (wide ? 0 : 4 * k), rows = residual.rows - (wide ? 4 * k : 0);
        dequantize(offset, wide && columns > 4 ? 8 : 4, rows);
        (wide ? vekiTransform8x4Inv_VC1_16s_C1IR : vekiTransform4x8Inv_VC1_16s_C1IR)(residual.value + offset, 16,
                                                                                     {columns, rows});
    }
    static constexpr std::uint8_t kCorners[2][4] = {{0, 5, 10, 15}, {0, 3, 12, 15}};  // 4x8, 8x4
    mb.corners[block] = kCorners[wide][code.pattern];
}

}  // namespace vekdec::vc1
