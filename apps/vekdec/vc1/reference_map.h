// Intensity compensation and range reduction of references (SMPTE 421M 8.3.8, 8.1.1.4).
#pragma once

#include "vc1/picture.h"

namespace vekdec::vc1 {

void setIdentity(ReferenceMap& map);
// Applied behind what the map does already.
void compensate(ReferenceMap& map, const IntensityCompensation& compensation);
// Applied before what the map does: the reference and the picture predicted from it have different ranges.
void changeRange(ReferenceMap& map, bool toReduced);

}  // namespace vekdec::vc1
