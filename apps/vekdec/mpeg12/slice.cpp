#include "mpeg12/slice.h"

#include <algorithm>
#include <string>

namespace vekdec::mpeg12 {
namespace {

// Saturation (7.4.3), which the library leaves to the caller in MPEG-2, and the mismatch control (7.4.4) that must come
// after it. Nearly no block needs it.
void saturate(Vek16s (&block)[64]) {
    Vek16s least = 0, most = 0;
    for (const Vek16s c : block) {
        least = std::min(least, c);
        most = std::max(most, c);
    }
    if (least >= -2048 && most <= 2047) [[likely]]
        return;
    int sum = 0;
    for (Vek16s& c : block) {
        c = std::clamp<Vek16s>(c, -2048, 2047);
        sum += c;
    }
    if (sum % 2 == 0) block[63] = static_cast<Vek16s>(block[63] ^ 1);
}

}  // namespace

void SliceDecoder::begin(const PictureContext& context) {
    context_ = context;
    widthInMbs_ = context.sequence->widthInMbs();
    mbCount_ = widthInMbs_ * context.sequence->heightInMbs() / (context.isFrame() ? 1 : 2);
    mbs_ = context.picture->mbs.data() + (context.header->structure == kBottomField ? mbCount_ : 0);
    blocks_ = context.sequence->chroma == vekapp::Chroma::C422 ? 8 : 6;
    scan_ = context.header->alternateScan ? kAlternateScan : kZigzagScan;
}

void SliceDecoder::resetDc() {
    const int value = context_.sequence->mpeg2 ? 128 << context_.header->intraDcPrecision : 1024;
    for (Vek16s& p : dcPredictor_) p = static_cast<Vek16s>(value);
}

void SliceDecoder::parseScale() {
    const unsigned code = bits_->u(5);
    if (code == 0) throw BadSyntax("quantiser_scale_code is 0");
    scale_ = !context_.sequence->mpeg2         ? static_cast<int>(code)
             : context_.header->nonLinearScale ? kNonLinearScale[code]
                                               : static_cast<int>(2 * code);
}

void SliceDecoder::decode(WordReader& bits, int row, const std::function<void(int y)>& reached) {
    bits_ = &bits;
    if (context_.sequence->height > 2800) bits.u(3);  // slice_vertical_position_extension, a part of `row`
    parseScale();
    while (bits.flag()) bits.u(8);  // intra_slice_flag and what follows, extra_information_slice
    resetDc();
    resetVectors();
    before_ = nullptr;
    int address = row * widthInMbs_ - 1;
    // A slice ends where 23 zero bits follow (6.2.4); zeros stand behind the payload.
    for (bool first = true; first || bits.peek32() >> 9 != 0; first = false) {
        int increment = 0, code;
        while ((code = vekdec::mpeg12::decode(bits, tables_.addressIncrement, "macroblock_address_increment")) > 33) {
            if (code == kAddressEscape) increment += 33;
            bits.checkEnd();
        }
        increment += code;
        if (address + increment >= mbCount_) throw BadSyntax("macroblocks behind the end of the picture");
        if (first) {
            address += increment;
        } else {
            while (--increment > 0) skipMacroblock(++address);
            ++address;
        }
        decodeMacroblock(address);
        bits.checkEnd();
        if (y_ > row) reached(row = y_);
    }
}

// 7.6.6.
void SliceDecoder::skipMacroblock(int address) {
    const PictureType type = context_.header->type;
    if (type != PictureType::P && type != PictureType::B) throw BadSyntax("a skipped macroblock in an intra picture");
    Macroblock& mb = mbs_[address];
    const Macroblock before = *before_;
    if (type == PictureType::B && !before.uses[0] && !before.uses[1])
        throw BadSyntax("a skipped macroblock behind an intra macroblock");
    x_ = address % widthInMbs_;
    y_ = address / widthInMbs_;
    resetDc();
    mb = {};
    mb.scale = static_cast<std::uint8_t>(scale_);
    motion_ = context_.isFrame() ? MotionType::Frame : MotionType::Field;
    vectors_ = {};
    for (auto& select : vectors_.fieldSelect) select[0] = select[1] = context_.parity();
    if (type == PictureType::P) {
        resetVectors();
        mb.uses[0] = true;
    } else {
        for (std::size_t s = 0; s < 2; ++s) {
            mb.uses[s] = before.uses[s];
            vectors_.mv[0][s] = mb.mv[s] = pmv_[0][s];
            if (context_.header->fullPel[s]) vectors_.mv[0][s] = {2 * pmv_[0][s].x, 2 * pmv_[0][s].y};
        }
    }
    predict(mb);
    mb.kind = MbKind::Skipped;
    before_ = &mb;
}

void SliceDecoder::decodeMacroblock(int address) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    Macroblock& mb = mbs_[address];
    mb = {};  // lost until it is whole
    x_ = address % widthInMbs_;
    y_ = address / widthInMbs_;
    const auto flags = static_cast<unsigned>(
        vekdec::mpeg12::decode(bits, tables_.macroblockType[static_cast<int>(header.type)], "macroblock_type"));
    const bool intra = (flags & kIntra) != 0, frame = context_.isFrame();
    motion_ = frame ? MotionType::Frame : MotionType::Field;
    if ((flags & (kForward | kBackward)) != 0 && !(frame && header.framePredFrameDct)) {
        const unsigned code = bits.u(2);
        if (code == 0) throw BadSyntax("the motion type is 0");
        motion_ = code == 1   ? MotionType::Field
                  : code == 3 ? MotionType::DualPrime
                  : frame     ? MotionType::Frame
                              : MotionType::TwoHalves;
        if (motion_ == MotionType::DualPrime && header.type != PictureType::P)
            throw BadSyntax("dual prime outside a P picture");
    }
    const bool fieldDct = frame && !header.framePredFrameDct && (flags & (kIntra | kPattern)) != 0 && bits.flag();
    if ((flags & kQuant) != 0) parseScale();
    mb.scale = static_cast<std::uint8_t>(scale_);
    mb.uses[0] = (flags & kForward) != 0;
    mb.uses[1] = (flags & kBackward) != 0;
    vectors_ = {};
    const bool concealment = intra && header.concealmentVectors;
    if (mb.uses[0] || concealment) parseVectors(0, mb);
    if (mb.uses[1]) parseVectors(1, mb);
    if (concealment) bits.flag();
    pattern_ = 0;
    if (intra) {
        pattern_ = (1u << blocks_) - 1;
    } else if ((flags & kPattern) != 0) {
        pattern_ =
            static_cast<unsigned>(vekdec::mpeg12::decode(bits, tables_.codedBlockPattern, "coded_block_pattern"));
        if (blocks_ == 8)
            pattern_ = pattern_ << 2 | bits.u(2);
        else if (pattern_ == 0)
            throw BadSyntax("coded_block_pattern is 0");
    }
    if (intra) {
        if (!concealment) resetVectors();
    } else {
        resetDc();
        if (header.type == PictureType::P && !mb.uses[0]) {  // 7.6.3.5: no motion
            resetVectors();
            motion_ = frame ? MotionType::Frame : MotionType::Field;
            for (auto& select : vectors_.fieldSelect) select[0] = context_.parity();
            mb.uses[0] = true;
        }
        predict(mb);
    }
    if (pattern_ != 0) decodeBlocks(flags, fieldDct);
    mb.kind = intra ? MbKind::Intra : !mb.uses[1] ? MbKind::Forward : !mb.uses[0] ? MbKind::Backward : MbKind::Both;
    before_ = &mb;
}

void SliceDecoder::predict(const Macroblock& mb) {
    for (std::size_t s = 0; s < 2; ++s)
        if (mb.uses[s] && !context_.hasReference[s]) throw BadSyntax("a prediction from a picture that is not there");
    predictMacroblock(context_, x_, y_, motion_, vectors_, mb.uses);
}

// ---- motion vectors, 7.6.3

// 7.6.3.1.
int SliceDecoder::parseVectorDelta(int fCode) {
    WordReader& bits = *bits_;
    const int code = vekdec::mpeg12::decode(bits, tables_.motionCode, "motion_code");
    if (code == 0) return 0;
    const bool negative = bits.flag();
    const int size = fCode - 1;
    const int delta = ((code - 1) << size) + static_cast<int>(bits.u(size)) + 1;
    return negative ? -delta : delta;
}

void SliceDecoder::parseVectors(int direction, Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    const auto s = static_cast<std::size_t>(direction);
    const bool frame = context_.isFrame(), dualPrime = motion_ == MotionType::DualPrime;
    const bool two = motion_ == MotionType::TwoHalves || (frame && motion_ == MotionType::Field);
    const bool selects = motion_ != MotionType::Frame && !dualPrime;
    const bool fieldLines = frame && motion_ != MotionType::Frame;  // PMV keeps frame lines
    for (std::size_t r = 0; r < (two ? 2 : 1); ++r) {
        if (selects) vectors_.fieldSelect[r][s] = bits.flag();
        for (int t = 0; t < 2; ++t) {
            const int fCode = header.fCode[s][t];
            if (fCode < 1 || fCode > 9) throw BadSyntax("f_code is " + std::to_string(fCode));
            const int delta = parseVectorDelta(fCode);
            const bool halved = fieldLines && t == 1;
            int& predictor = t == 0 ? pmv_[r][s].x : pmv_[r][s].y;
            const int range = 16 << (fCode - 1);
            int v = (halved ? predictor >> 1 : predictor) + delta;
            if (v < -range) v += 2 * range;
            if (v > range - 1) v -= 2 * range;
            predictor = halved ? 2 * v : v;
            (t == 0 ? vectors_.mv[r][s].x : vectors_.mv[r][s].y) = header.fullPel[s] ? 2 * v : v;
            if (dualPrime) vectors_.dmvector[t] = vekdec::mpeg12::decode(bits, tables_.dmvector, "dmvector");
        }
    }
    if (!two) pmv_[1][s] = pmv_[0][s];
    mb.mv[s] = vectors_.mv[0][s];
}

// ---- blocks

void SliceDecoder::decodeBlocks(unsigned flags, bool fieldDct) {
    const vekapp::Plane* planes = context_.target().plane;
    for (int k = 0; k < blocks_; ++k) {
        if ((pattern_ >> (blocks_ - 1 - k) & 1) == 0) continue;
        const bool luma = k < 4;
        const vekapp::Plane& plane = luma ? planes[0] : planes[1 + k % 2];
        // Luma 0 1 / 2 3; chroma Cb Cr, and of 4:2:2 both once more below.
        const int row = luma ? k / 2 : (k - 4) / 2, column = luma ? k % 2 : 0;
        const bool tall = luma || blocks_ == 8;
        const bool apart = fieldDct && tall;  // every second line
        const int x = (luma ? 16 : 8) * x_ + 8 * column;
        const int y = (tall ? 16 : 8) * y_ + (apart ? row : 8 * row);
        std::uint8_t* to = plane.at(x, y);
        const std::ptrdiff_t step = apart ? 2 * plane.stride : plane.stride;
        if (context_.header->type == PictureType::D)
            decodeDcOnly(k, to, step);
        else if ((flags & kIntra) != 0)
            decodeIntraBlock(k, to, step);
        else
            decodeInterBlock(k, to, step);
    }
    if (context_.header->type == PictureType::D && !bits_->flag()) throw BadSyntax("end_of_macroblock is missing");
}

void SliceDecoder::decodeIntraBlock(int k, std::uint8_t* to, std::ptrdiff_t step) {
    const bool luma = k < 4;
    const Matrices& matrices = *context_.matrices;
    const Matrix& matrix = luma || blocks_ == 6 ? matrices.intra : matrices.chromaIntra;
    Vek16s& predictor = dcPredictor_[luma ? 0 : 1 + k % 2];
    alignas(32) Vek16s block[64];
    Vek32s last = 0;
    VekStatus status;
    if (context_.sequence->mpeg2)
        status = vekiReconstructDCTBlockIntra_MPEG2_32s(
            bits_->word(), bits_->offset(), tables_.dcSize[!luma], tables_.coefficients[context_.header->intraVlc],
            scan_, scale_, matrix.data(), &predictor, 3 - context_.header->intraDcPrecision, block, &last);
    else
        status = vekiReconstructDCTBlockIntra_MPEG1_32s(bits_->word(), bits_->offset(), tables_.dcSize[!luma],
                                                        tables_.coefficients[0], scan_, scale_, matrix.data(),
                                                        &predictor, block, &last);
    if (status != vekStsOk || bits_->beyondEnd()) throw BadSyntax("no valid coefficient code");
    if (context_.sequence->mpeg2) saturate(block);
    vekiDCT8x8Inv_16s8u_C1R(block, to, static_cast<Vek32s>(step));
}

void SliceDecoder::decodeInterBlock(int k, std::uint8_t* to, std::ptrdiff_t step) {
    const Matrices& matrices = *context_.matrices;
    const Matrix& matrix = k < 4 || blocks_ == 6 ? matrices.nonIntra : matrices.chromaNonIntra;
    alignas(32) Vek16s block[64];
    Vek32s last = 0;
    const VekStatus status =
        (context_.sequence->mpeg2 ? vekiReconstructDCTBlock_MPEG2_32s : vekiReconstructDCTBlock_MPEG1_32s)(
            bits_->word(), bits_->offset(), tables_.coefficients[0], tables_.coefficients[0], scan_, scale_,
            matrix.data(), block, &last);
    if (status != vekStsOk || bits_->beyondEnd()) throw BadSyntax("no valid coefficient code");
    if (context_.sequence->mpeg2) saturate(block);
    vekiDCT8x8InvAdd_16s8u_C1IR(block, to, static_cast<Vek32s>(step));
}

// Blocks of D pictures (ISO 11172-2 2.4.2.7).
void SliceDecoder::decodeDcOnly(int k, std::uint8_t* to, std::ptrdiff_t step) {
    const bool luma = k < 4;
    const int size = vekdec::mpeg12::decode(*bits_, tables_.dcSize[!luma], "dct_dc_size");
    int difference = static_cast<int>(bits_->u(size));
    if (size > 0 && difference >> (size - 1) == 0) difference -= (1 << size) - 1;
    Vek16s& predictor = dcPredictor_[luma ? 0 : 1 + k % 2];
    predictor = static_cast<Vek16s>(predictor + 8 * difference);
    alignas(32) Vek16s block[64] = {predictor};
    vekiDCT8x8Inv_16s8u_C1R(block, to, static_cast<Vek32s>(step));
}

}  // namespace vekdec::mpeg12
