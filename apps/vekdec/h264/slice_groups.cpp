#include "h264/slice_groups.h"

#include <algorithm>

namespace vekdec::h264 {
namespace {

struct MapUnits {
    int width, height;  // PicWidthInMbs, PicHeightInMapUnits
    int size() const { return width * height; }
};

// 8.2.2.4, box-out: a spiral from the middle.
void boxOut(const MapUnits& units, bool direction, int unitsInGroup0, std::vector<std::uint8_t>& map) {
    std::fill(map.begin(), map.end(), std::uint8_t{1});
    const int dir = direction ? 1 : 0;
    int x = (units.width - dir) / 2, y = (units.height - dir) / 2;
    int left = x, right = x, top = y, bottom = y;
    int dx = dir - 1, dy = dir;
    for (int k = 0; k < unitsInGroup0;) {
        auto& unit = map[static_cast<std::size_t>(y * units.width + x)];
        if (unit != 0) {
            unit = 0;
            ++k;
        }
        if (dx == -1 && x == left) {
            left = std::max(left - 1, 0);
            x = left;
            dx = 0;
            dy = 2 * dir - 1;
        } else if (dx == 1 && x == right) {
            right = std::min(right + 1, units.width - 1);
            x = right;
            dx = 0;
            dy = 1 - 2 * dir;
        } else if (dy == -1 && y == top) {
            top = std::max(top - 1, 0);
            y = top;
            dx = 1 - 2 * dir;
            dy = 0;
        } else if (dy == 1 && y == bottom) {
            bottom = std::min(bottom + 1, units.height - 1);
            y = bottom;
            dx = 2 * dir - 1;
            dy = 0;
        } else {
            x += dx;
            y += dy;
        }
    }
}

// mapUnitToSliceGroupMap, 8.2.2.1 to 8.2.2.7.
std::vector<std::uint8_t> mapUnitMap(const SliceHeader& slice, const MapUnits& units) {
    const PictureParameterSet& pps = *slice.pps;
    const auto groups = static_cast<std::size_t>(pps.numSliceGroups);
    const int size = units.size();
    std::vector<std::uint8_t> map(static_cast<std::size_t>(size), 0);
    const auto set = [&](int i, std::size_t group) {
        map[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(group);
    };
    const int unitsInGroup0 = std::min(slice.sliceGroupChangeCycle * pps.sliceGroupChangeRate, size);
    const int upperLeftSize = pps.sliceGroupChangeDirection ? size - unitsInGroup0 : unitsInGroup0;
    const std::size_t changed = pps.sliceGroupChangeDirection ? 1 : 0;
    switch (pps.sliceGroupMapType) {
        case 0:  // interleaved
            for (int i = 0; i < size;)
                for (std::size_t group = 0; group < groups && i < size; i += pps.runLength[group++])
                    for (int j = 0; j < pps.runLength[group] && i + j < size; ++j) set(i + j, group);
            break;
        case 1:  // dispersed
            for (int i = 0; i < size; ++i)
                set(i, static_cast<std::size_t>(i % units.width + i / units.width * pps.numSliceGroups / 2) % groups);
            break;
        case 2:  // foreground rectangles and a left-over; the first group lies on top
            std::fill(map.begin(), map.end(), static_cast<std::uint8_t>(groups - 1));
            for (std::size_t group = groups - 1; group-- > 0;)
                for (int y = pps.topLeft[group] / units.width; y <= pps.bottomRight[group] / units.width; ++y)
                    for (int x = pps.topLeft[group] % units.width; x <= pps.bottomRight[group] % units.width; ++x)
                        set(y * units.width + x, group);
            break;
        case 3:
            boxOut(units, pps.sliceGroupChangeDirection, unitsInGroup0, map);
            break;
        case 4:  // raster
            for (int i = 0; i < size; ++i) set(i, i < upperLeftSize ? changed : 1 - changed);
            break;
        case 5: {  // wipe
            int k = 0;
            for (int x = 0; x < units.width; ++x)
                for (int y = 0; y < units.height; ++y)
                    set(y * units.width + x, k++ < upperLeftSize ? changed : 1 - changed);
            break;
        }
        default:
            map = pps.sliceGroupId;
            break;
    }
    return map;
}

}  // namespace

void makeSliceGroupMap(const SliceHeader& slice, std::vector<std::uint8_t>& map) {
    const SequenceParameterSet& sps = *slice.sps;
    const MapUnits units = {sps.widthInMbs, sps.heightInMapUnits};
    const auto unitMap = mapUnitMap(slice, units);
    if (sps.frameMbsOnly || slice.fieldPic ||
        slice.mbaff()) {  // 8.2.2.8: a unit is a macroblock, or a pair by its address
        map = unitMap;
        return;
    }
    // A frame of frame macroblocks in a sequence that may have fields: a unit covers two rows.
    map.resize(static_cast<std::size_t>(sps.widthInMbs * sps.heightInMbs()));
    for (int i = 0; i < static_cast<int>(map.size()); ++i)
        map[static_cast<std::size_t>(i)] =
            unitMap[static_cast<std::size_t>(i / (2 * sps.widthInMbs) * sps.widthInMbs + i % sps.widthInMbs)];
}

}  // namespace vekdec::h264
