// What the two forms of the CAVLC analysis share.
#ifndef VEKVC_H264_CAVLC_ENCODE_H
#define VEKVC_H264_CAVLC_ENCODE_H

#include "h264/cavlc_decode.h"

namespace vekvc {

template <class T>
struct CavlcElements {
    Vek8u* pTrailingOnes;
    Vek8u* pTrailingOneSigns;
    Vek8u* pTotalCoeff;
    Vek8u* pTotalZeros;
    T* pLevels;
    Vek8u* pRuns;
};

}  // namespace vekvc

#endif
