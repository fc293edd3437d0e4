// Quantization of the transform coefficients (SMPTE 421M 8.1.3). The definition.
#ifndef VEKVC_VC1_QUANTIZE_PLAIN_H
#define VEKVC_VC1_QUANTIZE_PLAIN_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

// What a macroblock's quantizer scale means.
struct Vc1Quantizer {
    int quant;   // 1 to 31
    int step;    // between two reconstruction values, 2 to 63 (double_quant)
    int dcStep;  // of the DC of intra blocks, 2 to 21

    Vc1Quantizer(Vek32s theQuant, Vek32s halfStep)
        : quant(theQuant),
          step(2 * theQuant + (halfStep & 1)),
          dcStep(theQuant <= 2   ? 2 * theQuant
                 : theQuant <= 4 ? 8
                                 : theQuant / 2 + 6) {}
};

}  // namespace vekvc

namespace vekvc::plain {

// Levels to coefficients; results keep their low 16 bits.
template <bool intra, bool uniform>
void dequantizeVc1(MutableBlock<Vek16s> block, VekiSize size, const Vc1Quantizer& q) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int level = block(x, y);
            const int sign = (level > 0) - (level < 0);
            if (intra && x == 0 && y == 0)
                block.put(x, y, wrap16(level * q.dcStep));
            else
                block.put(x, y, wrap16(level * q.step + (uniform ? 0 : sign * q.quant)));
        }
}

// Coefficients to levels; the number of levels other than 0 (intra: the DC is not counted) is the result. The largest
// magnitude, (32768 + 1) / 2, fits.
template <bool intra, bool uniform>
Vek32s quantizeVc1(MutableBlock<Vek16s> block, VekiSize size, const Vc1Quantizer& q, int offset) {
    Vek32s count = 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int coefficient = block(x, y);
            const auto c = static_cast<int>(magnitude(coefficient));
            const bool dc = intra && x == 0 && y == 0;
            int level = 0;
            if (dc) {
                level = (c + q.dcStep / 2) / q.dcStep;
            } else {
                const int scaled = c + offset - (uniform ? 0 : q.quant);
                level = scaled < 0 ? 0 : scaled / q.step;
                count += level != 0;
            }
            block.put(x, y, static_cast<Vek16s>(coefficient < 0 ? -level : level));
        }
    return count;
}

}  // namespace vekvc::plain

#endif
