// Picture, GOB and slice headers of H.263 (5.1, 5.2, Annex K).
#pragma once

#include "bits/byte_reader.h"
#include "frames/plane.h"

namespace vekdec::h263 {

// What a picture header without UFEP leaves as it was.
struct Modes {
    int width = 0, height = 0;
    bool unrestrictedVectors = false;  // Annex D
    bool extendedVectorCodes = false;  // D.2 with PLUSPTYPE
    bool overlapped = false;           // Annex F
    bool advancedIntra = false;        // Annex I
    bool deblocking = false;           // Annex J
    bool slices = false;               // Annex K
    bool alternativeInterVlc = false;  // Annex S
    bool modifiedQuantizer = false;    // Annex T
    bool customClock = false;
    vekapp::Rational sampleAspect = {12, 11}, rate = {30000, 1001};
};

struct PictureHeader : Modes {
    bool inter = false;
    int rounding = 0;
    int quantizer = 1;
    int firstAddress = 0;  // with slices

    int widthInMbs() const { return (width + 15) / 16; }
    int heightInMbs() const { return (height + 15) / 16; }
    int mbCount() const { return widthInMbs() * heightInMbs(); }
    int rowsPerGob() const { return height <= 400 ? 1 : height <= 800 ? 2 : 4; }
    vekapp::PictureFormat format() const { return {16 * widthInMbs(), 16 * heightInMbs(), vekapp::Chroma::C420, 8}; }
};

// The position of the next picture start code, which is byte aligned, at or behind `from`, or the stream's end.
std::size_t findPictureStart(std::span<const std::uint8_t> stream, std::size_t from);

// The bits behind the start code. Throws BadSyntax, or NotSupported with the annex's name.
PictureHeader parsePictureHeader(ByteReader& bits, const Modes& before);

struct SegmentHeader {
    int address = 0;  // of the first macroblock
    int quantizer = 1;
    bool endOfPicture = false;
};

// The bits behind the 16 zeros and the 1 of a GOB or slice start code.
SegmentHeader parseSegmentHeader(ByteReader& bits, const PictureHeader& picture);

}  // namespace vekdec::h263
