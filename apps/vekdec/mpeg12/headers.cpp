#include "mpeg12/headers.h"

#include <numeric>
#include <string>

#include "mpeg12/tables.h"

namespace vekdec::mpeg12 {
namespace {

// Matrices are sent in zigzag order whatever the scan.
Matrix parseMatrix(WordReader& bits) {
    Matrix matrix{};
    for (const Vek32s position : kZigzagScan)
        matrix[static_cast<std::size_t>(position)] = static_cast<Vek16s>(bits.u(8));
    return matrix;
}

void checkSize(const Sequence& s) {
    if (s.width == 0 || s.height == 0 || s.height > 8191)
        throw BadSyntax("the picture size is " + std::to_string(s.width) + "x" + std::to_string(s.height));
}

}  // namespace

vekapp::Rational Sequence::rate() const {  // Table 6-4
    static constexpr vekapp::Rational kRates[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001},
                                                  {30, 1},       {50, 1}, {60000, 1001}, {60, 1}};
    if (rateCode < 1 || rateCode > 8) return {};
    const vekapp::Rational r = kRates[rateCode - 1];
    const int num = r.num * (rateN + 1), den = r.den * (rateD + 1), common = std::gcd(num, den);
    return {num / common, den / common};
}

vekapp::Rational Sequence::sampleAspect() const {
    if (!mpeg2) {  // ISO 11172-2 2.4.3.2: height to width of a sample, in ten thousandths
        static constexpr int kSampleHeights[] = {10000, 6735, 7031,  7615,  8055,  8437,  8935,
                                                 9157,  9815, 10255, 10695, 10950, 11575, 12015};
        if (aspectCode < 1 || aspectCode > 14) return {};
        const int tall = kSampleHeights[aspectCode - 1], common = std::gcd(10000, tall);
        return {10000 / common, tall / common};
    }
    // Table 6-3: of the whole picture, but for square samples.
    static constexpr vekapp::Rational kDisplays[] = {{4, 3}, {16, 9}, {221, 100}};
    if (aspectCode == 1) return {1, 1};
    if (aspectCode < 2 || aspectCode > 4) return {};
    const vekapp::Rational d = kDisplays[aspectCode - 2];
    const int num = d.num * height, den = d.den * width, common = std::gcd(num, den);
    return {num / common, den / common};
}

Sequence parseSequenceHeader(WordReader& bits) {
    Sequence s;
    s.width = static_cast<int>(bits.u(12));
    s.height = static_cast<int>(bits.u(12));
    s.aspectCode = static_cast<int>(bits.u(4));
    s.rateCode = static_cast<int>(bits.u(4));
    bits.u(18);  // bit_rate_value
    bits.u(1);
    bits.u(10);  // vbv_buffer_size
    bits.u(1);
    for (std::size_t i = 0; i < 64; ++i) s.matrices.intra[i] = kDefaultIntraMatrix[i];
    s.matrices.nonIntra.fill(16);
    if (bits.flag()) s.matrices.intra = parseMatrix(bits);
    if (bits.flag()) s.matrices.nonIntra = parseMatrix(bits);
    s.matrices.chromaIntra = s.matrices.intra;
    s.matrices.chromaNonIntra = s.matrices.nonIntra;
    return s;
}

void parseSequenceExtension(WordReader& bits, Sequence& s) {
    bits.u(8);  // profile_and_level_indication
    s.mpeg2 = true;
    s.progressive = bits.flag();
    const unsigned chromaFormat = bits.u(2);
    if (chromaFormat == 3) throw NotSupported("MPEG-2 with 4:4:4 chroma");
    if (chromaFormat == 0) throw BadSyntax("chroma_format is 0");
    s.chroma = chromaFormat == 1 ? vekapp::Chroma::C420 : vekapp::Chroma::C422;
    s.width |= static_cast<int>(bits.u(2) << 12);
    s.height |= static_cast<int>(bits.u(2) << 12);
    bits.u(12);  // bit_rate_extension
    bits.u(1);
    bits.u(8);  // vbv_buffer_size_extension
    bits.u(1);  // low_delay
    s.rateN = static_cast<int>(bits.u(2));
    s.rateD = static_cast<int>(bits.u(5));
    checkSize(s);
}

void parseQuantMatrixExtension(WordReader& bits, Matrices& m) {
    if (bits.flag()) m.intra = m.chromaIntra = parseMatrix(bits);
    if (bits.flag()) m.nonIntra = m.chromaNonIntra = parseMatrix(bits);
    if (bits.flag()) m.chromaIntra = parseMatrix(bits);
    if (bits.flag()) m.chromaNonIntra = parseMatrix(bits);
}

PictureHeader parsePictureHeader(WordReader& bits) {
    PictureHeader p;
    p.temporalReference = static_cast<int>(bits.u(10));
    const unsigned type = bits.u(3);
    if (type < 1 || type > 4) throw BadSyntax("picture_coding_type is " + std::to_string(type));
    p.type = static_cast<PictureType>(type);
    bits.u(16);  // vbv_delay
    // In MPEG-2 a picture coding extension replaces what follows.
    for (int s = 0; s < (p.type == PictureType::P ? 1 : p.type == PictureType::B ? 2 : 0); ++s) {
        p.fullPel[s] = bits.flag();
        p.fCode[s][0] = p.fCode[s][1] = static_cast<int>(bits.u(3));
    }
    return p;
}

void parsePictureCodingExtension(WordReader& bits, PictureHeader& p) {
    for (auto& direction : p.fCode)
        for (int& code : direction) code = static_cast<int>(bits.u(4));
    p.fullPel[0] = p.fullPel[1] = false;
    p.intraDcPrecision = static_cast<int>(bits.u(2));
    p.structure = static_cast<int>(bits.u(2));
    if (p.structure == 0) throw BadSyntax("picture_structure is 0");
    p.topFieldFirst = bits.flag();
    p.framePredFrameDct = bits.flag();
    p.concealmentVectors = bits.flag();
    p.nonLinearScale = bits.flag();
    p.intraVlc = bits.flag();
    p.alternateScan = bits.flag();
    p.repeatFirstField = bits.flag();
    bits.flag();  // chroma_420_type
    p.progressiveFrame = bits.flag();
}

}  // namespace vekdec::mpeg12
