// The contexts of CABAC (H.264 9.3.1.1): where those of each syntax element begin, and their states when a slice
// begins.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vekdec::h264 {

// ctxIdxOffset of each syntax element (Table 9-34).
enum CabacContext : int {
    kCtxMbTypeI = 3,
    kCtxMbSkipFlagP = 11,
    kCtxMbTypeP = 14,
    kCtxSubMbTypeP = 21,
    kCtxMbSkipFlagB = 24,
    kCtxMbTypeB = 27,
    kCtxSubMbTypeB = 36,
    kCtxMvdX = 40,
    kCtxMvdY = 47,
    kCtxRefIdx = 54,
    kCtxMbQpDelta = 60,
    kCtxIntraChromaPredMode = 64,
    kCtxPrevIntraPredModeFlag = 68,
    kCtxRemIntraPredMode = 69,
    kCtxMbFieldDecodingFlag = 70,
    kCtxCodedBlockPatternLuma = 73,
    kCtxCodedBlockPatternChroma = 77,
    kCtxCodedBlockFlag = 85,
    kCtxSignificantFrame = 105,
    kCtxLastFrame = 166,
    kCtxCoeffAbsLevel = 227,
    kCtxSignificantField = 277,
    kCtxLastField = 338,
    kCtxTransformSize8x8Flag = 399,
    kCtxSignificant8x8Frame = 402,
    kCtxLast8x8Frame = 417,
    kCtxCoeffAbsLevel8x8 = 426,
    kCtxSignificant8x8Field = 436,
    kCtxLast8x8Field = 451,
};

// By ctxIdx: 2 * pStateIdx + valMPS. Those from 460 on belong to 4:4:4.
using CabacContexts = std::array<std::uint8_t, 460>;

// `set` is 0 in I slices, else 1 + cabac_init_idc. Contexts that do not come in I slices stay as they are there.
void initCabacContexts(CabacContexts& contexts, int set, int sliceQp);

}  // namespace vekdec::h264
