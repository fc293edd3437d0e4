// Exp-Golomb codes (H.264 9.1): definition, fast form and exports.
#include <bit>

#include "core/arith.h"
#include "core/bits.h"
#include "core/check.h"
#include "core/kernel.h"
#include "vekvc/h264_cavlc.h"

namespace vekvc {
namespace plain {
namespace {

// codeNum + 1 in 32 bits. False after more than 32 leading zeros.
[[maybe_unused]] bool readCodeNumPlus1(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32u& k) {
    WordReader reader(ppBitStream, pBitOffset);
    int leadingZeroBits = 0;
    while (reader.read(1) == 0) {
        if (++leadingZeroBits > 32) return false;
    }
    const std::uint64_t info = reader.read(leadingZeroBits);
    k = static_cast<Vek32u>((std::uint64_t{1} << leadingZeroBits) + info);
    reader.commit(ppBitStream, pBitOffset);
    return true;
}

}  // namespace
}  // namespace plain

namespace simd {
namespace {

// A code of up to 33 bits lies whole in the two words at the cursor.
[[maybe_unused]] bool readCodeNumPlus1(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32u& k) {
    Vek32u* const word = load<Vek32u*>(ppBitStream);
    const Vek32s used = 31 - load<Vek32s>(pBitOffset);
    const std::uint64_t bits = loadTwoWords(word) << used;
    const int leadingZeroBits = std::countl_zero(bits);
    if (leadingZeroBits > 16) [[unlikely]]
        return plain::readCodeNumPlus1(ppBitStream, pBitOffset, k);
    const int length = 2 * leadingZeroBits + 1;
    k = static_cast<Vek32u>(bits >> (64 - length));
    storeCursor(ppBitStream, pBitOffset, word, used + length);
    return true;
}

}  // namespace
}  // namespace simd

namespace {

template <class T>
VekStatus decodeExpGolomb(Vek32u** ppBitStream, Vek32s* pBitOffset, T* pDst, Vek8u isSigned) {
    if (anyNull(ppBitStream, pBitOffset, pDst)) return vekStsErrNullPtr;
    if (anyNull(load<Vek32u*>(ppBitStream))) return vekStsErrNullPtr;
    if (outside(load<Vek32s>(pBitOffset), 0, 31)) return vekStsErrBadArg;
    Vek32u k;
    if (!kernel::readCodeNumPlus1(ppBitStream, pBitOffset, k)) return vekStsErrVlcData;
    // se(v): codeNum + 1 = k is 2n for +n and 2n + 1 for -n (Table 9-3).
    const Vek32u half = k >> 1;
    const Vek32u value = isSigned == 0 ? k - 1 : k % 2 == 0 ? half : 0 - half;
    store<T>(pDst, static_cast<T>(value));
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

VekStatus vekiDecodeExpGolombOne_H264_1u16s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek16s* pDst, Vek8u isSigned) {
    return vekvc::decodeExpGolomb(ppBitStream, pBitOffset, pDst, isSigned);
}

VekStatus vekiDecodeExpGolombOne_H264_1u32s(Vek32u** ppBitStream, Vek32s* pBitOffset, Vek32s* pDst, Vek8u isSigned) {
    return vekvc::decodeExpGolomb(ppBitStream, pBitOffset, pDst, isSigned);
}
