// Frames as they are given out, and what is told of them.
#include <iterator>
#include <string>

#include "avs/stream_decoder.h"

namespace vekdec::avs {
namespace {

constexpr vekapp::BlockKind kKinds[] = {
    {"lost", {255, 0, 255}},  {"intra", {230, 60, 60}},   {"forward", {60, 120, 230}}, {"backward", {60, 190, 120}},
    {"both", {240, 210, 60}}, {"direct", {240, 150, 60}}, {"skipped", {60, 60, 70}},
};

BlockMap blocksOf(const Picture& picture) {
    BlockMap map{kKinds, 0, 63, {}, {}};
    const int width = picture.plane[0].width / 16, apart = picture.header.fields ? 2 : 1;
    const int count = static_cast<int>(picture.mbs.size()) / apart;
    const Macroblock* mb = picture.mbs.data();
    for (int field = 0; field < apart; ++field)
        for (int i = 0; i < count; ++i, ++mb) {
            const int x = 16 * (i % width), y = 16 * (i / width) * apart + field;
            map.blocks.push_back({x, y, 16, 16, apart, static_cast<int>(mb->kind), mb->qp});
            for (const Direction d : {kForward, kBackward}) {
                const Motion* motion = mb->motion[d];
                const auto vector = [&](int atX, int atY, const Motion& m) {
                    if (m.used())
                        map.vectors.push_back(
                            {x + atX, y + atY * apart, m.mv.x / 4, m.mv.y / 4 * apart, d == kBackward});
                };
                if (motion[0] == motion[1] && motion[0] == motion[2] && motion[0] == motion[3])
                    vector(8, 8, motion[0]);
                else
                    for (int k = 0; k < 4; ++k) vector(4 + 8 * (k & 1), 4 + 8 * (k >> 1), motion[k]);
            }
        }
    return map;
}

}  // namespace

void StreamDecoder::show(const PicturePtr& picture) {
    Frame frame;
    frame.chroma = Chroma::C420;
    frame.rate = sequence_.rate().known() ? sequence_.rate() : stream_.rate;
    frame.sampleAspect = sequence_.sampleAspect().known() ? sequence_.sampleAspect() : stream_.sampleAspect;
    const PictureHeader& header = picture->header;
    frame.fields = sequence_.progressive || header.progressiveFrame ? FieldOrder::Progressive
                   : header.topFieldFirst                           ? FieldOrder::TopFirst
                                                                    : FieldOrder::BottomFirst;
    showPlanes(frame, picture->plane, sequence_.width, sequence_.height);
    tasks_.show(frame, [picture] { return blocksOf(*picture); });
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
    s.seconds.emplace_back("loop filter", secondsFilter_);
    s.secondsTotal = secondsTotal_;
    if (syntax_ == Syntax::Draft) s.remarks.push_back("the headers are those of a draft before the standard");
    if (repeated_ > 0)
        s.remarks.push_back(std::to_string(repeated_) +
                            " frames ask to be shown for a field longer "
                            "(repeat_first_field); they are given out once");
    if (leftOutPictures_ > 0)
        s.remarks.push_back(std::to_string(leftOutPictures_) +
                            " B pictures at the beginning lack their references and are left out");
    return s;
}

}  // namespace vekdec::avs
