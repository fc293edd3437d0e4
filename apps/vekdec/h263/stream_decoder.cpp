#include "h263/stream_decoder.h"

#include <algorithm>
#include <string>

#include "concealment.h"
#include "h263/format.h"
#include "report/stopwatch.h"

namespace vekdec::h263 {
namespace {

constexpr vekapp::BlockKind kKinds[] = {{"lost", {255, 0, 255}},
                                        {"intra", {230, 60, 60}},
                                        {"one vector", {60, 120, 230}},
                                        {"four vectors", {60, 190, 190}},
                                        {"skipped", {60, 60, 70}}};

}  // namespace

void StreamDecoder::damage(const std::string& what) {
    ++damaged_;
    sinks_.report("picture " + std::to_string(seen_) + ": " + what);
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    for (std::size_t at = findPictureStart(packet.data, 0); at < packet.data.size();) {
        const std::size_t next = findPictureStart(packet.data, at + 3);
        ++seen_;
        try {
            decodePicture(packet.data.subspan(at, next - at));
        } catch (const BadSyntax& e) {
            damage(e.what());
        } catch (const NotSupported& e) {
            damage(std::string("vekdec does not decode ") + e.what());
            modes_ = {};
        }
        at = next;
    }
}

void StreamDecoder::decodePicture(std::span<const std::uint8_t> bytes) {
    payload_.assign(bytes);
    ByteReader bits(payload_);
    bits.u(22);  // picture start code
    const PictureHeader header = parsePictureHeader(bits, modes_);
    constexpr int kMostMbs = 2048 / 16 * (1152 / 16);  // 5.1.5
    if (header.mbCount() > kMostMbs)
        throw NotSupported("H.263 of " + std::to_string(header.width) + "x" + std::to_string(header.height) +
                           " samples");
    const bool sameSize = header.width == modes_.width && header.height == modes_.height;
    modes_ = header;
    if (!sameSize) reference_ = nullptr;
    if (header.inter && reference_ == nullptr) throw BadSyntax("a picture that needs one before it comes without");
    const PicturePtr picture = pool_.take(header.format());
    picture->header = header;
    std::fill(picture->mbs.begin(), picture->mbs.end(), Macroblock{});
    {
        const Stopwatch watch(secondsPictures_);
        pictures_.decode(*picture, reference_.get(), bits, [&](const std::string& what) { damage(what); });
    }
    const long missing = concealLost(picture->plane, std::span<const Macroblock>(picture->mbs), kinds_,
                                     [&] { return reference_ != nullptr ? reference_->plane : nullptr; });
    if (missing > 0) damage(missingMacroblocks(missing, picture->mbs.size()));
    reference_ = picture;
    show(*picture);
}

void StreamDecoder::show(const Picture& picture) {
    const PictureHeader& header = picture.header;
    Frame frame;
    frame.chroma = Chroma::C420;
    frame.chromaPlace = ChromaPlace::Centre;
    frame.number = static_cast<int>(frames_++);
    frame.rate = stream_.rate.known() ? stream_.rate : header.rate;
    frame.sampleAspect = header.sampleAspect;
    frame.fields = FieldOrder::Progressive;
    const auto quantizerOf = [&](std::size_t mb) -> int { return picture.mbs[mb].quantizer; };
    showPlanes(frame, postFilter_.wanted() ? postFilter_.apply(picture.plane, quantizerOf) : picture.plane,
               header.width, header.height);
    shown_ = &picture;
    sinks_.frame(frame);
    shown_ = nullptr;
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = frames_;
    s.pictures = seen_;
    s.slices = pictures_.segments();
    s.damaged = damaged_;
    s.bits = 8 * bytes_;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i].name, kinds_[i]);
    s.seconds.emplace_back("macroblocks", secondsPictures_);
    s.secondsTotal = secondsTotal_;
    return s;
}

BlockMap StreamDecoder::blocks(const Frame&) const {
    const Picture& picture = *shown_;
    BlockMap map{kKinds, 1, 31, {}, {}};
    const int width = picture.header.widthInMbs();
    for (std::size_t i = 0; i < picture.mbs.size(); ++i) {
        const Macroblock& mb = picture.mbs[i];
        const int x = 16 * (static_cast<int>(i) % width), y = 16 * (static_cast<int>(i) / width);
        map.blocks.push_back({x, y, 16, 16, 1, static_cast<int>(mb.kind), mb.quantizer});
        if (mb.kind == MbKind::Inter) map.vectors.push_back({x + 8, y + 8, mb.mv[0].x / 2, mb.mv[0].y / 2, false});
        if (mb.kind == MbKind::FourVectors)
            for (int k = 0; k < 4; ++k)
                map.vectors.push_back({x + 4 + k % 2 * 8, y + 4 + k / 2 * 8, mb.mv[k].x / 2, mb.mv[k].y / 2, false});
    }
    return map;
}

// ---- the format

namespace {

// Packets reach from one picture start code to the next.
std::size_t split(std::span<const std::uint8_t> bytes, std::size_t& searched) {
    const std::size_t end = findPictureStart(bytes, std::max<std::size_t>(searched, 3));
    if (end < bytes.size()) return end;
    searched = bytes.size() < 2 ? 0 : bytes.size() - 2;  // a start code may have begun
    return 0;
}

// A picture header at the very beginning.
int probe(std::span<const std::uint8_t> begin) {
    if (begin.size() < 16 || findPictureStart(begin, 0) != 0) return 0;
    BytePayload payload;
    payload.assign(begin.first(16));
    ByteReader bits(payload);
    bits.u(22);
    try {
        return parsePictureHeader(bits, {}).inter ? 30 : 60;
    } catch (const NotSupported&) {
        return 40;
    } catch (const BadSyntax&) {
        return 0;
    }
}

constexpr const char* kCodecs[] = {"h263", "h263p"};

}  // namespace

Format format() {
    return {.name = "h263",
            .what = "H.263: baseline and Annexes D, F, I, J, K, S and T",
            .codecs = kCodecs,
            .probe = probe,
            .split = split,
            .make = makeDecoder<StreamDecoder>,
            .postProcesses = true};
}

}  // namespace vekdec::h263
