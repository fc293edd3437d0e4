// The macroblock layer's syntax elements in CABAC: binarizations (H.264 9.3.2) and what their contexts ask of the
// neighbours (9.3.3.1).
#pragma once

#include <optional>
#include <vector>

#include "h264/cabac_residual.h"
#include "h264/motion_vector_prediction.h"

namespace vekdec::h264 {

class CabacSyntax {
  public:
    // Begins at the cabac_alignment_one_bits.
    void beginSlice(BitReader& bits, const SliceContext& context);
    // The macroblock is blank but for its kind (frame or field) and address; its neighbours are found. In an MBAFF pair
    // it may begin once more as a macroblock of the other kind.
    void beginMacroblock(const CurrentMacroblock& current, const Neighbours& neighbours);
    // Throws BadSyntax where the data ended inside of it.
    void finishMacroblock();
    // To be asked behind each macroblock.
    bool endOfSlice();

    bool mbSkipFlag();
    bool mbFieldDecodingFlag();
    // The flag of an MBAFF pair whose top macroblock is skipped comes before the bottom one: it is read here, if that
    // is not skipped too.
    std::optional<bool> fieldFlagBehindSkippedTop();

    // mb_type of Tables 7-11, 7-13 and 7-14; intra types stand behind those of P and B slices. Not checked.
    unsigned mbType();
    int subMbType();
    bool transformSize8x8Flag();
    // prev_intra4x4_pred_mode_flag and rem_intra4x4_pred_mode, or those of 8x8 blocks.
    int intraPredMode(int predicted);
    int intraChromaPredMode();
    // Of a macroblock whose type is set.
    int codedBlockPattern();
    int mbQpDelta(int least, int most);

    // Before reference indices and vectors: what lies around the macroblock, in `lists` lists.
    void beginMotion(const MotionCache& motion, int lists);
    // B_Skip or B_Direct_16x16; or quadrants with direct prediction, as bits.
    void setDirect() { record_->direct = kDirectMacroblock; }
    void setDirect(unsigned quadrants) { record_->direct = static_cast<std::uint8_t>(quadrants); }
    // Of the partition of w x h at x, y, in units of 4 samples. There are `count` references, two or more.
    int refIdx(int list, int x, int y, int w, int h, int count);
    MotionVectorDifference mvd(int list, int x, int y, int w, int h);

    // Where pcm samples are read from, and what follows them.
    BitReader& beginPcm();
    void endPcm();

    template <typename Coeff>
    Coeff* residual(Residual<Coeff>& residual) {
        const Neighbours& n = *neighbours_;
        const CodedBlocks missing = mb_->intra() ? CodedBlocks::all() : CodedBlocks{};
        const auto of = [&](const Macroblock* mb) { return mb == nullptr ? missing : recordOf(mb).coded; };
        const CodedAround around{of(n.above), {of(n.left[0]), of(n.left[1])}, n.rows};
        return parseCabacResidual(engine_, contexts_, around, context_->sps->chromaFormatIdc, *mb_, record_->coded,
                                  residual);
    }

  private:
    static constexpr std::uint8_t kDirectMacroblock = 0x1f;

    // |mvd|, up to 127: sums above 32 are all one.
    struct Magnitude {
        std::uint8_t x = 0, y = 0;
    };
    // What contexts ask of a neighbour beyond its Macroblock.
    struct Record {
        CodedBlocks coded;
        std::uint8_t direct = 0;                                            // quadrants, or kDirectMacroblock
        std::array<std::array<Magnitude, 4>, 2> lowerRow{}, rightColumn{};  // of 4x4 blocks, by list
    };

    bool bin(int context) { return engine_.decide(contexts_[static_cast<std::size_t>(context)]); }
    const Record& recordOf(const Macroblock* mb) const {
        return records_[static_cast<std::size_t>(mb - context_->mbs)];
    }
    static const Macroblock* leftOf(const Neighbours& n) { return n.leftOf(n.rows->luma[0]); }
    // condTermFlagA + condTermFlagB of a condition that does not hold where there is no macroblock.
    template <typename Condition>
    int around(Condition condition) const {
        const Macroblock *a = leftOf(*neighbours_), *b = neighbours_->above;
        return (a != nullptr && condition(*a)) + (b != nullptr && condition(*b));
    }
    bool skipFlag(const Neighbours& neighbours);
    unsigned intraType(int context, bool intraSlice);
    void takeMagnitudes(int list);
    std::uint32_t mvdComponent(int context, int sum, std::uint8_t& magnitude);

    CabacEngine engine_;
    CabacContexts contexts_{};
    BitReader* bits_ = nullptr;
    const SliceContext* context_ = nullptr;
    SliceType type_ = SliceType::I;
    std::size_t end_ = 0;                           // of the payload, in bits
    std::vector<Record> records_;                   // by macroblock address
    bool qpDeltaBefore_ = false, qpDelta_ = false;  // mb_qp_delta of the macroblock before and of this one is not 0
    std::optional<bool> bottomSkipped_;             // mb_skip_flag read ahead of the bottom macroblock

    // The current macroblock.
    const CurrentMacroblock* current_ = nullptr;
    Macroblock* mb_ = nullptr;
    const Neighbours* neighbours_ = nullptr;
    Record* record_ = nullptr;
    int motionLists_ = 0;  // beginMotion() was called for
    Magnitude magnitudes_[2][5 * MotionCache::kStep];
    std::uint64_t refsAboveZero_[2] = {};  // by the cache's places: not direct and refIdx > 0
};

}  // namespace vekdec::h264
