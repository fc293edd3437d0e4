// Prediction of DC and AC coefficients: the choice of the neighbour (ISO 14496-2 7.4.3).
#pragma once

#include "h263/intra_values.h"

namespace vekdec::mpeg4 {

// Which macroblocks beside the current one are intra and of the same packet, and their quantizers.
struct IntraNeighbours {
    struct Macroblock {
        bool usable = false;
        int quantizer = 1;
    } left, above, aboveLeft;
};

struct IntraPredictor {
    const Vek16s* values;  // as vekiPredictIntra_MPEG4_16s_C1I takes them
    int quantizer;
    bool fromAbove;
};

// For block `k` of the macroblock, whose own quantizer is `quantizer`.
IntraPredictor intraPredictor(h263::IntraStore& store, int mbX, int mbY, int k, const IntraNeighbours& beside,
                              int quantizer);

}  // namespace vekdec::mpeg4
