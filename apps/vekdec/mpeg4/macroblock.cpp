// Macroblocks (ISO 14496-2 6.2.6, 6.2.7): their syntax, vectors and blocks.
#include <algorithm>
#include <bit>
#include <cstring>

#include "h263/residual.h"
#include "mpeg4/vop_decoder.h"

namespace vekdec::mpeg4 {
namespace {

using h263::MbType;

constexpr unsigned bitOfBlock(int k) { return 1u << (5 - k); }

}  // namespace

void VopDecoder::moveTo(int address) {
    address_ = address;
    x_ = address % widthInMbs_;
    y_ = address / widthInMbs_;
}

const Macroblock* VopDecoder::beside(int dx, int dy) const {
    if (x_ + dx < 0 || x_ + dx >= widthInMbs_ || y_ + dy < 0) return nullptr;
    const int address = address_ + dy * widthInMbs_ + dx;
    return address >= packetStart_ ? &mbs_[address] : nullptr;
}

// ---- syntax of I-, P- and S-VOPs

// not_coded, mcbpc and mcsel; false: not coded.
bool VopDecoder::parseType(Macroblock& mb, ParsedMacroblock& parsed) {
    ByteReader& bits = *bits_;
    const VopType type = context_.vop->type;
    std::optional<h263::Mcbpc> mcbpc;
    do {  // until it is no stuffing
        if (type != VopType::I && bits.flag()) return false;
        mcbpc = type == VopType::I ? h263::readMcbpcIntra(bits) : h263::readMcbpcInter(bits);
        bits.checkEnd();
    } while (!mcbpc);
    const MbType mbType = mcbpc->type;
    if (mbType == MbType::Inter4VQ) throw BadSyntax("no valid mcbpc");
    parsed.intra = h263::isIntra(mbType);
    parsed.changesQuantizer = h263::hasQuantizer(mbType);
    parsed.pattern = mcbpc->chroma;
    const bool four = h263::hasFourVectors(mbType);
    const bool global = type == VopType::S && !parsed.intra && !four && bits.flag();
    mb.kind = parsed.intra ? MbKind::Intra : global ? MbKind::Global : four ? MbKind::FourVectors : MbKind::Inter;
    return true;
}

// A not-coded macroblock: no blocks, and no motion but the global one.
void VopDecoder::skip(Macroblock& mb, ParsedMacroblock& parsed) {
    parsed.motion.uses[0] = true;
    mb.quantizer = static_cast<std::uint8_t>(quantizer_);
    if (context_.vop->type == VopType::S) {
        mb.kind = MbKind::Global;
        parseVectors(mb, parsed);
    } else {
        mb.kind = MbKind::Skipped;
        mb.coded = false;
    }
}

// ac_pred_flag comes first where both are in one partition.
void VopDecoder::parsePattern(ParsedMacroblock& parsed) {
    if (parsed.intra) parsed.acPrediction = bits_->flag();
    const unsigned luma = h263::readCbpy(*bits_);
    parsed.pattern |= (parsed.intra ? luma : 15 - luma) << 2;
}

// dquant, and before it whether the DCs have codes of their own (Table 6-21).
void VopDecoder::parseQuantizer(Macroblock& mb, ParsedMacroblock& parsed) {
    constexpr int kThresholds[] = {32, 13, 15, 17, 19, 21, 23, 0};
    parsed.separateDc = parsed.intra && quantizer_ < kThresholds[context_.vop->dcThreshold];
    if (parsed.changesQuantizer) quantizer_ = std::clamp(quantizer_ + h263::readDquant(*bits_), 1, 31);
    mb.quantizer = static_cast<std::uint8_t>(quantizer_);
}

void VopDecoder::decodeMacroblock(int address) {
    moveTo(address);
    Macroblock& mb = mbs_[address];
    mb = {};
    Macroblock now;
    ParsedMacroblock parsed;
    if (parseType(now, parsed)) {
        parsePattern(parsed);
        parseQuantizer(now, parsed);
        if (context_.layer->interlaced) {
            if (parsed.intra || parsed.pattern != 0) parsed.fieldDct = bits_->flag();
            if (now.kind == MbKind::Inter && bits_->flag()) {
                now.kind = MbKind::Fields;
                parseFieldSelect(parsed.motion, 0);
            }
        }
        parseVectors(now, parsed);
    } else {
        skip(now, parsed);
    }
    mb = now;
    try {
        reconstruct(mb, parsed);
    } catch (const BadSyntax&) {
        mb = {};
        throw;
    }
}

// ---- vectors (7.6.3)

MotionVector VopDecoder::parseVector(MotionVector predicted, int fCode) {
    const int range = 32 << (fCode - 1);
    const auto component = [&](int from) {
        int v = from + h263::readVectorDifference(*bits_, fCode);
        if (v < -range) v += 2 * range;
        if (v > range - 1) v -= 2 * range;
        return v;
    };
    const int x = component(predicted.x);
    return {x, component(predicted.y)};
}

// Of luma block `k` from its three neighbours (Figure 7-34).
MotionVector VopDecoder::predictedVector(int k) const {
    const Macroblock& own = mbs_[address_];
    const Macroblock *left = beside(-1, 0), *above = beside(0, -1), *aboveRight = beside(1, -1);
    struct Candidate {
        const Macroblock* mb;
        std::size_t block;
    };
    Candidate candidates[3];
    switch (k) {
        case 0:
            candidates[0] = {left, 1}, candidates[1] = {above, 2}, candidates[2] = {aboveRight, 2};
            break;
        case 1:
            candidates[0] = {&own, 0}, candidates[1] = {above, 3}, candidates[2] = {aboveRight, 2};
            break;
        case 2:
            candidates[0] = {left, 3}, candidates[1] = {&own, 0}, candidates[2] = {&own, 1};
            break;
        default:
            candidates[0] = {&own, 2}, candidates[1] = {&own, 0}, candidates[2] = {&own, 1};
            break;
    }
    MotionVector mv[3];
    int missing = 0;
    std::size_t last = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        if (candidates[i].mb == nullptr) {
            ++missing;
        } else {
            mv[i] = candidates[i].mb->mv[candidates[i].block];
            last = i;
        }
    }
    return missing == 2 ? mv[last] : h263::median(mv[0], mv[1], mv[2]);
}

void VopDecoder::parseFieldSelect(Motion& motion, std::size_t direction) {
    motion.type = MotionType::Fields;
    for (std::uint8_t& field : motion.fieldOf[direction]) field = bits_->flag();
}

void VopDecoder::parseVectors(Macroblock& mb, ParsedMacroblock& parsed) {
    Motion& motion = parsed.motion;
    const int fCode = context_.vop->fCode[0];
    const auto setAll = [&](MotionVector mv) { std::fill(std::begin(mb.mv), std::end(mb.mv), mv); };
    motion.uses[0] = !parsed.intra;
    switch (mb.kind) {
        case MbKind::Inter:
            motion.mv[0][0] = parseVector(predictedVector(0), fCode);
            setAll(motion.mv[0][0]);
            break;
        case MbKind::FourVectors:
            motion.type = MotionType::FourBlocks;
            for (int k = 0; k < 4; ++k) {
                // The blocks behind are predicted from those before.
                motion.mv[0][k] = parseVector(predictedVector(k), fCode);
                mbs_[address_].mv[k] = mb.mv[k] = motion.mv[0][k];
            }
            break;
        case MbKind::Fields: {
            const MotionVector frame = predictedVector(0);
            for (std::size_t i = 0; i < 2; ++i) {
                mb.fieldMv[i] = motion.mv[0][i] = parseVector({frame.x, frame.y / 2}, fCode);
                mb.fieldOf[i] = motion.fieldOf[0][i];
            }
            const int sum = mb.fieldMv[0].x + mb.fieldMv[1].x;
            setAll({(sum >> 1) | (sum & 1), mb.fieldMv[0].y + mb.fieldMv[1].y});
            break;
        }
        case MbKind::Global: {
            motion.type = MotionType::Global;
            Vek16s mean[2] = {};
            vekiWarpAverageMV_MPEG4_16s(16 * x_, 16 * y_, fCode, mean, context_.warp);
            setAll({mean[0], mean[1]});
            break;
        }
        default:
            break;
    }
}

// ---- B-VOPs (6.2.7)

void VopDecoder::decodeMacroblockB(int address) {
    moveTo(address);
    if (x_ == 0)
        for (auto& vectors : before_) vectors[0] = vectors[1] = {};
    ByteReader& bits = *bits_;
    Macroblock& mb = mbs_[address];
    mb = {};
    context_.reference[1].await(16 * (y_ + 1));
    const Macroblock& coLocated = context_.coLocated[address];
    Macroblock now;
    ParsedMacroblock parsed;
    Motion& motion = parsed.motion;
    now.quantizer = static_cast<std::uint8_t>(quantizer_);
    if (!coLocated.coded) {
        now.kind = MbKind::Skipped;
        motion.uses[0] = true;
    } else if (bits.flag()) {
        now.kind = MbKind::Direct;
        motion = directMotion(context_, coLocated, {});
    } else {
        const bool hasPattern = !bits.flag();
        constexpr MbKind kTypes[] = {MbKind::Direct, MbKind::Both, MbKind::Backward, MbKind::Forward};
        std::size_t type = 0;
        while (!bits.flag())
            if (++type == std::size(kTypes)) throw BadSyntax("no valid mb_type");
        now.kind = kTypes[type];
        const bool direct = now.kind == MbKind::Direct;
        if (hasPattern) parsed.pattern = bits.u(6);
        if (!direct && parsed.pattern != 0 && bits.flag()) {
            quantizer_ = std::clamp(quantizer_ + (bits.flag() ? 2 : -2), 1, 31);
            now.quantizer = static_cast<std::uint8_t>(quantizer_);
        }
        motion.uses[0] = now.kind != MbKind::Backward;
        motion.uses[1] = now.kind != MbKind::Forward;
        if (context_.layer->interlaced) {
            if (parsed.pattern != 0) parsed.fieldDct = bits.flag();
            if (!direct && bits.flag())
                for (std::size_t s = 0; s < 2; ++s)
                    if (motion.uses[s]) parseFieldSelect(motion, s);
        }
        if (direct)
            motion = directMotion(context_, coLocated, parseVector({}, 1));
        else
            parseVectorsB(motion);
    }
    now.mv[0] = motion.mv[0][0];
    now.backward = motion.mv[1][0];
    reconstruct(now, parsed);
    mb = now;
}

// 7.6.8: from the last vectors of the same direction and field.
void VopDecoder::parseVectorsB(Motion& motion) {
    for (std::size_t s = 0; s < 2; ++s) {
        if (!motion.uses[s]) continue;
        const int fCode = context_.vop->fCode[s];
        MotionVector(&before)[2] = before_[s];
        if (motion.type == MotionType::Fields) {
            for (std::size_t i = 0; i < 2; ++i) {
                motion.mv[s][i] = parseVector({before[i].x, before[i].y / 2}, fCode);
                before[i] = {motion.mv[s][i].x, 2 * motion.mv[s][i].y};
            }
        } else {
            motion.mv[s][0] = before[0] = parseVector(before[0], fCode);
            before[1] = before[0];
        }
    }
}

// ---- blocks

void VopDecoder::reconstruct(const Macroblock& mb, const ParsedMacroblock& parsed) {
    if (!parsed.intra) {
        predictMacroblock(context_, x_, y_, parsed.motion);
        if (parsed.pattern == 0) return;
    }
    const IntraNeighbours neighbours = parsed.intra ? intraNeighbours() : IntraNeighbours();
    for (int k = 0; k < 6; ++k) {
        const bool luma = k < 4, apart = luma && parsed.fieldDct;  // every second line
        const vekapp::Plane& plane = context_.picture->plane[luma ? 0 : k - 3];
        Vek8u* to = luma ? plane.at(16 * x_ + k % 2 * 8, 16 * y_ + k / 2 * (apart ? 1 : 8)) : plane.at(8 * x_, 8 * y_);
        const auto step = static_cast<Vek32s>(apart ? 2 * plane.stride : plane.stride);
        if (parsed.intra)
            decodeIntraBlock(mb, parsed, neighbours, k, to, step);
        else if ((parsed.pattern & bitOfBlock(k)) != 0)
            decodeInterBlock(mb, parsed, k, to, step);
    }
}

IntraNeighbours VopDecoder::intraNeighbours() const {
    const auto state = [](const Macroblock* mb) {
        return IntraNeighbours::Macroblock{mb != nullptr && mb->kind == MbKind::Intra,
                                           mb != nullptr ? mb->quantizer : 1};
    };
    return {state(beside(-1, 0)), state(beside(0, -1)), state(beside(-1, -1))};
}

// The index of block `k` among the coded ones that were read backwards.
const Vek16s* VopDecoder::recoveredBlock(const ParsedMacroblock& parsed, int k) const {
    const int before = std::popcount(parsed.pattern & ~(bitOfBlock(k) * 2 - 1));
    return recovered_[static_cast<std::size_t>(parsed.recovered + before)].data();
}

void VopDecoder::decodeIntraBlock(const Macroblock& mb, const ParsedMacroblock& parsed,
                                  const IntraNeighbours& neighbours, int k, Vek8u* to, Vek32s step) {
    ByteReader& bits = *bits_;
    const Vek32s component = k < 4 ? 0 : 1;
    const IntraPredictor predictor = intraPredictor(intra_, x_, y_, k, neighbours, mb.quantizer);
    alignas(32) Vek16s block[64];
    if (parsed.separateDc && !parsed.dcRead) {
        if (vekiDecodeDCIntra_MPEG4_1u16s(bits.byte(), bits.offset(), block, component) != vekStsOk)
            throw BadSyntax("no valid DC");
    } else {
        block[0] = parsed.dc[k];
    }
    const bool coded = (parsed.pattern & bitOfBlock(k)) != 0;
    if (!coded) {
        std::fill(block + 1, block + 64, Vek16s{0});
    } else if (parsed.recovered >= 0) {
        const Vek16s dc = block[0];
        std::memcpy(block, recoveredBlock(parsed, k), sizeof block);
        if (parsed.separateDc) block[0] = dc;
    } else {
        // 7.4.2: the scan follows the direction of the prediction.
        const Vek32s scan = context_.vop->alternateScan ? 1 : !parsed.acPrediction ? 0 : predictor.fromAbove ? 2 : 1;
        Vek32s last = 0;
        const auto decode = reversible_ ? vekiDecodeCoeffsIntraRVLC_MPEG4_1u16s : vekiDecodeCoeffsIntra_MPEG4_1u16s;
        if (decode(bits.byte(), bits.offset(), block, &last, parsed.separateDc, scan) != vekStsOk)
            throw BadSyntax("no valid coefficient code");
    }
    bits.checkEnd();
    vekiPredictIntra_MPEG4_16s_C1I(block, predictor.values, predictor.quantizer, mb.quantizer, component,
                                   predictor.fromAbove, parsed.acPrediction);
    h263::IntraValues& values = intra_.at(x_, y_, k);
    h263::keep(values, block);
    vekiQuantInvIntra_MPEG4_16s_C1I(block, dequantizers_->intra(), mb.quantizer, component);
    values.column[0] = values.row[0] = block[0];
    if (!coded && !parsed.acPrediction && !context_.layer->mpegQuantizer)
        vekiDCT8x8InvNZ2x2_16s8u_C1R(block, to, step);
    else
        vekiDCT8x8Inv_16s8u_C1R(block, to, step);
}

void VopDecoder::decodeInterBlock(const Macroblock& mb, const ParsedMacroblock& parsed, int k, Vek8u* to, Vek32s step) {
    ByteReader& bits = *bits_;
    alignas(32) Vek16s block[64];
    Vek32s last = 63;
    if (parsed.recovered >= 0 || reversible_) {
        if (parsed.recovered >= 0)
            std::memcpy(block, recoveredBlock(parsed, k), sizeof block);
        else if (vekiDecodeCoeffsInterRVLC_MPEG4_1u16s(bits.byte(), bits.offset(), block, &last, 0) != vekStsOk)
            throw BadSyntax("no valid coefficient code");
        vekiQuantInvInter_MPEG4_16s_C1I(block, dequantizers_->inter(), mb.quantizer);
    } else if (vekiReconstructDCTBlockInter_MPEG4_1u16s(bits.byte(), bits.offset(), block, &last,
                                                        dequantizers_->inter(), mb.quantizer,
                                                        context_.vop->alternateScan) != vekStsOk) {
        throw BadSyntax("no valid coefficient code");
    }
    bits.checkEnd();
    // Mismatch control may add a coefficient behind the last one.
    const bool zigzag = !context_.layer->mpegQuantizer && !context_.vop->alternateScan;
    h263::addResidual(block, zigzag ? last : 63, to, step);
}

}  // namespace vekdec::mpeg4
