#include "vc1/reference_map.h"

#include <algorithm>

#include "vekvc.h"

namespace vekdec::vc1 {
namespace {

std::uint8_t clip8(int v) { return static_cast<std::uint8_t>(std::clamp(v, 0, 255)); }

}  // namespace

void setIdentity(ReferenceMap& map) {
    map.active = false;
    for (int i = 0; i < 256; ++i) map.luma[i] = map.chroma[i] = static_cast<std::uint8_t>(i);
}

void compensate(ReferenceMap& map, const IntensityCompensation& c) {
    int scale = c.scale + 32, shift = (c.shift > 31 ? c.shift - 64 : c.shift) * 64;
    if (c.scale == 0) {
        scale = -64;
        shift = (255 - 2 * c.shift) * 64 + (c.shift > 31 ? 128 * 64 : 0);
    }
    for (std::uint8_t& v : map.luma) v = clip8((scale * v + shift + 32) >> 6);
    for (std::uint8_t& v : map.chroma) v = clip8((scale * (v - 128) + 128 * 64 + 32) >> 6);
    map.active = true;
}

void changeRange(ReferenceMap& map, bool toReduced) {
    std::uint8_t range[256];
    for (int i = 0; i < 256; ++i) range[i] = static_cast<std::uint8_t>(toReduced ? ((i - 128) >> 1) + 128 : i);
    if (!toReduced) vekiRangeMapping_VC1_8u_C1R(range, 256, range, 256, {256, 1}, 7);  // twice the range
    const ReferenceMap before = map;
    for (int i = 0; i < 256; ++i) {
        map.luma[i] = before.luma[range[i]];
        map.chroma[i] = before.chroma[range[i]];
    }
    map.active = true;
}

}  // namespace vekdec::vc1
