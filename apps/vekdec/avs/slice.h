// The slice and macroblock layers (GB/T 20090.2 clauses 7 to 9): from bits to samples, one macroblock after the other.
#pragma once

#include <functional>

#include "avs/motion_vectors.h"

namespace vekdec::avs {

class SliceDecoder {
  public:
    // All slices of a frame or field are decoded between two calls; in the context, where they begin is noted.
    void begin(PictureContext& context);
    // The slice whose first row of macroblocks is `row`, from its header on; of a draft's, which has none, from its
    // macroblocks on. Throws BadSyntax where it breaks off; what is decoded stands.
    // Calls finished(endRow) where the rows before that one are over: no slice comes back to them.
    using Finished = std::function<void(int endRow)>;
    void decode(BitReader& bits, int row, const Finished& finished);

  private:
    // How a partition of a B picture is predicted; the numbers are those of 8x8 blocks in the stream.
    enum class Use : std::uint8_t { Direct, Forward, Backward, Symmetric };

    void decodeMacroblocks(int address, const Finished& finished);
    Macroblock& beginMacroblock(int address);
    void skipMacroblock(int address);
    void decodeMacroblock(int address);
    void parseIntraModes(Macroblock& mb);
    void parseMotionP(int type, Macroblock& mb);
    void parseMotionB(int type, Macroblock& mb);
    MotionVector parseVector(Direction direction, const Partition& partition, int ref);
    void setDirect(Macroblock& mb, const Partition& quarter);
    void parseLevels(bool intra, unsigned coded);
    void reconstructIntra(const Macroblock& mb, unsigned coded);
    void reconstructInter(const Macroblock& mb, unsigned coded, bool weighted);

    PictureContext* context_ = nullptr;
    BitReader* bits_ = nullptr;
    VectorPredictor vectors_;
    int nextRow_ = 0;  // no slice has reached it

    // Of the slice.
    SliceHeader slice_;
    int firstRow_ = 0;
    int qp_ = 0;

    // Of the macroblock.
    int x_ = 0, y_ = 0;
    const Macroblock *left_ = nullptr, *above_ = nullptr;  // nullptr: none in the slice
    Vek32u available_ = 0;                                 // samples around it, as the library's exports take them
    Vek32u lumaMode_[4] = {};
    int chromaMode_ = 0;
    alignas(32) Vek16s levels_[6 * 64] = {};
};

}  // namespace vekdec::avs
