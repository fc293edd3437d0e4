#include "h264/macroblock_layer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "h264/direct_prediction.h"
#include "h264/inter_prediction.h"
#include "h264/intra_modes.h"
#include "h264/slice_decoder_state.h"

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
int SliceDecoder::State::nextAddress(int address) const {
    const auto* map = context.slice->mbToSliceGroupMap;
    if (map == nullptr) return address + 1;
    if (context.mbaff && address % 2 == 0) return address + 1;
    const int unit = context.mbaff ? 2 : 1, count = context.mbCount / unit;
    int i = address / unit;
    const std::uint8_t group = (*map)[static_cast<std::size_t>(i)];
    do ++i;
    while (i < count && (*map)[static_cast<std::size_t>(i)] != group);
    return i * unit;
}

// Places a macroblock and finds its neighbours.
void SliceDecoder::State::start(int address, bool field) {
    Picture& picture = *context.picture;
    const int width = context.widthInMbs;
    const bool fieldPicture = context.slice->structure != kFrame;
    Macroblock& mb = context.mbs[address];
    inMacroblock = true;
    static constexpr Macroblock kBlank;
    std::memcpy(static_cast<void*>(&mb), &kBlank, offsetof(Macroblock, mv));  // vectors are stored where they count
    mb.field = field || fieldPicture;
    mb.slice = static_cast<std::uint16_t>(context.slice->number);
    item = {};
    item.coeffs = coeffsParsed;
    current.mb = &mb;
    current.address = address;
    current.bottom = context.mbaff && address % 2 != 0;
    current.view = context.mbaff && field ? (current.bottom ? kFromBottomField : kFromTopField) : kAsListed;
    current.step = mb.field ? 2 : 1;
    const int unit = context.mbaff ? address / 2 : address;
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
    current.x = 16 * column_;
    int macroblockRow = row_, parityRow = 0;  // where it begins in the frame: in macroblocks, and a row more or none
    if (context.mbaff) {
        current.y = field ? 16 * row_ : 32 * row_ + 16 * current.bottom;
        macroblockRow = 2 * row_ + (!field && current.bottom);
        parityRow = field && current.bottom;
    } else {
        current.y = 16 * row_;
        if (fieldPicture) macroblockRow = 2 * row_;
        parityRow = context.slice->structure == kBottomField;
    }
    for (int i = 0; i < planes; ++i) {
        const vekapp::Plane& plane = picture.plane[i];
        current.plane[i] = plane.data + plane.stride * (macroblockRow * mbHeight[i] + parityRow) +
                           column_ * mbWidth[i] * picture.bytesPerSample;
        current.planeStep[i] = static_cast<int>(plane.stride) * current.step;
    }
    findNeighbours(context, current, neighbours);
    if (isB()) prefetchColocated(context, address + 3);
}

void SliceDecoder::State::setQp(Macroblock& mb) const {
    mb.qp = static_cast<std::int8_t>(qp);
    for (std::size_t i = 0; i < 2; ++i) mb.qpc[i] = chromaQps[i][qp + qpBdOffsetY];
}

// ---- slice_data(), 7.3.4

void SliceDecoder::State::decodeSlice(BitReader& reader, const Slice& slice, const std::function<void(int)>& reached) {
    bits = &reader;
    inMacroblock = false;
    context.begin(slice);
    scales.update(context.pps->scaling);
    qp = slice.header.sliceQp;
    qpBdOffsetY = 6 * (context.sps->bitDepthLuma - 8);
    qpBdOffsetC = 6 * (context.sps->bitDepthChroma - 8);
    wide = context.sps->bitDepth() > 8;
    planes = context.sps->chromaFormatIdc == 0 ? 1 : 3;
    for (int i = 0; i < 3; ++i) {
        mbWidth[i] = i == 0 ? 16 : context.sps->chromaWidthMb();
        mbHeight[i] = i == 0 ? 16 : context.sps->chromaHeightMb();
    }
    for (std::size_t i = 0; i < 2; ++i)
        for (int q = -qpBdOffsetY; q <= 51; ++q)
            chromaQps[i][q + qpBdOffsetY] =
                static_cast<std::int8_t>(chromaQp(q, context.pps->chromaQpIndexOffset[i], qpBdOffsetC));
    unit_ = -2;
    const bool mbaff = context.mbaff;
    mostParsed = static_cast<std::size_t>(context.widthInMbs * (mbaff ? 2 : 1));
    parsed.clear();
    parsed.reserve(mostParsed);
    coeffsParsed = 0;
    const std::size_t most = mostParsed * Residual<Vek16s>::kMost;
    if (wide)
        coeffs32.resize(std::max(coeffs32.size(), most));
    else
        coeffs16.resize(std::max(coeffs16.size(), most));
    int address = slice.header.firstMbInSlice * (mbaff ? 2 : 1);
    current.address = address;
    bool field = false;       // mb_field_decoding_flag of the pair
    bool topSkipped = false;  // the pair's flag may still come with its bottom macroblock
    const auto more = [&] {
        current.address = address;
        if (address >= context.mbCount) throw BadSyntax("macroblocks behind the end of the picture");
    };
    const auto next = [&] {
        finishMacroblock();
        const bool ends = !bits->moreRbspData() || (column_ == context.widthInMbs - 1 && (!mbaff || current.bottom));
        if (ends || parsed.size() == mostParsed) reconstructParsed();
        address = nextAddress(address);
        if (ends && slice.mbToSliceGroupMap == nullptr) reached(address);
    };
    for (;;) {
        if (slice.header.type != SliceType::I) {
            int run = bits->ue("mb_skip_run", static_cast<unsigned>(context.mbCount));
            const bool skipped = run > 0;
            for (; run > 0; --run) {
                more();
                if (mbaff && address % 2 == 0) {
                    // The flag of a pair whose bottom macroblock is coded stands in front of that one.
                    BitReader ahead = *bits;
                    field = run == 1 && bits->moreRbspData() ? ahead.flag() : inferFieldDecodingFlag(context, address);
                    topSkipped = true;
                }
                decodeSkipped(address, field);
                next();
            }
            if (skipped && !bits->moreRbspData()) return;
        }
        more();
        if (mbaff && (address % 2 == 0 || topSkipped)) field = bits->flag();
        topSkipped = false;
        decodeMacroblock(address, field);
        if (bits->beyondEnd()) throw BadSyntax("the data ends inside a macroblock");
        next();
        if (!bits->moreRbspData()) return;
    }
}

void SliceDecoder::State::decodeSkipped(int address, bool field) {
    start(address, field);
    Macroblock& mb = *current.mb;
    mb.skipped = true;
    setQp(mb);
    gatherMotion(neighbours, mb.field, isB() ? 2 : 1, motion);
    if (isB()) {
        predictDirect();
    } else {
        if (context.referenceCount[current.view][0] == 0) throw BadSyntax("a skipped macroblock without references");
        const MotionVector mv = predictSkipped(motion);
        motion.fill(0, 0, 0, 4, 4, 0, mv);
        mb.partitioning = Partitioning::Whole;
    }
    storeMotion();
    mb.type = MbType::Inter;
}

// ---- macroblock_layer(), 7.3.5

void SliceDecoder::State::decodeMacroblock(int address, bool field) {
    start(address, field);
    setQp(*current.mb);
    const SliceType type = context.slice->header.type;
    const unsigned mbType = bits->ue();
    const unsigned inter = type == SliceType::I ? 0 : type == SliceType::P ? 5 : 23;
    if (mbType >= inter + 26) throw BadSyntax("mb_type is " + std::to_string(mbType));
    if (mbType >= inter)
        parseIntra(mbType - inter);
    else
        parseInter(mbType);
}

void SliceDecoder::State::parseIntra(unsigned mbType) {
    Macroblock& mb = *current.mb;
    for (auto& list : mb.refIdx) std::memset(list, -1, sizeof list);
    for (auto& list : mb.refPicId) std::memset(list, -1, sizeof list);
    const bool constrained = context.pps->constrainedIntraPred;
    if (mbType == 25) {
        parsePcm();
        return;
    }
    if (mbType == 0) {
        mb.transform8x8 = context.pps->transform8x8Mode && bits->flag();
        mb.type = mb.transform8x8 ? MbType::I8x8 : MbType::I4x4;
        parseIntraModes(*bits, neighbours, constrained, mb);
    } else {
        mb.type = MbType::I16x16;
        mb.predMode16x16 = static_cast<std::uint8_t>((mbType - 1) % 4);
        mb.codedBlockPattern = static_cast<std::uint8_t>((mbType - 1) / 4 % 3 << 4 | (mbType >= 13 ? 15 : 0));
    }
    if (context.sps->chromaFormatIdc != 0)
        mb.predModeChroma = static_cast<std::uint8_t>(bits->ue("intra_chroma_pred_mode", 3));
    parsePatternAndResidual(false);
    item.intraEdges = intraEdgeFlags(neighbours, constrained, mb.field);
}

void SliceDecoder::State::parsePcm() {
    Macroblock& mb = *current.mb;
    while (bits->position() % 8 != 0) bits->flag();
    for (int i = 0; i < planes; ++i) {
        const int depth = i == 0 ? context.sps->bitDepthLuma : context.sps->bitDepthChroma;
        for (int y = 0; y < mbHeight[i]; ++y) {
            std::uint8_t* row = current.plane[i] + std::ptrdiff_t{current.planeStep[i]} * y;
            for (int x = 0; x < mbWidth[i]; ++x) {
                const std::uint32_t sample = bits->u(depth);
                if (wide)
                    reinterpret_cast<std::uint16_t*>(row)[x] = static_cast<std::uint16_t>(sample);
                else
                    row[x] = static_cast<std::uint8_t>(sample);
            }
        }
    }
    mb.type = MbType::IPcm;
    std::memset(mb.totalCoeff, 16, sizeof mb.totalCoeff);
    std::memset(mb.totalCoeffC, 16, sizeof mb.totalCoeffC);
    mb.codedBlockPattern = 0x2f;
    mb.nonZero = 0xffff;
    // The deblocking filter sees a QPY of 0; the next macroblock's prediction does not (7.4.5, 8.7.2.2).
    const int before = qp;
    qp = 0;
    setQp(mb);
    qp = before;
}

// coded_block_pattern, transform_size_8x8_flag, mb_qp_delta and the residual.
void SliceDecoder::State::parsePatternAndResidual(bool transform8x8Allowed) {
    Macroblock& mb = *current.mb;
    const int chromaFormatIdc = context.sps->chromaFormatIdc;
    if (mb.type != MbType::I16x16) {
        const bool monochrome = chromaFormatIdc == 0;
        const int code = bits->ue("coded_block_pattern", monochrome ? 15 : 47);
        const bool inter = !mb.intra();
        mb.codedBlockPattern = monochrome ? kCodedBlockPatternMonochrome[inter][code] : kCodedBlockPattern[inter][code];
        if (inter && transform8x8Allowed && context.pps->transform8x8Mode && (mb.codedBlockPattern & 15) != 0)
            mb.transform8x8 = bits->flag();
    } else if (chromaFormatIdc == 0) {
        mb.codedBlockPattern &= 15;
    }
    if (mb.codedBlockPattern != 0 || mb.type == MbType::I16x16) {
        const int delta = bits->se("mb_qp_delta", -26 - qpBdOffsetY / 2, 25 + qpBdOffsetY / 2);
        const int range = 52 + qpBdOffsetY;
        qp = (qp + delta + range + qpBdOffsetY) % range - qpBdOffsetY;
        setQp(mb);
        mb.bypass = context.sps->losslessQpprime && qp + qpBdOffsetY == 0;
        if (wide)
            parseCoefficients(coeffs32);
        else
            parseCoefficients(coeffs16);
    } else {
        mb.bypass = context.sps->losslessQpprime && qp + qpBdOffsetY == 0;
    }
}

// ---- from syntax to samples

template <typename Coeff>
void SliceDecoder::State::parseCoefficients(std::vector<Coeff>& coeffs) {
    Residual<Coeff> residual{coeffs.data() + item.coeffs};
    const Coeff* end = parseResidual(*bits, tables, neighbours, context.sps->chromaFormatIdc, *current.mb, residual);
    item.coded = residual.coded;
    item.codedChroma = residual.codedChroma;
    coeffsParsed = static_cast<std::size_t>(end - coeffs.data());
}

void SliceDecoder::State::finishMacroblock() {
    item.macroblock = current;
    parsed.push_back(item);
    inMacroblock = false;
}

template <typename Sample, typename Coeff>
void SliceDecoder::State::reconstructOne(const Parsed& p, std::vector<Coeff>& coeffs) {
    const Macroblock& mb = *p.macroblock.mb;
    if (mb.type == MbType::IPcm) return;  // its samples stand there
    if (!mb.intra()) predictInter<Sample>(context, p.macroblock);
    if (!mb.skipped)
        reconstruct<Sample>(context, p.macroblock, p.intraEdges, scales,
                            Residual<Coeff>{coeffs.data() + p.coeffs, p.coded, p.codedChroma});
}

// Throws BadSyntax for the macroblock that `current` is then; it and those parsed behind it are missing.
void SliceDecoder::State::reconstructParsed() {
    std::size_t i = 0;
    try {
        for (; i < parsed.size(); ++i) {
            if (wide)
                reconstructOne<Vek16u>(parsed[i], coeffs32);
            else
                reconstructOne<Vek8u>(parsed[i], coeffs16);
        }
    } catch (const BadSyntax&) {
        current = parsed[i].macroblock;
        for (; i < parsed.size(); ++i) parsed[i].macroblock.mb->type = MbType::Missing;
        parsed.clear();
        throw;
    }
    parsed.clear();
    coeffsParsed = 0;
}

SliceDecoder::SliceDecoder() : state_(std::make_unique<State>()) {}
SliceDecoder::~SliceDecoder() = default;

std::unique_ptr<SliceDamage> SliceDecoder::decode(BitReader& bits, const Slice& slice,
                                                  const std::function<void(int)>& reached) {
    State& s = *state_;
    const auto damage = [&](const BadSyntax& e) { return std::make_unique<SliceDamage>(s.current.address, e.what()); };
    try {
        s.decodeSlice(bits, slice, reached);
        return nullptr;
    } catch (const BadSyntax& e) {
        if (s.inMacroblock) s.current.mb->type = MbType::Missing;
        auto found = damage(e);
        try {
            s.reconstructParsed();
        } catch (const BadSyntax& earlier) {
            found = damage(earlier);
        }
        return found;
    }
}

}  // namespace vekdec::h264
