#include "h264/macroblock_parser.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "h264/direct_prediction.h"
#include "h264/intra_modes.h"
#include "h264/place.h"
#include "h264/reconstruction.h"

namespace vekdec::h264 {
namespace {

// Table 9-4: coded_block_pattern by codeNum, [0] Intra, [1] Inter; with chroma and in monochrome.
constexpr std::uint8_t kCodedBlockPattern[2][48] = {
    {47, 31, 15, 0,  23, 27, 29, 30, 7, 11, 13, 14, 39, 43, 45, 46, 16, 3,  5,  10, 12, 19, 21, 26,
     28, 35, 37, 42, 44, 1,  2,  4,  8, 17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41},
    {0,  16, 1,  2,  4,  8,  32, 3,  5,  10, 12, 15, 47, 7,  11, 13, 14, 6,  9,  31, 35, 37, 42, 44,
     33, 34, 36, 40, 39, 43, 45, 46, 17, 18, 20, 24, 19, 21, 26, 28, 23, 27, 29, 30, 22, 25, 38, 41}};
constexpr std::uint8_t kCodedBlockPatternMonochrome[2][16] = {{15, 0, 7, 11, 13, 14, 3, 5, 10, 12, 1, 2, 4, 8, 6, 9},
                                                              {0, 1, 2, 4, 8, 3, 5, 10, 12, 15, 7, 11, 13, 14, 6, 9}};

}  // namespace

// NextMbAddress (8.2.2), in MBAFF frames of pairs.
int MacroblockParser::nextAddress(int address) const {
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

// Places a macroblock and finds its neighbours.
void MacroblockParser::start(int address, bool field) {
    Picture& picture = *context_->picture;
    const int width = context_->widthInMbs;
    const bool fieldPicture = context_->slice->structure != kFrame;
    Macroblock& mb = context_->mbs[address];
    inMacroblock_ = true;
    static constexpr Macroblock kBlank;
    std::memcpy(static_cast<void*>(&mb), &kBlank, offsetof(Macroblock, mv));  // vectors are stored where they count
    mb.field = field || fieldPicture;
    mb.slice = static_cast<std::uint16_t>(context_->slice->number);
    item_ = {};
    item_.coeffs = parsed_->coeffsEnd;
    current_.mb = &mb;
    current_.address = address;
    current_.bottom = context_->mbaff && address % 2 != 0;
    current_.view = context_->mbaff && field ? (current_.bottom ? kFromBottomField : kFromTopField) : kAsListed;
    const int unit = context_->mbaff ? address / 2 : address;
    if (unit == unit_ + 1) {  // saves the division
        if (++column_ == width) {
            column_ = 0;
            ++row_;
        }
    } else if (unit != unit_) {
        column_ = unit % width;
        row_ = unit / width;
    }
    unit_ = unit;
    const MacroblockPosition position{
        context_->slice->structure, context_->mbaff, column_, row_, current_.bottom, field};
    for (int i = 0; i < planes_; ++i) {
        const vekapp::Plane& plane = picture.plane[i];
        const Place place = placeOf(position, mbWidth_[i], mbHeight_[i]);
        current_.plane[i] = plane.data + plane.stride * place.y + place.x * picture.bytesPerSample;
        current_.planeStep[i] = static_cast<int>(plane.stride) * place.rowDistance;
        if (i > 0) continue;
        current_.x = place.x;
        current_.y = place.y / place.rowDistance;
        current_.step = place.rowDistance;
    }
    findNeighbours(*context_, current_, neighbours_);
    if (isB()) prefetchColocated(*context_, address + 3);
}

void MacroblockParser::setQp(Macroblock& mb) const {
    mb.qp = static_cast<std::int8_t>(qp_);
    for (std::size_t i = 0; i < 2; ++i) mb.qpc[i] = chromaQps_[i][qp_ + qpBdOffsetY_];
}

// ---- slice_data(), 7.3.4

void MacroblockParser::parse(BitReader& reader, const SliceContext& context, ParsedRow& parsed,
                             const std::function<bool(int)>& rowIsParsed) {
    bits_ = &reader;
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
    bool field = false;       // mb_field_decoding_flag of the pair
    bool topSkipped = false;  // the pair's flag may still come with its bottom macroblock
    const auto more = [&] {
        current_.address = address;
        if (address >= context.mbCount) throw BadSyntax("macroblocks behind the end of the picture");
    };
    const auto next = [&] {
        finishMacroblock();
        const bool ends = !bits_->moreData() || (column_ == context.widthInMbs - 1 && (!mbaff || current_.bottom));
        address = nextAddress(address);
        if (!ends && parsed.macroblocks.size() < most) return true;
        return rowIsParsed(ends && slice.mbToSliceGroupMap == nullptr ? address : -1);
    };
    for (;;) {
        if (slice.header.type != SliceType::I) {
            int run = bits_->ue("mb_skip_run", static_cast<unsigned>(context_->mbCount));
            const bool skipped = run > 0;
            for (; run > 0; --run) {
                more();
                if (mbaff && address % 2 == 0) {
                    // The flag of a pair whose bottom macroblock is coded stands in front of that one.
                    BitReader ahead = *bits_;
                    field = run == 1 && bits_->moreData() ? ahead.flag() : inferFieldDecodingFlag(*context_, address);
                    topSkipped = true;
                }
                parseSkipped(address, field);
                if (!next()) return;
            }
            if (skipped && !bits_->moreData()) return;
        }
        more();
        if (mbaff && (address % 2 == 0 || topSkipped)) field = bits_->flag();
        topSkipped = false;
        parseMacroblock(address, field);
        if (bits_->beyondEnd()) throw BadSyntax("the data ends inside a macroblock");
        if (!next() || !bits_->moreData()) return;
    }
}

void MacroblockParser::parseSkipped(int address, bool field) {
    start(address, field);
    Macroblock& mb = *current_.mb;
    mb.skipped = true;
    setQp(mb);
    gatherMotion(neighbours_, mb.field, isB() ? 2 : 1, motion_);
    if (isB()) {
        predictDirect();
    } else {
        if (context_->referenceCount[current_.view][0] == 0) throw BadSyntax("a skipped macroblock without references");
        const MotionVector mv = predictSkipped(motion_);
        motion_.fill(0, 0, 0, 4, 4, 0, mv);
        mb.partitioning = Partitioning::Whole;
    }
    storeMotion();
    mb.type = MbType::Inter;
}

// ---- macroblock_layer(), 7.3.5

void MacroblockParser::parseMacroblock(int address, bool field) {
    start(address, field);
    setQp(*current_.mb);
    const SliceType type = context_->slice->header.type;
    const unsigned mbType = bits_->ue();
    const unsigned inter = type == SliceType::I ? 0 : type == SliceType::P ? 5 : 23;
    if (mbType >= inter + 26) throw BadSyntax("mb_type is " + std::to_string(mbType));
    if (mbType >= inter)
        parseIntra(mbType - inter);
    else
        parseInter(mbType);
}

void MacroblockParser::parseIntra(unsigned mbType) {
    Macroblock& mb = *current_.mb;
    for (auto& list : mb.refIdx) std::memset(list, -1, sizeof list);
    for (auto& list : mb.refPicId) std::memset(list, -1, sizeof list);
    const bool constrained = context_->pps->constrainedIntraPred;
    if (mbType == 25) {
        parsePcm();
        return;
    }
    if (mbType == 0) {
        mb.transform8x8 = context_->pps->transform8x8Mode && bits_->flag();
        mb.type = mb.transform8x8 ? MbType::I8x8 : MbType::I4x4;
        parseIntraModes(*bits_, neighbours_, constrained, mb);
    } else {
        mb.type = MbType::I16x16;
        mb.predMode16x16 = static_cast<std::uint8_t>((mbType - 1) % 4);
        mb.codedBlockPattern = static_cast<std::uint8_t>((mbType - 1) / 4 % 3 << 4 | (mbType >= 13 ? 15 : 0));
    }
    if (context_->sps->chromaFormatIdc != 0)
        mb.predModeChroma = static_cast<std::uint8_t>(bits_->ue("intra_chroma_pred_mode", 3));
    parsePatternAndResidual(false);
    item_.intraEdges = intraEdgeFlags(neighbours_, constrained, mb.field);
}

void MacroblockParser::parsePcm() {
    Macroblock& mb = *current_.mb;
    while (bits_->position() % 8 != 0) bits_->flag();
    const auto take = [&](auto& coeffs) {
        for (int i = 0; i < planes_; ++i) {
            const int depth = i == 0 ? context_->sps->bitDepthLuma : context_->sps->bitDepthChroma;
            for (int left = mbWidth_[i] * mbHeight_[i]; left > 0; --left)
                coeffs[parsed_->coeffsEnd++] = static_cast<std::decay_t<decltype(coeffs[0])>>(bits_->u(depth));
        }
    };
    if (wide_)
        take(parsed_->coeffs32);
    else
        take(parsed_->coeffs16);
    mb.type = MbType::IPcm;
    std::memset(mb.totalCoeff, 16, sizeof mb.totalCoeff);
    std::memset(mb.totalCoeffC, 16, sizeof mb.totalCoeffC);
    mb.codedBlockPattern = 0x2f;
    mb.nonZero = 0xffff;
    // The deblocking filter sees a QPY of 0; the next macroblock's prediction does not (7.4.5, 8.7.2.2).
    const int before = qp_;
    qp_ = 0;
    setQp(mb);
    qp_ = before;
}

// coded_block_pattern, transform_size_8x8_flag, mb_qp_delta and the residual.
void MacroblockParser::parsePatternAndResidual(bool transform8x8Allowed) {
    Macroblock& mb = *current_.mb;
    const int chromaFormatIdc = context_->sps->chromaFormatIdc;
    if (mb.type != MbType::I16x16) {
        const bool monochrome = chromaFormatIdc == 0;
        const int code = bits_->ue("coded_block_pattern", monochrome ? 15 : 47);
        const bool inter = !mb.intra();
        mb.codedBlockPattern = monochrome ? kCodedBlockPatternMonochrome[inter][code] : kCodedBlockPattern[inter][code];
        if (inter && transform8x8Allowed && context_->pps->transform8x8Mode && (mb.codedBlockPattern & 15) != 0)
            mb.transform8x8 = bits_->flag();
    } else if (chromaFormatIdc == 0) {
        mb.codedBlockPattern &= 15;
    }
    if (mb.codedBlockPattern != 0 || mb.type == MbType::I16x16) {
        const int delta = bits_->se("mb_qp_delta", -26 - qpBdOffsetY_ / 2, 25 + qpBdOffsetY_ / 2);
        const int range = 52 + qpBdOffsetY_;
        qp_ = (qp_ + delta + range + qpBdOffsetY_) % range - qpBdOffsetY_;
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

template <typename Coeff>
void MacroblockParser::parseCoefficients(std::vector<Coeff>& coeffs) {
    Residual<Coeff> residual{coeffs.data() + item_.coeffs};
    const Coeff* end =
        parseResidual(*bits_, tables_, neighbours_, context_->sps->chromaFormatIdc, *current_.mb, residual);
    item_.coded = residual.coded;
    item_.codedChroma = residual.codedChroma;
    parsed_->coeffsEnd = static_cast<std::size_t>(end - coeffs.data());
}

void MacroblockParser::finishMacroblock() {
    item_.macroblock = current_;
    parsed_->macroblocks.push_back(item_);
    inMacroblock_ = false;
}

int MacroblockParser::abandon() {
    if (inMacroblock_) current_.mb->type = MbType::Missing;
    return current_.address;
}

}  // namespace vekdec::h264
