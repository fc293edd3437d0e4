// Picture headers of VC-1 (SMPTE 421M 7.1, 9.1), bit planes included.
#pragma once

#include "vc1/bit_plane.h"
#include "vc1/sequence.h"

namespace vekdec::vc1 {

enum class PictureType { I, P, B, BI, Skipped };
// FCM.
enum class Coding { Progressive, FrameInterlaced, Fields };
// MVMODE.
enum class MvMode { HalfPelBilinear, OneMv, HalfPel, IntensityCompensation, Mixed };

struct IntensityCompensation {
    int scale = 0, shift = 0;  // LUMSCALE, LUMSHIFT
};

// Which macroblocks have another quantizer than PQUANT (VOPDQUANT, 7.1.1.31).
struct MacroblockQuantizers {
    enum Edge : unsigned { kLeft = 1, kTop = 2, kRight = 4, kBottom = 8 };
    bool present = false;        // DQUANTFRM
    unsigned edges = 0;          // at these the alternative one
    bool inMacroblocks = false;  // each macroblock says
    bool bilevel = false;        // one of the two
    int alternative = 0;         // ALTPQUANT
};

struct PictureHeader {
    // Of the frame.
    PictureType type = PictureType::I;
    Coding coding = Coding::Progressive;
    PictureType fieldType[2] = {PictureType::I, PictureType::I};
    bool topFieldFirst = true, repeatFirstField = false;
    int repeatFrame = 0;
    bool rangeReduced = false;
    bool roundingKnown = false, rounding = false;  // RNDCTRL, in Advanced profile
    int referenceDistance = 0;                     // REFDIST
    int scaleFactor = 128;                         // BFRACTION, in 256ths
    int reducedResolution = 0;                     // RESPIC

    // Of the frame or one of its fields.
    bool secondField = false;
    int pqIndex = 1, pquant = 1;
    bool halfStep = false, uniform = true;
    MacroblockQuantizers quantizers;
    int mvRange = 0;
    MvMode mvMode = MvMode::OneMv;
    bool compensates = false;
    bool compensatesField[2] = {false, false};  // field pictures: top, bottom
    IntensityCompensation compensation[2];      // frames: the first one
    BitPlane mvType, direct, skip, acPrediction, overlap, fieldTransform;
    int mvTable = 0, cbpTable = 0, mbModeTable = 0, fourMvTable = 0;
    bool transformPerMacroblock = false;            // TTMBF is 0
    int transformType = 0;                          // TTFRM: 0 8x8, 1 8x4, 2 4x8, 3 4x4
    int acTable = 0, acTableLuma = 0, dcTable = 0;  // TRANSACFRM, TRANSACFRM2, TRANSDCTAB
    enum class Overlap { None, All, Selected } conditionalOverlap = Overlap::None;
    bool twoReferences = false, sameFieldReference = false;  // field P: NUMREF, REFFIELD
    bool extendedDmvX = false, extendedDmvY = false;         // DMVRANGE

    bool isIntra() const { return type == PictureType::I || type == PictureType::BI; }
    bool halfPel() const { return mvMode == MvMode::HalfPel || mvMode == MvMode::HalfPelBilinear; }
    bool bilinear() const { return mvMode == MvMode::HalfPelBilinear; }
    bool isField() const { return coding == Coding::Fields; }
    bool bottomField() const { return isField() && topFieldFirst == secondField; }
};

// All throw BadSyntax, or NotSupported for pictures that are not decoded.
PictureHeader parseSimpleMainHeader(WordReader& bits, const Sequence& sequence);
PictureHeader parseAdvancedHeader(WordReader& bits, const Sequence& sequence);
// The header of the second field, whose frame-wide part is that of the first.
PictureHeader parseSecondFieldHeader(WordReader& bits, const Sequence& sequence, const PictureHeader& first);

}  // namespace vekdec::vc1
