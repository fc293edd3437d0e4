#include "vc1/sequence.h"

#include <numeric>
#include <string>

#include "bits/sample_aspect.h"

namespace vekdec::vc1 {
namespace {

void checkSize(const Sequence& s) {
    if (s.width < 1 || s.height < 1 || s.width > 8192 || s.height > 8192)
        throw BadSyntax("the picture size is " + std::to_string(s.width) + "x" + std::to_string(s.height));
}

vekapp::Rational reduced(int num, int den) {
    const int common = std::gcd(num, den);
    return common == 0 ? vekapp::Rational{} : vekapp::Rational{num / common, den / common};
}

// 6.1.14.
void parseDisplayExtension(WordReader& bits, Sequence& s) {
    static constexpr int kRates[8] = {0, 24, 25, 30, 50, 60, 48, 72};
    bits.u(28);         // DISP_HORIZ_SIZE, DISP_VERT_SIZE
    if (bits.flag()) {  // ASPECT_RATIO_FLAG
        const unsigned aspect = bits.u(4);
        if (aspect == 15) {
            const int across = static_cast<int>(bits.u(8)) + 1, down = static_cast<int>(bits.u(8)) + 1;
            s.sampleAspect = reduced(across, down);
        } else {
            s.sampleAspect = numberedSampleAspect(aspect, 13);
        }
    }
    if (bits.flag()) {  // FRAMERATE_FLAG
        if (bits.flag()) {
            s.rate = reduced(static_cast<int>(bits.u(16)) + 1, 32);
        } else {
            const unsigned num = bits.u(8), den = bits.u(4);
            if (num < 8 && (den == 1 || den == 2))
                s.rate = den == 1 ? vekapp::Rational{kRates[num], 1} : reduced(1000 * kRates[num], 1001);
        }
    }
    if (bits.flag()) bits.u(24);  // COLOR_FORMAT
}

}  // namespace

Sequence parseStructC(std::span<const std::uint8_t> bytes, int width, int height) {
    WordPayload payload;
    payload.assign(bytes);
    WordReader bits(payload);
    Sequence s;
    s.width = width;
    s.height = height;
    const unsigned profile = bits.u(4);
    if (profile != 0 && profile != 4) throw BadSyntax("PROFILE is " + std::to_string(profile));
    s.profile = profile == 0 ? Profile::Simple : Profile::Main;
    bits.u(8);  // FRMRTQ_POSTPROC, BITRTQ_POSTPROC
    s.loopFilter = bits.flag();
    bits.u(1);
    s.multiResolution = bits.flag();
    bits.u(1);
    s.fastChroma = bits.flag();
    s.extendedMv = bits.flag();
    s.dquant = static_cast<int>(bits.u(2));
    s.vsTransform = bits.flag();
    bits.u(1);
    s.overlap = bits.flag();
    bits.flag();  // SYNCMARKER
    s.rangeReduction = bits.flag();
    s.maxBFrames = static_cast<int>(bits.u(3));
    s.quantizer = static_cast<int>(bits.u(2));
    s.frameInterpolation = bits.flag();
    checkSize(s);
    return s;
}

Sequence parseFileHeader(std::span<const std::uint8_t> bytes) {
    const auto word = [&](std::size_t at) {
        if (at + 4 > bytes.size()) WordReader::throwEnd();
        return bytes[at] | std::uint32_t{bytes[at + 1]} << 8 | std::uint32_t{bytes[at + 2]} << 16 |
               std::uint32_t{bytes[at + 3]} << 24;
    };
    const std::size_t size = word(4);
    if (size < 4 || size > 64 || bytes.size() < size + 16) throw BadSyntax("the file header is not whole");
    const std::uint32_t height = word(8 + size), width = word(12 + size);
    if (width > 8192 || height > 8192)
        throw BadSyntax("the picture size is " + std::to_string(width) + "x" + std::to_string(height));
    Sequence s = parseStructC(bytes.subspan(8, size), static_cast<int>(width), static_cast<int>(height));
    const std::size_t structB = 16 + size;
    if (bytes.size() >= structB + 16) {
        const std::uint32_t rate = word(structB + 12);
        if (rate > 0 && rate < 1000) s.rate = {static_cast<int>(rate), 1};
    }
    return s;
}

Sequence parseSequenceHeader(WordReader& bits) {
    Sequence s;
    if (const unsigned profile = bits.u(2); profile != 3) throw BadSyntax("PROFILE is " + std::to_string(profile));
    s.profile = Profile::Advanced;
    bits.u(3);  // LEVEL
    if (const unsigned chroma = bits.u(2); chroma != 1)
        throw NotSupported("VC-1 with COLORDIFF_FORMAT " + std::to_string(chroma));
    bits.u(8);  // FRMRTQ_POSTPROC, BITRTQ_POSTPROC
    s.postProcessing = bits.flag();
    s.maxWidth = 2 * static_cast<int>(bits.u(12)) + 2;
    s.maxHeight = 2 * static_cast<int>(bits.u(12)) + 2;
    s.width = s.maxWidth;
    s.height = s.maxHeight;
    s.pulldown = bits.flag();
    s.interlace = bits.flag();
    s.frameCounter = bits.flag();
    s.frameInterpolation = bits.flag();
    bits.u(1);
    s.segmentedFrames = bits.flag();
    if (bits.flag()) parseDisplayExtension(bits, s);
    if (bits.flag()) {  // HRD_PARAM_FLAG
        s.leakyBuckets = static_cast<int>(bits.u(5));
        bits.u(8);
        for (int i = 0; i < s.leakyBuckets; ++i) bits.u(32);
    }
    checkSize(s);
    return s;
}

void parseEntryPoint(WordReader& bits, Sequence& s) {
    s.brokenLink = bits.flag();
    s.closedEntry = bits.flag();
    s.panScan = bits.flag();
    s.referenceDistance = bits.flag();
    s.loopFilter = bits.flag();
    s.fastChroma = bits.flag();
    s.extendedMv = bits.flag();
    s.dquant = static_cast<int>(bits.u(2));
    s.vsTransform = bits.flag();
    s.overlap = bits.flag();
    s.quantizer = static_cast<int>(bits.u(2));
    for (int i = 0; i < s.leakyBuckets; ++i) bits.u(8);  // HRD_FULLNESS
    s.width = s.maxWidth;
    s.height = s.maxHeight;
    if (bits.flag()) {  // CODED_SIZE_FLAG
        s.width = 2 * static_cast<int>(bits.u(12)) + 2;
        s.height = 2 * static_cast<int>(bits.u(12)) + 2;
    }
    s.extendedDmv = s.extendedMv && bits.flag();
    s.rangeMapY = bits.flag() ? static_cast<int>(bits.u(3)) : -1;
    s.rangeMapUv = bits.flag() ? static_cast<int>(bits.u(3)) : -1;
    checkSize(s);
}

}  // namespace vekdec::vc1
