#include "h264/macroblock_parser.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "h264/direct_prediction.h"
#include "h264/intra_modes.h"
#include "h264/place.h"
#include "h264/reconstruction.h"

namespace vekdec::h264 {
// NextMbAddress (8.2.2), in MBAFF frames of pairs.
template <typename Syntax>
int MacroblockParser<Syntax>::nextAddress(int address) const {
    const auto* map = context_->slice->mbToSliceGroupMap;
    if (map == nullptr) return address + 1;
    if (context_->mbaff && address % 2 == 0) return address + 1;
    const int unit = context_->mbaff ? 2 : 1, count = context_->mbCount / unit;
    int i = address / unit;
    const std::uint8_t group = (*map)[static_cast<std::size_t>(i)];
    do ++i;
    while (i < count && (*map)[static_cast<std::size_t>(i)] != group);
    return i * unit;
}

// Where the macroblock lies, by column, row and kind.
template <typename Syntax>
void MacroblockParser<Syntax>::place(const Picture& picture, bool field) {
    const MacroblockPosition position{
        context_->slice->structure, context_->mbaff, column_, row_, current_.bottom, field};
    for (int i = 0; i < planes_; ++i) {
        const vekapp::Plane& plane = picture.plane[i];
        const Place at = placeOf(position, mbWidth_[i], mbHeight_[i]);
        current_.plane[i] = plane.data + plane.stride * at.y + at.x * picture.bytesPerSample;
        current_.planeStep[i] = static_cast<int>(plane.stride) * at.rowDistance;
        if (i > 0) continue;
        current_.x = at.x;
        current_.y = at.y / at.rowDistance;
        current_.step = at.rowDistance;
    }
}

// Places a macroblock and finds its neighbours.
template <typename Syntax>
void MacroblockParser<Syntax>::start(int address, bool field) {
    Picture& picture = *context_->picture;
    const int width = context_->widthInMbs;
    const bool fieldPicture = context_->slice->structure != kFrame;
    Macroblock& mb = context_->mbs[address];
    inMacroblock_ = true;
    static constexpr Macroblock kBlank;
    std::memcpy(static_cast<void*>(&mb), &kBlank, offsetof(Macroblock, mv));  // vectors are stored where they count
    mb.field = field || fieldPicture;
    mb.slice = static_cast<std::uint16_t>(context_->slice->number);
    current_.intraEdges = 0;
    current_.coeffs = parsed_->coeffsEnd;
    current_.coded = current_.codedChroma = 0;
    current_.mb = &mb;
    current_.address = address;
    current_.bottom = context_->mbaff && address % 2 != 0;
    current_.view = context_->mbaff && field ? (current_.bottom ? kFromBottomField : kFromTopField) : kAsListed;
    const int unit = context_->mbaff ? address / 2 : address;
    const bool next = unit == unit_ + 1;
    if (next) {  // saves the division
        if (++column_ == width) {
            column_ = 0;
            ++row_;
        }
    } else if (unit != unit_) {
        column_ = unit % width;
        row_ = unit / width;
    }
    unit_ = unit;
    if (next && column_ != 0 && !context_->mbaff) {
        current_.x += 16;
        for (int i = 0; i < planes_; ++i) current_.plane[i] += mbWidth_[i] * picture.bytesPerSample;
    } else {
        place(picture, field);
    }
    findNeighbours(*context_, current_, neighbours_);
    if (isB()) prefetchColocated(*context_, address + 3);
    if (address + width < context_->mbCount) prefetchMacroblock(context_->mbs[address + width]);  // of the next row
    syntax_.beginMacroblock(current_, neighbours_);
}

template <typename Syntax>
void MacroblockParser<Syntax>::setQp(Macroblock& mb) const {
    mb.qp = static_cast<std::int8_t>(qp_);
    for (std::size_t i = 0; i < 2; ++i) mb.qpc[i] = chromaQps_[i][qp_ + qpBdOffsetY_];
}

// ---- slice_data(), 7.3.4

template <typename Syntax>
void MacroblockParser<Syntax>::parse(BitReader& bits, const SliceContext& context, ParsedRow& parsed,
                                     const std::function<bool(int)>& rowIsParsed) {
    context_ = &context;
    parsed_ = &parsed;
    inMacroblock_ = false;
    const Slice& slice = *context.slice;
    const SequenceParameterSet& sps = *context.sps;
    qp_ = slice.header.sliceQp;
    qpBdOffsetY_ = 6 * (sps.bitDepthLuma - 8);
    const int qpBdOffsetC = 6 * (sps.bitDepthChroma - 8);
    wide_ = sps.bitDepth() > 8;
    planes_ = sps.chromaFormatIdc == 0 ? 1 : 3;
    for (int i = 0; i < 3; ++i) {
        mbWidth_[i] = i == 0 ? 16 : sps.chromaWidthMb();
        mbHeight_[i] = i == 0 ? 16 : sps.chromaHeightMb();
    }
    for (std::size_t i = 0; i < 2; ++i)
        for (int q = -qpBdOffsetY_; q <= 51; ++q)
            chromaQps_[i][q + qpBdOffsetY_] =
                static_cast<std::int8_t>(chromaQp(q, context.pps->chromaQpIndexOffset[i], qpBdOffsetC));
    unit_ = -2;
    const bool mbaff = context.mbaff;
    const auto most = static_cast<std::size_t>(context.widthInMbs * (mbaff ? 2 : 1));
    parsed.reserve(most, wide_);
    int address = slice.header.firstMbInSlice * (mbaff ? 2 : 1);
    current_.address = address;
    syntax_.beginSlice(bits, context);
    bool field = false;         // mb_field_decoding_flag of the pair
    bool fieldIsParsed = true;  // it is not only inferred
    for (;;) {
        current_.address = address;
        if (address >= context.mbCount) throw BadSyntax("macroblocks behind the end of the picture");
        const bool top = mbaff && address % 2 == 0;
        if (top) {
            field = inferFieldDecodingFlag(context, address);
            fieldIsParsed = false;
        }
        start(address, field);
        const auto takeField = [&](bool flag) {
            fieldIsParsed = true;
            if (flag != field) start(address, field = flag);
        };
        if (slice.header.type != SliceType::I && syntax_.mbSkipFlag()) {
            current_.mb->skipped = true;  // so the bottom macroblock's flag sees it
            if (top)
                if (const auto flag = syntax_.fieldFlagBehindSkippedTop()) takeField(*flag);
            predictSkipped();
        } else {
            if (mbaff && !fieldIsParsed) takeField(syntax_.mbFieldDecodingFlag());
            parseMacroblock();
        }
        finishMacroblock();
        const bool over = syntax_.endOfSlice();
        const bool ends = over || (column_ == context.widthInMbs - 1 && (!mbaff || current_.bottom));
        address = nextAddress(address);
        if (ends || parsed.macroblocks.size() == most)
            if (!rowIsParsed(ends && slice.mbToSliceGroupMap == nullptr ? address : -1)) return;
        if (over) return;
    }
}

// ---- macroblock_layer(), 7.3.5

template <typename Syntax>
void MacroblockParser<Syntax>::parseMacroblock() {
    setQp(*current_.mb);
    const SliceType type = context_->slice->header.type;
    const unsigned mbType = syntax_.mbType();
    const unsigned inter = type == SliceType::I ? 0 : type == SliceType::P ? 5 : 23;
    if (mbType >= inter + 26) throw BadSyntax("mb_type is " + std::to_string(mbType));
    if (mbType >= inter)
        parseIntra(mbType - inter);
    else
        parseInter(mbType);
}

template <typename Syntax>
void MacroblockParser<Syntax>::parseIntra(unsigned mbType) {
    Macroblock& mb = *current_.mb;
    for (auto& list : mb.refIdx) std::memset(list, -1, sizeof list);
    for (auto& list : mb.refPicId) std::memset(list, -1, sizeof list);
    const bool constrained = context_->pps->constrainedIntraPred;
    if (mbType == 25) {
        parsePcm();
        return;
    }
    if (mbType == 0) {
        mb.transform8x8 = context_->pps->transform8x8Mode && syntax_.transformSize8x8Flag();
        mb.type = mb.transform8x8 ? MbType::I8x8 : MbType::I4x4;
        parseIntraModes(neighbours_, constrained, mb, [&](int predicted) { return syntax_.intraPredMode(predicted); });
    } else {
        mb.type = MbType::I16x16;
        mb.predMode16x16 = static_cast<std::uint8_t>((mbType - 1) % 4);
        mb.codedBlockPattern = static_cast<std::uint8_t>((mbType - 1) / 4 % 3 << 4 | (mbType >= 13 ? 15 : 0));
    }
    if (context_->sps->chromaFormatIdc != 0)
        mb.predModeChroma = static_cast<std::uint8_t>(syntax_.intraChromaPredMode());
    parsePatternAndResidual(false);
    current_.intraEdges = intraEdgeFlags(neighbours_, constrained, mb.field);
}

template <typename Syntax>
void MacroblockParser<Syntax>::parsePcm() {
    Macroblock& mb = *current_.mb;
    BitReader& bits = syntax_.beginPcm();
    const auto take = [&](auto& coeffs) {
        for (int i = 0; i < planes_; ++i) {
            const int depth = i == 0 ? context_->sps->bitDepthLuma : context_->sps->bitDepthChroma;
            for (int left = mbWidth_[i] * mbHeight_[i]; left > 0; --left)
                coeffs[parsed_->coeffsEnd++] = static_cast<std::decay_t<decltype(coeffs[0])>>(bits.u(depth));
        }
    };
    if (wide_)
        take(parsed_->coeffs32);
    else
        take(parsed_->coeffs16);
    mb.type = MbType::IPcm;
    syntax_.endPcm();
    mb.codedBlockPattern = 0x2f;
    mb.nonZero = 0xffff;
    // The deblocking filter sees a QPY of 0; the next macroblock's prediction does not (7.4.5, 8.7.2.2).
    const int before = qp_;
    qp_ = 0;
    setQp(mb);
    qp_ = before;
}

// coded_block_pattern, transform_size_8x8_flag, mb_qp_delta and the residual.
template <typename Syntax>
void MacroblockParser<Syntax>::parsePatternAndResidual(bool transform8x8Allowed) {
    Macroblock& mb = *current_.mb;
    if (mb.type != MbType::I16x16) {
        mb.codedBlockPattern = static_cast<std::uint8_t>(syntax_.codedBlockPattern());
        if (!mb.intra() && transform8x8Allowed && context_->pps->transform8x8Mode && (mb.codedBlockPattern & 15) != 0)
            mb.transform8x8 = syntax_.transformSize8x8Flag();
    } else if (context_->sps->chromaFormatIdc == 0) {
        mb.codedBlockPattern &= 15;
    }
    if (mb.codedBlockPattern != 0 || mb.type == MbType::I16x16) {
        const int delta = syntax_.mbQpDelta(-26 - qpBdOffsetY_ / 2, 25 + qpBdOffsetY_ / 2);
        // (7-37): what leaves the range at one end comes in at the other.
        qp_ += delta;
        if (qp_ > 51)
            qp_ -= 52 + qpBdOffsetY_;
        else if (qp_ < -qpBdOffsetY_)
            qp_ += 52 + qpBdOffsetY_;
        setQp(mb);
        mb.bypass = context_->sps->losslessQpprime && qp_ + qpBdOffsetY_ == 0;
        if (wide_)
            parseCoefficients(parsed_->coeffs32);
        else
            parseCoefficients(parsed_->coeffs16);
    } else {
        mb.bypass = context_->sps->losslessQpprime && qp_ + qpBdOffsetY_ == 0;
    }
}

template <typename Syntax>
template <typename Coeff>
void MacroblockParser<Syntax>::parseCoefficients(std::vector<Coeff>& coeffs) {
    Residual<Coeff> residual{coeffs.data() + current_.coeffs};
    const Coeff* end = syntax_.residual(residual);
    current_.coded = residual.coded;
    // Never together with the word before it, which was just stored by itself: the processor would wait for that.
    if (context_->sps->chromaFormatIdc == 2) current_.codedChroma = residual.codedChroma;
    parsed_->coeffsEnd = static_cast<std::size_t>(end - coeffs.data());
}

template <typename Syntax>
void MacroblockParser<Syntax>::finishMacroblock() {
    syntax_.finishMacroblock();
    parsed_->macroblocks.push_back(current_);
    inMacroblock_ = false;
}

template <typename Syntax>
int MacroblockParser<Syntax>::abandon() {
    if (inMacroblock_) current_.mb->type = MbType::Missing;
    return current_.address;
}

template class MacroblockParser<CavlcSyntax>;
template class MacroblockParser<CabacSyntax>;

}  // namespace vekdec::h264
