// What intra blocks leave behind for the prediction of coefficients (H.263 Annex I, ISO 14496-2 7.4.3).
#pragma once

#include <vector>

#include "vekvc/types.h"

namespace vekdec::h263 {

// Of one block: its DC, then the rest of its first column and of its first row.
struct IntraValues {
    Vek16s column[8], row[8];
};

class IntraStore {
  public:
    void resize(int widthInMbs) {
        width_ = widthInMbs;
        values_.assign(static_cast<std::size_t>(2 * 6 * widthInMbs), {});
    }
    // Block `k` of the macroblock; two rows of them are kept.
    IntraValues& at(int mbX, int mbY, int k) {
        return values_[static_cast<std::size_t>(((mbY & 1) * width_ + mbX) * 6 + k)];
    }

  private:
    int width_ = 0;
    std::vector<IntraValues> values_;
};

inline void keep(IntraValues& values, const Vek16s (&block)[64]) {
    for (int i = 0; i < 8; ++i) {
        values.column[i] = block[8 * i];
        values.row[i] = block[i];
    }
}

}  // namespace vekdec::h263
