#include "h261/picture_decoder.h"

#include <bit>

#include "bits/code_table.h"
#include "frames/reference.h"
#include "h263/residual.h"
#include "vekvc.h"

namespace vekdec::h261 {
namespace {

using vekvc_tables::Code;

constexpr int kMbsInGroup = 33;

enum TypeFlags : unsigned { kIntra = 1, kQuant = 2, kVector = 4, kPattern = 8, kFilter = 16 };

// clang-format off
constexpr std::string_view kAddressCodes[34] = {  // Table 1; 0 is stuffing
    "00000001111", "1", "011", "010", "0011", "0010", "00011", "00010", "0000111", "0000110", "00001011", "00001010",
    "00001001", "00001000", "00000111", "00000110", "0000010111", "0000010110", "0000010101", "0000010100",
    "0000010011", "0000010010", "00000100011", "00000100010", "00000100001", "00000100000", "00000011111",
    "00000011110", "00000011101", "00000011100", "00000011011", "00000011010", "00000011001", "00000011000"};
constexpr Code kTypeCodes[] = {  // Table 2
    {"0001", kIntra}, {"0000001", kIntra | kQuant}, {"1", kPattern}, {"00001", kQuant | kPattern},
    {"000000001", kVector}, {"00000001", kVector | kPattern}, {"0000000001", kQuant | kVector | kPattern},
    {"001", kFilter | kVector}, {"01", kFilter | kVector | kPattern},
    {"000001", kFilter | kQuant | kVector | kPattern}};
constexpr std::string_view kVectorCodes[17] = {  // Table 3, by magnitude
    "1", "01", "001", "0001", "000011", "0000101", "0000100", "0000011", "000001011", "000001010", "000001001",
    "0000010001", "0000010000", "0000001111", "0000001110", "0000001101", "0000001100"};
constexpr std::string_view kPatternCodes[63] = {  // Table 4; from pattern 1 on
    "01011", "01001", "001101", "1101", "0010111", "0010011", "00011111", "1100", "0010110", "0010010", "00011110",
    "10011", "00011011", "00010111", "00010011", "1011", "0010101", "0010001", "00011101", "10001", "00011001",
    "00010101", "00010001", "001111", "00001111", "00001101", "000000011", "01111", "00001011", "00000111",
    "000000111", "1010", "0010100", "0010000", "00011100", "001110", "00001110", "00001100", "000000010", "10000",
    "00011000", "00010100", "00010000", "01110", "00001010", "00000110", "000000110", "10010", "00011010", "00010110",
    "00010010", "01101", "00001001", "00000101", "000000101", "01100", "00001000", "00000100", "000000100", "111",
    "01010", "01000", "001100"};
// clang-format on

constexpr CodeTable<11> kAddress(numbered(kAddressCodes));
constexpr CodeTable<10> kType(kTypeCodes);
constexpr CodeTable<10> kVectorDifference(numbered(kVectorCodes));
constexpr CodeTable<9> kCodedPattern(numbered(kPatternCodes));

}  // namespace

bool parsePictureHeader(ByteReader& bits) {
    bits.u(5);  // temporal reference
    bits.u(3);  // split screen, document camera, freeze release
    const bool cif = bits.flag();
    bits.u(2);
    while (bits.flag()) bits.u(8);  // PEI, PSPARE
    return cif;
}

void PictureDecoder::decode(Picture& picture, const Picture* reference, ByteReader& bits, const Report& report) {
    picture_ = &picture;
    reference_ = reference;
    bits_ = &bits;
    while (beginNextGroup(report)) {
        ++groups_;
        const std::size_t begin = bits.position();
        try {
            decodeGroup();
        } catch (const BadSyntax& e) {
            report("group " + std::to_string(group_) + ", macroblock " + std::to_string(number_) + ": " + e.what());
            bits.seek(begin);  // what broke off may have read beyond the next start code
        }
    }
}

// Moves behind the header of the next group of blocks (4.2.2); false: there is none.
bool PictureDecoder::beginNextGroup(const Report& report) {
    ByteReader& bits = *bits_;
    while (bits.position() + 16 <= bits.end()) {
        const int zeros = std::countl_zero(bits.peek32());
        bits.skip(zeros == 32 ? 16 : static_cast<std::size_t>(zeros) + 1);
        if (zeros < 15 || zeros == 32) continue;
        try {
            group_ = static_cast<int>(bits.u(4));
            if (group_ == 0) return false;  // the next picture
            const bool cif = picture_->widthInMbs() > 11;
            if (cif ? group_ > 12 : group_ > 5 || group_ % 2 == 0) throw BadSyntax("a group of blocks has no place");
            quantizer_ = static_cast<int>(bits.u(5));
            if (quantizer_ == 0) throw BadSyntax("GQUANT is 0");
            while (bits.flag()) bits.u(8);  // GEI, GSPARE
            return true;
        } catch (const BadSyntax& e) {
            report(e.what());
        }
    }
    return false;
}

void PictureDecoder::moveTo(int number) {
    number_ = number;
    const int groupX = (group_ - 1) % 2, groupY = (group_ - 1) / 2;
    x_ = 11 * groupX + (number - 1) % 11;
    y_ = 3 * groupY + (number - 1) / 11;
    mb_ = &picture_->mbs[static_cast<std::size_t>(y_ * picture_->widthInMbs() + x_)];
}

void PictureDecoder::decodeGroup() {
    ByteReader& bits = *bits_;
    mvX_ = mvY_ = 0;
    int before = 0;
    const auto copyUpTo = [&](int number) {  // those without an address
        for (; before + 1 < number; ++before) {
            moveTo(before + 1);
            *mb_ = {MbKind::Skipped, static_cast<std::uint8_t>(quantizer_)};
            predict(false);
        }
    };
    moveTo(1);
    while (bits.peek(15) != 0) {  // a start code, or the end
        const int difference = kAddress.read(bits, "macroblock address");
        bits.checkEnd();
        if (difference == 0) continue;
        const int number = before + difference;
        if (number > kMbsInGroup) throw BadSyntax("more macroblocks than a group has");
        copyUpTo(number);
        moveTo(number);
        decodeMacroblock(difference == 1);
        bits.checkEnd();
        before = number;
    }
    copyUpTo(kMbsInGroup + 1);
}

// `follows`: the macroblock before was sent too.
void PictureDecoder::decodeMacroblock(bool follows) {
    ByteReader& bits = *bits_;
    *mb_ = {};
    const auto type = static_cast<unsigned>(kType.read(bits, "macroblock type"));
    const bool intra = (type & kIntra) != 0;
    if ((type & kQuant) != 0) {
        quantizer_ = static_cast<int>(bits.u(5));
        if (quantizer_ == 0) throw BadSyntax("MQUANT is 0");
    }
    if ((type & kVector) != 0)
        parseVector(follows);
    else
        mvX_ = mvY_ = 0;
    const unsigned pattern = intra                    ? 63
                             : (type & kPattern) != 0 ? static_cast<unsigned>(kCodedPattern.read(bits, "pattern")) + 1
                                                      : 0;
    Macroblock now;
    now.kind = intra ? MbKind::Intra : (type & kFilter) != 0 ? MbKind::Filtered : MbKind::Inter;
    now.quantizer = static_cast<std::uint8_t>(quantizer_);
    now.mvX = mvX_;
    now.mvY = mvY_;
    if (!intra) {
        mb_->mvX = mvX_;
        mb_->mvY = mvY_;
        predict((type & kFilter) != 0);
    }
    for (int k = 0; k < 6; ++k)
        if ((pattern >> (5 - k) & 1) != 0) decodeBlock(k, intra);
    *mb_ = now;
}

// 4.2.3.4.
void PictureDecoder::parseVector(bool follows) {
    const bool predicted = follows && number_ % 11 != 1;
    const auto component = [&](int from) {
        int difference = kVectorDifference.read(*bits_, "vector difference");
        if (difference != 0 && bits_->flag()) difference = -difference;
        const int v = from + difference;
        return v <= -16 ? v + 32 : v >= 16 ? v - 32 : v;
    };
    mvX_ = component(predicted ? mvX_ : 0);
    mvY_ = component(predicted ? mvY_ : 0);
}

// 3.2.2, and 3.2.3 where the prediction is filtered.
void PictureDecoder::predict(bool filtered) {
    if (reference_ == nullptr) throw BadSyntax("a prediction from a picture that is not there");
    vekapp::ReferenceScratch scratch;
    for (int i = 0; i < 3; ++i) {
        const int size = i == 0 ? 16 : 8, x = size * x_, y = size * y_;
        const vekapp::Plane& to = picture_->plane[i];
        const vekapp::ReferenceBlock from =
            vekapp::referenceBlock(reference_->plane[i], x + (i == 0 ? mb_->mvX : mb_->mvX / 2),
                                   y + (i == 0 ? mb_->mvY : mb_->mvY / 2), size, size, scratch);
        const auto step = static_cast<Vek32s>(to.stride);
        if (!filtered) {
            (i == 0 ? vekiCopy16x16_8u_C1R : vekiCopy8x8_8u_C1R)(from.data, from.step, to.at(x, y), step);
            continue;
        }
        for (int by = 0; by < size; by += 8)
            for (int bx = 0; bx < size; bx += 8)
                vekiFilterLoop8x8_H261_8u_C1R(from.data + std::ptrdiff_t{from.step} * by + bx, from.step,
                                              to.at(x + bx, y + by), step);
    }
}

void PictureDecoder::decodeBlock(int k, bool intra) {
    ByteReader& bits = *bits_;
    const vekapp::Plane& plane = picture_->plane[k < 4 ? 0 : k - 3];
    Vek8u* const to = k < 4 ? plane.at(16 * x_ + k % 2 * 8, 16 * y_ + k / 2 * 8) : plane.at(8 * x_, 8 * y_);
    const auto step = static_cast<Vek32s>(plane.stride);
    alignas(32) Vek16s block[64];
    Vek32s last = 0;
    const auto decode = intra ? vekiReconstructDCTBlockIntra_H261_1u16s : vekiReconstructDCTBlockInter_H261_1u16s;
    if (decode(bits.byte(), bits.offset(), block, &last, quantizer_) != vekStsOk)
        throw BadSyntax("no valid coefficient code");
    bits.checkEnd();
    if (intra)
        vekiDCT8x8Inv_16s8u_C1R(block, to, step);
    else
        h263::addResidual(block, last, to, step);
}

}  // namespace vekdec::h261
