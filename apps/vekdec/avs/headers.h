// Sequence, picture and slice headers of AVS (GB/T 20090.2 clause 7).
#pragma once

#include <array>
#include <cstdint>

#include "bits/bit_reader.h"
#include "frames/plane.h"

namespace vekdec::avs {

enum StartCode : std::uint8_t {
    kLastSlice = 0xaf,  // the first is 0
    kSequenceHeader = 0xb0,
    kSequenceEnd = 0xb1,
    kUserData = 0xb2,
    kIntraPicture = 0xb3,
    kInterPicture = 0xb6,
};

inline constexpr std::uint8_t kJizhun = 0x20;  // profile_id

struct Sequence {
    int width = 0, height = 0;
    int aspectCode = 0, rateCode = 0;
    bool progressive = true;
    bool lowDelay = false;

    int widthInMbs() const { return (width + 15) / 16; }
    int heightInMbs() const { return progressive ? (height + 15) / 16 : (height + 31) / 32 * 2; }
    vekapp::PictureFormat format() const { return {16 * widthInMbs(), 16 * heightInMbs(), vekapp::Chroma::C420, 8}; }
    vekapp::Rational rate() const;
    vekapp::Rational sampleAspect() const;
};

enum class PictureType : std::uint8_t { I, P, B };

struct PictureHeader {
    PictureType type = PictureType::I;
    int distance = 0;  // picture_distance
    bool progressiveFrame = true;
    bool fields = false;  // picture_structure 0: two fields, one after the other
    bool topFieldFirst = false, repeatFirstField = false;
    bool fixedQp = false;
    int qp = 0;
    bool skipRuns = false;     // skip_mode_flag
    bool nearestOnly = false;  // picture_reference_flag: P macroblocks name no references
    bool loopFilter = false;
    int alphaOffset = 0, betaOffset = 0;
};

// ((a * scale + 16) >> 5) + shift.
struct Weight {
    int lumaScale = 32, lumaShift = 0, chromaScale = 32, chromaShift = 0;
};

inline constexpr int kMostReferences = 4;  // of a P field: four fields

struct SliceHeader {
    bool fixedQp = false;
    int qp = 0;
    bool weighted = false;                        // slice_weighting_flag
    bool weightsSelected = false;                 // mb_weighting_flag: one bit in each macroblock
    std::array<Weight, kMostReferences> weights;  // in the order in which they are sent
};

// How a stream was written before the standard was finished: no marker bit in the header of I pictures, the only slice
// of a picture directly behind its header, without a header of its own.
enum class Syntax : std::uint8_t { Standard, Draft };

// The bits behind the start code and its byte. All throw BadSyntax.
Sequence parseSequenceHeader(BitReader& bits);  // throws NotSupported for what is not 4:2:0 and 8 bits
PictureHeader parsePictureHeader(BitReader& bits, std::uint8_t startCode, const Sequence& sequence, Syntax syntax);
// `references`: of the frame or field, as far as weights are sent for them; 0: no weights are sent.
SliceHeader parseSliceHeader(BitReader& bits, const PictureHeader& picture, int references);

}  // namespace vekdec::avs
