#include "mpeg4/headers.h"

#include <bit>
#include <numeric>
#include <string>

#include "bits/code_table.h"
#include "bits/sample_aspect.h"
#include "bits/scan.h"

namespace vekdec::mpeg4 {
namespace {

// clang-format off
constexpr Matrix kDefaultIntraMatrix = {  // 6.3.3
     8, 17, 18, 19, 21, 23, 25, 27, 17, 18, 19, 21, 23, 25, 27, 28,
    20, 21, 22, 23, 24, 26, 28, 30, 21, 22, 23, 24, 26, 28, 30, 32,
    22, 23, 24, 26, 28, 30, 32, 35, 23, 24, 26, 28, 30, 32, 35, 38,
    25, 26, 28, 30, 32, 35, 38, 41, 27, 28, 30, 32, 35, 38, 41, 45};
constexpr Matrix kDefaultInterMatrix = {
    16, 17, 18, 19, 20, 21, 22, 23, 17, 18, 19, 20, 21, 22, 23, 24,
    18, 19, 20, 21, 22, 23, 24, 25, 19, 20, 21, 22, 23, 24, 26, 27,
    20, 21, 22, 23, 25, 26, 27, 28, 21, 22, 23, 24, 26, 27, 28, 30,
    22, 23, 24, 26, 27, 28, 30, 31, 23, 24, 25, 27, 28, 30, 31, 33};
constexpr std::string_view kTrajectoryLengths[15] = {  // Table B.33
    "00", "010", "011", "100", "101", "110", "1110", "11110", "111110", "1111110", "11111110", "111111110",
    "1111111110", "11111111110", "111111111110"};
// clang-format on
constexpr CodeTable<12> kTrajectoryLength(numbered(kTrajectoryLengths));

void marker(ByteReader& bits) {
    if (!bits.flag()) throw BadSyntax("a marker bit is 0");
}

int number(ByteReader& bits, int n) { return static_cast<int>(bits.u(n)); }

Matrix parseMatrix(ByteReader& bits, const Matrix& byDefault) {
    if (!bits.flag()) return byDefault;
    Matrix matrix{};
    Vek8u last = 0;
    bool ended = false;
    for (const Vek32s position : kZigzagScan) {
        if (!ended) {
            const auto weight = static_cast<Vek8u>(bits.u(8));
            ended = weight == 0;
            if (!ended) last = weight;
        }
        if (last == 0) throw BadSyntax("a quantizer matrix begins with 0");
        matrix[static_cast<std::size_t>(position)] = last;
    }
    return matrix;
}

// bit_rate, vbv_buffer_size and vbv_occupancy, each in two parts.
void parseVbvParameters(ByteReader& bits) {
    constexpr int kParts[][2] = {{15, 15}, {15, 3}, {11, 15}};
    for (const auto& [high, low] : kParts) {
        bits.u(high);
        marker(bits);
        bits.u(low);
        if (low == 15) marker(bits);
    }
}

// modulo_time_base and vop_time_increment.
VopTime parseTime(ByteReader& bits, const Layer& layer) {
    VopTime time;
    while (bits.flag()) ++time.seconds;
    marker(bits);
    time.ticks = number(bits, layer.timeBits());
    return time;
}

Vek32s parseTrajectory(ByteReader& bits) {
    const int length = kTrajectoryLength.read(bits, "sprite trajectory length");
    int value = number(bits, length);
    if (length > 0 && value >> (length - 1) == 0) value -= (1 << length) - 1;
    marker(bits);
    return value;
}

void parseTrajectories(ByteReader& bits, const Layer& layer, Vop& vop) {
    for (int i = 0; i < layer.warpingPoints; ++i) {
        vop.du[i] = parseTrajectory(bits);
        vop.dv[i] = parseTrajectory(bits);
    }
}

int parseFCode(ByteReader& bits) {
    const int fCode = number(bits, 3);
    if (fCode == 0) throw BadSyntax("vop_fcode is 0");
    return fCode;
}

}  // namespace

vekapp::Rational Layer::rate() const {
    if (fixedIncrement == 0) return {};
    const int common = std::gcd(timeResolution, fixedIncrement);
    return {timeResolution / common, fixedIncrement / common};
}

// The fewest, but one at least, that hold every tick below the resolution.
int Layer::timeBits() const { return std::max(1, static_cast<int>(std::bit_width(unsigned(timeResolution - 1)))); }

int Layer::addressBits() const {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(widthInMbs() * heightInMbs() - 1)));
}

Layer parseLayer(ByteReader& bits) {
    Layer layer;
    bits.flag();  // random_accessible_vol
    bits.u(8);    // video_object_type_indication
    int version = 1;
    if (bits.flag()) {
        version = number(bits, 4);
        bits.u(3);  // priority
    }
    const unsigned aspect = bits.u(4);
    if (aspect == 15) {
        layer.sampleAspect.num = number(bits, 8);
        layer.sampleAspect.den = number(bits, 8);
    } else {
        layer.sampleAspect = numberedSampleAspect(aspect, 5);
    }
    if (bits.flag()) {  // vol_control_parameters
        if (bits.u(2) != 1) throw NotSupported("MPEG-4 with chroma other than 4:2:0");
        layer.lowDelay = bits.flag();
        if (bits.flag()) parseVbvParameters(bits);
    }
    if (bits.u(2) != 0) throw NotSupported("MPEG-4 video objects that are not rectangular");
    marker(bits);
    layer.timeResolution = number(bits, 16);
    if (layer.timeResolution == 0) throw BadSyntax("vop_time_increment_resolution is 0");
    marker(bits);
    if (bits.flag()) layer.fixedIncrement = number(bits, layer.timeBits());
    marker(bits);
    layer.width = number(bits, 13);
    marker(bits);
    layer.height = number(bits, 13);
    marker(bits);
    layer.interlaced = bits.flag();
    bits.flag();  // obmc_disable: streams that write 0 do not overlap either
    const unsigned sprite = bits.u(version == 1 ? 1 : 2);
    if (sprite == 2) {
        layer.globalMotion = true;
        layer.warpingPoints = number(bits, 6);
        layer.warpingAccuracy = number(bits, 2);
        if (layer.warpingPoints > 3)
            throw NotSupported("MPEG-4 global motion with " + std::to_string(layer.warpingPoints) + " warping points");
        if (bits.flag()) throw NotSupported("MPEG-4 sprites with a change of brightness");
    } else if (sprite != 0) {
        throw NotSupported("MPEG-4 with static sprites");
    }
    if (bits.flag()) throw NotSupported("MPEG-4 with more or less than 8 bits");
    layer.mpegQuantizer = bits.flag();
    if (layer.mpegQuantizer) {
        layer.intraMatrix = parseMatrix(bits, kDefaultIntraMatrix);
        layer.interMatrix = parseMatrix(bits, kDefaultInterMatrix);
    }
    if (version != 1) layer.quarterSample = bits.flag();
    if (!bits.flag()) throw NotSupported("MPEG-4 with complexity estimation headers");
    layer.resyncMarkers = !bits.flag();
    layer.dataPartitioned = bits.flag();
    if (layer.dataPartitioned) layer.reversibleCodes = bits.flag();
    if (version != 1) {
        if (bits.flag()) throw NotSupported("MPEG-4 with NEWPRED");
        if (bits.flag()) throw NotSupported("MPEG-4 VOPs of reduced resolution");
    }
    if (bits.flag()) throw NotSupported("scalable MPEG-4");
    if (layer.dataPartitioned && layer.interlaced) throw NotSupported("interlaced MPEG-4 with data partitioning");
    return layer;
}

int parseGroupTime(ByteReader& bits) {
    const int hours = number(bits, 5), minutes = number(bits, 6);
    marker(bits);
    return 3600 * hours + 60 * minutes + number(bits, 6);
}

Vop parseVop(ByteReader& bits, const Layer& layer) {
    Vop vop;
    vop.type = static_cast<VopType>(bits.u(2));
    vop.time = parseTime(bits, layer);
    marker(bits);
    vop.coded = bits.flag();
    if (!vop.coded) return vop;
    if (vop.type == VopType::S && !layer.globalMotion) throw BadSyntax("an S-VOP in a layer without sprites");
    const bool predicted = vop.type == VopType::P || vop.type == VopType::S;
    if (predicted) vop.rounding = number(bits, 1);
    vop.dcThreshold = number(bits, 3);
    if (layer.interlaced) {
        vop.topFieldFirst = bits.flag();
        vop.alternateScan = bits.flag();
    }
    if (vop.type == VopType::S) parseTrajectories(bits, layer, vop);
    vop.quantizer = number(bits, 5);
    if (vop.quantizer == 0) throw BadSyntax("vop_quant is 0");
    if (vop.type != VopType::I) vop.fCode[0] = parseFCode(bits);
    if (vop.type == VopType::B) vop.fCode[1] = parseFCode(bits);
    return vop;
}

PacketHeader parsePacketHeader(ByteReader& bits, const Layer& layer) {
    PacketHeader packet;
    packet.address = number(bits, layer.addressBits());
    packet.quantizer = number(bits, 5);
    if (bits.flag()) {  // header_extension_code: the VOP's header once more, for those who lost it
        Vop again;
        parseTime(bits, layer);
        marker(bits);
        again.type = static_cast<VopType>(bits.u(2));
        if (again.type == VopType::S) parseTrajectories(bits, layer, again);
        bits.u(3);  // intra_dc_vlc_thr
        if (again.type != VopType::I) bits.u(3);
        if (again.type == VopType::B) bits.u(3);
    }
    return packet;
}

}  // namespace vekdec::mpeg4
