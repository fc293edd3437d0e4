#include "mpeg4/vop_decoder.h"

#include <algorithm>
#include <bit>
#include <string>

namespace vekdec::mpeg4 {

void Dequantizers::init(const Layer& layer) {
    vekiQuantInvIntraInit_MPEG4(intra_, layer.mpegQuantizer ? layer.intraMatrix.data() : nullptr, 8);
    vekiQuantInvInterInit_MPEG4(inter_, layer.mpegQuantizer ? layer.interMatrix.data() : nullptr, 8);
}

long VopDecoder::decode(const VopContext& context, const Dequantizers& dequantizers, ByteReader& bits,
                        const Report& report, const Finished& finished) {
    context_ = context;
    dequantizers_ = &dequantizers;
    bits_ = &bits;
    report_ = &report;
    finished_ = finished ? &finished : nullptr;
    mbs_ = context.picture->mbs.data();
    mbCount_ = static_cast<int>(context.picture->mbs.size());
    if (widthInMbs_ != context.layer->widthInMbs()) {
        intra_.resize(context.layer->widthInMbs());  // where it fails, the next VOP tries again
        widthInMbs_ = context.layer->widthInMbs();
    }
    const bool partitioned = context.layer->dataPartitioned && context.vop->type != VopType::B;
    reversible_ = partitioned && context.layer->reversibleCodes;
    packetStart_ = next_ = 0;
    quantizer_ = context.vop->quantizer;
    if (finished_ != nullptr) findPackets();
    std::size_t place = 0;
    for (long packets = 1;; ++packets) {
        const std::size_t begin = bits.position();
        while (place < packetPlaces_.size() && packetPlaces_[place].position <= begin) ++place;
        nextBegin_ = place < packetPlaces_.size() ? packetPlaces_[place].address : mbCount_;
        try {
            if (partitioned)
                decodePartitions();
            else
                decodePacket();
            if (next_ == mbCount_) return packets;
            finishRows();
        } catch (const BadSyntax& e) {
            report("macroblock " + std::to_string(address_) + ": " + e.what());
            bits.seek(begin);  // what broke off may have read beyond the next marker
        }
        if (!context.layer->resyncMarkers || !beginNextPacket()) return packets;
    }
}

// Where packets may begin: at some of these places.
void VopDecoder::findPackets() {
    packetPlaces_.clear();
    if (!context_.layer->resyncMarkers) return;
    const ByteReader here = *bits_;
    while (seekResyncMarker()) {
        const std::size_t position = bits_->position();
        try {
            packetPlaces_.push_back({position, parsePacketHeader(*bits_, *context_.layer).address});
        } catch (const BadSyntax&) {  // none begins
        }
        bits_->seek(position);
    }
    *bits_ = here;
    for (std::size_t i = packetPlaces_.size(); i-- > 1;)
        packetPlaces_[i - 1].address = std::min(packetPlaces_[i - 1].address, packetPlaces_[i].address);
}

// What is decoded so far, as far as no later packet begins before it.
void VopDecoder::finishRows() {
    if (finished_ != nullptr) (*finished_)(std::min(next_, nextBegin_) / widthInMbs_);
}

// Moves behind the header of the next packet; false: there is none.
bool VopDecoder::beginNextPacket() {
    while (seekResyncMarker()) {
        try {
            const PacketHeader packet = parsePacketHeader(*bits_, *context_.layer);
            if (packet.address >= mbCount_) throw BadSyntax("it begins behind the end of the VOP");
            packetStart_ = next_ = packet.address;
            if (packet.quantizer != 0) quantizer_ = packet.quantizer;
            return true;
        } catch (const BadSyntax& e) {
            (*report_)(std::string("video packet: ") + e.what());
        }
    }
    return false;
}

void VopDecoder::decodePacket() {
    for (auto& vectors : before_) vectors[0] = vectors[1] = {};
    while (next_ < mbCount_) {
        if (context_.vop->type == VopType::B)
            decodeMacroblockB(next_);
        else
            decodeMacroblock(next_);
        bits_->checkEnd();
        ++next_;
        if (x_ == widthInMbs_ - 1) finishRows();
        if (context_.layer->resyncMarkers && !hasNoBits(next_) && atResyncMarker()) return;
    }
}

// Of macroblocks of B-VOPs whose co-located one is not coded (6.2.6). Those in front of a marker are still of the
// packet before it.
bool VopDecoder::hasNoBits(int address) const {
    if (context_.vop->type != VopType::B || address == mbCount_) return false;
    context_.reference[1].await(16 * (address / widthInMbs_ + 1));
    return !context_.coLocated[address].coded;
}

// ---- resync markers (6.2.5.2)

// Zero bits before the one bit.
int VopDecoder::markerZeros() const {
    const Vop& vop = *context_.vop;
    if (vop.type == VopType::I) return 16;
    if (vop.type == VopType::B) return std::max(17, 15 + std::max(vop.fCode[0], vop.fCode[1]));
    return 15 + vop.fCode[0];
}

// Stuffing to the byte boundary, a 0 and 1s, and the marker behind it.
bool VopDecoder::atResyncMarker() const {
    const int stuffing = 8 - static_cast<int>(bits_->position() % 8);
    const std::uint32_t expected = (1u << (stuffing - 1)) - 1;
    if (bits_->peek(stuffing) != expected) return false;
    ByteReader there = *bits_;
    there.skip(static_cast<std::size_t>(stuffing));
    return static_cast<int>(std::countl_zero(there.peek32())) == markerZeros() && there.moreData();
}

// Moves behind the next marker from here on; false: there is none.
bool VopDecoder::seekResyncMarker() {
    ByteReader& bits = *bits_;
    const int zeros = markerZeros();
    for (std::size_t at = (bits.position() + 7) / 8 * 8; at + 24 <= bits.end(); at += 8) {
        bits.seek(at);
        if (static_cast<int>(std::countl_zero(bits.peek32())) == zeros) {
            bits.skip(static_cast<std::size_t>(zeros) + 1);
            return true;
        }
    }
    return false;
}

// The end of the packet's data: the stuffing before the next marker or the VOP's end.
std::size_t VopDecoder::packetEnd() const {
    ByteReader there = *bits_;
    const int zeros = markerZeros();
    std::size_t end = there.end();
    for (std::size_t at = (there.position() + 7) / 8 * 8; at + 24 <= there.end(); at += 8) {
        there.seek(at);
        if (static_cast<int>(std::countl_zero(there.peek32())) != zeros) continue;
        end = at;
        break;
    }
    const auto bitBefore = [&](std::size_t position) {
        there.seek(position - 1);
        return there.peek(1);
    };
    const std::size_t begin = bits_->position();
    if (end == there.end())
        while (end > begin + 8 && (there.seek(end - 8), there.peek(8) == 0)) end -= 8;  // bytes 0 behind the VOP
    while (end > begin && bitBefore(end) == 1) --end;
    return end > begin ? end - 1 : begin;
}

}  // namespace vekdec::mpeg4
