#include "h263/deblocking.h"

#include "vekvc.h"

namespace vekdec::h263 {
namespace {

// The edges between the 8x8 blocks of one plane in one direction.
void filterPlane(const Picture& picture, int plane, bool horizontal) {
    const vekapp::Plane& p = picture.plane[plane];
    const int blocks = plane == 0 ? 2 : 1;  // of a macroblock, in each direction
    const int width = p.width / 8, height = p.height / 8, widthInMbs = width / blocks;
    const auto mbOf = [&](int bx, int by) -> const Macroblock& {
        return picture.mbs[static_cast<std::size_t>(by / blocks * widthInMbs + bx / blocks)];
    };
    const auto step = static_cast<Vek32s>(p.stride);
    for (int by = horizontal ? 1 : 0; by < height; ++by) {
        for (int bx = horizontal ? 0 : 1; bx < width; ++bx) {
            // J.3: the quantizer of the macroblock below or to the right, if it is coded, else of the other one.
            const Macroblock &here = mbOf(bx, by), &before = horizontal ? mbOf(bx, by - 1) : mbOf(bx - 1, by);
            if (!here.coded() && !before.coded()) continue;
            const Macroblock& mb = here.coded() ? here : before;
            const Vek32s quantizer = plane == 0 ? mb.quantizer : mb.chromaQuantizer;
            (horizontal ? vekiFilterDeblocking8x8_HorEdge_H263_8u_C1IR : vekiFilterDeblocking8x8_VerEdge_H263_8u_C1IR)(
                p.at(8 * bx, 8 * by), step, quantizer);
        }
    }
}

}  // namespace

void filterPicture(Picture& picture) {
    for (const bool horizontal : {true, false})
        for (int plane = 0; plane < 3; ++plane) filterPlane(picture, plane, horizontal);
}

}  // namespace vekdec::h263
