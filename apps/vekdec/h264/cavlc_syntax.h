// The macroblock layer's syntax elements in CAVLC: Exp-Golomb codes and flags (H.264 9.1), and the residual of 9.2.
#pragma once

#include <cstring>
#include <optional>

#include "bits/bit_reader.h"
#include "h264/cavlc_residual.h"
#include "h264/motion_vector_prediction.h"

namespace vekdec::h264 {

// MacroblockParser reads the slice data through this interface; CabacSyntax has the same, and its comments hold for
// both.
class CavlcSyntax {
  public:
    void beginSlice(BitReader& bits, const SliceContext& context) {
        bits_ = &bits;
        context_ = &context;
        skipRun_ = -1;
    }
    void beginMacroblock(const CurrentMacroblock& current, const Neighbours& neighbours) {
        mb_ = current.mb;
        neighbours_ = &neighbours;
    }
    void finishMacroblock() {
        if (bits_->beyondEnd()) throw BadSyntax("the data ends inside a macroblock");
    }
    bool endOfSlice() { return skipRun_ <= 0 && !bits_->moreData(); }

    bool mbSkipFlag() {
        if (skipRun_ < 0) skipRun_ = bits_->ue("mb_skip_run", static_cast<unsigned>(context_->mbCount));
        return skipRun_-- > 0;
    }
    bool mbFieldDecodingFlag() { return bits_->flag(); }
    std::optional<bool> fieldFlagBehindSkippedTop() {
        if (skipRun_ > 0 || !bits_->moreData()) return {};
        return bits_->flag();
    }

    unsigned mbType() { return bits_->ue(); }
    int subMbType() { return bits_->ue("sub_mb_type", context_->slice->header.type == SliceType::B ? 12 : 3); }
    bool transformSize8x8Flag() { return bits_->flag(); }
    int intraPredMode(int predicted) {
        if (bits_->flag()) return predicted;
        const int rem = static_cast<int>(bits_->u(3));
        return rem < predicted ? rem : rem + 1;
    }
    int intraChromaPredMode() { return bits_->ue("intra_chroma_pred_mode", 3); }
    int codedBlockPattern();
    int mbQpDelta(int least, int most) { return bits_->se("mb_qp_delta", least, most); }

    void beginMotion(const MotionCache&, int) {}
    void setDirect() {}
    void setDirect(unsigned) {}
    int refIdx(int /*list*/, int /*x*/, int /*y*/, int /*w*/, int /*h*/, int count) {  // te(v)
        return count == 2 ? !bits_->flag() : bits_->ue("ref_idx", static_cast<unsigned>(count - 1));
    }
    MotionVectorDifference mvd(int /*list*/, int /*x*/, int /*y*/, int /*w*/, int /*h*/) {
        const auto x = static_cast<std::uint32_t>(bits_->se());
        return {x, static_cast<std::uint32_t>(bits_->se())};
    }

    BitReader& beginPcm() {
        while (bits_->position() % 8 != 0) bits_->flag();
        return *bits_;
    }
    void endPcm() {
        std::memset(mb_->totalCoeff, 16, sizeof mb_->totalCoeff);
        std::memset(mb_->totalCoeffC, 16, sizeof mb_->totalCoeffC);
    }

    template <typename Coeff>
    Coeff* residual(Residual<Coeff>& residual) {
        return parseCavlcResidual(*bits_, tables_, *neighbours_, context_->sps->chromaFormatIdc, *mb_, residual);
    }

  private:
    CavlcTables tables_;
    BitReader* bits_ = nullptr;
    const SliceContext* context_ = nullptr;
    const Neighbours* neighbours_ = nullptr;
    Macroblock* mb_ = nullptr;
    int skipRun_ = -1;  // skipped macroblocks before the next one; -1: mb_skip_run is still to be read
};

}  // namespace vekdec::h264
