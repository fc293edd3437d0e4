// Macroblocks of P fields (SMPTE 421M 10.3.4).
#include "vc1/picture_decoder.h"

namespace vekdec::vc1 {
namespace {

// The half line between the fields of a frame, in quarter samples of a field.
MotionVector toOtherField(MotionVector v, bool bottom) {
    return {v.x, static_cast<std::int16_t>(v.y + (bottom ? 2 : -2))};
}

}  // namespace

// The field that more of the four vectors refer to decides, and only these count.
void PictureDecoder::setFieldFourMvChroma(Macroblock& mb) const {
    int others = 0;
    for (int k = 0; k < 4; ++k) others += mb.otherField >> k & 1;
    mb.chromaOtherField = others > 2;
    const unsigned uncounted = mb.chromaOtherField ? ~unsigned{mb.otherField} : unsigned{mb.otherField};
    setChromaOf(mb, ~uncounted & 15);
}

void PictureDecoder::predictField(const Macroblock& mb) const {
    const bool bottom = context_.header->bottomField();
    const auto reference = [&](bool other) -> const Reference& {
        const Reference& r = context_.field[(bottom ? 1 : 0) ^ (other ? 1 : 0)];
        if (!r.present()) throw BadSyntax("a prediction from a field that is not there");
        return r;
    };
    const auto predictOne = [&](int k, int size) {
        const bool other = (mb.otherField >> k & 1) != 0;
        predictLuma(context_, reference(other), 16 * x_ + 8 * (k & 1), 16 * y_ + 8 * (k >> 1), size,
                    other ? toOtherField(mb.mv[k], bottom) : mb.mv[k], context_.plane[0]);
    };
    MotionVector chroma = mb.chroma;
    if (mb.kind == MbKind::FourMv) {
        for (int k = 0; k < 4; ++k) predictOne(k, 8);
        chroma = roundedChroma(chroma);
        if (mb.chromaOtherField) chroma = toOtherField(chroma, bottom);
    } else {
        predictOne(0, 16);
        if (mb.chromaOtherField) chroma = toOtherField(chroma, bottom);
        chroma = roundedChroma(chroma);
    }
    predictChroma(context_, reference(mb.chromaOtherField), 8 * x_, 8 * y_, chroma, context_.plane);
}

void PictureDecoder::decodeFieldP(Macroblock& mb) {
    const PictureHeader& header = *context_.header;
    WordReader& bits = *bits_;
    const bool mixed = header.mvMode == MvMode::Mixed;
    const int mode =
        decode(bits, mixed ? tables().fieldMbModeMixed[header.mbModeTable] : tables().fieldMbMode[header.mbModeTable],
               "macroblock mode");
    const auto parsePattern = [&] {
        return patternByBlock(static_cast<unsigned>(decode(bits, tables().fieldCbp[header.cbpTable], "ICBPCY")));
    };
    if (mode < 2) {  // intra; 1: with AC coefficients
        mb.intra = 0x3f;
        parseQuant(mb);
        const bool acPrediction = bits.flag();
        decodeBlocks(mb, mode == 1 ? parsePattern() : 0, acPrediction);
        mb.kind = MbKind::Intra;
        return;
    }
    bool coefficients = false;
    if (mode < 6) {  // one vector: 2 and 4 without, 3 and 5 with a differential; 4 and 5 with coefficients
        const FieldVectorData data = (mode & 1) != 0 ? fieldVectors_.parse(bits) : FieldVectorData{};
        fieldVectors_.decode(bits, x_, y_, FieldVectorDecoder::kWhole, data, mb);
        setVector(mb, mb.mv[0]);
        mb.chromaOtherField = mb.otherField != 0;
        coefficients = mode >= 4;
        mb.kind = MbKind::Inter;
    } else {  // four vectors; 7: with coefficients
        mb.kind = MbKind::FourMv;
        const int told = decode(bits, tables().fourMvBlocks[header.fourMvTable], "4MVBP");
        for (int k = 0; k < 4; ++k) {
            const FieldVectorData data = (told >> (3 - k) & 1) != 0 ? fieldVectors_.parse(bits) : FieldVectorData{};
            fieldVectors_.decode(bits, x_, y_, k, data, mb);
        }
        setFieldFourMvChroma(mb);
        coefficients = mode == 7;
    }
    unsigned pattern = 0;
    if (coefficients) {
        pattern = parsePattern();
        parseQuant(mb);
        parseTransform();
    }
    predictField(mb);
    decodeBlocks(mb, pattern, false);
}

}  // namespace vekdec::vc1
