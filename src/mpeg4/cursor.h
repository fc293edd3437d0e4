// The checks of a bit-stream cursor of the byte form.
#ifndef VEKVC_MPEG4_CURSOR_H
#define VEKVC_MPEG4_CURSOR_H

#include "core/bits.h"
#include "core/check.h"

namespace vekvc::mpeg4 {

// The pointers themselves have been found to be there.
inline VekStatus checkCursor(Vek8u* const* ppBitStream, const Vek32s* pBitOffset) {
    if (anyNull(load<Vek8u*>(ppBitStream))) return vekStsErrNullPtr;
    if (!ByteReader::validOffset(load<Vek32s>(pBitOffset))) return vekStsErrBitOffset;
    return vekStsOk;
}

}  // namespace vekvc::mpeg4

#endif
