#include "h263/picture_decoder.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

#include "h263/deblocking.h"
#include "h263/residual.h"

namespace vekdec::h263 {
namespace {

// Table T.2: chroma quantizer by luma quantizer with modified quantization.
constexpr std::uint8_t kChromaQuantizers[32] = {0,  1,  2,  3,  4,  5,  6,  6,  7,  8,  9,  9,  10, 10, 11, 11,
                                                12, 12, 12, 13, 13, 13, 14, 14, 14, 14, 14, 15, 15, 15, 15, 15};

// Table T.1: what the bits 10 and 11 make of a quantizer.
int modifiedQuantizer(int quantizer, bool second) {
    if (quantizer == 1) return second ? 2 : 3;
    if (quantizer <= 10) return quantizer + (second ? 1 : -1);
    if (quantizer <= 20) return quantizer + (second ? 2 : -2);
    if (quantizer <= 28) return quantizer + (second ? 3 : -3);
    if (quantizer <= 30) return quantizer + (second ? 31 - quantizer : -3);
    return quantizer + (second ? -5 : -3);
}

}  // namespace

void PictureDecoder::decode(Picture& picture, const Picture* reference, ByteReader& bits, const Report& report) {
    picture_ = &picture;
    reference_ = reference;
    header_ = &picture.header;
    bits_ = &bits;
    report_ = &report;
    mbs_ = picture.mbs.data();
    mbCount_ = header_->mbCount();
    if (widthInMbs_ != header_->widthInMbs()) {
        widthInMbs_ = header_->widthInMbs();
        intra_.resize(widthInMbs_);
    }
    quantizer_ = header_->quantizer;
    segmentStart_ = next_ = header_->firstAddress;
    for (Parsed& parsed : parsed_) parsed.address = -1;
    do {
        const std::size_t begin = bits.position();
        ++segments_;
        try {
            decodeSegment();
        } catch (const BadSyntax& e) {
            report("macroblock " + std::to_string(address_) + ": " + e.what());
            bits.seek(begin);  // what broke off may have read beyond the next start code
        }
    } while (beginNextSegment());
    finish(parsed_[current_]);
    if (header_->deblocking) filterPicture(picture);
}

// Macroblocks up to the next start code or the end of the picture.
void PictureDecoder::decodeSegment() {
    while (next_ < mbCount_ && bits_->peek(16) != 0) {
        Parsed& parsed = parsed_[1 - current_];
        parseMacroblock(next_, parsed);
        finish(parsed_[current_]);
        current_ = 1 - current_;
        if (!header_->overlapped) finish(parsed_[current_]);
        ++next_;
    }
}

// Moves behind the header of the next GOB or slice; false: there is none.
bool PictureDecoder::beginNextSegment() {
    ByteReader& bits = *bits_;
    while (bits.position() + 17 <= bits.end()) {
        const int zeros = std::countl_zero(bits.peek32());
        bits.skip(zeros == 32 ? 16 : static_cast<std::size_t>(zeros) + 1);
        if (zeros < 16 || zeros == 32) continue;
        try {
            const SegmentHeader segment = parseSegmentHeader(bits, *header_);
            if (segment.endOfPicture) return false;
            segmentStart_ = next_ = segment.address;
            quantizer_ = segment.quantizer;
            return true;
        } catch (const BadSyntax& e) {
            (*report_)(e.what());
        }
    }
    return false;
}

void PictureDecoder::moveTo(int address) {
    address_ = address;
    x_ = address % widthInMbs_;
    y_ = address / widthInMbs_;
}

const Macroblock* PictureDecoder::beside(int dx, int dy) const {
    if (x_ + dx < 0 || x_ + dx >= widthInMbs_ || y_ + dy < 0) return nullptr;
    const int address = address_ + dy * widthInMbs_ + dx;
    return address >= segmentStart_ ? &mbs_[address] : nullptr;
}

// ---- syntax (5.3)

// DQUANT, or that of Annex T.
void PictureDecoder::parseQuantizer() {
    if (!header_->modifiedQuantizer)
        quantizer_ = std::clamp(quantizer_ + readDquant(*bits_), 1, 31);
    else if (bits_->flag())
        quantizer_ = modifiedQuantizer(quantizer_, bits_->flag());
    else
        quantizer_ = static_cast<int>(bits_->u(5));
    if (quantizer_ == 0) throw BadSyntax("QUANT is 0");
}

void PictureDecoder::parseMacroblock(int address, Parsed& parsed) {
    moveTo(address);
    ByteReader& bits = *bits_;
    parsed.address = -1;
    parsed.pattern = 0;
    Macroblock& mb = mbs_[address];
    mb = {};
    Macroblock now;
    std::optional<Mcbpc> mcbpc;
    bool coded = true;
    do {  // until it is no stuffing
        coded = !header_->inter || !bits.flag();
        if (!coded) break;
        mcbpc = header_->inter ? readMcbpcInter(bits) : readMcbpcIntra(bits);
        bits.checkEnd();
    } while (!mcbpc);
    bool intra = false;
    int intraMode = 0;
    if (!coded) {
        now.kind = MbKind::Skipped;
    } else {
        const bool four = hasFourVectors(mcbpc->type);
        intra = isIntra(mcbpc->type);
        now.kind = intra ? MbKind::Intra : four ? MbKind::FourVectors : MbKind::Inter;
        if (intra && header_->advancedIntra && bits.flag()) intraMode = bits.flag() ? 2 : 1;
        const unsigned luma = readCbpy(bits);
        const bool upright = intra || (header_->alternativeInterVlc && mcbpc->chroma == 3);  // S.3
        parsed.pattern = (upright ? luma : 15 - luma) << 2 | mcbpc->chroma;
        if (hasQuantizer(mcbpc->type)) parseQuantizer();
        if (!intra) {
            for (int k = 0; k < (four ? 4 : 1); ++k) mb.mv[k] = now.mv[k] = parseVector(k);
            if (!four) std::fill(now.mv + 1, now.mv + 4, now.mv[0]);
        }
    }
    now.quantizer = static_cast<std::uint8_t>(quantizer_);
    now.chromaQuantizer = header_->modifiedQuantizer ? kChromaQuantizers[quantizer_] : now.quantizer;
    mb = now;
    try {
        parseBlocks(intra, intraMode, parsed);
        bits.checkEnd();
    } catch (const BadSyntax&) {
        mb = {};
        throw;
    }
    parsed.address = address;
}

void PictureDecoder::parseBlocks(bool intra, int intraMode, Parsed& parsed) {
    ByteReader& bits = *bits_;
    const Macroblock& mb = mbs_[address_];
    for (int k = 0; k < 6; ++k) {
        const bool coded = (parsed.pattern >> (5 - k) & 1) != 0;
        const int quantizer = k < 4 ? mb.quantizer : mb.chromaQuantizer;
        Vek16s(&block)[64] = parsed.block[k];
        parsed.last[k] = 63;
        VekStatus status = vekStsOk;
        if (intra && header_->advancedIntra)
            parseAdvancedIntraBlock(k, coded, intraMode, quantizer, block);
        else if (intra)
            status = vekiReconstructDCTBlockIntra_H263_1u16s(bits.byte(), bits.offset(), block, &parsed.last[k], coded,
                                                             header_->modifiedQuantizer, quantizer);
        else if (coded)
            status = vekiReconstructDCTBlockInter_H263_1u16s(bits.byte(), bits.offset(), block, &parsed.last[k],
                                                             header_->alternativeInterVlc, header_->modifiedQuantizer,
                                                             quantizer);
        if (status != vekStsOk) throw BadSyntax("no valid coefficient code");
    }
}

// Annex I.
void PictureDecoder::parseAdvancedIntraBlock(int k, bool coded, int intraMode, int quantizer, Vek16s (&block)[64]) {
    ByteReader& bits = *bits_;
    constexpr Vek32s kScans[] = {0, 2, 1};  // zigzag, alternate horizontal, alternate vertical
    Vek32s last = 0;
    if (!coded)
        std::memset(block, 0, sizeof block);
    else if (vekiDecodeCoeffsIntra_H263_1u16s(bits.byte(), bits.offset(), block, &last, 1, header_->modifiedQuantizer,
                                              kScans[intraMode]) != vekStsOk)
        throw BadSyntax("no valid coefficient code");
    vekiQuantInvIntra_H263_16s_C1I(block, quantizer, 1);
    const auto usable = [&](int dx, int dy) {
        const Macroblock* mb = beside(dx, dy);
        return mb != nullptr && mb->kind == MbKind::Intra;
    };
    const bool luma = k < 4, leftInside = luma && k % 2 == 1, aboveInside = luma && k >= 2;
    const Vek16s *left = nullptr, *above = nullptr;
    if (leftInside)
        left = intra_.at(x_, y_, k - 1).column;
    else if (usable(-1, 0))
        left = intra_.at(x_ - 1, y_, luma ? k + 1 : k).column;
    if (aboveInside)
        above = intra_.at(x_, y_, k - 2).row;
    else if (usable(0, -1))
        above = intra_.at(x_, y_ - 1, luma ? k + 2 : k).row;
    vekiPredictIntraAIC_H263_16s_C1I(block, left, above, intraMode);
    keep(intra_.at(x_, y_, k), block);
}

// ---- vectors (6.1.1, Annexes D and F)

// Of luma block `k`. Rows above that are missing take the vector on the left.
MotionVector PictureDecoder::predictedVector(int k) const {
    const Macroblock& own = mbs_[address_];
    const bool leftInside = k % 2 == 1, aboveInside = k >= 2;
    const Macroblock *left = beside(-1, 0), *above = beside(0, -1), *aboveRight = beside(1, -1);
    const std::size_t i = static_cast<std::size_t>(k);
    const MotionVector first = leftInside ? own.mv[i - 1] : left != nullptr ? left->mv[i + 1] : MotionVector{};
    if (aboveInside) return median(first, own.mv[0], own.mv[1]);
    const MotionVector second = above != nullptr ? above->mv[i + 2] : first;
    const MotionVector third = aboveRight != nullptr   ? aboveRight->mv[2]
                               : x_ + 1 == widthInMbs_ ? MotionVector{}
                                                       : first;
    return median(first, second, third);
}

namespace {

// D.2.
int readExtendedDifference(ByteReader& bits) {
    if (bits.flag()) return 0;
    int v = 2 + static_cast<int>(bits.u(1));
    while (bits.flag()) {
        v = 2 * v + static_cast<int>(bits.u(1));
        if (v > 1 << 14) throw BadSyntax("no valid vector difference");
    }
    return (v & 1) != 0 ? -(v >> 1) : v >> 1;
}

}  // namespace

MotionVector PictureDecoder::parseVector(int k) {
    ByteReader& bits = *bits_;
    const MotionVector predicted = predictedVector(k);
    if (header_->extendedVectorCodes) {
        const int dx = readExtendedDifference(bits), dy = readExtendedDifference(bits);
        if (dx == 1 && dy == 1 && !bits.flag()) throw BadSyntax("a stuffing bit is 0");
        const MotionVector mv = {predicted.x + dx, predicted.y + dy};
        if (std::max(std::abs(mv.x), std::abs(mv.y)) > 1 << 14) throw BadSyntax("a vector leaves its range");
        return mv;
    }
    const auto component = [&](int from) {
        int v = from + readVectorDifference(bits, 1);
        if (header_->unrestrictedVectors) {  // D.2 without PLUSPTYPE
            if (from < -31 && v < -63) v += 64;
            if (from > 32 && v > 63) v -= 64;
        } else {
            if (v < -32) v += 64;
            if (v > 31) v -= 64;
        }
        return v;
    };
    const int x = component(predicted.x);
    return {x, component(predicted.y)};
}

// ---- samples

void PictureDecoder::finish(Parsed& parsed) {
    if (parsed.address < 0) return;
    const int address = address_;
    moveTo(parsed.address);
    Macroblock& mb = mbs_[address_];
    if (mb.kind != MbKind::Lost) {  // lost meanwhile: by a segment that began at the same place and broke off
        if (mb.kind != MbKind::Intra) (header_->overlapped ? predictOverlapped(mb) : predict(mb));
        reconstruct(mb, parsed);
    }
    parsed.address = -1;
    moveTo(address);
}

void PictureDecoder::predict(const Macroblock& mb) {
    const bool four = mb.kind == MbKind::FourVectors;
    const vekapp::Plane& luma = picture_->plane[0];
    const auto predictLuma = [&](const BlockShape& shape, int x, int y, MotionVector mv) {
        predictBlock(shape, Precision::Half, {&reference_->plane[0]}, x, y, mv, header_->rounding, false, luma.at(x, y),
                     luma.stride);
    };
    if (!header_->overlapped) {
        if (four)
            for (int k = 0; k < 4; ++k) predictLuma(k8x8, 16 * x_ + k % 2 * 8, 16 * y_ + k / 2 * 8, mb.mv[k]);
        else
            predictLuma(k16x16, 16 * x_, 16 * y_, mb.mv[0]);
    }
    MotionVector chroma = {chromaComponent(mb.mv[0].x), chromaComponent(mb.mv[0].y)};
    if (four)
        chroma = {chromaComponentOfFour(mb.mv[0].x + mb.mv[1].x + mb.mv[2].x + mb.mv[3].x),
                  chromaComponentOfFour(mb.mv[0].y + mb.mv[1].y + mb.mv[2].y + mb.mv[3].y)};
    for (int i = 1; i < 3; ++i) {
        const vekapp::Plane& to = picture_->plane[i];
        predictBlock(k8x8, Precision::Half, {&reference_->plane[i]}, 8 * x_, 8 * y_, chroma, header_->rounding, false,
                     to.at(8 * x_, 8 * y_), to.stride);
    }
}

// Annex F.3: each block from its own vector and those of the blocks above, below, left and right.
void PictureDecoder::predictOverlapped(const Macroblock& mb) {
    predict(mb);
    const vekapp::Plane &from = reference_->plane[0], &to = picture_->plane[0];
    // The vector of block `k` of the macroblock beside; the own one where that has none to give.
    const auto remote = [&](int dx, int k, MotionVector own) {
        const int dy = dx == 0 ? -1 : 0;
        if (x_ + dx < 0 || x_ + dx >= widthInMbs_ || y_ + dy < 0) return own;
        const Macroblock& other = mbs_[address_ + dy * widthInMbs_ + dx];
        return other.kind == MbKind::Intra || other.kind == MbKind::Lost ? own : other.mv[k];
    };
    for (int k = 0; k < 4; ++k) {
        const int x = 16 * x_ + k % 2 * 8, y = 16 * y_ + k / 2 * 8;
        const MotionVector own = mb.mv[k];
        const MotionVector vectors[5] = {
            own, k >= 2 ? mb.mv[k - 2] : remote(0, k + 2, own), k >= 2 ? own : mb.mv[k + 2],
            k % 2 == 1 ? mb.mv[k - 1] : remote(-1, k + 1, own), k % 2 == 0 ? mb.mv[k + 1] : remote(1, k - 1, own)};
        vekapp::ReferenceScratch scratch[5];
        vekapp::ReferenceBlock blocks[5];
        Vek32s types[5];
        const auto take = [&](const auto& reference) {
            for (std::size_t i = 0; i < 5; ++i) {
                const MotionVector v = vectors[i];
                blocks[i] = reference(from, x + (v.x >> 1), y + (v.y >> 1), 9, 9, scratch[i], 1);
                types[i] = (v.x & 1) * 8 + (v.y & 1) * 4;
            }
        };
        take(vekapp::referenceBlock);
        const auto sameStep = [&](const vekapp::ReferenceBlock& block) { return block.step == blocks[0].step; };
        if (!std::all_of(std::begin(blocks), std::end(blocks), sameStep)) take(vekapp::copyReferenceBlock);
        const Vek8u* sources[5];
        for (std::size_t i = 0; i < 5; ++i) sources[i] = blocks[i].data;
        vekiOBMC8x8HP_H263_8u_C1R(sources, blocks[0].step, types, to.at(x, y), static_cast<Vek32s>(to.stride),
                                  header_->rounding);
    }
}

void PictureDecoder::reconstruct(const Macroblock& mb, const Parsed& parsed) {
    const bool intra = mb.kind == MbKind::Intra;
    for (int k = 0; k < 6; ++k) {
        if (!intra && (parsed.pattern >> (5 - k) & 1) == 0) continue;
        const vekapp::Plane& plane = picture_->plane[k < 4 ? 0 : k - 3];
        Vek8u* const to = k < 4 ? plane.at(16 * x_ + k % 2 * 8, 16 * y_ + k / 2 * 8) : plane.at(8 * x_, 8 * y_);
        const auto step = static_cast<Vek32s>(plane.stride);
        if (intra)
            vekiDCT8x8Inv_16s8u_C1R(parsed.block[k], to, step);
        else
            addResidual(parsed.block[k], parsed.last[k], to, step);
    }
}

}  // namespace vekdec::h263
