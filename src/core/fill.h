// Filling a plane with a constant.
#ifndef VEKVC_CORE_FILL_H
#define VEKVC_CORE_FILL_H

#include "vekvc/types.h"

namespace vekvc {

// Fills a region of bytes. Rows without gaps are filled as one run. More than 0x80000 bytes bypass the caches if they
// do not fit the largest one. Errors: vekStsErrNullPtr for a null pointer, vekStsErrSize for a width or height below 1.
VekStatus fillPlane(Vek8u value, Vek8u* pDst, Vek32s dstStep, VekiSize roiSize);

}  // namespace vekvc

#endif
