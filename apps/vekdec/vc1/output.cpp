// Frames as they are given out, and what is told of them.
#include <iterator>
#include <string>

#include "vc1/stream_decoder.h"

namespace vekdec::vc1 {
namespace {

constexpr vekapp::BlockKind kKinds[] = {
    {"lost", {255, 0, 255}},  {"intra", {230, 60, 60}},   {"inter", {60, 120, 230}},
    {"4MV", {90, 200, 240}},  {"forward", {60, 90, 180}}, {"backward", {60, 190, 120}},
    {"both", {240, 210, 60}}, {"direct", {240, 150, 60}}, {"skipped", {60, 60, 70}},
};

BlockMap blocksOf(const Picture& picture, const Sequence& sequence) {
    BlockMap map{kKinds, 1, 31, {}, {}};
    const int width = sequence.widthInMbs(), apart = picture.fields ? 2 : 1;
    const int height = picture.fields ? sequence.fieldHeightInMbs() : sequence.heightInMbs();
    for (int field = 0; field < apart; ++field) {
        const Macroblock* mb = picture.mbs.data() + (field == 0 ? 0 : picture.mbs.size() / 2);
        for (int i = 0; i < width * height; ++i, ++mb) {
            const int x = 16 * (i % width), y = 16 * (i / width) * apart + field;
            map.blocks.push_back({x, y, 16, 16, apart, static_cast<int>(mb->kind), mb->quant});
            const auto vector = [&](int atX, int atY, MotionVector v, bool backward) {
                map.vectors.push_back({x + atX, y + atY * apart, v.x / 4, v.y / 4 * apart, backward});
            };
            if (mb->kind == MbKind::FourMv) {
                for (int k = 0; k < 4; ++k)
                    if (!mb->isIntra(k)) vector(4 + 8 * (k & 1), 4 + 8 * (k >> 1), mb->mv[k], false);
                continue;
            }
            if (mb->uses[0]) vector(8, 8, mb->mv[0], false);
            if (mb->uses[1]) vector(8, 8, mb->backward, true);
        }
    }
    return map;
}

}  // namespace

// Range mapping and range reduction change what is shown, not what is predicted from (8.1.1.4, 6.2.15).
void StreamDecoder::setPlanes(const Picture& picture, const Sequence& sequence, Frame& frame) {
    for (int i = 0; i < 3; ++i) {
        vekapp::Plane plane = picture.plane[i];
        const int rangeMap = picture.rangeReduced ? 7 : i == 0 ? picture.rangeMapY : picture.rangeMapUv;
        if (rangeMap >= 0) {
            const PictureFormat format = sequence.format();
            if (!mapped_ || mappedFormat_ != format) {
                mapped_.emplace(format);
                mappedFormat_ = format;
            }
            const vekapp::Plane& to = mapped_->plane[i];
            vekiRangeMapping_VC1_8u_C1R(plane.data, static_cast<Vek32s>(plane.stride), to.data,
                                        static_cast<Vek32s>(to.stride), {plane.width, plane.height}, rangeMap);
            plane = to;
        }
        const int shift = i == 0 ? 0 : 1;
        frame.plane[i] = {plane.data, plane.stride, (sequence.width + shift) >> shift,
                          (sequence.height + shift) >> shift};
    }
}

void StreamDecoder::show(const PicturePtr& picture) {
    Frame frame;
    frame.chroma = Chroma::C420;
    frame.rate = sequence_.rate.known() ? sequence_.rate : stream_.rate;
    frame.sampleAspect = sequence_.sampleAspect.known() ? sequence_.sampleAspect : stream_.sampleAspect;
    frame.fields = !picture->interlaced     ? FieldOrder::Progressive
                   : picture->topFieldFirst ? FieldOrder::TopFirst
                                            : FieldOrder::BottomFirst;
    tasks_.then([this, picture, frame, sequence = sequence_] {
        Frame shown = frame;
        setPlanes(*picture, sequence, shown);
        tasks_.give(shown, [&] { return blocksOf(*picture, sequence); });
    });
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = tasks_.frames();
    s.pictures = pictures_;
    s.slices = slicesSeen_;
    s.damaged = tasks_.damaged();
    s.bits = 8 * bytes_;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i].name, kinds_[i]);
    s.seconds.emplace_back("macroblocks", secondsMacroblocks_);
    s.seconds.emplace_back("filters", secondsFilters_);
    s.secondsTotal = secondsTotal_;
    if (skippedPictures_ > 0)
        s.remarks.push_back(std::to_string(skippedPictures_) + " pictures are skipped: they show the one before again");
    if (repeated_ > 0)
        s.remarks.push_back(std::to_string(repeated_) +
                            " frames ask to be shown longer (RPTFRM, RFF); they are given out once");
    if (leftOutPictures_ > 0)
        s.remarks.push_back(std::to_string(leftOutPictures_) +
                            " B pictures at the beginning lack their references and are left out");
    return s;
}

}  // namespace vekdec::vc1
