#include "h261/stream_decoder.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "concealment.h"
#include "h261/format.h"
#include "report/stopwatch.h"

namespace vekdec::h261 {
namespace {

constexpr vekapp::BlockKind kKinds[] = {{"lost", {255, 0, 255}},
                                        {"intra", {230, 60, 60}},
                                        {"inter", {60, 120, 230}},
                                        {"filtered", {60, 190, 190}},
                                        {"skipped", {60, 60, 70}}};

// The bit at which the next picture start code begins, at `from` or behind it; 8 * size where there is none.
std::size_t findPictureStart(std::span<const std::uint8_t> bytes, std::size_t from) {
    const std::size_t bits = 8 * bytes.size();
    for (std::size_t i = from / 8; i + 1 < bytes.size(); ++i) {
        if (bytes[i + 1] > 1) continue;  // 15 zeros from any bit of byte i on leave no other bit of byte i + 1 set
        std::uint64_t window = 0;
        for (std::size_t k = 0; k < 4; ++k) window = window << 8 | (i + k < bytes.size() ? bytes[i + k] : 0xff);
        for (std::size_t offset = 0; offset < 8; ++offset) {
            const std::size_t at = 8 * i + offset;
            if (at < from || at + kPictureStartBits > bits) continue;
            if ((window >> (32 - kPictureStartBits - offset) & 0xfffff) == kPictureStart) return at;
        }
    }
    return bits;
}

constexpr std::size_t kMostBytes = 1 << 18;  // a picture may have 256 kbit (5.2); more is not H.261

}  // namespace

void StreamDecoder::damage(const std::string& what) {
    ++damaged_;
    sinks_.report("picture " + std::to_string(seen_) + ": " + what);
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    waiting_.insert(waiting_.end(), packet.data.begin(), packet.data.end());
    for (std::size_t at; (at = findPictureStart(waiting_, searched_)) < 8 * waiting_.size();) {
        if (started_) decodePicture(start_, at);
        started_ = true;
        start_ = at;
        searched_ = at + kPictureStartBits;
    }
    if (started_ && waiting_.size() - start_ / 8 > kMostBytes) {
        decodePicture(start_, 8 * waiting_.size());
        started_ = false;
    }
    const std::size_t end = 8 * waiting_.size();
    searched_ = std::max(searched_, end > kPictureStartBits ? end - kPictureStartBits : 0);
    const std::size_t done = (started_ ? start_ : searched_) / 8;
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(done));
    searched_ -= 8 * done;
    start_ -= std::min(start_, 8 * done);
}

void StreamDecoder::flush() {
    const Stopwatch watch(secondsTotal_);
    if (started_) decodePicture(start_, 8 * waiting_.size());
    started_ = false;
}

// The picture between two bits of what waits.
void StreamDecoder::decodePicture(std::size_t begin, std::size_t end) {
    ++seen_;
    payload_.assign(std::span(waiting_).subspan(begin / 8, (end + 7) / 8 - begin / 8));
    ByteReader bits(payload_);
    bits.skip(begin % 8 + kPictureStartBits);
    try {
        const bool cif = parsePictureHeader(bits);
        const PicturePtr picture = pool_.take({cif ? 352 : 176, cif ? 288 : 144, Chroma::C420, 8});
        if (reference_ != nullptr && reference_->mbs.size() != picture->mbs.size()) reference_ = nullptr;
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
    } catch (const BadSyntax& e) {
        damage(e.what());
    }
}

void StreamDecoder::show(const Picture& picture) {
    Frame frame;
    frame.chroma = Chroma::C420;
    frame.chromaPlace = ChromaPlace::Centre;
    frame.number = static_cast<int>(frames_++);
    frame.rate = stream_.rate.known() ? stream_.rate : Rational{30000, 1001};
    frame.sampleAspect = {12, 11};
    frame.fields = FieldOrder::Progressive;
    const auto quantizerOf = [&](std::size_t mb) -> int { return picture.mbs[mb].quantizer; };
    showPlanes(frame, postFilter_.wanted() ? postFilter_.apply(picture.plane, quantizerOf) : picture.plane,
               picture.plane[0].width, picture.plane[0].height);
    shown_ = &picture;
    sinks_.frame(frame);
    shown_ = nullptr;
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = frames_;
    s.pictures = seen_;
    s.slices = pictures_.groups();
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
    const int width = picture.widthInMbs();
    for (std::size_t i = 0; i < picture.mbs.size(); ++i) {
        const Macroblock& mb = picture.mbs[i];
        const int x = 16 * (static_cast<int>(i) % width), y = 16 * (static_cast<int>(i) / width);
        map.blocks.push_back({x, y, 16, 16, 1, static_cast<int>(mb.kind), mb.quantizer});
        if (mb.kind == MbKind::Inter || mb.kind == MbKind::Filtered)
            map.vectors.push_back({x + 8, y + 8, mb.mvX, mb.mvY, false});
    }
    return map;
}

// ---- the format

namespace {

// Pieces of any length: the decoder finds the pictures.
std::size_t split(std::span<const std::uint8_t> bytes, std::size_t&) {
    constexpr std::size_t kPiece = 4096;
    return bytes.size() < kPiece ? 0 : kPiece;
}

// A picture header and the first group of blocks at the very beginning.
int probe(std::span<const std::uint8_t> begin) {
    if (begin.size() < 16) return 0;
    BytePayload payload;
    payload.assign(begin.first(16));
    ByteReader bits(payload);
    if (bits.u(kPictureStartBits) != kPictureStart) return 0;
    try {
        parsePictureHeader(bits);
        return bits.u(16) == 1 && bits.u(4) == 1 ? 60 : 0;
    } catch (const BadSyntax&) {
        return 0;
    }
}

constexpr const char* kCodecs[] = {"h261"};

}  // namespace

Format format() {
    return {.name = "h261",
            .what = "H.261",
            .codecs = kCodecs,
            .probe = probe,
            .split = split,
            .make = makeDecoder<StreamDecoder>,
            .postProcesses = true};
}

}  // namespace vekdec::h261
