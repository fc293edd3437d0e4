#include "bits/bit_reader.h"

namespace vekdec {

std::uint32_t BitReader::longUe() {
    Vek32s value = 0;
    // More than 31 leading zeros are of no codeNum: the largest is 2^32 - 2 (7.2).
    if (beyondEnd() || peek32() == 0 || vekiDecodeExpGolombOne_H264_1u32s(word(), offset(), &value, 0) != vekStsOk ||
        beyondEnd())
        throw BadSyntax("no valid Exp-Golomb code");
    return static_cast<std::uint32_t>(value);
}

}  // namespace vekdec
