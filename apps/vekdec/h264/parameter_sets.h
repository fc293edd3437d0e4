// Sequence and picture parameter sets (H.264 7.3.2.1, 7.3.2.2): what the syntax says, and what follows from it alone.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "bits/bit_reader.h"
#include "frames/frame.h"

namespace vekdec::h264 {

// Scaling lists as they stand after the fall-back rules (7.4.2.1.1.1, 7.4.2.2), in zigzag order for frames and fields
// alike (8.5.6): 4x4 lists Intra Y, Cb, Cr, Inter Y, Cb, Cr; 8x8 lists Intra Y, Inter Y.
struct ScalingLists {
    std::array<std::array<std::uint8_t, 16>, 6> list4x4;
    std::array<std::array<std::uint8_t, 64>, 2> list8x8;
};

struct SequenceParameterSet {
    int id = 0;
    int profileIdc = 0, constraintFlags = 0, levelIdc = 0;
    int chromaFormatIdc = 1;  // 0 monochrome, 1 4:2:0, 2 4:2:2, 3 4:4:4
    bool separateColourPlanes = false;
    int bitDepthLuma = 8, bitDepthChroma = 8;
    bool losslessQpprime = false;  // qpprime_y_zero_transform_bypass_flag
    bool scalingMatrixPresent = false;
    ScalingLists scaling;  // flat if not present
    int log2MaxFrameNum = 4;
    int pocType = 0;
    int log2MaxPocLsb = 4;
    bool deltaPicOrderAlwaysZero = false;
    int offsetForNonRefPic = 0, offsetForTopToBottomField = 0;
    std::vector<int> offsetForRefFrame;
    int maxNumRefFrames = 0;
    bool gapsInFrameNumAllowed = false;
    int widthInMbs = 0;        // PicWidthInMbs
    int heightInMapUnits = 0;  // PicHeightInMapUnits
    bool frameMbsOnly = true;
    bool mbAdaptiveFrameField = false;
    bool direct8x8Inference = false;
    int cropLeft = 0, cropRight = 0, cropTop = 0, cropBottom = 0;  // luma samples of the frame
    vekapp::Rational sampleAspect, frameRate;                      // of the VUI parameters (Annex E); 0: not given
    bool rangeGiven = false, fullRange = false;
    int chromaSampleLocType = 0;
    bool bitstreamRestriction = false;
    int maxNumReorderFrames = -1, maxDecFrameBuffering = -1;  // -1: not given

    int heightInMbs() const { return heightInMapUnits * (frameMbsOnly ? 1 : 2); }  // FrameHeightInMbs
    int bitDepth() const { return bitDepthLuma > bitDepthChroma ? bitDepthLuma : bitDepthChroma; }
    vekapp::Chroma chroma() const {
        return chromaFormatIdc == 0   ? vekapp::Chroma::None
               : chromaFormatIdc == 1 ? vekapp::Chroma::C420
                                      : vekapp::Chroma::C422;
    }
    int chromaWidthMb() const { return chromaFormatIdc == 0 ? 0 : chromaFormatIdc == 3 ? 16 : 8; }   // MbWidthC
    int chromaHeightMb() const { return chromaFormatIdc == 0 ? 0 : chromaFormatIdc == 1 ? 8 : 16; }  // MbHeightC
};

struct PictureParameterSet {
    int id = 0;
    std::shared_ptr<const SequenceParameterSet> sps;  // with which it was read: its sizes hold for that one alone
    bool entropyCodingMode = false;                   // CABAC
    bool bottomFieldPicOrderInFramePresent = false;
    // Slice groups (7.4.2.2); the map itself depends on the slice header.
    int numSliceGroups = 1;
    int sliceGroupMapType = 0;
    std::array<int, 8> runLength{};               // type 0: run_length_minus1 + 1
    std::array<int, 8> topLeft{}, bottomRight{};  // type 2
    bool sliceGroupChangeDirection = false;       // types 3 to 5
    int sliceGroupChangeRate = 0;
    std::vector<std::uint8_t> sliceGroupId;  // type 6
    std::array<int, 2> numRefIdxDefault{1, 1};
    bool weightedPred = false;
    int weightedBipredIdc = 0;
    int picInitQp = 26, picInitQs = 26;
    std::array<int, 2> chromaQpIndexOffset{0, 0};  // Cb, Cr
    bool deblockingControlPresent = false;
    bool constrainedIntraPred = false;
    bool redundantPicCntPresent = false;
    bool transform8x8Mode = false;
    bool scalingMatrixPresent = false;
    ScalingLists scaling;  // what holds for pictures of this PPS: its own lists or those of its SPS
};

// Parse one NAL unit's payload. They throw BadSyntax with a sentence (see bits/errors.h) and change nothing then.
SequenceParameterSet parseSequenceParameterSet(BitReader& bits);
// The SPS by id, null where none came. The PPS needs its SPS for sizes, chroma_format_idc and the scaling lists.
using SequenceParameterSets = std::array<std::shared_ptr<const SequenceParameterSet>, 32>;
PictureParameterSet parsePictureParameterSet(BitReader& bits, const SequenceParameterSets& spsById);

}  // namespace vekdec::h264
