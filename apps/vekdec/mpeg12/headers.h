// Sequence, group and picture headers of MPEG-1 and MPEG-2 (ISO 11172-2 2.4.2, ISO 13818-2 6.2).
#pragma once

#include <array>
#include <cstdint>

#include "bits/word_reader.h"
#include "frames/plane.h"

namespace vekdec::mpeg12 {

enum StartCode : std::uint8_t {
    kPictureStart = 0x00,
    kFirstSlice = 0x01,
    kLastSlice = 0xaf,
    kUserData = 0xb2,
    kSequenceHeader = 0xb3,
    kExtension = 0xb5,
    kSequenceEnd = 0xb7,
    kGroupOfPictures = 0xb8,
};

using Matrix = std::array<Vek16s, 64>;  // raster order

struct Matrices {
    Matrix intra, nonIntra, chromaIntra, chromaNonIntra;
};

struct Sequence {
    int width = 0, height = 0;
    int aspectCode = 0, rateCode = 0, rateN = 0, rateD = 0;
    bool mpeg2 = false;
    bool progressive = true;
    vekapp::Chroma chroma = vekapp::Chroma::C420;
    Matrices matrices;

    int widthInMbs() const { return (width + 15) / 16; }
    int heightInMbs() const { return progressive ? (height + 15) / 16 : (height + 31) / 32 * 2; }
    vekapp::PictureFormat format() const { return {16 * widthInMbs(), 16 * heightInMbs(), chroma, 8}; }
    vekapp::Rational rate() const;
    vekapp::Rational sampleAspect() const;
};

enum class PictureType { None = 0, I = 1, P = 2, B = 3, D = 4 };
enum Structure : int { kTopField = 1, kBottomField = 2, kFrame = 3 };

struct PictureHeader {
    PictureType type = PictureType::None;
    int temporalReference = 0;
    bool fullPel[2] = {};      // MPEG-1
    int fCode[2][2] = {};      // [forward, backward][horizontal, vertical]
    int intraDcPrecision = 0;  // as coded: 8 bits and more
    int structure = kFrame;
    bool topFieldFirst = false, framePredFrameDct = true, concealmentVectors = false, nonLinearScale = false;
    bool intraVlc = false, alternateScan = false, repeatFirstField = false, progressiveFrame = true;
};

// The bits behind the start code and its byte. All throw BadSyntax.
Sequence parseSequenceHeader(WordReader& bits);
void parseSequenceExtension(WordReader& bits, Sequence& sequence);  // throws NotSupported for 4:4:4
void parseQuantMatrixExtension(WordReader& bits, Matrices& matrices);
PictureHeader parsePictureHeader(WordReader& bits);
void parsePictureCodingExtension(WordReader& bits, PictureHeader& picture);

}  // namespace vekdec::mpeg12
