// Filters of the shown picture (ISO 14496-2 Annex F.3): against the edges of blocks and against ringing.
#pragma once

#include <functional>
#include <vector>

#include "decoder.h"
#include "frames/plane.h"

namespace vekdec::h263 {

class PostFilter {
  public:
    explicit PostFilter(const PostProcessing& wanted) : wanted_(wanted) {}
    bool wanted() const { return wanted_.deblock || wanted_.dering; }
    // The planes of a 4:2:0 picture of whole macroblocks, filtered; valid until the next call. `quantizerOf` tells the
    // quantizer of a macroblock by its number.
    using Planes = const vekapp::Plane (&)[3];
    Planes apply(Planes picture, const std::function<int(std::size_t)>& quantizerOf);

  private:
    // Samples with a border of one all around.
    struct Bordered {
        std::vector<std::uint8_t> samples;
        vekapp::Plane plane;
        void resize(int width, int height);
        void repeatEdges();
    };
    void deblock(int index);
    void dering(int index);

    PostProcessing wanted_;
    std::vector<int> quantizers_;
    int widthInMbs_ = 0;
    Bordered deblocked_[3], derung_[3];
    vekapp::Plane result_[3];
};

}  // namespace vekdec::h263
