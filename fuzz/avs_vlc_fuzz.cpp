// AVS coefficient decoding: any stream. The fast form must do what the definition does, write one block or nothing, and
// read no word beyond the one that follows the last bit consumed.
#include "avs/coefficients_plain.h"
#include "avs/coefficients_simd.h"
#include "fuzz_input.h"

namespace {

using namespace vekvc;
using namespace vekvc_fuzz;

struct Run {
    VekStatus status;
    std::ptrdiff_t word;
    Vek32s offset;
    std::ptrdiff_t advanced;
    Vek16s coeffs[65];

    template <class Decode>
    Run(Decode decode, const Words& words, Vek32s start, int scanMode) : offset(start) {
        std::memset(coeffs, 0x55, sizeof coeffs);
        Vek32u* cursor = words.begin();
        Vek16s* next = coeffs;
        status = decode(&cursor, &offset, &next, scanMode);
        word = cursor - words.begin();
        advanced = next - coeffs;
    }
    bool operator==(const Run& other) const {
        return status == other.status && word == other.word && offset == other.offset && advanced == other.advanced &&
               std::memcmp(coeffs, other.coeffs, sizeof coeffs) == 0;
    }
};

template <const avs::CodeGroup& group>
void fuzzBlock(const Words& words, Vek32s start, int scanMode) {
    const auto plainForm = plain::decodeAvsBlock<group>;
    const auto fastForm = simd::decodeAvsBlock<group>;
    const Run law(plainForm, words, start, scanMode);
    FUZZ_REQUIRE(law == Run(fastForm, words, start, scanMode));
    FUZZ_REQUIRE(law.coeffs[64] == 0x5555);
    if (law.status != vekStsOk) {
        FUZZ_REQUIRE(law.status == vekStsErrOutOfRange && law.word == 0 && law.offset == start && law.advanced == 0);
        FUZZ_REQUIRE(law.coeffs[0] == 0x5555 && law.coeffs[63] == 0x5555);
        return;
    }
    FUZZ_REQUIRE(law.offset >= 0 && law.offset <= 31 && law.advanced == 64);
    // Again with nothing behind the word that follows the last bit consumed.
    const std::ptrdiff_t lastWord = law.offset == 31 ? law.word - 1 : law.word;
    const Words tight = words.prefix(static_cast<std::size_t>(lastWord) + 2);
    FUZZ_REQUIRE(law == Run(fastForm, tight, start, scanMode));
    FUZZ_REQUIRE(law == Run(plainForm, tight, start, scanMode));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const unsigned mode = input.byte();
    const Vek32s start = input.number(0, 31);
    // Two words of zeros end anything.
    const std::size_t random = size / 4 + 1;
    const Words words(input, random, random + 2);
    switch (mode % 3) {
        case 0:
            fuzzBlock<avs::kLumaIntra>(words, start, static_cast<int>(mode / 3 % 2));
            break;
        case 1:
            fuzzBlock<avs::kLumaInter>(words, start, static_cast<int>(mode / 3 % 2));
            break;
        default:
            fuzzBlock<avs::kChroma>(words, start, static_cast<int>(mode / 3 % 2));
    }
    return 0;
}
