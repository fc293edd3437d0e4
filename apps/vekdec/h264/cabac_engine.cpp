#include "h264/cabac_engine.h"

namespace vekdec::h264 {
namespace {

// Table 9-44: rangeTabLPS by pStateIdx and qCodIRangeIdx.
constexpr std::uint8_t kRangeTabLps[64][4] = {
    {128, 176, 208, 240}, {128, 167, 197, 227}, {128, 158, 187, 216}, {123, 150, 178, 205}, {116, 142, 169, 195},
    {111, 135, 160, 185}, {105, 128, 152, 175}, {100, 122, 144, 166}, {95, 116, 137, 158},  {90, 110, 130, 150},
    {85, 104, 123, 142},  {81, 99, 117, 135},   {77, 94, 111, 128},   {73, 89, 105, 122},   {69, 85, 100, 116},
    {66, 80, 95, 110},    {62, 76, 90, 104},    {59, 72, 86, 99},     {56, 69, 81, 94},     {53, 65, 77, 89},
    {51, 62, 73, 85},     {48, 59, 69, 80},     {46, 56, 66, 76},     {43, 53, 63, 72},     {41, 50, 59, 69},
    {39, 48, 56, 65},     {37, 45, 54, 62},     {35, 43, 51, 59},     {33, 41, 48, 56},     {32, 39, 46, 53},
    {30, 37, 43, 50},     {29, 35, 41, 48},     {27, 33, 39, 45},     {26, 31, 37, 43},     {24, 30, 35, 41},
    {23, 28, 33, 39},     {22, 27, 32, 37},     {21, 26, 30, 35},     {20, 24, 29, 33},     {19, 23, 27, 31},
    {18, 22, 26, 30},     {17, 21, 25, 28},     {16, 20, 23, 27},     {15, 19, 22, 25},     {14, 18, 21, 24},
    {14, 17, 20, 23},     {13, 16, 19, 22},     {12, 15, 18, 21},     {12, 14, 17, 20},     {11, 14, 16, 19},
    {11, 13, 15, 18},     {10, 12, 15, 17},     {10, 12, 14, 16},     {9, 11, 13, 15},      {9, 11, 12, 14},
    {8, 10, 12, 14},      {8, 9, 11, 13},       {7, 9, 11, 12},       {7, 9, 10, 12},       {7, 8, 10, 11},
    {6, 8, 9, 11},        {6, 7, 9, 10},        {6, 7, 8, 9},         {2, 2, 2, 2}};

// Table 9-45: transIdxLPS by pStateIdx.
constexpr std::uint8_t kTransIdxLps[64] = {0,  0,  1,  2,  2,  4,  4,  5,  6,  7,  8,  9,  9,  11, 11, 12,
                                           13, 13, 15, 15, 16, 16, 18, 18, 19, 19, 21, 21, 22, 22, 23, 24,
                                           24, 25, 26, 26, 27, 27, 28, 29, 29, 30, 30, 30, 31, 32, 32, 33,
                                           33, 33, 34, 34, 35, 35, 35, 36, 36, 36, 37, 37, 37, 38, 38, 63};

constexpr CabacTables makeTables() {
    CabacTables tables{};
    for (unsigned i = 0; i < 128; ++i) {
        const unsigned state = i / 2, valMps = i % 2;
        for (std::size_t q = 0; q < 4; ++q) tables.rangeLps[128 * q + i] = kRangeTabLps[state][q];
        tables.nextStateLps[i] =
            static_cast<std::uint8_t>(2 * kTransIdxLps[state] + (state == 0 ? 1 - valMps : valMps));
        tables.nextStateMps[i] = static_cast<std::uint8_t>(2 * (state < 62 ? state + 1 : state) + valMps);
    }
    for (std::uint32_t i = 0; i < 256; ++i)
        tables.reciprocal[i] = static_cast<std::uint32_t>((std::uint64_t{1} << 39) / (i + 256) + 1);
    return tables;
}

}  // namespace

constinit const CabacTables kCabacTables = makeTables();

CabacEngine::CabacEngine(const BitReader& bits) : words_(bits.words()) {
    // Two words of zeros behind the last one that holds bits: position() is then well behind the end.
    limit_ = words_ + bits.end() / 32 + 3;
    const std::size_t position = bits.position();
    next_ = words_ + position / 32;
    if (next_ > limit_) next_ = limit_;
    // What is left of the first word.
    const auto gone = static_cast<int>(position % 32);
    offset_ = std::uint64_t{*next_ << gone} << (22 - bits_);
    bits_ += 32 - gone;
    next_ += next_ != limit_;
    if (bits_ < 0) feed();
    if (offset_ >> kFraction >= range_) throw BadSyntax("codIOffset begins at 510 or more");
}

std::uint32_t CabacEngine::longExpGolomb(int k) {
    constexpr int kMostPrefix = 24;  // levels of 14-bit samples take 21, vectors 13
    std::uint32_t sum = 0;
    int prefix = 0;
    for (; bypass(); ++prefix, ++k) {
        if (prefix == kMostPrefix) throw BadSyntax("a level or vector that is far too large");
        sum += 1u << k;
    }
    for (; k > 0; --k) sum += static_cast<std::uint32_t>(bypass()) << (k - 1);
    return sum;
}

}  // namespace vekdec::h264
