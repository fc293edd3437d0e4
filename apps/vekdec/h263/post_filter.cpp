#include "h263/post_filter.h"

#include <algorithm>
#include <cstring>

#include "vekvc.h"

namespace vekdec::h263 {

void PostFilter::Bordered::resize(int width, int height) {
    if (plane.width == width && plane.height == height) return;
    const std::ptrdiff_t stride = width + 2;
    samples.assign(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height + 2), 0);
    plane = {samples.data() + stride + 1, stride, width, height};
}

void PostFilter::Bordered::repeatEdges() {
    for (int y = 0; y < plane.height; ++y) {
        *plane.at(-1, y) = *plane.at(0, y);
        *plane.at(plane.width, y) = *plane.at(plane.width - 1, y);
    }
    const auto row = static_cast<std::size_t>(plane.width + 2);
    std::memcpy(plane.at(-1, -1), plane.at(-1, 0), row);
    std::memcpy(plane.at(-1, plane.height), plane.at(-1, plane.height - 1), row);
}

PostFilter::Planes PostFilter::apply(Planes picture, const std::function<int(std::size_t)>& quantizerOf) {
    widthInMbs_ = picture[0].width / 16;
    quantizers_.resize(static_cast<std::size_t>(widthInMbs_ * (picture[0].height / 16)));
    for (std::size_t i = 0; i < quantizers_.size(); ++i) quantizers_[i] = std::clamp(quantizerOf(i), 1, 31);
    for (int i = 0; i < 3; ++i) {
        Bordered& copy = deblocked_[i];
        copy.resize(picture[i].width, picture[i].height);
        for (int y = 0; y < picture[i].height; ++y)
            std::memcpy(copy.plane.at(0, y), picture[i].at(0, y), static_cast<std::size_t>(picture[i].width));
        if (wanted_.deblock) deblock(i);
        if (wanted_.dering) dering(i);
        result_[i] = (wanted_.dering ? derung_ : deblocked_)[i].plane;
    }
    return result_;
}

// All edges of 8x8 blocks inside the picture, first those between rows of blocks; with the quantizer of the macroblock
// below or to the right.
void PostFilter::deblock(int index) {
    const vekapp::Plane& p = deblocked_[index].plane;
    const int mbSize = index == 0 ? 16 : 8;
    const auto step = static_cast<Vek32s>(p.stride);
    for (const bool horizontal : {true, false})
        for (int y = horizontal ? 8 : 0; y < p.height; y += 8)
            for (int x = horizontal ? 0 : 8; x < p.width; x += 8)
                (horizontal ? vekiFilterDeblocking8x8_HorEdge_MPEG4_8u_C1IR
                            : vekiFilterDeblocking8x8_VerEdge_MPEG4_8u_C1IR)(
                    p.at(x, y), step, quantizers_[static_cast<std::size_t>(y / mbSize * widthInMbs_ + x / mbSize)]);
}

void PostFilter::dering(int index) {
    deblocked_[index].repeatEdges();
    const vekapp::Plane& from = deblocked_[index].plane;
    derung_[index].resize(from.width, from.height);
    const vekapp::Plane& to = derung_[index].plane;
    const int mbSize = index == 0 ? 16 : 8;
    for (int y = 0; y < from.height; y += mbSize)
        for (int x = 0; x < from.width; x += mbSize)
            (index == 0 ? vekiFilterDeringingLuma_MPEG4_8u_C1R : vekiFilterDeringingChroma_MPEG4_8u_C1R)(
                from.at(x, y), static_cast<Vek32s>(from.stride), to.at(x, y), static_cast<Vek32s>(to.stride),
                quantizers_[static_cast<std::size_t>(y / mbSize * widthInMbs_ + x / mbSize)]);
}

}  // namespace vekdec::h263
