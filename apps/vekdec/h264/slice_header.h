// The slice header (H.264 7.3.3).
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "h264/nal_unit.h"
#include "h264/parameter_set_store.h"

namespace vekdec::h264 {

enum class SliceType { P = 0, B = 1, I = 2 };

struct RefListModification {
    int idc;         // modification_of_pic_nums_idc: 0, 1 or 2
    unsigned value;  // abs_diff_pic_num_minus1 + 1, or long_term_pic_num
};
struct MemoryManagement {
    int operation;  // 1 to 6
    int differenceOfPicNums = 0, longTermPicNum = 0, longTermFrameIdx = 0, maxLongTermFrameIdxPlus1 = 0;
};
struct Weight {
    int weight = 1, offset = 0;
};
// Explicit weights of one reference: Y, Cb, Cr. Offsets as in the syntax, not yet scaled by the bit depth.
using Weights = std::array<Weight, 3>;

struct SliceHeader {
    int nalRefIdc = 0;
    bool idr = false;  // IdrPicFlag
    int firstMbInSlice = 0;
    SliceType type = SliceType::I;
    int frameNum = 0;
    bool fieldPic = false, bottomField = false;
    int idrPicId = 0;
    int pocLsb = 0, deltaPocBottom = 0;
    std::array<int, 2> deltaPoc{};
    int redundantPicCnt = 0;
    bool directSpatialMvPred = false;
    std::array<int, 2> numRefIdxActive{};
    std::array<std::vector<RefListModification>, 2> refListModification;
    int lumaLog2WeightDenom = 0, chromaLog2WeightDenom = 0;
    std::array<std::array<Weights, 32>, 2> weights;  // explicit mode: filled with defaults where no flag was set
    bool noOutputOfPriorPics = false, longTermReference = false;
    bool adaptiveRefPicMarking = false;
    std::vector<MemoryManagement> memoryManagement;
    int cabacInitIdc = 0;
    int sliceQp = 26;                                                 // SliceQPY
    int disableDeblockingIdc = 0, alphaC0Offset = 0, betaOffset = 0;  // offsets already doubled
    int sliceGroupChangeCycle = 0;

    std::shared_ptr<const PictureParameterSet> pps;
    const SequenceParameterSet* sps = nullptr;  // that of `pps`
    bool mbaff() const { return sps->mbAdaptiveFrameField && !fieldPic; }
    int picHeightInMbs() const { return sps->heightInMbs() / (fieldPic ? 2 : 1); }
};

// Parses up to the slice data. Throws BadSyntax, and NotSupported for SP and SI slices and 4:4:4.
SliceHeader parseSliceHeader(BitReader& bits, const NalUnit& nal, ParameterSetStore& parameterSets);

}  // namespace vekdec::h264
