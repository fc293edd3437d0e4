#include "h264/parameter_sets.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <numeric>

#include "bits/sample_aspect.h"

namespace vekdec::h264 {
namespace {

// Default scaling lists, Tables 7-3 and 7-4, in zigzag order.
constexpr std::array<std::uint8_t, 16> kDefault4x4Intra = {6,  13, 13, 20, 20, 20, 28, 28,
                                                           28, 28, 32, 32, 32, 37, 37, 42};
constexpr std::array<std::uint8_t, 16> kDefault4x4Inter = {10, 14, 14, 20, 20, 20, 24, 24,
                                                           24, 24, 27, 27, 27, 30, 30, 34};
constexpr std::array<std::uint8_t, 64> kDefault8x8Intra = {
    6,  10, 10, 13, 11, 13, 16, 16, 16, 16, 18, 18, 18, 18, 18, 23, 23, 23, 23, 23, 23, 25,
    25, 25, 25, 25, 25, 25, 27, 27, 27, 27, 27, 27, 27, 27, 29, 29, 29, 29, 29, 29, 29, 31,
    31, 31, 31, 31, 31, 33, 33, 33, 33, 33, 36, 36, 36, 36, 38, 38, 38, 40, 40, 42};
constexpr std::array<std::uint8_t, 64> kDefault8x8Inter = {
    9,  13, 13, 15, 13, 15, 17, 17, 17, 17, 19, 19, 19, 19, 19, 21, 21, 21, 21, 21, 21, 22,
    22, 22, 22, 22, 22, 22, 24, 24, 24, 24, 24, 24, 24, 24, 25, 25, 25, 25, 25, 25, 25, 27,
    27, 27, 27, 27, 27, 28, 28, 28, 28, 28, 30, 30, 30, 30, 32, 32, 32, 33, 33, 35};

ScalingLists flatLists() {
    ScalingLists lists;
    for (auto& list : lists.list4x4) list.fill(16);
    for (auto& list : lists.list8x8) list.fill(16);
    return lists;
}

ScalingLists defaultLists() {
    ScalingLists lists;
    for (std::size_t i = 0; i < 6; ++i) lists.list4x4[i] = i < 3 ? kDefault4x4Intra : kDefault4x4Inter;
    lists.list8x8 = {kDefault8x8Intra, kDefault8x8Inter};
    return lists;
}

// scaling_list(), 7.3.2.1.1.1. Returns whether useDefaultScalingMatrixFlag came out.
template <std::size_t n>
bool parseList(BitReader& bits, std::array<std::uint8_t, n>& list) {
    int last = 8, next = 8;
    for (std::size_t j = 0; j < n; ++j) {
        if (next != 0) {
            next = (last + bits.se("delta_scale", -128, 127) + 256) % 256;
            if (j == 0 && next == 0) return true;
        }
        list[j] = static_cast<std::uint8_t>(next == 0 ? last : next);
        last = list[j];
    }
    return false;
}

// The lists of an SPS or PPS. A list that is not present falls back to the one before it of its kind; the first of each
// kind to `fallBack` (rule A: the default lists; rule B: those of the SPS), Table 7-2. 4:4:4 carries six 8x8 lists.
ScalingLists parseScalingMatrix(BitReader& bits, const ScalingLists& fallBack, int lists8x8) {
    const ScalingLists defaults = defaultLists();
    ScalingLists lists = fallBack;
    for (std::size_t i = 0; i < 6; ++i) {
        if (!bits.flag())
            lists.list4x4[i] = i % 3 == 0 ? fallBack.list4x4[i] : lists.list4x4[i - 1];
        else if (parseList(bits, lists.list4x4[i]))
            lists.list4x4[i] = defaults.list4x4[i];
    }
    for (int i = 0; i < lists8x8; ++i) {
        std::array<std::uint8_t, 64> unused;
        auto& list = i < 2 ? lists.list8x8[static_cast<std::size_t>(i)] : unused;
        if (!bits.flag()) continue;  // Intra Y and Inter Y stay at the fall-back
        if (parseList(bits, list) && i < 2) list = defaults.list8x8[static_cast<std::size_t>(i)];
    }
    return lists;
}

bool hasChromaFormat(int profileIdc) {
    constexpr int kProfiles[] = {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135};
    return std::find(std::begin(kProfiles), std::end(kProfiles), profileIdc) != std::end(kProfiles);
}

void skipHrd(BitReader& bits) {
    const int count = bits.ue("cpb_cnt_minus1", 31) + 1;
    bits.u(8);
    for (int i = 0; i < count; ++i) {
        bits.ue();
        bits.ue();
        bits.flag();
    }
    bits.u(20);
}

// vui_parameters(), E.1.1: the bitstream restriction, and what a viewer must know.
void parseVui(BitReader& bits, SequenceParameterSet& sps) {
    if (bits.flag()) {  // aspect_ratio_info
        const unsigned idc = bits.u(8);
        if (idc == 255) {  // Extended_SAR
            sps.sampleAspect.num = static_cast<int>(bits.u(16));
            sps.sampleAspect.den = static_cast<int>(bits.u(16));
        } else {
            sps.sampleAspect = numberedSampleAspect(idc, 16);
        }
    }
    if (bits.flag()) bits.flag();  // overscan
    if (bits.flag()) {             // video_signal_type
        bits.u(3);
        sps.rangeGiven = true;
        sps.fullRange = bits.flag();
        if (bits.flag()) bits.u(24);
    }
    if (bits.flag()) {  // chroma_loc_info
        sps.chromaSampleLocType = bits.ue("chroma_sample_loc_type_top_field", 5);
        bits.ue("chroma_sample_loc_type_bottom_field", 5);
    }
    if (bits.flag()) {  // timing_info: a tick is a field
        const std::uint64_t tick = std::uint64_t{2} * bits.u(32), scale = bits.u(32);
        bits.flag();
        const std::uint64_t common = std::gcd(tick, scale);
        if (tick != 0 && scale != 0 && tick / common <= INT_MAX && scale / common <= INT_MAX)
            sps.frameRate = {static_cast<int>(scale / common), static_cast<int>(tick / common)};
    }
    const bool nalHrd = bits.flag();
    if (nalHrd) skipHrd(bits);
    const bool vclHrd = bits.flag();
    if (vclHrd) skipHrd(bits);
    if (nalHrd || vclHrd) bits.flag();
    bits.flag();  // pic_struct_present_flag
    if (!bits.flag()) return;
    bits.flag();
    for (int i = 0; i < 4; ++i) bits.ue();
    sps.maxNumReorderFrames = bits.ue("max_num_reorder_frames", 16);
    sps.maxDecFrameBuffering = bits.ue("max_dec_frame_buffering", 16);
    sps.bitstreamRestriction = true;
}

}  // namespace

SequenceParameterSet parseSequenceParameterSet(BitReader& bits) {
    SequenceParameterSet sps;
    sps.scaling = flatLists();
    sps.profileIdc = static_cast<int>(bits.u(8));
    sps.constraintFlags = static_cast<int>(bits.u(8));
    sps.levelIdc = static_cast<int>(bits.u(8));
    sps.id = bits.ue("seq_parameter_set_id", 31);
    if (hasChromaFormat(sps.profileIdc)) {
        sps.chromaFormatIdc = bits.ue("chroma_format_idc", 3);
        if (sps.chromaFormatIdc == 3) sps.separateColourPlanes = bits.flag();
        sps.bitDepthLuma = 8 + bits.ue("bit_depth_luma_minus8", 6);
        sps.bitDepthChroma = 8 + bits.ue("bit_depth_chroma_minus8", 6);
        sps.losslessQpprime = bits.flag();
        sps.scalingMatrixPresent = bits.flag();
        if (sps.scalingMatrixPresent)
            sps.scaling = parseScalingMatrix(bits, defaultLists(), sps.chromaFormatIdc == 3 ? 6 : 2);
    }
    sps.log2MaxFrameNum = 4 + bits.ue("log2_max_frame_num_minus4", 12);
    sps.pocType = bits.ue("pic_order_cnt_type", 2);
    if (sps.pocType == 0) {
        sps.log2MaxPocLsb = 4 + bits.ue("log2_max_pic_order_cnt_lsb_minus4", 12);
    } else if (sps.pocType == 1) {
        sps.deltaPicOrderAlwaysZero = bits.flag();
        sps.offsetForNonRefPic = bits.se();
        sps.offsetForTopToBottomField = bits.se();
        sps.offsetForRefFrame.resize(static_cast<std::size_t>(bits.ue("num_ref_frames_in_pic_order_cnt_cycle", 255)));
        for (auto& offset : sps.offsetForRefFrame) offset = bits.se();
    }
    sps.maxNumRefFrames = bits.ue("max_num_ref_frames", 16);
    sps.gapsInFrameNumAllowed = bits.flag();
    constexpr unsigned kMostMbs = 1055;  // a side of 16,880 samples, the largest that level 6.2 allows
    sps.widthInMbs = bits.ue("pic_width_in_mbs_minus1", kMostMbs - 1) + 1;
    sps.heightInMapUnits = bits.ue("pic_height_in_map_units_minus1", kMostMbs - 1) + 1;
    sps.frameMbsOnly = bits.flag();
    if (!sps.frameMbsOnly) sps.mbAdaptiveFrameField = bits.flag();
    constexpr int kMostMbsPerFrame = 139264;  // MaxFS of level 6.2
    if (sps.widthInMbs * sps.heightInMbs() > kMostMbsPerFrame)
        throw BadSyntax("the frame has more macroblocks than any level allows");
    sps.direct8x8Inference = bits.flag();
    if (bits.flag()) {  // frame_cropping_flag
        const int unitX = sps.chromaFormatIdc == 1 || sps.chromaFormatIdc == 2 ? 2 : 1;
        const int unitY = (sps.chromaFormatIdc == 1 ? 2 : 1) * (sps.frameMbsOnly ? 1 : 2);
        const auto crop = [&](int unit) { return bits.ue("frame_crop_offset", 16384) * unit; };
        sps.cropLeft = crop(unitX);
        sps.cropRight = crop(unitX);
        sps.cropTop = crop(unitY);
        sps.cropBottom = crop(unitY);
        if (sps.cropLeft + sps.cropRight >= 16 * sps.widthInMbs ||
            sps.cropTop + sps.cropBottom >= 16 * sps.heightInMbs())
            throw BadSyntax("the cropping leaves nothing of the frame");
    }
    if (bits.flag()) {
        // Many streams end inside a broken VUI; what is needed of it is optional.
        try {
            parseVui(bits, sps);
        } catch (const BadSyntax&) {
            sps.bitstreamRestriction = false;
            sps.maxNumReorderFrames = sps.maxDecFrameBuffering = -1;
        }
    }
    return sps;
}

PictureParameterSet parsePictureParameterSet(BitReader& bits, const SequenceParameterSets& spsById) {
    PictureParameterSet pps;
    pps.id = bits.ue("pic_parameter_set_id", 255);
    const auto& sps = pps.sps = spsById[static_cast<std::size_t>(bits.ue("seq_parameter_set_id", 31))];
    if (sps == nullptr)
        throw BadSyntax("picture parameter set " + std::to_string(pps.id) +
                        " names a sequence parameter set that did not come");
    pps.entropyCodingMode = bits.flag();
    pps.bottomFieldPicOrderInFramePresent = bits.flag();
    pps.numSliceGroups = bits.ue("num_slice_groups_minus1", 7) + 1;
    if (pps.numSliceGroups > 1) {
        const unsigned mapUnits = static_cast<unsigned>(sps->widthInMbs * sps->heightInMapUnits);
        pps.sliceGroupMapType = bits.ue("slice_group_map_type", 6);
        if (pps.sliceGroupMapType == 0) {
            for (int i = 0; i < pps.numSliceGroups; ++i)
                pps.runLength[static_cast<std::size_t>(i)] = bits.ue("run_length_minus1", mapUnits - 1) + 1;
        } else if (pps.sliceGroupMapType == 2) {
            for (std::size_t i = 0; i + 1 < static_cast<std::size_t>(pps.numSliceGroups); ++i) {
                pps.topLeft[i] = bits.ue("top_left", mapUnits - 1);
                pps.bottomRight[i] = bits.ue("bottom_right", mapUnits - 1);
                if (pps.topLeft[i] > pps.bottomRight[i] ||
                    pps.topLeft[i] % sps->widthInMbs > pps.bottomRight[i] % sps->widthInMbs)
                    throw BadSyntax("a slice group rectangle ends before it begins");
            }
        } else if (pps.sliceGroupMapType >= 3 && pps.sliceGroupMapType <= 5) {
            if (pps.numSliceGroups != 2) throw BadSyntax("slice group map types 3 to 5 take two slice groups");
            pps.sliceGroupChangeDirection = bits.flag();
            pps.sliceGroupChangeRate = bits.ue("slice_group_change_rate_minus1", mapUnits - 1) + 1;
        } else if (pps.sliceGroupMapType == 6) {
            const unsigned count = static_cast<unsigned>(bits.ue("pic_size_in_map_units_minus1", mapUnits - 1)) + 1;
            if (count != mapUnits) throw BadSyntax("the slice group map is not of the picture's size");
            const int n = pps.numSliceGroups > 4 ? 3 : pps.numSliceGroups > 2 ? 2 : 1;
            pps.sliceGroupId.resize(count);
            for (auto& group : pps.sliceGroupId) {
                group = static_cast<std::uint8_t>(bits.u(n));
                if (group >= pps.numSliceGroups)
                    throw BadSyntax("a macroblock lies in a slice group that does not exist");
            }
        }
    }
    for (auto& count : pps.numRefIdxDefault) count = bits.ue("num_ref_idx_default_active_minus1", 31) + 1;
    pps.weightedPred = bits.flag();
    pps.weightedBipredIdc = static_cast<int>(bits.u(2));
    if (pps.weightedBipredIdc == 3) throw BadSyntax("weighted_bipred_idc is 3");
    const int qpBdOffset = 6 * (sps->bitDepthLuma - 8);
    pps.picInitQp = 26 + bits.se("pic_init_qp_minus26", -26 - qpBdOffset, 25);
    pps.picInitQs = 26 + bits.se("pic_init_qs_minus26", -26, 25);
    pps.chromaQpIndexOffset.fill(bits.se("chroma_qp_index_offset", -12, 12));
    pps.deblockingControlPresent = bits.flag();
    pps.constrainedIntraPred = bits.flag();
    pps.redundantPicCntPresent = bits.flag();
    pps.scaling = sps->scaling;
    if (bits.moreData()) {
        pps.transform8x8Mode = bits.flag();
        pps.scalingMatrixPresent = bits.flag();
        if (pps.scalingMatrixPresent) {
            const int lists8x8 = pps.transform8x8Mode ? (sps->chromaFormatIdc == 3 ? 6 : 2) : 0;
            pps.scaling = parseScalingMatrix(bits, sps->scalingMatrixPresent ? sps->scaling : defaultLists(), lists8x8);
        }
        pps.chromaQpIndexOffset[1] = bits.se("second_chroma_qp_index_offset", -12, 12);
    }
    return pps;
}

}  // namespace vekdec::h264
