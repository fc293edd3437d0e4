#include "h264/cavlc_syntax.h"

namespace vekdec::h264 {
namespace {

// Table 9-4: coded_block_pattern by codeNum, [0] Intra, [1] Inter; with chroma and in monochrome.
constexpr std::uint8_t kCodedBlockPattern[2][48] = {
    {47, 31, 15, 0,  23, 27, 29, 30, 7, 11, 13, 14, 39, 43, 45, 46, 16, 3,  5,  10, 12, 19, 21, 26,
     28, 35, 37, 42, 44, 1,  2,  4,  8, 17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41},
    {0,  16, 1,  2,  4,  8,  32, 3,  5,  10, 12, 15, 47, 7,  11, 13, 14, 6,  9,  31, 35, 37, 42, 44,
     33, 34, 36, 40, 39, 43, 45, 46, 17, 18, 20, 24, 19, 21, 26, 28, 23, 27, 29, 30, 22, 25, 38, 41}};
constexpr std::uint8_t kCodedBlockPatternMonochrome[2][16] = {{15, 0, 7, 11, 13, 14, 3, 5, 10, 12, 1, 2, 4, 8, 6, 9},
                                                              {0, 1, 2, 4, 8, 3, 5, 10, 12, 15, 7, 11, 13, 14, 6, 9}};

}  // namespace

int CavlcSyntax::codedBlockPattern() {
    const bool monochrome = context_->sps->chromaFormatIdc == 0, inter = !mb_->intra();
    const int code = bits_->ue("coded_block_pattern", monochrome ? 15 : 47);
    return monochrome ? kCodedBlockPatternMonochrome[inter][code] : kCodedBlockPattern[inter][code];
}

}  // namespace vekdec::h264
