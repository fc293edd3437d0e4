// The MPEG-1/MPEG-2 code tables as decode and encode tables of the library. They live as long as the program.
#ifndef VEKVC_TESTS_MPEG2_H
#define VEKVC_TESTS_MPEG2_H

#include <cstdlib>

#include "bit_writer.h"
#include "mpeg2_vlc_tables.h"
#include "vekvc.h"

namespace vekvc_test {

struct Mpeg2Tables {
    VekVlcTable_32s* dcSize = nullptr;
    VekVlcTable_32s* coefficients[2] = {};  // Tables B.14 and B.15
    VekRLEncodeTable* encode[2] = {};
    Vek32s dcSizeCodes[24] = {};

    Mpeg2Tables() {
        using namespace vekvc_tables;
        bool good = vekiHuffmanTableInitAlloc_32s(kDcSizeLuminanceList.data(), &dcSize) == vekStsOk;
        const RunLevelList* lists[2] = {&kDctCoefficientsZeroList, &kDctCoefficientsOneList};
        for (int i = 0; i < 2; ++i) {
            good = good && vekiHuffmanRunLevelTableInitAlloc_32s(lists[i]->data(), &coefficients[i]) == vekStsOk;
            good = good && vekiCreateRLEncodeTable(lists[i]->data(), &encode[i]) == vekStsOk;
        }
        if (!good) std::abort();
        for (std::size_t size = 0; size < 12; ++size) {
            dcSizeCodes[2 * size] = codeBits(kDcSizeLuminanceCodes[size]);
            dcSizeCodes[2 * size + 1] = static_cast<Vek32s>(kDcSizeLuminanceCodes[size].size());
        }
    }
};

inline Mpeg2Tables& mpeg2Tables() {
    static Mpeg2Tables tables;
    return tables;
}

struct Zigzag8x8 {
    Vek32s position[64];

    Zigzag8x8() {
        int i = 0;
        for (int d = 0; d < 15; ++d) {
            for (int k = 0; k <= d; ++k) {
                const int y = d % 2 ? k : d - k, x = d - y;
                if (x < 8 && y < 8) position[i++] = 8 * y + x;
            }
        }
    }
};

inline const Vek32s* zigzag8x8() {
    static const Zigzag8x8 scan;
    return scan.position;
}

}  // namespace vekvc_test

#endif
