// Headers of MPEG-4 Part 2 (ISO 14496-2 6.2): video object layer, group of VOPs, VOP and video packet.
#pragma once

#include <array>
#include <cstdint>

#include "bits/byte_reader.h"
#include "frames/plane.h"
#include "vekvc.h"

namespace vekdec::mpeg4 {

enum StartCode : std::uint8_t {
    kLastVideoObject = 0x1f,
    kFirstLayer = 0x20,
    kLastLayer = 0x2f,
    kGroupOfVops = 0xb3,
    kVop = 0xb6,
};

using Matrix = std::array<Vek8u, 64>;  // raster order

struct Layer {
    int width = 0, height = 0;
    int timeResolution = 1;  // ticks of a second
    int fixedIncrement = 0;  // ticks from VOP to VOP, 0: they vary
    vekapp::Rational sampleAspect;
    bool lowDelay = false, interlaced = false, quarterSample = false, resyncMarkers = false;
    bool dataPartitioned = false, reversibleCodes = false;
    bool globalMotion = false;
    int warpingPoints = 0, warpingAccuracy = 0;
    bool mpegQuantizer = false;  // quant_type 1
    Matrix intraMatrix{}, interMatrix{};

    int widthInMbs() const { return (width + 15) / 16; }
    int heightInMbs() const { return (height + 15) / 16; }
    vekapp::PictureFormat format() const { return {16 * widthInMbs(), 16 * heightInMbs(), vekapp::Chroma::C420, 8}; }
    vekapp::Rational rate() const;
    int timeBits() const;     // of vop_time_increment
    int addressBits() const;  // of macroblock_number
};

enum class VopType : std::uint8_t { I, P, B, S };

// A time as it is coded: seconds since another, and ticks.
struct VopTime {
    int seconds = 0, ticks = 0;
};

struct Vop {
    VopType type = VopType::I;
    VopTime time;
    bool coded = false;
    int rounding = 0;
    int dcThreshold = 0;  // intra_dc_vlc_thr
    bool topFieldFirst = false, alternateScan = false;
    Vek32s du[3] = {}, dv[3] = {};  // the sprite trajectory
    int quantizer = 1;
    int fCode[2] = {1, 1};  // forward, backward
};

struct PacketHeader {
    int address = 0;    // of the first macroblock
    int quantizer = 0;  // 0: as before
};

// The bits behind the start code and its byte. All throw BadSyntax, or NotSupported for what is not in the Simple and
// Advanced Simple profiles.
Layer parseLayer(ByteReader& bits);
int parseGroupTime(ByteReader& bits);  // seconds
Vop parseVop(ByteReader& bits, const Layer& layer);
// The bits behind resync_marker.
PacketHeader parsePacketHeader(ByteReader& bits, const Layer& layer);

}  // namespace vekdec::mpeg4
