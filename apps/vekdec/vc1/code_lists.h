// The code tables of VC-1 (SMPTE 421M clause 11) as text. A list stands in the order of its symbols 0, 1, 2 ...; a code
// is its bits, or its value in hexadecimal, a slash and its length.
#pragma once

namespace vekdec::vc1 {

// Progressive pictures.
extern const char* const kNorm6;
extern const char* const kDcLuma[2];  // by TRANSDCTAB; symbol 119 is the escape
extern const char* const kDcChroma[2];
extern const char* const kMvData[4];
extern const char* const kCbpI;
extern const char* const kCbpP[4];
extern const char* const kTtMb[3];
extern const char* const kSubBlockPattern[3];

// Field pictures.
extern const char* const kFieldCbp[8];
extern const char* const kFieldMvOne[4];  // one reference field; symbol 71 is the escape
extern const char* const kFieldMvTwo[8];  // two; symbol 125
extern const char* const kFourMvBlocks[4];
extern const char* const kFieldMbMode[8];
extern const char* const kFieldMbModeMixed[8];

// A coding set of AC coefficients. The codes that are not last come by run, within a run by level 1, 2 ..., then those
// that are last in the same way, then the escape.
struct CoefficientCodes {
    const char* levels;      // their number by run, of the codes that are not last
    const char* levelsLast;  // the same of those that are last
    const char* codes;
};
// High rate, low motion, high motion, mid rate of intra blocks, then of inter blocks.
extern const CoefficientCodes kCoefficients[8];

}  // namespace vekdec::vc1
