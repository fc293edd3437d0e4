// Video packets with data partitioning (ISO 14496-2 6.2.5, Annex E.1): types and vectors, then patterns, then texture.
#include <algorithm>
#include <bit>
#include <string>

#include "mpeg4/vop_decoder.h"

namespace vekdec::mpeg4 {
namespace {

constexpr unsigned kDcMarker = 0x6b001, kMotionMarker = 0x1f001;  // 19 and 17 bits

}  // namespace

void VopDecoder::parseDcs(ParsedMacroblock& parsed) {
    if (!parsed.separateDc) return;
    for (int k = 0; k < 6; ++k)
        if (vekiDecodeDCIntra_MPEG4_1u16s(bits_->byte(), bits_->offset(), &parsed.dc[k], k >= 4) != vekStsOk)
            throw BadSyntax("no valid DC");
    parsed.dcRead = true;
}

void VopDecoder::decodePartitions() {
    parsed_.clear();
    recovered_.clear();
    moveTo(next_);
    try {
        parseFirstPartition();
    } catch (const BadSyntax&) {
        for (std::size_t i = 0; i < parsed_.size(); ++i) mbs_[packetStart_ + static_cast<int>(i)] = {};
        throw;
    }
    next_ = packetStart_ + static_cast<int>(parsed_.size());
    std::size_t known = 0;  // macroblocks of which the second partition tells
    try {
        for (; known < parsed_.size(); ++known) parseSecondPartition(known);
    } catch (const BadSyntax&) {
        bits_->seek(std::min(bits_->position(), bits_->end()));  // what follows reads none, and is not at fault
        for (std::size_t i = 0; i < parsed_.size(); ++i)
            reconstructWithoutTexture(i, i < known || context_.vop->type == VopType::I);
        throw;
    }
    decodeTexture();
}

// The first partition's macroblocks up to the marker: types and vectors, or the DCs.
void VopDecoder::parseFirstPartition() {
    ByteReader& bits = *bits_;
    const bool intra = context_.vop->type == VopType::I;
    const int markerBits = intra ? 19 : 17;
    while (bits.peek(markerBits) != (intra ? kDcMarker : kMotionMarker)) {
        const int address = packetStart_ + static_cast<int>(parsed_.size());
        if (address >= mbCount_) throw BadSyntax("no marker behind the first partition");
        moveTo(address);
        mbs_[address] = {};
        Macroblock now;
        ParsedMacroblock parsed;
        if (!parseType(now, parsed)) {
            skip(now, parsed);
            parsed.coded = false;
        } else if (intra) {
            parseQuantizer(now, parsed);
            parseDcs(parsed);
        } else {
            parseVectors(now, parsed);
        }
        bits.checkEnd();
        mbs_[address] = now;
        parsed_.push_back(parsed);
    }
    bits.skip(static_cast<std::size_t>(markerBits));
}

void VopDecoder::parseSecondPartition(std::size_t index) {
    ParsedMacroblock& parsed = parsed_[index];
    if (!parsed.coded) return;
    moveTo(packetStart_ + static_cast<int>(index));
    parsePattern(parsed);
    if (context_.vop->type != VopType::I) {
        parseQuantizer(mbs_[address_], parsed);
        parseDcs(parsed);
    }
    bits_->checkEnd();
}

void VopDecoder::decodeTexture() {
    const auto decode = [&](std::size_t index) {
        moveTo(packetStart_ + static_cast<int>(index));
        reconstruct(mbs_[address_], parsed_[index]);
    };
    for (std::size_t failed = 0; failed < parsed_.size(); ++failed) {
        try {
            decode(failed);
        } catch (const BadSyntax& e) {
            const std::size_t good = reversible_ ? readBackwards(failed + 1) : parsed_.size();
            bits_->seek(std::min(bits_->position(), bits_->end()));
            const int address = address_;
            for (std::size_t i = failed; i < good; ++i) reconstructWithoutTexture(i, true);
            for (std::size_t i = good; i < parsed_.size(); ++i) decode(i);
            moveTo(address);
            if (good == parsed_.size()) throw;
            throw BadSyntax(e.what() + std::string(", ") + std::to_string(parsed_.size() - good) +
                            " macroblocks behind it are read backwards");
        }
    }
}

// What is known without the blocks' coefficients: motion, or the DCs. `typed`: with what the second partition says.
void VopDecoder::reconstructWithoutTexture(std::size_t index, bool typed) {
    moveTo(packetStart_ + static_cast<int>(index));
    ParsedMacroblock& parsed = parsed_[index];
    if (parsed.intra && !(typed && parsed.dcRead)) {
        mbs_[address_] = {};
        return;
    }
    parsed.pattern = 0;
    parsed.acPrediction = false;
    reconstruct(mbs_[address_], parsed);
}

// The texture from the packet's end back to macroblock `first` or as far as it goes; the first one that is whole.
std::size_t VopDecoder::readBackwards(std::size_t first) {
    const std::size_t begin = bits_->position();
    ByteReader back = *bits_;
    back.seek(packetEnd());
    std::size_t good = parsed_.size();
    for (; good > first; --good) {
        ParsedMacroblock& parsed = parsed_[good - 1];
        // The scan would depend on neighbours that are not decoded yet.
        if (parsed.intra && parsed.acPrediction && !context_.vop->alternateScan) break;
        const std::size_t at = recovered_.size(), blocks = static_cast<std::size_t>(std::popcount(parsed.pattern));
        recovered_.resize(at + blocks);
        std::size_t left = blocks;
        for (; left > 0; --left) {
            const std::size_t position = back.position();
            if (position <= begin) break;
            const auto numBits = static_cast<Vek32s>(std::min<std::size_t>(position - begin, 1 << 20));
            const Vek32s scan = context_.vop->alternateScan;
            Vek16s* const block = recovered_[at + left - 1].data();
            Vek32s last = 0;
            const VekStatus status =
                parsed.intra ? vekiDecodeCoeffsIntraRVLCBackward_MPEG4_1u16s(back.byte(), back.offset(), numBits, block,
                                                                             &last, parsed.separateDc, scan)
                             : vekiDecodeCoeffsInterRVLCBackward_MPEG4_1u16s(back.byte(), back.offset(), numBits, block,
                                                                             &last, scan);
            if (status != vekStsOk) break;
        }
        if (left > 0) break;
        parsed.recovered = static_cast<int>(at);
    }
    return good;
}

}  // namespace vekdec::mpeg4
