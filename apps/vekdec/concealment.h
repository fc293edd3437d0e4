// Macroblocks that did not come.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "frames/plane.h"

namespace vekdec {

// Takes the lost ones of `mbs`, by raster, from the planes `before`, or makes them grey where there are none; their
// number. Counts all by kind.
template <class Macroblock>
long concealLost(const vekapp::Plane (&planes)[3], std::span<const Macroblock> mbs, const vekapp::Plane* before,
                 long* kinds) {
    const auto columns = static_cast<std::size_t>(planes[0].width / 16);
    long missing = 0;
    for (std::size_t i = 0; i < mbs.size(); ++i) {
        ++kinds[static_cast<int>(mbs[i].kind)];
        if (mbs[i].kind != decltype(mbs[i].kind)::Lost) continue;
        ++missing;
        for (int p = 0; p < 3; ++p) {
            const int width = 16 * planes[p].width / planes[0].width, height = 16 * planes[p].height / planes[0].height;
            vekapp::copyOrGrey(planes[p], before != nullptr ? before + p : nullptr,
                               static_cast<int>(i % columns) * width, static_cast<int>(i / columns) * height, width,
                               height);
        }
    }
    return missing;
}

inline std::string missingMacroblocks(long missing, std::size_t all) {
    return std::to_string(missing) + " of " + std::to_string(all) + " macroblocks are missing";
}

}  // namespace vekdec
