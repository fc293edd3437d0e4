#include "h264/cabac_syntax.h"

#include <algorithm>

namespace vekdec::h264 {

void CabacSyntax::beginSlice(BitReader& bits, const SliceContext& context) {
    bits_ = &bits;
    context_ = &context;
    const SliceHeader& header = context.slice->header;
    type_ = header.type;
    end_ = bits.end();
    const auto count = static_cast<std::size_t>(context.mbCount);
    if (records_.size() < count) records_.resize(count);
    qpDeltaBefore_ = qpDelta_ = false;
    bottomSkipped_.reset();
    initCabacContexts(contexts_, type_ == SliceType::I ? 0 : 1 + header.cabacInitIdc, header.sliceQp);
    bits.skip((8 - bits.position() % 8) % 8);
    engine_ = CabacEngine(bits);
}

void CabacSyntax::beginMacroblock(const CurrentMacroblock& current, const Neighbours& neighbours) {
    current_ = &current;
    mb_ = current.mb;
    neighbours_ = &neighbours;
    record_ = &records_[static_cast<std::size_t>(current.address)];
    *record_ = {};
    motionLists_ = 0;
}

void CabacSyntax::finishMacroblock() {
    // The engine may hold rbsp_stop_one_bit, but nothing behind it.
    if (engine_.position() > end_ + 1) throw BadSyntax("the data ends inside a macroblock");
    qpDeltaBefore_ = qpDelta_;
    qpDelta_ = false;
    for (std::size_t list = 0; list < static_cast<std::size_t>(motionLists_); ++list)
        for (std::size_t i = 0; i < 4; ++i) {
            record_->lowerRow[list][i] = magnitudes_[list][MotionCache::at(static_cast<int>(i), 3)];
            record_->rightColumn[list][i] = magnitudes_[list][MotionCache::at(3, static_cast<int>(i))];
        }
}

bool CabacSyntax::endOfSlice() { return !(context_->mbaff && !current_->bottom) && engine_.terminate(); }

// ---- flags, 9.3.3.1.1.1, 9.3.3.1.1.2 and 9.3.3.1.1.10

bool CabacSyntax::skipFlag(const Neighbours& n) {
    const Macroblock* a = leftOf(n);
    const int coded = (a != nullptr && !a->skipped) + (n.above != nullptr && !n.above->skipped);
    return bin((type_ == SliceType::B ? kCtxMbSkipFlagB : kCtxMbSkipFlagP) + coded);
}

bool CabacSyntax::mbSkipFlag() {
    if (!bottomSkipped_ || !current_->bottom) return skipFlag(*neighbours_);
    const bool skipped = *bottomSkipped_;
    bottomSkipped_.reset();
    return skipped;
}

bool CabacSyntax::mbFieldDecodingFlag() {
    const PairsAround pairs = pairsAround(*context_, current_->address & ~1);
    return bin(kCtxMbFieldDecodingFlag + (pairs.left != nullptr && pairs.left->field) +
               (pairs.above != nullptr && pairs.above->field));
}

std::optional<bool> CabacSyntax::fieldFlagBehindSkippedTop() {
    Neighbours bottom;
    findNeighboursInPairs(*context_, current_->address + 1, mb_->field, bottom);
    bottomSkipped_ = skipFlag(bottom);
    if (*bottomSkipped_) return {};
    return mbFieldDecodingFlag();
}

bool CabacSyntax::transformSize8x8Flag() {
    return bin(kCtxTransformSize8x8Flag + around([](const Macroblock& mb) { return mb.transform8x8; }));
}

// ---- mb_type and sub_mb_type, 9.3.2.5

// The bins behind the one that says "not I_NxN"; in the suffix of P and B slices more of them share a context.
unsigned CabacSyntax::intraType(int context, bool intraSlice) {
    if (engine_.terminate()) return 25;  // I_PCM
    unsigned type = 1;
    const int spread = intraSlice;
    if (bin(context)) type += 12;
    if (bin(context + 1)) type += bin(context + 1 + spread) ? 8 : 4;
    if (bin(context + 2 + spread)) type += 2;
    return type + bin(context + 2 + 2 * spread);
}

unsigned CabacSyntax::mbType() {
    if (type_ == SliceType::I) {
        const int other =
            around([](const Macroblock& mb) { return mb.type != MbType::I4x4 && mb.type != MbType::I8x8; });
        return bin(kCtxMbTypeI + other) ? intraType(kCtxMbTypeI + 3, true) : 0;
    }
    if (type_ == SliceType::P) {
        constexpr int kSuffix = kCtxMbTypeP + 3;
        if (bin(kCtxMbTypeP)) return 5 + (bin(kSuffix) ? intraType(kSuffix + 1, false) : 0);
        if (bin(kCtxMbTypeP + 1)) return bin(kCtxMbTypeP + 3) ? 1 : 2;
        return bin(kCtxMbTypeP + 2) ? 3 : 0;
    }
    const int coded = around([&](const Macroblock& mb) { return recordOf(&mb).direct != kDirectMacroblock; });
    if (!bin(kCtxMbTypeB + coded)) return 0;  // B_Direct_16x16
    constexpr int kOthers = kCtxMbTypeB + 5;
    if (!bin(kCtxMbTypeB + 3)) return 1 + bin(kOthers);
    unsigned bits = bin(kCtxMbTypeB + 4);
    for (int i = 0; i < 3; ++i) bits = 2 * bits + bin(kOthers);
    if (bits < 8) return 3 + bits;
    if (bits == 13) {
        constexpr int kSuffix = kCtxMbTypeB + 5;
        return 23 + (bin(kSuffix) ? intraType(kSuffix + 1, false) : 0);
    }
    if (bits == 14) return 11;  // B_L1_L0_8x16
    if (bits == 15) return 22;  // B_8x8
    return 2 * bits + bin(kOthers) - 4;
}

int CabacSyntax::subMbType() {
    if (type_ == SliceType::P) {
        if (bin(kCtxSubMbTypeP)) return 0;
        if (!bin(kCtxSubMbTypeP + 1)) return 1;
        return bin(kCtxSubMbTypeP + 2) ? 2 : 3;
    }
    constexpr int kOthers = kCtxSubMbTypeB + 3;
    if (!bin(kCtxSubMbTypeB)) return 0;
    if (!bin(kCtxSubMbTypeB + 1)) return 1 + bin(kOthers);
    int type = 3;
    if (bin(kCtxSubMbTypeB + 2)) {
        if (bin(kOthers)) return 11 + bin(kOthers);
        type = 7;
    }
    if (bin(kOthers)) type += 2;
    return type + bin(kOthers);
}

// ---- intra prediction modes

int CabacSyntax::intraPredMode(int predicted) {
    if (bin(kCtxPrevIntraPredModeFlag)) return predicted;
    int rem = bin(kCtxRemIntraPredMode);
    rem += 2 * bin(kCtxRemIntraPredMode);
    rem += 4 * bin(kCtxRemIntraPredMode);
    return rem < predicted ? rem : rem + 1;
}

int CabacSyntax::intraChromaPredMode() {  // 9.3.3.1.1.8; no other macroblocks than intra ones have one that is not 0
    if (!bin(kCtxIntraChromaPredMode + around([](const Macroblock& mb) { return mb.predModeChroma != 0; }))) return 0;
    int mode = 1;
    while (mode < 3 && bin(kCtxIntraChromaPredMode + 3)) ++mode;
    return mode;
}

// ---- coded_block_pattern and mb_qp_delta, 9.3.3.1.1.4 and 9.3.3.1.1.5

int CabacSyntax::codedBlockPattern() {
    // Quadrants without coefficients raise the luma contexts: skipped macroblocks have none, I_PCM ones all.
    const Neighbours& n = *neighbours_;
    const auto empty = [](const Macroblock* mb, int quadrant) {
        return mb != nullptr && (mb->codedBlockPattern >> quadrant & 1) == 0;
    };
    int pattern = 0;
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const int x = quadrant % 2, y = quadrant / 2;
        const std::uint8_t entry = n.rows->luma[2 * y];
        const bool a = x > 0 ? (pattern >> (quadrant - 1) & 1) == 0 : empty(n.leftOf(entry), (entry & 3) / 2 * 2 + 1);
        const bool b = y > 0 ? (pattern >> (quadrant - 2) & 1) == 0 : empty(n.above, 2 + x);
        pattern |= bin(kCtxCodedBlockPatternLuma + a + 2 * b) << quadrant;
    }
    if (context_->sps->chromaFormatIdc == 0) return pattern;
    const Macroblock* left = leftOf(n);
    const auto chroma = [](const Macroblock* mb) { return mb == nullptr ? 0 : mb->codedBlockPattern >> 4; };
    const int a = chroma(left), b = chroma(n.above);
    if (!bin(kCtxCodedBlockPatternChroma + (a != 0) + 2 * (b != 0))) return pattern;
    return pattern | (1 + bin(kCtxCodedBlockPatternChroma + 4 + (a == 2) + 2 * (b == 2))) << 4;
}

int CabacSyntax::mbQpDelta(int least, int most) {
    if (!bin(kCtxMbQpDelta + qpDeltaBefore_)) return 0;
    qpDelta_ = true;
    int count = 1;  // Table 9-3: 1, -1, 2, -2 ...
    for (int context = 2; bin(kCtxMbQpDelta + context); context = 3)
        if (++count > 2 * most + 2) BitReader::throwOutside("mb_qp_delta", -count / 2, least, most);
    const int delta = count % 2 != 0 ? (count + 1) / 2 : -(count / 2);
    if (delta > most) BitReader::throwOutside("mb_qp_delta", delta, least, most);
    return delta;
}

// ---- reference indices and vectors, 9.3.3.1.1.6 and 9.3.3.1.1.7

void CabacSyntax::beginMotion(const MotionCache& motion, int lists) {
    motionLists_ = lists;
    const Neighbours& n = *neighbours_;
    const unsigned directAbove = n.above == nullptr ? 0 : recordOf(n.above).direct;
    for (int list = 0; list < lists; ++list) {
        takeMagnitudes(list);
        const std::int8_t* ref = motion.ref[list];
        std::uint64_t bits = 0;
        const auto set = [&](int at, unsigned direct, int quadrant) {
            bits |= std::uint64_t{ref[at] > 0 && (direct >> quadrant & 1) == 0} << at;
        };
        for (int i = 0; i < 4; ++i) {
            set(MotionCache::at(i, -1), directAbove, 2 + i / 2);
            const std::uint8_t entry = n.rows->luma[i];
            const Macroblock* left = n.leftOf(entry);
            set(MotionCache::at(-1, i), left == nullptr ? 0 : recordOf(left).direct, (entry & 3) / 2 * 2 + 1);
        }
        refsAboveZero_[list] = bits;
    }
}

// The neighbours' |mvd| as the macroblock sees them: vertical ones of the other kind of macroblock are converted.
void CabacSyntax::takeMagnitudes(int list) {
    const Neighbours& n = *neighbours_;
    const auto l = static_cast<std::size_t>(list);
    Magnitude* to = magnitudes_[list];
    const auto take = [&](const Macroblock* mb, bool above, int i) {
        Magnitude m;
        if (mb == nullptr) return m;
        const Record& record = recordOf(mb);
        m = (above ? record.lowerRow : record.rightColumn)[l][static_cast<std::size_t>(i)];
        if (mb->field != mb_->field) m.y = static_cast<std::uint8_t>(mb_->field ? m.y / 2 : m.y * 2);
        return m;
    };
    for (int i = 0; i < 4; ++i) {
        to[MotionCache::at(i, -1)] = take(n.above, true, i);
        const std::uint8_t entry = n.rows->luma[i];
        to[MotionCache::at(-1, i)] = take(n.leftOf(entry), false, entry & 3);
    }
    for (int y = 0; y < 4; ++y) std::fill_n(to + MotionCache::at(0, y), 4, Magnitude{});
}

int CabacSyntax::refIdx(int list, int x, int y, int w, int h, int count) {
    const int at = MotionCache::at(x, y);
    std::uint64_t& above0 = refsAboveZero_[list];
    int context = static_cast<int>((above0 >> (at - 1) & 1) + 2 * (above0 >> (at - MotionCache::kStep) & 1));
    int refIdx = 0;
    for (; bin(kCtxRefIdx + context); context = refIdx == 1 ? 4 : 5)
        if (++refIdx >= count) BitReader::throwOutside("ref_idx", refIdx, 0, count - 1);
    if (refIdx > 0)
        for (int row = 0; row < h; ++row) above0 |= ((std::uint64_t{1} << w) - 1) << (at + row * MotionCache::kStep);
    return refIdx;
}

// A component modulo 2^32: UEG3 with a prefix of up to 9 bins.
std::uint32_t CabacSyntax::mvdComponent(int context, int sum, std::uint8_t& magnitude) {
    magnitude = 0;
    if (!bin(context + (sum > 2) + (sum > 32))) return 0;
    constexpr std::uint32_t kEscape = 9;
    std::uint32_t value = 1;
    for (int i = 3; value < kEscape && bin(context + i); i = std::min(i + 1, 6)) ++value;
    if (value == kEscape) value += engine_.expGolomb(3);
    magnitude = static_cast<std::uint8_t>(std::min(value, 127u));
    return engine_.bypass() ? 0 - value : value;
}

MotionVectorDifference CabacSyntax::mvd(int list, int x, int y, int w, int h) {
    const int at = MotionCache::at(x, y);
    Magnitude* m = magnitudes_[list] + at;
    const Magnitude a = m[-1], b = m[-MotionCache::kStep];
    Magnitude found;
    MotionVectorDifference mvd;
    mvd.x = mvdComponent(kCtxMvdX, a.x + b.x, found.x);
    mvd.y = mvdComponent(kCtxMvdY, a.y + b.y, found.y);
    for (int row = 0; row < h; ++row) std::fill_n(m + row * MotionCache::kStep, w, found);
    return mvd;
}

// ---- I_PCM, 9.3.1.2

BitReader& CabacSyntax::beginPcm() {
    bits_->skip((engine_.position() + 7) / 8 * 8 - bits_->position());
    return *bits_;
}

void CabacSyntax::endPcm() {
    engine_ = CabacEngine(*bits_);
    record_->coded = CodedBlocks::all();
}

}  // namespace vekdec::h264
