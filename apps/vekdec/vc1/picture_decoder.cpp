#include "vc1/picture_decoder.h"

#include <algorithm>
#include <string>

#include "vc1/loop_filter.h"

namespace vekdec::vc1 {

void PictureDecoder::begin(const PictureContext& context) {
    context_ = context;
    context_.sliceBegins.assign(static_cast<std::size_t>(context_.height), 0);
    std::fill_n(context_.mbs, context_.width * context_.height, Macroblock{});
    residual_.begin(context_);
    intra_.begin(context_);
    vectors_.begin(context_);
    if (context_.header->isField()) fieldVectors_.begin(context_);
    overlap_.begin(context_);
    smoothedRows_ = filteredRows_ = 0;
}

void PictureDecoder::decodeRow(WordReader& bits, int row, bool beginsSlice) {
    bits_ = &bits;
    if (beginsSlice) {
        firstRow_ = row;
        context_.sliceBegins[static_cast<std::size_t>(row)] = 1;
        residual_.beginSlice();
        intra_.beginSlice(row);
        vectors_.beginSlice(row);
        fieldVectors_.beginSlice(row);
    }
    const PictureHeader& header = *context_.header;
    y_ = row;
    for (x_ = 0; x_ < context_.width; ++x_) {
        address_ = static_cast<std::size_t>(y_ * context_.width + x_);
        Macroblock& mb = context_.mbs[address_];
        try {
            mb = {};
            setPictureQuant(mb);
            if (header.isIntra())
                decodeI(mb);
            else if (header.isField())
                decodeFieldP(mb);
            else if (header.type == PictureType::P)
                decodeP(mb);
            else
                decodeB(mb);
            bits.checkEnd();
        } catch (const BadSyntax&) {
            mb = {};  // lost
            throw;
        }
    }
}

// Smoothing changes two rows of samples above a macroblock, in luma and in chroma. The loop filter reads four rows
// below one, and finishes all above them.
int PictureDecoder::finishRows(int endRow) {
    const bool last = endRow == context_.height;
    if (overlap_.active())
        for (; smoothedRows_ < endRow; ++smoothedRows_) overlap_.finishRow(smoothedRows_);
    if (!context_.sequence->loopFilter) return 16 * endRow - (overlap_.active() && !last ? 4 : 0);
    for (const int end = last ? endRow : endRow - 1; filteredRows_ < end; ++filteredRows_)
        filterRow(context_, filteredRows_);
    return context_.header->coding == Coding::FrameInterlaced && !last ? 0 : 16 * filteredRows_;
}

// ---- quantizers, 7.1.3.4, 8.3.6.1.2

void PictureDecoder::setPictureQuant(Macroblock& mb) const {
    using Q = MacroblockQuantizers;
    const PictureHeader& header = *context_.header;
    const Q& q = header.quantizers;
    const unsigned at = (x_ == 0 ? Q::kLeft : 0u) | (y_ == 0 ? Q::kTop : 0u) |
                        (x_ == context_.width - 1 ? Q::kRight : 0u) | (y_ == context_.height - 1 ? Q::kBottom : 0u);
    const bool alternative = (q.edges & at) != 0;
    mb.quant = static_cast<std::uint8_t>(alternative ? q.alternative : header.pquant);
    mb.halfStep = header.halfStep && !alternative && !(q.inMacroblocks && !q.bilevel);
}

// MQUANT.
void PictureDecoder::parseQuant(Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    const MacroblockQuantizers& q = header.quantizers;
    if (!q.inMacroblocks) return;
    int quant = header.pquant;
    if (q.bilevel) {
        if (bits_->flag()) {
            quant = q.alternative;
            mb.halfStep = false;
        }
    } else {
        const int difference = static_cast<int>(bits_->u(3));
        quant = difference == 7 ? static_cast<int>(bits_->u(5)) : quant + difference;
    }
    if (quant < 1 || quant > 31) throw BadSyntax("MQUANT is " + std::to_string(quant));
    mb.quant = static_cast<std::uint8_t>(quant);
}

// ---- intra pictures

// 8.1.1.5: a luma block's flag is sent as its difference to a flag that its neighbours predict. Bit k: block k.
unsigned PictureDecoder::predictedLumaFlags(unsigned pattern, Macroblock& mb) const {
    const bool hasLeft = x_ > 0, hasAbove = y_ > firstRow_;
    const unsigned left = hasLeft ? context_.mb(x_ - 1, y_).coded : 0u,
                   above = hasAbove ? context_.mb(x_, y_ - 1).coded : 0u,
                   corner = hasLeft && hasAbove ? context_.mb(x_ - 1, y_ - 1).coded : 0u;
    unsigned coded = 0;
    const auto bit = [](unsigned flags, int k) { return flags >> k & 1; };
    for (int k = 0; k < 4; ++k) {
        const bool right = (k & 1) != 0, low = (k & 2) != 0;
        const unsigned l = right ? bit(coded, k - 1) : bit(left, k + 1);
        const unsigned t = low ? bit(coded, k - 2) : bit(above, k + 2);
        const unsigned tl = right && low ? bit(coded, 0) : right ? bit(above, 2) : low ? bit(left, 1) : bit(corner, 3);
        const unsigned predicted = t == tl ? l : t;
        coded |= (bit(pattern, 5 - k) ^ predicted) << k;
    }
    mb.coded = static_cast<std::uint8_t>(coded);
    return coded | bit(pattern, 1) << 4 | bit(pattern, 0) << 5;
}

void PictureDecoder::decodeI(Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    const bool advanced = context_.sequence->advanced();
    if (header.coding == Coding::FrameInterlaced) mb.fieldTransform = header.fieldTransform.at(bits, address_);
    const auto pattern = static_cast<unsigned>(decode(bits, tables().cbpI, "CBPCY"));
    const bool acPrediction = advanced ? header.acPrediction.at(bits, address_) : bits.flag();
    if (header.conditionalOverlap == PictureHeader::Overlap::Selected) mb.overlap = header.overlap.at(bits, address_);
    if (advanced) parseQuant(mb);
    mb.intra = 0x3f;
    decodeBlocks(mb, predictedLumaFlags(pattern, mb), acPrediction);
    mb.kind = MbKind::Intra;
}

// ---- blocks

// `coded`: bit k: block k has coefficients (of intra blocks: other than the DC).
void PictureDecoder::decodeBlocks(Macroblock& mb, unsigned coded, bool acPrediction) {
    for (int k = 0; k < 6; ++k) {
        const bool isCoded = (coded >> k & 1) != 0;
        if (mb.isIntra(k))
            decodeIntraBlock(mb, k, isCoded, acPrediction);
        else if (isCoded)
            decodeInterBlock(mb, k);
    }
}

void PictureDecoder::decodeIntraBlock(Macroblock& mb, int k, bool coded, bool acPrediction) {
    const PictureHeader& header = *context_.header;
    const bool luma = k < 4, intraPicture = header.isIntra();
    Coefficients block;
    block.clear();
    const int dc = residual_.parseDc(*bits_, luma, mb.quant);
    const IntraPredictor::Prediction prediction = intra_.predict(x_, y_, k);
    block.value[0] = static_cast<Vek16s>(dc);
    if (coded) {
        const bool interlaced = header.coding == Coding::FrameInterlaced;
        const std::uint8_t* scan = residual_.interScan();
        if (intraPicture && acPrediction && (!interlaced || prediction.anyNeighbour))
            scan = prediction.left ? kScanIntraVertical : kScanIntraHorizontal;
        else if (intraPicture && !interlaced)
            scan = kScanIntra;
        residual_.parseIntra(*bits_, luma, scan, block);
    }
    intra_.finish(x_, y_, k, prediction, acPrediction, block);
    residual_.dequantizeIntra(mb, block);
    vekiTransform8x8Inv_VC1_16s_C1IR(block.value, 16, {block.columns, block.rows});
    mb.corners[k] = 15;
    storeIntra(mb, k, block);
}

// The plane of the block with the step of its rows, and its first sample.
vekapp::Plane PictureDecoder::blockPlane(const Macroblock& mb, int k, std::uint8_t*& to) const {
    if (k >= 4) {
        to = context_.plane[k - 3].at(8 * x_, 8 * y_);
        return context_.plane[k - 3];
    }
    vekapp::Plane plane = context_.plane[0];
    const int row = k >> 1;
    to = plane.at(16 * x_ + 8 * (k & 1), 16 * y_ + (mb.fieldTransform ? row : 8 * row));
    if (mb.fieldTransform) plane.stride *= 2;
    return plane;
}

void PictureDecoder::storeIntra(const Macroblock& mb, int k, Coefficients& block) {
    static constexpr Vek8u kBase[2][8] = {{}, {128, 128, 128, 128, 128, 128, 128, 128}};
    // Intra pictures of Simple and Main profile predict the first DC with mid grey, which then is in the coefficients.
    const bool greyInside = !context_.sequence->advanced() && context_.header->isIntra() &&
                            !(context_.sequence->overlap && context_.header->pquant >= 9);
    if (overlap_.active()) {
        Vek16s* to = overlap_.block(x_, y_, k);
        const std::ptrdiff_t step = overlap_.step(k) / 2;
        const int base = greyInside ? 0 : 128;
        for (int row = 0; row < 8; ++row)
            for (int column = 0; column < 8; ++column)
                to[row * step + column] = static_cast<Vek16s>(block.value[8 * row + column] + base);
        return;
    }
    std::uint8_t* to = nullptr;
    const vekapp::Plane plane = blockPlane(mb, k, to);
    vekiAdd8x8HP_16s8u_C1RS(block.value, 16, kBase[!greyInside], 0, to, static_cast<Vek32s>(plane.stride), 0, 0);
}

// TTMB, where the macroblocks say.
void PictureDecoder::parseTransform() {
    const PictureHeader& header = *context_.header;
    firstCoded_ = true;
    if (!header.transformPerMacroblock) {
        transform_ = {static_cast<Transform>(header.transformType), 3};
        transformOfAll_ = true;
        transformGivesPattern_ = false;
        return;
    }
    const int symbol = decode(*bits_, tables().ttMb[residual_.quantClass()], "TTMB");
    transform_ = transformCode(symbol & 7);
    transformOfAll_ = symbol >= 8;
    transformGivesPattern_ = true;
}

void PictureDecoder::decodeInterBlock(Macroblock& mb, int k) {
    Coefficients residual;
    const bool told = transformOfAll_ || firstCoded_;
    residual_.parseInter(*bits_, told ? &transform_ : nullptr, transformGivesPattern_ && firstCoded_, mb, k, residual);
    firstCoded_ = false;
    std::uint8_t* to = nullptr;
    const vekapp::Plane plane = blockPlane(mb, k, to);
    vekiAdd8x8_16s8u_C1IRS(residual.value, 16, to, static_cast<Vek32s>(plane.stride));
}

// ---- P pictures, 8.3.4

void PictureDecoder::setVector(Macroblock& mb, MotionVector v) const {
    for (MotionVector& block : mb.mv) block = v;
    mb.uses[0] = true;
    mb.colocated = v;
    mb.chroma = chromaVector(v);
}

// 8.3.5.4.2: from the vectors of the luma blocks, of which bit k of `blocks` is set for block k.
void PictureDecoder::setChromaOf(Macroblock& mb, unsigned blocks) const {
    MotionVector v[4];
    int count = 0;
    for (int k = 0; k < 4; ++k)
        if ((blocks >> k & 1) != 0) v[count++] = mb.mv[k];
    if (count < 2) return;  // chroma is intra
    const auto middle = [&](auto component) {
        int c[4] = {};
        for (int k = 0; k < count; ++k) c[k] = component(v[k]);
        if (count == 3) return static_cast<std::int16_t>(median(c[0], c[1], c[2]));
        if (count == 4) {
            std::sort(c, c + 4);
            return static_cast<std::int16_t>((c[1] + c[2]) / 2);
        }
        return static_cast<std::int16_t>((c[0] + c[1]) / 2);
    };
    mb.colocated = {middle([](MotionVector m) { return m.x; }), middle([](MotionVector m) { return m.y; })};
    mb.chroma = chromaVector(mb.colocated);
}

// Of a P macroblock from its one reference.
void PictureDecoder::predict(const Macroblock& mb) const {
    const Reference& reference = context_.forward;
    if (!reference.present()) throw BadSyntax("a prediction from a picture that is not there");
    if (mb.kind == MbKind::FourMv || mb.intra != 0) {
        for (int k = 0; k < 4; ++k)
            if (!mb.isIntra(k))
                predictLuma(context_, reference, 16 * x_ + 8 * (k & 1), 16 * y_ + 8 * (k >> 1), 8, mb.mv[k],
                            context_.plane[0]);
    } else {
        predictLuma(context_, reference, 16 * x_, 16 * y_, 16, mb.mv[0], context_.plane[0]);
    }
    if (!mb.isIntra(4)) predictChroma(context_, reference, 8 * x_, 8 * y_, roundedChroma(mb.chroma), context_.plane);
}

void PictureDecoder::decodeP(Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    const bool four = header.mvMode == MvMode::Mixed && header.mvType.at(*bits_, address_);
    const bool skipped = header.skip.at(*bits_, address_);
    if (four)
        decodeFourMv(mb, skipped);
    else
        decodeOneMv(mb, skipped);
}

// An intra macroblock of a P or B picture with one vector's syntax.
void PictureDecoder::decodeIntra(Macroblock& mb, bool coefficients) {
    WordReader& bits = *bits_;
    mb.intra = 0x3f;
    unsigned pattern = 0;
    bool acPrediction = false;
    if (coefficients) {
        acPrediction = bits.flag();
        pattern =
            patternByBlock(static_cast<unsigned>(decode(bits, tables().cbpP[context_.header->cbpTable], "CBPCY")));
        parseQuant(mb);
    } else {
        parseQuant(mb);
        acPrediction = bits.flag();
    }
    decodeBlocks(mb, pattern, acPrediction);
    mb.kind = MbKind::Intra;
}

void PictureDecoder::decodeOneMv(Macroblock& mb, bool skipped) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    const VectorData data = skipped ? VectorData{} : vectors_.parse(bits);
    if (data.intra) return decodeIntra(mb, data.coefficients);
    setVector(mb, vectors_.vector(bits, x_, y_, data));
    unsigned pattern = 0;
    if (data.coefficients) {
        pattern = patternByBlock(static_cast<unsigned>(decode(bits, tables().cbpP[header.cbpTable], "CBPCY")));
        parseQuant(mb);
        parseTransform();
    }
    predict(mb);
    decodeBlocks(mb, pattern, false);
    mb.kind = skipped ? MbKind::Skipped : MbKind::Inter;
}

void PictureDecoder::decodeFourMv(Macroblock& mb, bool skipped) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    mb.kind = MbKind::FourMv;
    unsigned pattern = 0;
    if (skipped) {
        for (int k = 0; k < 4; ++k) mb.mv[k] = vectors_.vector(bits, x_, y_, k, {});
    } else {
        const unsigned flags =
            patternByBlock(static_cast<unsigned>(decode(bits, tables().cbpP[header.cbpTable], "CBPCY")));
        pattern = flags & 0x30;
        for (int k = 0; k < 4; ++k) {
            const VectorData data = (flags >> k & 1) != 0 ? vectors_.parse(bits) : VectorData{};
            if (data.intra)
                mb.intra = static_cast<std::uint8_t>(mb.intra | 1 << k);
            else
                mb.mv[k] = vectors_.vector(bits, x_, y_, k, data);
            if (data.coefficients) pattern |= 1u << k;
        }
        int intraBlocks = 0;
        for (int k = 0; k < 4; ++k) intraBlocks += mb.isIntra(k);
        if (intraBlocks >= 3) mb.intra |= 0x30;
    }
    setChromaOf(mb, ~unsigned{mb.intra} & 15);
    bool acPrediction = false;
    if (mb.intra != 0 || pattern != 0) {
        parseQuant(mb);
        for (int k = 0; k < 6; ++k)
            if (mb.isIntra(k) && intra_.hasNeighbour(x_, y_, k)) {
                acPrediction = bits.flag();
                break;
            }
        if ((pattern & ~unsigned{mb.intra}) != 0) parseTransform();
    }
    predict(mb);
    decodeBlocks(mb, pattern, acPrediction);
}

// ---- B pictures, 8.4.4

void PictureDecoder::decodeB(Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    const bool isDirect = header.direct.at(bits, address_), skipped = header.skip.at(bits, address_);
    VectorData forward, backward;
    MbKind kind = MbKind::Direct;
    bool coefficients = !skipped;
    if (!isDirect) {
        VectorData data;
        if (!skipped) data = vectors_.parse(bits);
        coefficients = data.coefficients;
        if (data.intra) return decodeIntra(mb, data.coefficients);
        const bool forwardNearer = header.scaleFactor < 128;
        if (!bits.flag())
            kind = forwardNearer ? MbKind::Forward : MbKind::Backward;
        else if (!bits.flag())
            kind = forwardNearer ? MbKind::Backward : MbKind::Forward;
        else
            kind = MbKind::Both;
        (kind == MbKind::Forward ? forward : backward) = data;
    }
    if (kind == MbKind::Both && coefficients) {
        forward = vectors_.parse(bits);
        coefficients = forward.coefficients;
    }
    MotionVector mv[2];
    vectors_.direct(x_, y_, mv[0], mv[1]);
    if (kind == MbKind::Forward || kind == MbKind::Both) mv[0] = vectors_.vectorB(x_, y_, false, forward);
    if (kind == MbKind::Backward || kind == MbKind::Both) mv[1] = vectors_.vectorB(x_, y_, true, backward);
    setVector(mb, mv[0]);
    mb.backward = mv[1];
    mb.uses[0] = kind != MbKind::Backward;
    mb.uses[1] = kind != MbKind::Forward;
    unsigned pattern = 0;
    if (coefficients) {
        pattern = patternByBlock(static_cast<unsigned>(decode(bits, tables().cbpP[header.cbpTable], "CBPCY")));
        parseQuant(mb);
        parseTransform();
    }
    if (!context_.forward.present() || !context_.backward.present())
        throw BadSyntax("a prediction from a picture that is not there");
    const Reference& first = mb.uses[0] ? context_.forward : context_.backward;
    const MotionVector firstMv = mb.uses[0] ? mv[0] : mv[1];
    predictLuma(context_, first, 16 * x_, 16 * y_, 16, firstMv, context_.plane[0]);
    predictChroma(context_, first, 8 * x_, 8 * y_, roundedChroma(chromaVector(firstMv)), context_.plane);
    if (mb.uses[0] && mb.uses[1])
        averageMacroblock(context_, context_.backward, x_, y_, mv[1], roundedChroma(chromaVector(mv[1])));
    decodeBlocks(mb, pattern, false);
    mb.kind = skipped ? MbKind::Skipped : kind;
}

}  // namespace vekdec::vc1
