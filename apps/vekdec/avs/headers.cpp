#include "avs/headers.h"

#include <numeric>
#include <string>

namespace vekdec::avs {

vekapp::Rational Sequence::rate() const {  // frame_rate_code
    static constexpr vekapp::Rational kRates[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001},
                                                  {30, 1},       {50, 1}, {60000, 1001}, {60, 1}};
    if (rateCode < 1 || rateCode > 8) return {};
    return kRates[rateCode - 1];
}

vekapp::Rational Sequence::sampleAspect() const {  // aspect_ratio: of the whole picture, but for square samples
    static constexpr vekapp::Rational kDisplays[] = {{4, 3}, {16, 9}, {221, 100}};
    if (aspectCode == 1) return {1, 1};
    if (aspectCode < 2 || aspectCode > 4) return {};
    const vekapp::Rational d = kDisplays[aspectCode - 2];
    const int num = d.num * height, den = d.den * width, common = std::gcd(num, den);
    return {num / common, den / common};
}

Sequence parseSequenceHeader(BitReader& bits) {
    Sequence s;
    const unsigned profile = bits.u(8);
    if (profile != kJizhun) throw NotSupported("AVS of profile " + std::to_string(profile) + " (Jizhun is 32)");
    bits.u(8);  // level_id
    s.progressive = bits.flag();
    s.width = static_cast<int>(bits.u(14));
    s.height = static_cast<int>(bits.u(14));
    if (s.width == 0 || s.height == 0)
        throw BadSyntax("the picture size is " + std::to_string(s.width) + "x" + std::to_string(s.height));
    // Streams of the draft have 0 for 4:2:0 and for 8 bits.
    if (const unsigned chroma = bits.u(2); chroma > 1)
        throw NotSupported(chroma == 2 ? "AVS with 4:2:2 chroma" : "AVS with chroma_format 3");
    if (bits.u(3) > 1) throw NotSupported("AVS with more than 8 bits");
    s.aspectCode = static_cast<int>(bits.u(4));
    s.rateCode = static_cast<int>(bits.u(4));
    bits.u(18);  // bit_rate_lower
    bits.u(1);
    bits.u(12);  // bit_rate_upper
    s.lowDelay = bits.flag();
    return s;  // bbv_buffer_size follows
}

PictureHeader parsePictureHeader(BitReader& bits, std::uint8_t startCode, const Sequence& sequence, Syntax syntax) {
    PictureHeader p;
    bits.u(16);  // bbv_delay
    if (startCode == kIntraPicture) {
        if (bits.flag()) bits.u(24);  // time_code
        if (syntax == Syntax::Standard) bits.u(1);
    } else {
        const unsigned type = bits.u(2);
        if (type != 1 && type != 2) throw BadSyntax("picture_coding_type is " + std::to_string(type));
        p.type = type == 1 ? PictureType::P : PictureType::B;
    }
    p.distance = static_cast<int>(bits.u(8));
    if (sequence.lowDelay) bits.ue();  // bbv_check_times
    p.progressiveFrame = bits.flag();
    if (!p.progressiveFrame) {
        p.fields = !bits.flag();
        if (p.fields && sequence.progressive) throw BadSyntax("a field picture in a progressive sequence");
        if (p.fields && p.type != PictureType::I) bits.u(1);  // advanced_pred_mode_disable
    }
    p.topFieldFirst = bits.flag();
    p.repeatFirstField = bits.flag();
    p.fixedQp = bits.flag();
    p.qp = static_cast<int>(bits.u(6));
    if (p.type == PictureType::I) {
        if (p.fields) p.skipRuns = bits.flag();
        bits.u(4);
    } else {
        if (p.type == PictureType::P || p.fields) p.nearestOnly = bits.flag();
        bits.u(4);
        p.skipRuns = bits.flag();
    }
    p.loopFilter = !bits.flag();
    if (p.loopFilter && bits.flag()) {
        p.alphaOffset = bits.se("alpha_c_offset", -63, 63);
        p.betaOffset = bits.se("beta_offset", -63, 63);
    }
    return p;
}

SliceHeader parseSliceHeader(BitReader& bits, const PictureHeader& picture, int references) {
    SliceHeader s;
    s.fixedQp = picture.fixedQp;
    s.qp = picture.qp;
    if (!picture.fixedQp) {
        s.fixedQp = bits.flag();
        s.qp = static_cast<int>(bits.u(6));
    }
    if (references == 0) return s;
    s.weighted = bits.flag();
    if (!s.weighted) return s;
    const auto shift = [&] { return static_cast<int>(static_cast<std::int8_t>(bits.u(8))); };
    for (int i = 0; i < references; ++i) {
        Weight& w = s.weights[static_cast<std::size_t>(i)];
        w.lumaScale = static_cast<int>(bits.u(8));
        w.lumaShift = shift();
        bits.u(1);
        w.chromaScale = static_cast<int>(bits.u(8));
        w.chromaShift = shift();
        bits.u(1);
    }
    s.weightsSelected = bits.flag();
    return s;
}

}  // namespace vekdec::avs
