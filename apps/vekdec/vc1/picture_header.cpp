#include "vc1/picture_header.h"

#include <string>

#include "vc1/tables.h"

namespace vekdec::vc1 {
namespace {

// Leading zeros before a one, at most `most`; with so many no one follows.
int countZeros(WordReader& bits, int most) {
    int n = 0;
    while (n < most && !bits.flag()) ++n;
    return n;
}

// Table 7 of 7.1.1.6: PQUANT by PQINDEX with the implicit quantizer.
constexpr std::uint8_t kImplicitQuant[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  6,  7,  8,  9,  10, 11, 12,
                                             13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 27, 29, 31};

class HeaderParser {
  public:
    HeaderParser(WordReader& bits, const Sequence& sequence, PictureHeader& header)
        : bits_(bits), seq_(sequence), h_(header) {}

    void simpleMain();
    void advanced();
    void fromQuantizer();

  private:
    void bFraction();
    void panScan();
    void fieldPairTypes();
    void quantizer();
    void motionMode();
    IntensityCompensation compensation();
    void intraPart();
    void interPart();
    void fieldInterPart();
    void afterPlanes();
    void macroblockQuantizers();
    void plane(BitPlane& plane) {
        plane.parse(bits_, seq_.widthInMbs(), h_.isField() ? seq_.fieldHeightInMbs() : seq_.heightInMbs());
    }
    int acIndex() { return countZeros(bits_, 1) == 1 ? 0 : 1 + static_cast<int>(bits_.u(1)); }

    WordReader& bits_;
    const Sequence& seq_;
    PictureHeader& h_;
};

void HeaderParser::simpleMain() {
    if (seq_.frameInterpolation) bits_.flag();  // INTERPFRM
    bits_.u(2);                                 // FRMCNT
    h_.rangeReduced = seq_.rangeReduction && bits_.flag();
    if (bits_.flag())
        h_.type = PictureType::P;
    else
        h_.type = seq_.maxBFrames == 0 || bits_.flag() ? PictureType::I : PictureType::B;
    if (h_.type == PictureType::B) bFraction();
    if (h_.isIntra()) bits_.u(7);  // BF
    quantizer();
    if (seq_.extendedMv) h_.mvRange = decode(bits_, tables().range, "MVRANGE");
    if (seq_.multiResolution && h_.type != PictureType::B && h_.type != PictureType::BI)
        h_.reducedResolution = static_cast<int>(bits_.u(2));
    if (h_.isIntra())
        intraPart();
    else
        interPart();
}

void HeaderParser::advanced() {
    if (seq_.interlace)
        h_.coding = !bits_.flag() ? Coding::Progressive : bits_.flag() ? Coding::Fields : Coding::FrameInterlaced;
    static constexpr PictureType kTypes[] = {PictureType::P, PictureType::B, PictureType::I, PictureType::BI,
                                             PictureType::Skipped};
    if (h_.coding == Coding::Fields) {
        fieldPairTypes();
    } else {
        int type = 0;
        while (type < 4 && bits_.flag()) ++type;
        h_.type = kTypes[type];
    }
    if (seq_.frameCounter) bits_.u(8);
    if (seq_.pulldown) {
        if (!seq_.interlace || seq_.segmentedFrames) {
            h_.repeatFrame = static_cast<int>(bits_.u(2));
        } else {
            h_.topFieldFirst = bits_.flag();
            h_.repeatFirstField = bits_.flag();
        }
    }
    if (seq_.panScan) panScan();
    if (h_.type == PictureType::Skipped) return;
    h_.roundingKnown = true;
    h_.rounding = bits_.flag();
    if (seq_.interlace) bits_.flag();  // UVSAMP
    if (h_.isField()) {
        const bool anchors = h_.fieldType[0] == PictureType::I || h_.fieldType[0] == PictureType::P;
        if (seq_.referenceDistance && anchors) {
            h_.referenceDistance = static_cast<int>(bits_.u(2));
            if (h_.referenceDistance == 3)
                while (h_.referenceDistance < 17 && bits_.flag()) ++h_.referenceDistance;
        }
        if (!anchors) bFraction();
    } else {
        if (seq_.frameInterpolation) bits_.flag();  // INTERPFRM
        if (h_.type == PictureType::B) bFraction();
    }
    fromQuantizer();
}

// From PQINDEX on the fields of a frame have headers of their own.
void HeaderParser::fromQuantizer() {
    quantizer();
    if (seq_.postProcessing) bits_.u(2);  // POSTPROC
    if (h_.coding == Coding::FrameInterlaced && !h_.isIntra())
        throw NotSupported("frame-interlaced P and B pictures of VC-1");
    if (h_.isField() && h_.type == PictureType::B) throw NotSupported("B fields of VC-1");
    if (h_.isIntra()) {
        intraPart();
        return;
    }
    if (h_.isField()) {
        fieldInterPart();
        return;
    }
    if (seq_.extendedMv) h_.mvRange = decode(bits_, tables().range, "MVRANGE");
    interPart();
}

// FPTYPE.
void HeaderParser::fieldPairTypes() {
    using enum PictureType;
    static constexpr PictureType kPairs[8][2] = {{I, I}, {I, P}, {P, I}, {P, P}, {B, B}, {B, BI}, {BI, B}, {BI, BI}};
    const auto& pair = kPairs[bits_.u(3)];
    h_.fieldType[0] = pair[0];
    h_.fieldType[1] = pair[1];
    h_.type = pair[0];
}

void HeaderParser::panScan() {
    if (!bits_.flag()) return;  // PS_PRESENT
    const int windows =
        !seq_.interlace || seq_.segmentedFrames ? 1 + h_.repeatFrame : 2 + (h_.repeatFirstField ? 1 : 0);
    for (int i = 0; i < windows; ++i) {
        bits_.u(32);  // PS_HOFFSET, PS_VOFFSET, PS_WIDTH, PS_HEIGHT
        bits_.u(32);
    }
}

void HeaderParser::bFraction() {
    static constexpr std::uint8_t kNumerator[21] = {1, 1, 2, 1, 3, 1, 2, 3, 4, 1, 5, 1, 2, 3, 4, 5, 6, 1, 3, 5, 7};
    static constexpr std::uint8_t kDenominator[21] = {2, 3, 3, 4, 4, 5, 5, 5, 5, 6, 6, 7, 7, 7, 7, 7, 7, 8, 8, 8, 8};
    static constexpr int kParts[8] = {256, 128, 85, 64, 51, 43, 37, 32};
    const int symbol = decode(bits_, tables().bFraction, "BFRACTION");
    if (symbol == 22 && !seq_.advanced()) {
        h_.type = PictureType::BI;
        return;
    }
    if (symbol > 20) throw BadSyntax("BFRACTION is reserved");
    h_.scaleFactor = kNumerator[symbol] * kParts[kDenominator[symbol] - 1];
}

void HeaderParser::quantizer() {
    h_.pqIndex = static_cast<int>(bits_.u(5));
    if (h_.pqIndex == 0) throw BadSyntax("PQINDEX is 0");
    h_.halfStep = h_.pqIndex <= 8 && bits_.flag();
    const bool told = seq_.quantizer == 1 && bits_.flag();
    h_.pquant = seq_.quantizer == 0 ? kImplicitQuant[h_.pqIndex] : h_.pqIndex;
    h_.uniform = seq_.quantizer == 0 ? h_.pqIndex <= 8 : seq_.quantizer == 1 ? told : seq_.quantizer == 3;
}

void HeaderParser::intraPart() {
    if (seq_.advanced()) {
        if (h_.coding == Coding::FrameInterlaced) plane(h_.fieldTransform);
        plane(h_.acPrediction);
        if (seq_.overlap && h_.pquant <= 8 && bits_.flag()) {  // CONDOVER
            h_.conditionalOverlap = bits_.flag() ? PictureHeader::Overlap::Selected : PictureHeader::Overlap::All;
            if (h_.conditionalOverlap == PictureHeader::Overlap::Selected) plane(h_.overlap);
        }
    }
    h_.acTable = acIndex();
    h_.acTableLuma = acIndex();
    h_.dcTable = static_cast<int>(bits_.u(1));
    if (seq_.advanced() && seq_.dquant != 0) macroblockQuantizers();
}

void HeaderParser::motionMode() {
    using enum MvMode;
    static constexpr MvMode kCoarse[5] = {HalfPelBilinear, OneMv, HalfPel, MvMode::IntensityCompensation, Mixed};
    static constexpr MvMode kFine[5] = {OneMv, Mixed, HalfPel, MvMode::IntensityCompensation, HalfPelBilinear};
    const MvMode(&modes)[5] = h_.pquant > 12 ? kCoarse : kFine;
    h_.mvMode = modes[countZeros(bits_, 4)];
    h_.compensates = h_.mvMode == MvMode::IntensityCompensation;
    if (!h_.compensates) return;
    const int second = countZeros(bits_, 3);  // MVMODE2
    h_.mvMode = modes[second < 3 ? second : 4];
}

IntensityCompensation HeaderParser::compensation() {
    const int scale = static_cast<int>(bits_.u(6)), shift = static_cast<int>(bits_.u(6));
    return {scale, shift};
}

void HeaderParser::interPart() {
    if (h_.type == PictureType::P) {
        motionMode();
        if (h_.compensates) h_.compensation[0] = compensation();
        if (h_.mvMode == MvMode::Mixed) plane(h_.mvType);
    } else {
        h_.mvMode = bits_.flag() ? MvMode::OneMv : MvMode::HalfPelBilinear;
        plane(h_.direct);
    }
    plane(h_.skip);
    h_.mvTable = static_cast<int>(bits_.u(2));
    h_.cbpTable = static_cast<int>(bits_.u(2));
    afterPlanes();
}

void HeaderParser::fieldInterPart() {
    h_.twoReferences = bits_.flag();
    h_.sameFieldReference = !h_.twoReferences && bits_.flag();
    if (seq_.extendedMv) h_.mvRange = decode(bits_, tables().range, "MVRANGE");
    if (seq_.extendedDmv) {
        const int dmv = decode(bits_, tables().range, "DMVRANGE");
        h_.extendedDmvX = (dmv & 1) != 0;
        h_.extendedDmvY = (dmv & 2) != 0;
    }
    motionMode();
    if (h_.compensates) {
        const bool both = bits_.flag(), bottom = !both && bits_.flag();  // INTCOMPFIELD
        for (const int field : {0, 1}) {
            h_.compensatesField[field] = both || bottom == (field == 1);
            if (h_.compensatesField[field]) h_.compensation[field] = compensation();
        }
    }
    h_.mbModeTable = static_cast<int>(bits_.u(3));
    h_.mvTable = static_cast<int>(bits_.u(h_.twoReferences ? 3 : 2));
    h_.cbpTable = static_cast<int>(bits_.u(3));
    if (h_.mvMode == MvMode::Mixed) h_.fourMvTable = static_cast<int>(bits_.u(2));
    afterPlanes();
}

void HeaderParser::afterPlanes() {
    if (seq_.dquant != 0) macroblockQuantizers();
    if (seq_.vsTransform) {
        h_.transformPerMacroblock = !bits_.flag();  // TTMBF
        if (!h_.transformPerMacroblock) h_.transformType = static_cast<int>(bits_.u(2));
    }
    h_.acTable = h_.acTableLuma = acIndex();
    h_.dcTable = static_cast<int>(bits_.u(1));
}

// VOPDQUANT.
void HeaderParser::macroblockQuantizers() {
    using Q = MacroblockQuantizers;
    Q& q = h_.quantizers;
    const auto alternative = [&] {
        const int difference = static_cast<int>(bits_.u(3));  // PQDIFF
        q.alternative = difference == 7 ? static_cast<int>(bits_.u(5)) : h_.pquant + difference + 1;
        if (q.alternative < 1 || q.alternative > 31) throw BadSyntax("ALTPQUANT is " + std::to_string(q.alternative));
    };
    q.present = seq_.dquant == 2 || bits_.flag();
    if (!q.present) return;
    if (seq_.dquant == 2) {
        q.edges = Q::kLeft | Q::kTop | Q::kRight | Q::kBottom;
        alternative();
        return;
    }
    switch (bits_.u(2)) {  // DQPROFILE
        case 0:
            q.edges = Q::kLeft | Q::kTop | Q::kRight | Q::kBottom;
            break;
        case 1: {
            static constexpr unsigned kPairs[4] = {Q::kLeft | Q::kTop, Q::kTop | Q::kRight, Q::kRight | Q::kBottom,
                                                   Q::kBottom | Q::kLeft};
            q.edges = kPairs[bits_.u(2)];
            break;
        }
        case 2:
            q.edges = 1u << bits_.u(2);
            break;
        default:
            q.inMacroblocks = true;
            q.bilevel = bits_.flag();
            if (!q.bilevel) return;
            break;
    }
    alternative();
}

}  // namespace

PictureHeader parseSimpleMainHeader(WordReader& bits, const Sequence& sequence) {
    PictureHeader header;
    HeaderParser(bits, sequence, header).simpleMain();
    return header;
}

PictureHeader parseAdvancedHeader(WordReader& bits, const Sequence& sequence) {
    PictureHeader header;
    HeaderParser(bits, sequence, header).advanced();
    return header;
}

PictureHeader parseSecondFieldHeader(WordReader& bits, const Sequence& sequence, const PictureHeader& first) {
    PictureHeader header;
    header.coding = first.coding;
    header.fieldType[0] = first.fieldType[0];
    header.fieldType[1] = first.fieldType[1];
    header.topFieldFirst = first.topFieldFirst;
    header.roundingKnown = first.roundingKnown;
    header.rounding = first.rounding;
    header.referenceDistance = first.referenceDistance;
    header.scaleFactor = first.scaleFactor;
    header.secondField = true;
    header.type = first.fieldType[1];
    HeaderParser(bits, sequence, header).fromQuantizer();
    return header;
}

}  // namespace vekdec::vc1
