// A VOP: video packets and macroblocks (ISO 14496-2 6.2.5 to 6.2.7), from bits to samples.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "h263/codes.h"
#include "mpeg4/intra_prediction.h"
#include "mpeg4/prediction.h"

namespace vekdec::mpeg4 {

// The inverse quantizers as the library keeps them.
class Dequantizers {
  public:
    void init(const Layer& layer);
    const Vek8u* intra() const { return intra_; }
    const Vek8u* inter() const { return inter_; }

  private:
    static constexpr std::size_t kBytes = 156;  // as vekiQuantInvIntraGetSize_MPEG4 tells
    Vek8u intra_[kBytes], inter_[kBytes];
};

// A macroblock between parsing and reconstruction.
struct ParsedMacroblock {
    bool coded = true;
    bool intra = false;
    bool acPrediction = false;
    bool fieldDct = false;
    bool separateDc = false;  // the DCs have codes of their own
    bool dcRead = false;      // and stand in `dc`
    Vek16s dc[6] = {};
    unsigned pattern = 0;  // coded blocks, the first one bit 5
    bool changesQuantizer = false;
    int recovered = -1;  // first of its blocks among those that were read backwards
    Motion motion;
};

class VopDecoder {
  public:
    using Report = std::function<void(const std::string&)>;

    using Finished = std::function<void(int endRow)>;

    // Decodes the VOP behind its header. Damage is reported; what no packet brought stays MbKind::Lost. Calls
    // `finished` where no packet to come changes the rows of macroblocks before endRow; it may be empty.
    // Returns the number of packets.
    long decode(const VopContext& context, const Dequantizers& dequantizers, ByteReader& bits, const Report& report,
                const Finished& finished);

  private:
    // ---- vop_decoder.cpp: packets
    void decodePacket();
    bool beginNextPacket();
    void findPackets();
    void finishRows();
    bool hasNoBits(int address) const;
    bool atResyncMarker() const;
    bool seekResyncMarker();
    int markerZeros() const;
    std::size_t packetEnd() const;
    // ---- partitions.cpp: packets with data partitioning
    void decodePartitions();
    void parseDcs(ParsedMacroblock& parsed);
    void parseFirstPartition();
    void parseSecondPartition(std::size_t index);
    void decodeTexture();
    void reconstructWithoutTexture(std::size_t index, bool typed);
    std::size_t readBackwards(std::size_t first);
    // ---- macroblock.cpp
    void decodeMacroblock(int address);
    void decodeMacroblockB(int address);
    void moveTo(int address);
    bool parseType(Macroblock& mb, ParsedMacroblock& parsed);
    void parsePattern(ParsedMacroblock& parsed);
    void parseQuantizer(Macroblock& mb, ParsedMacroblock& parsed);
    void skip(Macroblock& mb, ParsedMacroblock& parsed);
    void parseVectors(Macroblock& mb, ParsedMacroblock& parsed);
    void parseFieldSelect(Motion& motion, std::size_t direction);
    void parseVectorsB(Motion& motion);
    MotionVector parseVector(MotionVector predicted, int fCode);
    MotionVector predictedVector(int k) const;
    void reconstruct(const Macroblock& mb, const ParsedMacroblock& parsed);
    void decodeIntraBlock(const Macroblock& mb, const ParsedMacroblock& parsed, const IntraNeighbours& neighbours,
                          int k, Vek8u* to, Vek32s step);
    void decodeInterBlock(const Macroblock& mb, const ParsedMacroblock& parsed, int k, Vek8u* to, Vek32s step);
    IntraNeighbours intraNeighbours() const;
    const Macroblock* beside(int dx, int dy) const;  // null: outside the VOP or the packet
    const Vek16s* recoveredBlock(const ParsedMacroblock& parsed, int k) const;

    VopContext context_;
    const Dequantizers* dequantizers_ = nullptr;
    ByteReader* bits_ = nullptr;
    const Report* report_ = nullptr;
    const Finished* finished_ = nullptr;  // null: not wanted
    Macroblock* mbs_ = nullptr;
    int widthInMbs_ = 0, mbCount_ = 0;
    bool reversible_ = false;  // the blocks use reversible codes
    h263::IntraStore intra_;

    struct PacketPlace {
        std::size_t position;  // behind the marker
        int address;           // the lowest one from here to the end of the VOP
    };
    std::vector<PacketPlace> packetPlaces_;  // in the order of the stream

    // Of the packet.
    int packetStart_ = 0, next_ = 0;  // addresses
    int quantizer_ = 1;
    int nextBegin_ = 0;  // no packet behind it begins before this address
    std::vector<ParsedMacroblock> parsed_;
    std::vector<std::array<Vek16s, 64>> recovered_;

    // Of the macroblock.
    int address_ = 0, x_ = 0, y_ = 0;
    MotionVector before_[2][2];  // B-VOPs: the last vectors, by direction and field (7.6.8)
};

}  // namespace vekdec::mpeg4
