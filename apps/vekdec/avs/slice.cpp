#include "avs/slice.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "avs/prediction.h"
#include "avs/tables.h"
#include "vekvc.h"

namespace vekdec::avs {
namespace {

// Macroblock types, P: skipped, 16x16, 16x8, 8x16, 8x8, then intra with each cbp code; B: skipped, direct, 16x16
// forward, backward, symmetric, two partitions, 8x8, intra.
constexpr int kSkipped = 0;
constexpr int kRowsP = 2, kColumnsP = 3, kQuartersP = 4, kIntraP = 5;
constexpr int kDirectB = 1, kWholeB = 2, kTwoB = 5, kQuartersB = 23, kIntraB = 24;

constexpr std::int8_t kDcMode = 2;

// Samples around a macroblock, as the library's exports take them.
constexpr Vek32u kAbove = 1, kLeft = 2, kAboveLeft = 32, kAboveRight = 64;

}  // namespace

void SliceDecoder::begin(PictureContext& context) {
    context_ = &context;
    context.sliceBegins.assign(static_cast<std::size_t>(context.height), 0);
    std::fill_n(context.mbs, context.width * context.height, Macroblock{});
    vectors_.begin(context);
    nextRow_ = 0;
}

void SliceDecoder::decode(BitReader& bits, int row, const Finished& finished) {
    bits_ = &bits;
    slice_ = {};
    if (context_->syntax == Syntax::Standard) {
        slice_ = parseSliceHeader(bits, *context_->header, context_->references);
        // Weights come forward first.
        if (context_->type == PictureType::B) std::swap(slice_.weights[0], slice_.weights[1]);
    } else {
        slice_.fixedQp = context_->header->fixedQp;
        slice_.qp = context_->header->qp;
    }
    if (row >= context_->height) throw BadSyntax("it begins behind the end of the picture");
    if (row < nextRow_) throw BadSyntax("it lies over the one before");
    firstRow_ = row;
    nextRow_ = row + 1;
    context_->sliceBegins[static_cast<std::size_t>(row)] = 1;
    qp_ = slice_.qp;
    x_ = 0;
    y_ = row;
    try {
        decodeMacroblocks(row * context_->width, finished);
    } catch (const BadSyntax&) {
        Macroblock& last = context_->mbs[y_ * context_->width + x_];
        if (last.kind == MbKind::Lost) last = {};
        throw;
    }
}

void SliceDecoder::decodeMacroblocks(int address, const Finished& finished) {
    BitReader& bits = *bits_;
    const int end = context_->width * context_->height;
    const bool skipRuns = context_->type != PictureType::I && context_->header->skipRuns;
    const auto decodeNext = [&](auto step) {
        (this->*step)(address++);
        if (x_ + 1 == context_->width) finished(y_ + 1);
    };
    while (address < end && bits.moreData()) {
        if (skipRuns) {
            int run = bits.ue("mb_skip_run", static_cast<std::uint32_t>(end - address));
            while (run-- > 0) decodeNext(&SliceDecoder::skipMacroblock);
            if (address == end || !bits.moreData()) return;
        }
        decodeNext(&SliceDecoder::decodeMacroblock);
    }
}

Macroblock& SliceDecoder::beginMacroblock(int address) {
    const PictureContext& c = *context_;
    x_ = address % c.width;
    y_ = address / c.width;
    nextRow_ = y_ + 1;
    Macroblock& mb = c.mbs[address];
    mb = {};  // lost until it is whole
    mb.qp = static_cast<std::uint8_t>(qp_);
    const bool hasLeft = x_ > 0, hasAbove = y_ > firstRow_, hasRight = x_ + 1 < c.width;
    left_ = hasLeft ? &mb - 1 : nullptr;
    above_ = hasAbove ? &mb - c.width : nullptr;
    available_ = (hasAbove ? kAbove : 0) | (hasLeft ? kLeft : 0) | (hasAbove && hasLeft ? kAboveLeft : 0) |
                 (hasAbove && hasRight ? kAboveRight : 0);
    if (c.type != PictureType::I)
        vectors_.beginMacroblock(left_, above_, hasAbove && hasLeft ? above_ - 1 : nullptr,
                                 hasAbove && hasRight ? above_ + 1 : nullptr);
    return mb;
}

void SliceDecoder::skipMacroblock(int address) {
    Macroblock& mb = beginMacroblock(address);
    if (context_->type == PictureType::P)
        vectors_.set(mb, kForward, kWhole[0], {vectors_.skipped(), 0});
    else
        for (const Partition& quarter : kQuarters) setDirect(mb, quarter);
    reconstructInter(mb, 0, slice_.weighted && !slice_.weightsSelected);
    mb.kind = MbKind::Skipped;
}

void SliceDecoder::decodeMacroblock(int address) {
    BitReader& bits = *bits_;
    const bool isI = context_->type == PictureType::I, isB = context_->type == PictureType::B;
    int type = 0;
    const int firstIntra = isI ? 0 : isB ? kIntraB : kIntraP;
    if (!isI) {
        const int skips = context_->header->skipRuns ? 1 : 0;
        type = bits.ue("mb_type", static_cast<std::uint32_t>(firstIntra + 63 - skips)) + skips;
        if (type == kSkipped) {
            skipMacroblock(address);
            return;
        }
    }
    Macroblock& mb = beginMacroblock(address);
    const bool intra = type >= firstIntra;
    if (intra)
        parseIntraModes(mb);
    else if (isB)
        parseMotionB(type, mb);
    else
        parseMotionP(type, mb);
    bool weighted = slice_.weighted;
    if (!intra && weighted && slice_.weightsSelected) weighted = bits.flag();
    const int code = intra && !isI ? type - firstIntra : bits.ue("cbp", 63);
    const unsigned coded = (intra ? kCodedIntra : kCodedInter)[code];
    if (coded != 0 && !slice_.fixedQp) {
        qp_ = (qp_ + bits.se("mb_qp_delta", -63, 63)) & 63;
        mb.qp = static_cast<std::uint8_t>(qp_);
    }
    parseLevels(intra, coded);
    bits.checkEnd();
    if (intra) {
        reconstructIntra(mb, coded);
        mb.kind = MbKind::Intra;
        return;
    }
    reconstructInter(mb, coded, weighted);
    const auto uses = [&](Direction d) {
        return std::any_of(mb.motion[d], mb.motion[d] + 4, [](const Motion& m) { return m.used(); });
    };
    mb.kind = isB && type == kDirectB ? MbKind::Direct
              : !uses(kBackward)      ? MbKind::Forward
              : !uses(kForward)       ? MbKind::Backward
                                      : MbKind::Both;
}

// ---- intra

void SliceDecoder::parseIntraModes(Macroblock& mb) {
    BitReader& bits = *bits_;
    // What an inter neighbour counts as, or one that is not there.
    const auto modeOf = [&](const Macroblock* neighbour, int block) -> int {
        if (neighbour == nullptr) return Macroblock::kNoMode;
        if (neighbour->isIntra() || neighbour == &mb) return neighbour->intraMode[block];
        return context_->syntax == Syntax::Draft ? kDcMode : Macroblock::kNoMode;
    };
    for (int k = 0; k < 4; ++k) {
        const int left = (k & 1) != 0 ? modeOf(&mb, k - 1) : modeOf(left_, k + 1);
        const int above = (k & 2) != 0 ? modeOf(&mb, k - 2) : modeOf(above_, k + 2);
        const int predicted =
            left == Macroblock::kNoMode || above == Macroblock::kNoMode ? kDcMode : std::min(left, above);
        int mode = predicted;
        if (!bits.flag()) {
            mode = static_cast<int>(bits.u(2));
            if (mode >= predicted) ++mode;
        }
        mb.intraMode[k] = static_cast<std::int8_t>(mode);
        lumaMode_[k] = static_cast<Vek32u>(mode);
    }
    chromaMode_ = bits.ue("intra_chroma_pred_mode", 3);
}

void SliceDecoder::reconstructIntra(const Macroblock& mb, unsigned coded) {
    const vekapp::Plane* plane = context_->plane;
    Vek16s* levels = levels_;
    if (vekiReconstructLumaIntraMB_AVS_16s8u_C1R(&levels, plane[0].at(16 * x_, 16 * y_),
                                                 static_cast<Vek32s>(plane[0].stride), lumaMode_, coded, mb.qp,
                                                 available_) != vekStsOk ||
        vekiReconstructChromaIntraMB_AVS_16s8u_P2R(&levels, plane[1].at(8 * x_, 8 * y_), plane[2].at(8 * x_, 8 * y_),
                                                   static_cast<Vek32s>(plane[1].stride), chromaMode_, coded,
                                                   kChromaQp[mb.qp], available_) != vekStsOk)
        throw BadSyntax("an intra prediction from samples that are not there");
}

// ---- inter

MotionVector SliceDecoder::parseVector(Direction direction, const Partition& partition, int ref) {
    VectorSum v = vectors_.predict(direction, partition, ref);
    v.x += bits_->se();
    v.y += bits_->se();
    return v.vector();
}

void SliceDecoder::parseMotionP(int type, Macroblock& mb) {
    const std::span<const Partition> partitions = type == kRowsP       ? std::span<const Partition>(kRows)
                                                  : type == kColumnsP  ? std::span<const Partition>(kColumns)
                                                  : type == kQuartersP ? std::span<const Partition>(kQuarters)
                                                                       : std::span<const Partition>(kWhole);
    const bool named = !context_->header->nearestOnly && context_->references > 1;
    int ref[4] = {};
    for (std::size_t i = 0; named && i < partitions.size(); ++i)
        ref[i] = static_cast<int>(bits_->u(context_->header->fields ? 2 : 1));
    for (std::size_t i = 0; i < partitions.size(); ++i) {
        if (!context_->reference[ref[i]].present()) throw BadSyntax("a prediction from a picture that is not there");
        const MotionVector v = parseVector(kForward, partitions[i], ref[i]);
        vectors_.set(mb, kForward, partitions[i], {v, ref[i]});
    }
}

void SliceDecoder::parseMotionB(int type, Macroblock& mb) {
    using enum Use;
    static constexpr Use kPairs[9][2] = {
        {Forward, Forward},   {Backward, Backward},  {Forward, Backward},
        {Backward, Forward},  {Forward, Symmetric},  {Backward, Symmetric},
        {Symmetric, Forward}, {Symmetric, Backward}, {Symmetric, Symmetric},
    };
    std::span<const Partition> partitions = kQuarters;
    Use use[4] = {Direct, Direct, Direct, Direct};
    if (type == kQuartersB) {
        for (Use& u : use) u = static_cast<Use>(bits_->u(2));
    } else if (type >= kTwoB) {
        partitions = (type - kTwoB) % 2 == 0 ? std::span<const Partition>(kRows) : std::span<const Partition>(kColumns);
        std::copy_n(kPairs[(type - kTwoB) / 2], 2, use);
    } else if (type >= kWholeB) {
        partitions = kWhole;
        use[0] = static_cast<Use>(type - kWholeB + 1);
    }
    for (std::size_t i = 0; i < partitions.size(); ++i) {
        if (use[i] == Direct) setDirect(mb, partitions[i]);
        if (use[i] != Forward && use[i] != Symmetric) continue;
        const MotionVector v = parseVector(kForward, partitions[i], 1);
        vectors_.set(mb, kForward, partitions[i], {v, 1});
        if (use[i] == Symmetric) vectors_.set(mb, kBackward, partitions[i], {vectors_.symmetric(v), 0});
    }
    for (std::size_t i = 0; i < partitions.size(); ++i)
        if (use[i] == Backward)
            vectors_.set(mb, kBackward, partitions[i], {parseVector(kBackward, partitions[i], 0), 0});
}

void SliceDecoder::setDirect(Macroblock& mb, const Partition& quarter) {
    context_->reference[0].await(16 * (y_ + 1));
    const Macroblock& there = context_->colocated->mbs[static_cast<std::size_t>(y_ * context_->width + x_)];
    const Motion& motion = there.motion[kForward][2 * quarter.y + quarter.x];
    MotionVector forward, backward;
    if (motion.used()) {
        const int distance = context_->colocated->referenceDistance[motion.ref];
        forward = vectors_.direct(kForward, motion.mv, distance);
        backward = vectors_.direct(kBackward, motion.mv, distance);
    } else {
        forward = vectors_.predict(kForward, kWhole[0], 1).vector();
        backward = vectors_.predict(kBackward, kWhole[0], 0).vector();
    }
    vectors_.set(mb, kForward, quarter, {forward, 1});
    vectors_.set(mb, kBackward, quarter, {backward, 0});
}

void SliceDecoder::reconstructInter(const Macroblock& mb, unsigned coded, bool weighted) {
    predictMacroblock(*context_, x_, y_, mb, weighted ? slice_.weights.data() : nullptr);
    const vekapp::Plane* plane = context_->plane;
    Vek16s* levels = levels_;
    if ((coded & 15) != 0)
        vekiReconstructLumaInterMB_AVS_16s8u_C1R(&levels, plane[0].at(16 * x_, 16 * y_),
                                                 static_cast<Vek32s>(plane[0].stride), coded, mb.qp);
    if ((coded & 48) != 0)
        vekiReconstructChromaInterMB_AVS_16s8u_P2R(&levels, plane[1].at(8 * x_, 8 * y_), plane[2].at(8 * x_, 8 * y_),
                                                   static_cast<Vek32s>(plane[1].stride), coded, kChromaQp[mb.qp]);
}

// ---- levels

void SliceDecoder::parseLevels(bool intra, unsigned coded) {
    const auto luma = intra ? vekiDecodeCoeffsLumaIntra_AVS_1u16s : vekiDecodeCoeffsLumaInter_AVS_1u16s;
    const Vek32s scan = context_->header->fields ? 1 : 0;
    Vek16s* levels = levels_;
    for (int k = 0; k < 6; ++k) {
        if ((coded >> k & 1) == 0) continue;
        const auto decode = k < 4 ? luma : vekiDecodeCoeffsChroma_AVS_1u16s;
        if (decode(bits_->word(), bits_->offset(), &levels, scan) != vekStsOk)
            throw BadSyntax("no valid coefficient code");
        if (bits_->beyondEnd()) BitReader::throwEnd();
    }
}

}  // namespace vekdec::avs
