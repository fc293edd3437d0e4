#include "dv/stream_decoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "dv/format.h"
#include "report/stopwatch.h"

namespace vekdec::dv {
namespace {

// By DCT mode (8-8 or frame, 2-4-8 or field), then class.
constexpr BlockKind kKinds[] = {
    {"8-8 class 0", {60, 120, 230}},   {"8-8 class 1", {60, 190, 120}},  {"8-8 class 2", {240, 210, 60}},
    {"8-8 class 3", {240, 130, 40}},   {"2-4-8 class 0", {90, 60, 180}}, {"2-4-8 class 1", {30, 110, 80}},
    {"2-4-8 class 2", {170, 140, 30}}, {"2-4-8 class 3", {200, 40, 60}},
};
// Macroblocks whose STA says that the recorder found errors and concealed nothing (SMPTE 314M, status of the
// macroblock).
bool markedDamaged(const VekDVBlockInfo& info) { return info.sta == 7 || info.sta == 15; }

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : sinks_(std::move(sinks)),
      stream_(options.stream),
      packed_(options.interleaved || options.zoom > 1),
      zoom_(options.zoom == 8   ? 3
            : options.zoom == 4 ? 2
            : options.zoom == 2 ? 1
                                : 0) {
    VekDVHuffmanTable_32s* table = nullptr;
    if (vekiHuffmanTableInitAlloc_DV_32s(&table) != vekStsOk) throw std::bad_alloc();
    table_.reset(table);
}

void StreamDecoder::begin(const System& system) {
    if (&system == system_) return;
    system_ = &system;
    places_.clear();
    // 720 lines: channels 2 and 3 are those of the second frames of pairs.
    const int channels = system.height == 720 ? 4 : system.channels;
    for (int c = 0; c < channels; ++c)
        for (int q = 0; q < system.sequences; ++q)
            for (int k = 0; k < kSegments; ++k)
                for (int m = 0; m < kMacroblocks; ++m) places_.push_back(placeOf(system, c, q, k, m));
    if (packed_)
        interleaved_.assign(static_cast<std::size_t>(2 * (system.width >> zoom_) * (system.height >> zoom_)), 128);
    else
        planar_ = vekapp::PictureMemory({system.width, system.height, system.chroma(), 8});
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(seconds_);
    ++packets_;
    bytes_ += packet.data.size();
    const auto frame = packet.data;
    const System* system = systemOf(frame);
    if (system == nullptr || frame.size() < system->frameBytes()) {
        ++damaged_;
        sinks_.report("frame " + std::to_string(frames_) +
                      (system == nullptr ? ": no frame of a system of DV" : ": the frame is cut short"));
        return;
    }
    begin(*system);
    blocks_.clear();
    const bool secondOfPair = system->height == 720 && (frame[1] & 4) == 0;  // FSP
    int concealed = 0;
    for (int c = 0; c < system->channels; ++c)
        for (int q = 0; q < system->sequences; ++q) {
            const std::uint8_t* sequence =
                frame.data() + static_cast<std::size_t>(c * system->sequences + q) * kSequenceBytes;
            for (int k = 0; k < kSegments; ++k) {
                const std::size_t first = static_cast<std::size_t>(
                    (((c + (secondOfPair ? 2 : 0)) * system->sequences + q) * kSegments + k) * kMacroblocks);
                MacroblockPlace places[kMacroblocks];
                std::copy_n(places_.begin() + static_cast<std::ptrdiff_t>(first), kMacroblocks, places);
                if (places[0].shape == Shape::None) continue;
                const std::uint8_t* segment = sequence + segmentOffset(k);
                ++segments_;
                // A DIF block that is none of video brings nothing: its place keeps what the frame before had.
                bool lost = false;
                for (int m = 0; m < kMacroblocks; ++m) lost = lost || segment[m * kDifBytes] >> 5 != 4;
                if (lost)
                    concealed += kMacroblocks;
                else
                    concealed += decodeSegment(segment, places);
            }
        }
    if (concealed > 0) {
        ++damaged_;
        sinks_.report("frame " + std::to_string(frames_) + ": " + std::to_string(concealed) +
                      " macroblocks are damaged and taken from the frame before");
    }
    show(frame);
}

// Returns how many macroblocks are marked as damaged and left as they were.
int StreamDecoder::decodeSegment(const std::uint8_t* segment, const MacroblockPlace (&places)[kMacroblocks]) {
    alignas(64) Vek16s coeffs[kMacroblocks * 8 * 64];
    VekDVBlockInfo info[kMacroblocks * 8];
    const int n = system_->blocksPerMacroblock();
    const Sampling sampling = system_->sampling;
    (sampling == Sampling::C422    ? vekiDecodeCoeffsSegment422_DV_1u16s
     : sampling == Sampling::Dv100 ? vekiDecodeCoeffsSegment_DV100_1u16s
                                   : vekiDecodeCoeffsSegment_DV_1u16s)(segment, coeffs, info, table_.get());
    if (sampling != Sampling::Dv100) vekiQuantInv8x8xN_DV_16s_C1I(coeffs, info, kMacroblocks * n);
    int concealed = 0;
    for (int m = 0; m < kMacroblocks; ++m) {
        Vek16s* const mb = coeffs + 64 * n * m;
        const VekDVBlockInfo* const mbInfo = info + n * m;
        if (markedDamaged(mbInfo[0])) {
            ++concealed;
            continue;
        }
        if (sampling == Sampling::Dv100) {
            const int weights = system_->height == 1080 ? 0 : 2;
            vekiQuantInv8x8xN_DV100_16s_C1I(mb, mbInfo, 4, weights);
            vekiQuantInv8x8xN_DV100_16s_C1I(mb + 4 * 64, mbInfo + 4, 4, weights + 1);
        }
        noteBlocks(mbInfo, places[m]);
        if (packed_)
            storePacked(mb, mbInfo, places[m]);
        else
            storePlanar(mb, mbInfo, places[m]);
    }
    return concealed;
}

// One block of samples, plus 128. Of an 8-8 block the DC brings them: a sample holds an eighth of it.
void StreamDecoder::storeBlock(Vek16s* coeffs, bool is248, std::uint8_t* to, std::ptrdiff_t step) {
    coeffs[0] = static_cast<Vek16s>(coeffs[0] + 8 * 128);
    if (!is248) {
        vekiDCT8x8Inv_16s8u_C1R(coeffs, to, static_cast<Vek32s>(step));
        return;
    }
    vekiDCT8x8Inv248_DV_16s_C1I(coeffs);
    for (int y = 0; y < 8; ++y) std::memset(to + step * y, 0, 8);
    vekiAdd8x8_16s8u_C1IRS(coeffs, 16, to, static_cast<Vek32s>(step));
}

void StreamDecoder::storePlanar(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    const bool field = dv100 && at.shape == Shape::Whole && info[0].dctMode != 0;
    const auto is248 = [&](int b) { return !dv100 && info[b].dctMode != 0; };
    const bool wide = at.shape == Shape::Bottom || (at.shape == Shape::Whole && system_->sampling == Sampling::C411);
    const int lumaBlocks = system_->sampling == Sampling::C422 ? 2 : 4;
    // Blocks of a row of 32, or two by two; of fields the second two are the odd lines.
    for (int b = 0; b < lumaBlocks; ++b) {
        const int column = wide ? b : b % 2, row = wide ? 0 : b / 2;
        const vekapp::Plane& plane = planar_.plane[0];
        std::uint8_t* to = plane.at(at.x + 8 * column, at.y + (field ? row : 8 * row));
        storeBlock(coeffs + 64 * b, is248(b), to, field ? 2 * plane.stride : plane.stride);
    }
    const int perComponent = dv100 ? 2 : 1;
    for (int component = 0; component < 2; ++component)
        for (int i = 0; i < perComponent; ++i) {
            const int b = lumaBlocks + component * perComponent + i;
            const vekapp::Plane& plane = planar_.plane[component == 0 ? 2 : 1];  // Cr comes first
            const int x = at.x >> chromaShiftX(system_->chroma()), y = at.y >> chromaShiftY(system_->chroma());
            if (at.shape == Shape::Edge) {  // 4 wide and 16 high: its right half is the lower one
                std::uint8_t whole[64];
                storeBlock(coeffs + 64 * b, is248(b), whole, 8);
                for (int line = 0; line < 16; ++line)
                    std::memcpy(plane.at(x, y + line), whole + 8 * (line % 8) + 4 * (line / 8), 4);
                continue;
            }
            std::uint8_t* to =
                at.shape == Shape::Bottom ? plane.at(x + 8 * i, y) : plane.at(x, y + (field ? i : 8 * i));
            storeBlock(coeffs + 64 * b, is248(b), to, field ? 2 * plane.stride : plane.stride);
        }
}

void StreamDecoder::storePacked(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    for (int b = 0; b < system_->blocksPerMacroblock(); ++b)
        (!dv100 && info[b].dctMode != 0 ? vekiDCT8x8Inv248_DV_16s_C1I : vekiDCT8x8Inv_16s_C1I)(coeffs + 64 * b);
    const int step = 2 * (system_->width >> zoom_);
    std::uint8_t* to = interleaved_.data() + std::ptrdiff_t{step} * (at.y >> zoom_) + 2 * (at.x >> zoom_);
    switch (system_->sampling) {
        case Sampling::C411:
            if (zoom_ == 0)
                vekiYCrCb411ToCbYCr422_DV_16s8u_C2R(coeffs, to, step, at.shape == Shape::Edge);
            else
                vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, at.shape == Shape::Edge, zoom_);
            break;
        case Sampling::C420:
            if (zoom_ == 0)
                vekiYCrCb420ToCbYCr422_DV_16s8u_C2R(coeffs, to, step);
            else
                vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, zoom_);
            break;
        case Sampling::C422:
            if (zoom_ == 0)
                vekiYCrCb422ToCbYCr422_DV_16s8u_C2R(coeffs, to, step);
            else
                vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, zoom_);
            break;
        case Sampling::Dv100: {
            const int layout = at.shape == Shape::Bottom ? 2 : info[0].dctMode;
            if (zoom_ == 0)
                vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R(coeffs, to, step, layout);
            else
                vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R(coeffs, to, step, layout, zoom_);
            break;
        }
    }
}

void StreamDecoder::noteBlocks(const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    const bool wide = at.shape == Shape::Bottom || (at.shape == Shape::Whole && system_->sampling == Sampling::C411);
    const int lumaBlocks = system_->sampling == Sampling::C422 ? 2 : 4;
    for (int b = 0; b < system_->blocksPerMacroblock(); ++b) {
        ++modes_[info[dv100 ? 0 : b].dctMode];
        ++ends_[info[b].end];
        if (b >= lumaBlocks) continue;
        const int column = wide ? b : b % 2, row = wide ? 0 : b / 2, size = 8 >> zoom_;
        blocks_.push_back({(at.x >> zoom_) + size * column, (at.y >> zoom_) + size * row, size, size, 1,
                           4 * info[dv100 ? 0 : b].dctMode + info[b].classNo, info[b].qNo});
    }
}

void StreamDecoder::show(std::span<const std::uint8_t> bytes) {
    Frame frame;
    frame.number = static_cast<int>(frames_++);
    frame.rate = system_->rate;
    frame.fields = system_->fields;
    frame.chroma = packed_ ? Chroma::Packed422 : system_->chroma();
    frame.chromaPlace = ChromaPlace::Dv;
    // DISP of the VAUX source control pack: 2 and 7 are 16:9. Pictures of DV100 always are.
    bool wide = system_->sampling == Sampling::Dv100;
    for (std::size_t pack = 0; pack < 45; ++pack) {
        const std::uint8_t* p = bytes.data() + kDifBytes * (3 + pack / 15) + 3 + 5 * (pack % 15);
        if (p[0] == 0x61 && ((p[2] & 7) == 2 || (p[2] & 7) == 7)) wide = true;
    }
    switch (system_->height) {
        case 480:
            frame.sampleAspect = wide ? Rational{32, 27} : Rational{8, 9};
            break;
        case 576:
            frame.sampleAspect = wide ? Rational{64, 45} : Rational{16, 15};
            break;
        default:
            frame.sampleAspect = system_->width == 1280 ? Rational{3, 2} : Rational{4, 3};
            break;
    }
    if (packed_) {
        const int width = 2 * (system_->width >> zoom_);
        frame.plane[0] = {interleaved_.data(), width, width, system_->height >> zoom_};
    } else {
        for (int i = 0; i < 3; ++i) {
            const vekapp::Plane& plane = planar_.plane[i];
            frame.plane[i] = {plane.data, plane.stride, plane.width, plane.height};
        }
    }
    sinks_.frame(frame);
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = frames_;
    s.pictures = packets_;
    s.slices = segments_;
    s.damaged = damaged_;
    s.bits = 8 * bytes_;
    s.unit = "blocks";
    s.kinds = {{"8-8 or frame", modes_[0]}, {"2-4-8 or field", modes_[1]}};
    s.of = {{"ended in pass 1", ends_[1]}, {"in pass 2", ends_[2]}, {"in pass 3", ends_[3]}, {"not at all", ends_[0]}};
    s.secondsTotal = seconds_;
    if (system_ != nullptr) s.remarks.push_back(system_->name);
    return s;
}

BlockMap StreamDecoder::blocks(const Frame&) const { return {kKinds, 15, 0, blocks_, {}}; }

namespace {

int probe(std::span<const std::uint8_t> begin) { return systemOf(begin) != nullptr ? 95 : 0; }

// A packet is a frame.
std::size_t split(std::span<const std::uint8_t> bytes, std::size_t& searched) {
    if (bytes.size() < 8 * kDifBytes) return 0;
    if (const System* system = systemOf(bytes)) return bytes.size() >= system->frameBytes() ? system->frameBytes() : 0;
    // Lost: the next DIF sequence with which a frame may begin.
    for (std::size_t at = std::max<std::size_t>(searched, kDifBytes); at + 8 * kDifBytes <= bytes.size();
         at += kDifBytes) {
        searched = at;
        if (systemOf(bytes.subspan(at)) != nullptr) return at;
    }
    return bytes.size() > 64 * kSequenceBytes ? bytes.size() / kDifBytes * kDifBytes - 8 * kDifBytes : 0;
}

constexpr const char* kCodecs[] = {"dvvideo"};

}  // namespace

Format format() {
    return {"dv",    "DV and DV100 (IEC 61834-2, SMPTE 314M, 370M): 25, 50 and 100 Mb/s",
            kCodecs, probe,
            split,   makeDecoder<StreamDecoder>,
            true};
}

}  // namespace vekdec::dv
