#include "h264/slice_header.h"

namespace vekdec::h264 {
namespace {

// ref_pic_list_modification(), 7.3.3.1.
void parseRefListModification(BitReader& bits, SliceHeader& slice) {
    const int lists = slice.type == SliceType::B ? 2 : slice.type == SliceType::P ? 1 : 0;
    const unsigned maxPicNum = (1u << slice.sps->log2MaxFrameNum) * (slice.fieldPic ? 2 : 1);
    for (std::size_t list = 0; list < static_cast<std::size_t>(lists); ++list) {
        if (!bits.flag()) continue;
        for (;;) {
            const int idc = bits.ue("modification_of_pic_nums_idc", 3);
            if (idc == 3) break;
            if (slice.refListModification[list].size() > 66) throw BadSyntax("too many reference list modifications");
            if (idc == 2)
                slice.refListModification[list].push_back(
                    {idc, static_cast<unsigned>(bits.ue("long_term_pic_num", 31))});
            else
                slice.refListModification[list].push_back(
                    {idc, static_cast<unsigned>(bits.ue("abs_diff_pic_num_minus1", maxPicNum - 1)) + 1});
        }
    }
}

// pred_weight_table(), 7.3.3.2; what carries no flag gets the default weight.
void parsePredWeightTable(BitReader& bits, SliceHeader& slice) {
    slice.lumaLog2WeightDenom = bits.ue("luma_log2_weight_denom", 7);
    if (slice.sps->chromaFormatIdc != 0) slice.chromaLog2WeightDenom = bits.ue("chroma_log2_weight_denom", 7);
    for (std::size_t list = 0; list < (slice.type == SliceType::B ? 2u : 1u); ++list)
        for (std::size_t i = 0; i < static_cast<std::size_t>(slice.numRefIdxActive[list]); ++i) {
            Weights& w = slice.weights[list][i];
            w[0] = {1 << slice.lumaLog2WeightDenom, 0};
            w[1] = w[2] = {1 << slice.chromaLog2WeightDenom, 0};
            const auto read = [&](std::size_t component) {
                w[component].weight = bits.se("weight", -128, 127);
                w[component].offset = bits.se("weight offset", -128, 127);
            };
            if (bits.flag()) read(0);
            if (slice.sps->chromaFormatIdc != 0 && bits.flag()) {
                read(1);
                read(2);
            }
        }
}

// dec_ref_pic_marking(), 7.3.3.3.
void parseDecRefPicMarking(BitReader& bits, SliceHeader& slice) {
    if (slice.idr) {
        slice.noOutputOfPriorPics = bits.flag();
        slice.longTermReference = bits.flag();
        return;
    }
    slice.adaptiveRefPicMarking = bits.flag();
    if (!slice.adaptiveRefPicMarking) return;
    const unsigned maxPicNum = (1u << slice.sps->log2MaxFrameNum) * 2;
    for (;;) {
        MemoryManagement m{bits.ue("memory_management_control_operation", 6)};
        if (m.operation == 0) break;
        if (slice.memoryManagement.size() > 66) throw BadSyntax("too many memory management operations");
        if (m.operation == 1 || m.operation == 3)
            m.differenceOfPicNums = bits.ue("difference_of_pic_nums_minus1", maxPicNum - 1) + 1;
        if (m.operation == 2) m.longTermPicNum = bits.ue("long_term_pic_num", 31);
        if (m.operation == 3 || m.operation == 6) m.longTermFrameIdx = bits.ue("long_term_frame_idx", 15);
        if (m.operation == 4) m.maxLongTermFrameIdxPlus1 = bits.ue("max_long_term_frame_idx_plus1", 16);
        slice.memoryManagement.push_back(m);
    }
}

int ceilLog2(int x) {
    int n = 0;
    while ((1 << n) < x) ++n;
    return n;
}

}  // namespace

SliceHeader parseSliceHeader(BitReader& bits, const NalUnit& nal, ParameterSetStore& parameterSets) {
    SliceHeader slice;
    slice.nalRefIdc = nal.refIdc;
    slice.idr = nal.type == NalUnitType::IdrSlice;
    slice.firstMbInSlice = bits.ue("first_mb_in_slice", 1u << 20);
    const int type = bits.ue("slice_type", 9) % 5;
    slice.pps = parameterSets.picture(bits.ue("pic_parameter_set_id", 255));
    slice.sps = slice.pps->sps.get();
    const SequenceParameterSet& sps = *slice.sps;
    const PictureParameterSet& pps = *slice.pps;
    if (type > 2) throw NotSupported(type == 3 ? "H.264 with SP slices" : "H.264 with SI slices");
    if (sps.chromaFormatIdc == 3)
        throw NotSupported(sps.separateColourPlanes ? "H.264 with 4:4:4 chroma in separate planes"
                                                    : "H.264 with 4:4:4 chroma");
    slice.type = static_cast<SliceType>(type);
    if (slice.idr && slice.type != SliceType::I) throw BadSyntax("an IDR picture holds a slice that is not intra");
    slice.frameNum = static_cast<int>(bits.u(sps.log2MaxFrameNum));
    if (!sps.frameMbsOnly) {
        slice.fieldPic = bits.flag();
        if (slice.fieldPic) slice.bottomField = bits.flag();
    }
    const int mbs = sps.widthInMbs * slice.picHeightInMbs() / (slice.mbaff() ? 2 : 1);
    if (slice.firstMbInSlice >= mbs) throw BadSyntax("first_mb_in_slice lies outside the picture");
    if (slice.idr) slice.idrPicId = bits.ue("idr_pic_id", 65535);
    if (sps.pocType == 0) {
        slice.pocLsb = static_cast<int>(bits.u(sps.log2MaxPocLsb));
        if (pps.bottomFieldPicOrderInFramePresent && !slice.fieldPic) slice.deltaPocBottom = bits.se();
    } else if (sps.pocType == 1 && !sps.deltaPicOrderAlwaysZero) {
        slice.deltaPoc[0] = bits.se();
        if (pps.bottomFieldPicOrderInFramePresent && !slice.fieldPic) slice.deltaPoc[1] = bits.se();
    }
    if (pps.redundantPicCntPresent) slice.redundantPicCnt = bits.ue("redundant_pic_cnt", 127);
    if (slice.type == SliceType::B) slice.directSpatialMvPred = bits.flag();
    if (slice.type != SliceType::I) {
        slice.numRefIdxActive = {pps.numRefIdxDefault[0], slice.type == SliceType::B ? pps.numRefIdxDefault[1] : 0};
        const unsigned most = slice.fieldPic ? 31 : 15;
        if (bits.flag()) {  // num_ref_idx_active_override_flag
            slice.numRefIdxActive[0] = bits.ue("num_ref_idx_l0_active_minus1", most) + 1;
            if (slice.type == SliceType::B)
                slice.numRefIdxActive[1] = bits.ue("num_ref_idx_l1_active_minus1", most) + 1;
        }
        for (const int count : slice.numRefIdxActive)
            if (count > static_cast<int>(most) + 1) throw BadSyntax("more reference indices than a frame allows");
    }
    parseRefListModification(bits, slice);
    if ((pps.weightedPred && slice.type == SliceType::P) || (pps.weightedBipredIdc == 1 && slice.type == SliceType::B))
        parsePredWeightTable(bits, slice);
    if (nal.refIdc != 0) parseDecRefPicMarking(bits, slice);
    if (pps.entropyCodingMode && slice.type != SliceType::I) slice.cabacInitIdc = bits.ue("cabac_init_idc", 2);
    slice.sliceQp =
        pps.picInitQp + bits.se("slice_qp_delta", -6 * (sps.bitDepthLuma - 8) - pps.picInitQp, 51 - pps.picInitQp);
    if (pps.deblockingControlPresent) {
        slice.disableDeblockingIdc = bits.ue("disable_deblocking_filter_idc", 2);
        if (slice.disableDeblockingIdc != 1) {
            slice.alphaC0Offset = 2 * bits.se("slice_alpha_c0_offset_div2", -6, 6);
            slice.betaOffset = 2 * bits.se("slice_beta_offset_div2", -6, 6);
        }
    }
    if (pps.numSliceGroups > 1 && pps.sliceGroupMapType >= 3 && pps.sliceGroupMapType <= 5) {
        const int units = sps.widthInMbs * sps.heightInMapUnits;
        const int n = ceilLog2((units + pps.sliceGroupChangeRate - 1) / pps.sliceGroupChangeRate + 1);
        slice.sliceGroupChangeCycle = static_cast<int>(bits.u(n));
    }
    return slice;
}

}  // namespace vekdec::h264
