// Rows of VC-1 interpolation.
#include <algorithm>

#include "catalogue.h"

namespace catalogue {
namespace {

struct Filter {
    int before, behind, channels;
    VekiSize (*shape)(VekiSize block);  // what of a block is written
};
VekiSize cut(int width, int height, VekiSize block) {
    return {std::max(std::min(width, block.width), 0), std::max(std::min(height, block.height), 0)};
}
VekiSize bicubicShape(VekiSize b) {
    const int kernel = (b.width >> 4) + (b.height >> 4);
    return cut(kernel >= 1 ? 16 : 8, kernel >= 2 ? 16 : 8, b);
}
VekiSize bilinearShape(VekiSize b) {
    return b.width == 16 ? cut(16, 16, b) : b.width == 8 ? cut(8, b.height == 8 ? 8 : 4, b) : cut(4, 4, b);
}
VekiSize pairsShape(VekiSize b) { return b.width == 8 ? cut(8, b.height == 8 ? 8 : 4, b) : cut(4, 4, b); }
constexpr Filter kBicubic{1, 2, 1, bicubicShape}, kBilinear{0, 1, 1, bilinearShape}, kPairs{0, 1, 2, pairsShape};

Extent written(Filter f, const char* size) {
    return [=](const Call& c) {
        const VekiSize s = f.shape(c.size(size));
        return s.width == 0 || s.height == 0 ? Rect{0, 0, 0, 0} : Rect{0, 0, s.width * f.channels, s.height};
    };
}
Extent reference(Filter f) {
    return [=](const Call& c) {
        const VekiSize s = f.shape(c.size("roiSize"));
        if (s.width == 0 || s.height == 0) return Rect{0, 0, 0, 0};
        const int dx = (c["dx"] & 3) != 0, dy = (c["dy"] & 3) != 0;
        return Rect{-dx * f.before * f.channels, -dy * f.before, (s.width + dx * f.behind) * f.channels,
                    s.height + dy * f.behind};
    };
}
Argument blockSize(const char* name) {
    return size(name,
                {{8, 8}, {8, 8}, {16, 16}, {16, 16}, {16, 8},  {8, 16}, {8, 4},  {4, 4}, {4, 8}, {16, 7}, {12, 12},
                 {5, 3}, {1, 1}, {20, 24}, {15, 15}, {10, 16}, {1, 32}, {33, 9}, {0, 8}, {8, 0}, {-3, 8}});
}
Argument fraction(const char* name) { return range(name, 0, 3); }

// One entry per field, after the record itself.
std::vector<Argument> interpolation(Filter f) {
    return {record("pParam"),
            in<Vek8u>("pSrc", reference(f)),
            step("pSrc"),
            out<Vek8u>("pDst", written(f, "roiSize")),
            step("pDst"),
            fraction("dx"),
            fraction("dy"),
            blockSize("roiSize"),
            range("roundControl", 0, 1)};
}
VekStatus call(void* function, const Slot* s) {
    const auto n = [&](int i) { return static_cast<Vek32s>(s[i].integer); };
    const VekVC1InterpolationParams p{static_cast<const Vek8u*>(s[1].pointer),
                                      n(2),
                                      static_cast<Vek8u*>(s[3].pointer),
                                      n(4),
                                      n(5),
                                      n(6),
                                      s[7].size,
                                      n(8)};
    return reinterpret_cast<VekStatus (*)(const VekVC1InterpolationParams*)>(function)(s[0].integer != 0 ? &p
                                                                                                         : nullptr);
}

// Block forms: all that may be read is the frame; in a field picture every second of its rows, and the engine gives
// the others too.
Extent frame(int channels) {
    return [=](const Call& c) {
        const VekiSize s = c.size("sizeFrame");
        const int last = c["isFieldPicture"] != 0 ? s.height / 2 * 2 - 1 : s.height;
        return s.width < 1 || last < 1 ? Rect{0, 0, 0, 0} : Rect{0, 0, s.width * channels, last};
    };
}
// With an empty frame nothing is written.
Extent writtenBlock(Filter f) {
    const Extent whole = written(f, "sizeBlock"), reads = frame(1);
    return [=](const Call& c) { return reads(c).right == 0 ? Rect{0, 0, 0, 0} : whole(c); };
}
Argument table(const char* name) { return in<Vek8u>(name, count(256)).optional(); }
Argument position(const char* name) {
    return integer(name, [](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, -24, 44);
    });
}
std::vector<Argument> blockInterpolation(Filter f) {
    return {record("pParam"),
            in<Vek8u>("pSrc", frame(f.channels)),
            step("pSrc"),
            out<Vek8u>("pDst", writtenBlock(f)),
            step("pDst"),
            table("pLUTTop"),
            table("pLUTBottom"),
            size("sizeFrame", {{48, 48},
                               {48, 48},
                               {32, 40},
                               {17, 21},
                               {1, 1},
                               {1, 2},
                               {5, 3},
                               {3, 2},
                               {40, 1},
                               {0, 4},
                               {4, 0},
                               {-2, -2}}),
            blockSize("sizeBlock"),
            position("x"),
            position("y"),
            fraction("dx"),
            fraction("dy"),
            range("roundControl", 0, 1),
            range("isReferInterlaced", 0, 1),
            oneOf("isFieldPicture", {0, 0, 1})};
}
VekStatus callBlock(void* function, const Slot* s) {
    const auto n = [&](int i) { return static_cast<Vek32s>(s[i].integer); };
    const auto p = [&](int i) { return static_cast<Vek8u*>(s[i].pointer); };
    const VekVC1InterpolationBlockParams b{p(1), n(2),  p(3),  n(4),  p(5),  p(6),  s[7].size, s[8].size,
                                           n(9), n(10), n(11), n(12), n(13), n(14), n(15)};
    return reinterpret_cast<VekStatus (*)(const VekVC1InterpolationBlockParams*)>(function)(
        s[0].integer != 0 ? &b : nullptr);
}

[[maybe_unused]] const bool kRows[] = {
    recordRow("vekiInterpolateQPBicubic_VC1_8u_C1R", interpolation(kBicubic), call),
    recordRow("vekiInterpolateQPBilinear_VC1_8u_C1R", interpolation(kBilinear), call),
    recordRow("vekiInterpolateQPBilinear_VC1_8u_C2R", interpolation(kPairs), call),
    recordRow("vekiInterpolateICBicubicBlock_VC1_8u_C1R", blockInterpolation(kBicubic), callBlock),
    recordRow("vekiInterpolateICBilinearBlock_VC1_8u_C1R", blockInterpolation(kBilinear), callBlock),
    recordRow("vekiInterpolateICBilinearBlock_VC1_8u_C2R", blockInterpolation(kPairs), callBlock),
};

}  // namespace
}  // namespace catalogue
