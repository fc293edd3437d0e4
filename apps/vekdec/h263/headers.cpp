#include "h263/headers.h"

#include <numeric>
#include <string>

#include "bits/sample_aspect.h"

namespace vekdec::h263 {
namespace {

int number(ByteReader& bits, int n) { return static_cast<int>(bits.u(n)); }

void expect(ByteReader& bits, int n, unsigned value) {
    if (bits.u(n) != value) throw BadSyntax("a fixed bit of the header is wrong");
}

[[noreturn]] void refuse(const char* annex) { throw NotSupported(std::string("H.263 with ") + annex); }

void setSize(Modes& modes, unsigned sourceFormat) {
    static constexpr int kSizes[][2] = {{128, 96}, {176, 144}, {352, 288}, {704, 576}, {1408, 1152}};
    if (sourceFormat < 1 || sourceFormat > 5) throw BadSyntax("no valid source format");
    modes.width = kSizes[sourceFormat - 1][0];
    modes.height = kSizes[sourceFormat - 1][1];
    modes.sampleAspect = {12, 11};
}

// OPPTYPE (5.1.4.2); the source format.
unsigned parseOptionalType(ByteReader& bits, Modes& modes) {
    const unsigned format = bits.u(3);
    modes.customClock = bits.flag();
    modes.unrestrictedVectors = bits.flag();
    if (bits.flag()) refuse("arithmetic coding (Annex E)");
    modes.overlapped = bits.flag();
    modes.advancedIntra = bits.flag();
    modes.deblocking = bits.flag();
    modes.slices = bits.flag();
    if (bits.flag()) refuse("reference picture selection (Annex N)");
    if (bits.flag()) refuse("independent segment decoding (Annex R)");
    modes.alternativeInterVlc = bits.flag();
    modes.modifiedQuantizer = bits.flag();
    expect(bits, 4, 0b1000);
    modes.extendedVectorCodes = modes.unrestrictedVectors;
    return format;
}

// CPFMT and EPAR (5.1.5, 5.1.6).
void parseCustomSize(ByteReader& bits, Modes& modes) {
    const unsigned aspect = bits.u(4);
    modes.width = 4 * (number(bits, 9) + 1);
    expect(bits, 1, 1);
    modes.height = 4 * number(bits, 9);
    if (aspect == 15) {
        modes.sampleAspect.num = number(bits, 8);
        modes.sampleAspect.den = number(bits, 8);
    } else {
        modes.sampleAspect = numberedSampleAspect(aspect, 5);
    }
    if (modes.height == 0) throw BadSyntax("the picture height is 0");
}

void parsePlusType(ByteReader& bits, PictureHeader& picture) {
    const unsigned ufep = bits.u(3);
    if (ufep > 1) throw BadSyntax("no valid UFEP");
    unsigned format = 0;
    if (ufep == 1) {
        format = parseOptionalType(bits, picture);
    } else if (picture.width == 0) {
        throw BadSyntax("the first picture does not tell its size");
    }
    const unsigned type = bits.u(3);
    if (type == 2) refuse("improved PB-frames (Annex M)");
    if (type > 2) refuse("scalability (Annex O)");
    picture.inter = type == 1;
    if (bits.flag()) refuse("reference picture resampling (Annex P)");
    if (bits.flag()) refuse("reduced resolution (Annex Q)");
    picture.rounding = number(bits, 1);
    expect(bits, 3, 1);
    if (bits.flag()) refuse("continuous presence (Annex C)");
    if (ufep == 1 && format == 6)
        parseCustomSize(bits, picture);
    else if (ufep == 1)
        setSize(picture, format);
    if (ufep == 1 && picture.customClock) {
        const bool by1001 = bits.flag();
        const int divisor = number(bits, 7);
        if (divisor == 0) throw BadSyntax("the clock divisor is 0");
        const int num = 1800000, den = divisor * (by1001 ? 1001 : 1000), common = std::gcd(num, den);
        picture.rate = {num / common, den / common};
    }
    if (picture.customClock) bits.u(2);                                                // ETR
    if (ufep == 1 && picture.unrestrictedVectors && !bits.flag()) expect(bits, 1, 1);  // UUI: limited or not
    if (ufep == 1 && picture.slices && bits.u(2) != 0) refuse("rectangular or unordered slices (Annex K)");
}

// Bits of a macroblock number (Table K.2).
int addressBits(int mbCount) {
    const int last = mbCount - 1;
    return last <= 47 ? 6 : last <= 98 ? 7 : last <= 395 ? 9 : last <= 1583 ? 11 : last <= 6335 ? 13 : 14;
}

int parseAddress(ByteReader& bits, const PictureHeader& picture) {
    const int address = number(bits, addressBits(picture.mbCount()));
    if (address >= picture.mbCount()) throw BadSyntax("a slice begins behind the end of the picture");
    return address;
}

}  // namespace

std::size_t findPictureStart(std::span<const std::uint8_t> stream, std::size_t from) {
    for (std::size_t i = from; i + 3 <= stream.size(); ++i)
        if (stream[i] == 0 && stream[i + 1] == 0 && (stream[i + 2] & 0xfc) == 0x80) return i;
    return stream.size();
}

PictureHeader parsePictureHeader(ByteReader& bits, const Modes& before) {
    PictureHeader picture;
    static_cast<Modes&>(picture) = before;
    bits.u(8);  // temporal reference
    expect(bits, 2, 0b10);
    bits.u(3);  // split screen, document camera, freeze
    const unsigned format = bits.u(3);
    if (format != 7) {
        static_cast<Modes&>(picture) = {};
        setSize(picture, format);
        picture.inter = bits.flag();
        picture.unrestrictedVectors = bits.flag();
        if (bits.flag()) refuse("arithmetic coding (Annex E)");
        picture.overlapped = bits.flag();
        if (bits.flag()) refuse("PB-frames (Annex G)");
        picture.quantizer = number(bits, 5);
        if (bits.flag()) refuse("continuous presence (Annex C)");
    } else {
        parsePlusType(bits, picture);
        picture.quantizer = number(bits, 5);
    }
    if (picture.quantizer == 0) throw BadSyntax("PQUANT is 0");
    while (bits.flag()) bits.u(8);  // PEI, PSUPP
    if (picture.slices) {
        expect(bits, 1, 1);
        picture.firstAddress = parseAddress(bits, picture);
        expect(bits, 1, 1);
    }
    return picture;
}

SegmentHeader parseSegmentHeader(ByteReader& bits, const PictureHeader& picture) {
    SegmentHeader segment;
    if (picture.slices) {
        if (bits.peek(6) == 0b011111) {  // EOS
            segment.endOfPicture = true;
            return segment;
        }
        expect(bits, 1, 1);
        segment.address = parseAddress(bits, picture);
        if (picture.mbCount() > 1583) expect(bits, 1, 1);
        segment.quantizer = number(bits, 5);
        expect(bits, 1, 1);
        bits.u(2);  // GFID
    } else {
        const int gob = number(bits, 5);
        segment.endOfPicture = gob == 0 || gob == 31;  // the next picture, the end of the sequence
        if (segment.endOfPicture) return segment;
        segment.address = gob * picture.rowsPerGob() * picture.widthInMbs();
        if (segment.address >= picture.mbCount()) throw BadSyntax("a GOB begins behind the end of the picture");
        bits.u(2);  // GFID
        segment.quantizer = number(bits, 5);
    }
    if (segment.quantizer == 0) throw BadSyntax("GQUANT is 0");
    return segment;
}

}  // namespace vekdec::h263
