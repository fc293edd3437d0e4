// Coefficient decoding of MPEG-4, H.263 and H.261: any stream, forward and backward. The fast form must do what the
// definition does, and touch no byte that the contract does not name.
#include "fuzz_input.h"
#include "mpeg4/coefficients_plain.h"
#include "mpeg4/coefficients_simd.h"

namespace {

using namespace vekvc;
using namespace vekvc::mpeg4;

// Bytes on the heap, where the address sanitizer fences them.
struct Bytes {
    std::unique_ptr<Vek8u[]> data;
    std::size_t count;

    explicit Bytes(std::size_t n) : data(new Vek8u[n]()), count(n) {}
    Bytes prefix(std::size_t n) const {
        Bytes copy(n);
        std::memcpy(copy.data.get(), data.get(), n);
        return copy;
    }
};

struct Run {
    VekStatus status;
    std::ptrdiff_t moved;  // bits
    Vek32s last = -7;
    Vek16s block[65];

    template <class Decode>
    Run(Decode decode, const Bytes& bytes, std::ptrdiff_t position) {
        std::memset(block, 0x55, sizeof block);
        Vek8u* cursor = bytes.data.get() + position / 8;
        auto offset = static_cast<Vek32s>(position % 8);
        status = decode(&cursor, &offset, block, &last);
        FUZZ_REQUIRE(ByteReader::validOffset(offset));
        moved = 8 * (cursor - bytes.data.get()) + offset - position;
    }
    bool operator==(const Run& other) const {
        return status == other.status && moved == other.moved && last == other.last &&
               std::memcmp(block, other.block, sizeof block) == 0;
    }
    void check(int start) const {
        FUZZ_REQUIRE(block[64] == 0x5555 && (start == 0 || block[0] == 0x5555));
        FUZZ_REQUIRE(status == vekStsOk ? last >= 0 && last <= 63
                                        : status == vekStsErrCoeffDecode && moved == 0 && last == -7);
    }
};

template <class Plain, class Fast>
void compare(Plain plainForm, Fast fastForm, const Bytes& bytes, Vek32s offset, int start) {
    const Run law(plainForm, bytes, offset);
    FUZZ_REQUIRE(law == Run(fastForm, bytes, offset));
    law.check(start);
    if (law.status != vekStsOk) return;
    // Again with nothing behind the seven bytes that may be touched.
    const Bytes tight = bytes.prefix(static_cast<std::size_t>(offset + law.moved - 1) / 8 + 8);
    FUZZ_REQUIRE(law == Run(fastForm, tight, offset));
    FUZZ_REQUIRE(law == Run(plainForm, tight, offset));
}

template <Syntax syntax, const CodeTable& table>
void fuzzBlock(const Bytes& bytes, Vek32s offset, BlockLayout layout) {
    compare([&](Vek8u** s, Vek32s* o, Vek16s* b,
                Vek32s* i) { return plain::decodeBlock<syntax, table>(s, o, b, i, layout); },
            [&](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s* i) {
                return simd::decodeBlock<syntax, table>(s, o, b, i, layout);
            },
            bytes, offset, layout.start);
}

// The bytes hold `numBits` bits that end at the cursor, and no byte without one.
template <const CodeTable& table>
void fuzzBackward(const Bytes& bytes, Vek32s position, Vek32s numBits, BlockLayout layout) {
    const Run law([&](Vek8u** s, Vek32s* o, Vek16s* b,
                      Vek32s* i) { return plain::decodeBlockBackward<table>(s, o, numBits, b, i, layout); },
                  bytes, position);
    FUZZ_REQUIRE(law == Run([&](Vek8u** s, Vek32s* o, Vek16s* b,
                                Vek32s* i) { return simd::decodeBlockBackward<table>(s, o, numBits, b, i, layout); },
                            bytes, position));
    law.check(layout.start);
    FUZZ_REQUIRE(law.moved <= 0 && -law.moved <= numBits);
}

// A DC is a block of one number here.
void fuzzDc(const Bytes& bytes, Vek32s offset, bool chroma) {
    const auto asBlock = [=](auto decode) {
        return [=](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s* i) {
            const VekStatus status = decode(s, o, b, chroma);
            if (status == vekStsOk) *i = 0;
            return status;
        };
    };
    compare(asBlock(plain::decodeDcMpeg4), asBlock(simd::decodeDcMpeg4), bytes, offset, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vekvc_fuzz::Input input(data, size);
    const unsigned mode = input.byte();
    const Vek32s offset = input.number(0, 7);
    const BlockLayout layout = {scanTable(static_cast<Vek32s>(mode >> 4 & 3)), static_cast<int>(mode >> 6 & 1),
                                mode >> 7 != 0};
    const std::size_t random = size > 2 ? size - 2 : 1;
    const bool backward = mode % 16 >= 8 && mode % 16 < 10;
    // Sixteen bytes of zeros end anything.
    Bytes bytes(backward ? random : random + 16);
    for (std::size_t i = 0; i < random; ++i) bytes.data[i] = static_cast<Vek8u>(input.byte());
    const BlockLayout inter = {layout.scan, 0, layout.extended};
    switch (mode % 16) {
        case 0:
            fuzzBlock<Syntax::mpeg4, kIntra>(bytes, offset, layout);
            break;
        case 1:
            fuzzBlock<Syntax::mpeg4, kInter>(bytes, offset, layout);
            break;
        case 2:
            fuzzBlock<Syntax::reversible, kReversibleIntra>(bytes, offset, layout);
            break;
        case 3:
            fuzzBlock<Syntax::reversible, kReversibleInter>(bytes, offset, layout);
            break;
        case 4:
            fuzzBlock<Syntax::h263, kInter>(bytes, offset, layout);
            break;
        case 5:
            fuzzBlock<Syntax::h263, kAdvancedIntra>(bytes, offset, layout);
            break;
        case 6:
            fuzzBlock<Syntax::h261Intra, kH261>(bytes, offset, zigzagLayout(1));
            break;
        case 7:
            fuzzBlock<Syntax::h261Inter, kH261>(bytes, offset, inter);
            break;
        case 8:
        case 9: {
            // From 1 to 8 bits of the first byte and those up to the last but `offset`.
            const Vek32s end = static_cast<Vek32s>(8 * random) - offset;
            if (end < 8) break;
            const Vek32s numBits = end - static_cast<Vek32s>((mode >> 4) % 8);
            if (mode % 16 == 8)
                fuzzBackward<kReversibleIntra>(bytes, end, numBits, layout);
            else
                fuzzBackward<kReversibleInter>(bytes, end, numBits, layout);
            break;
        }
        case 10:
            compare([&](Vek8u** s, Vek32s* o, Vek16s* b,
                        Vek32s* i) { return plain::decodeBlockAlternative(s, o, b, i, inter); },
                    [&](Vek8u** s, Vek32s* o, Vek16s* b, Vek32s* i) {
                        return simd::decodeBlockAlternative(s, o, b, i, inter);
                    },
                    bytes, offset, 0);
            break;
        default:
            fuzzDc(bytes, offset, layout.start != 0);
    }
    return 0;
}
