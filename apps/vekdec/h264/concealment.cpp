#include "h264/concealment.h"

#include <cstring>

#include "h264/place.h"

namespace vekdec::h264 {
namespace {

void fillSamples(std::uint8_t* p, int count, int bytesPerSample, int value) {
    for (int i = 0; i < count; ++i) {
        if (bytesPerSample == 1) {
            p[i] = static_cast<std::uint8_t>(value);
        } else {
            const auto sample = static_cast<std::uint16_t>(value);
            std::memcpy(p + 2 * i, &sample, 2);
        }
    }
}

}  // namespace

int concealMissing(Picture& picture, int structure, const Picture* previous, int bitDepthLuma, int bitDepthChroma) {
    const int perPicture = picture.widthInMbs * picture.heightInMbs / (structure == kFrame ? 1 : 2);
    const int first = structure == kBottomField ? perPicture : 0;
    int missing = 0;
    const auto isMissing = [&](int address) {
        return picture.mbs[static_cast<std::size_t>(first + address)].type == MbType::Missing;
    };
    // The macroblocks of a pair are of one kind, or they would not cover it: that of the one that is there.
    if (picture.mbaff && structure == kFrame)
        for (int address = 0; address < perPicture; address += 2) {
            Macroblock* pair = &picture.mbs[static_cast<std::size_t>(address)];
            if (isMissing(address) && isMissing(address + 1))
                pair[0].field = pair[1].field = false;
            else if (isMissing(address) || isMissing(address + 1))
                pair[isMissing(address) ? 0 : 1].field = pair[isMissing(address) ? 1 : 0].field;
        }
    for (int address = 0; address < perPicture; ++address) {
        if (!isMissing(address)) continue;
        Macroblock& mb = picture.mbs[static_cast<std::size_t>(first + address)];
        ++missing;
        for (int i = 0; i < 3; ++i) {
            const vekapp::Plane& plane = picture.plane[i];
            if (plane.data == nullptr) continue;
            const int width = plane.width / picture.widthInMbs, height = plane.height / picture.heightInMbs;
            const Place at = placeOf(picture, structure, address, width, height);
            for (int row = 0; row < height; ++row) {
                const std::ptrdiff_t offset =
                    plane.stride * (at.y + row * at.rowDistance) + at.x * picture.bytesPerSample;
                if (previous != nullptr && previous->plane[i].data != nullptr)
                    std::memcpy(plane.data + offset, previous->plane[i].data + offset,
                                static_cast<std::size_t>(width * picture.bytesPerSample));
                else
                    fillSamples(plane.data + offset, width, picture.bytesPerSample,
                                1 << ((i == 0 ? bitDepthLuma : bitDepthChroma) - 1));
            }
        }
        // For what later pictures ask of it: an intra macroblock without residual that no filter touches.
        const bool field = mb.field;
        mb = Macroblock{};
        mb.field = field;
        for (auto& list : mb.refIdx)
            for (auto& index : list) index = -1;
        for (auto& list : mb.refPicId)
            for (auto& id : list) id = -1;
    }
    return missing;
}

}  // namespace vekdec::h264
