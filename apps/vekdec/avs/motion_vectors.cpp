#include "avs/motion_vectors.h"

#include <algorithm>
#include <cstdlib>

namespace vekdec::avs {
namespace {

constexpr std::int64_t sign(std::int64_t value) { return value < 0 ? -1 : 1; }

}  // namespace

MotionVector VectorSum::vector() const {
    if (x < INT16_MIN || x > INT16_MAX || y < INT16_MIN || y > INT16_MAX)
        throw BadSyntax("a motion vector is out of range");
    return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)};
}

void VectorPredictor::begin(const PictureContext& context) {
    context_ = &context;
    for (int i = 0; i < kMostReferences; ++i)
        unit_[i] = context.reference[i].present() ? 512 / context.reference[i].distance : 0;
}

void VectorPredictor::beginMacroblock(const Macroblock* left, const Macroblock* above, const Macroblock* aboveLeft,
                                      const Macroblock* aboveRight) {
    static constexpr Motion kOutside{{}, Motion::kUnavailable};
    for (int d = 0; d < 2; ++d) {
        Motion* at = grid_[d].at;
        const auto of = [&](const Macroblock* mb, int block) {
            return mb == nullptr ? kOutside : mb->motion[d][block];
        };
        at[0] = of(aboveLeft, 3);
        at[1] = of(above, 2);
        at[2] = of(above, 3);
        at[3] = of(aboveRight, 2);
        at[4] = of(left, 1);
        at[8] = of(left, 3);
        at[7] = at[11] = kOutside;
        at[5] = at[6] = at[9] = at[10] = Motion{};
    }
}

// The vector component of a neighbour, stretched to the distance of reference `ref`.
std::int64_t VectorPredictor::scaled(int component, int ref, const Motion& from) const {
    if (!from.used()) return 0;
    const std::int64_t product =
        std::int64_t{component} * context_->reference[ref].distance * unit_[static_cast<std::size_t>(from.ref)];
    return (product + 256 - (component < 0 ? 1 : 0)) >> 9;
}

VectorSum VectorPredictor::predict(Direction direction, const Partition& p, int ref) const {
    const Motion* at = grid_[direction].at + kFirst + kColumns * p.y + p.x;
    const Motion &a = at[-1], &b = at[-kColumns], &beside = at[-kColumns + p.width];
    const Motion& c = beside.ref == Motion::kUnavailable ? at[-kColumns - 1] : beside;
    const auto unscaled = [](const Motion& m) { return VectorSum{m.mv.x, m.mv.y}; };

    if (a.used() + b.used() + c.used() == 1) return unscaled(a.used() ? a : b.used() ? b : c);
    using First = Partition::First;
    if (p.first != First::None) {
        const Motion& first = p.first == First::A ? a : p.first == First::B ? b : c;
        if (first.ref == ref) return unscaled(first);
    }
    // Of the triangle of the three, the corner opposite to the side of middle length.
    const auto stretched = [&](const Motion& m) { return VectorSum{scaled(m.mv.x, ref, m), scaled(m.mv.y, ref, m)}; };
    const VectorSum va = stretched(a), vb = stretched(b), vc = stretched(c);
    const auto apart = [](const VectorSum& v, const VectorSum& w) { return std::abs(v.x - w.x) + std::abs(v.y - w.y); };
    const std::int64_t ab = apart(va, vb), bc = apart(vb, vc), ca = apart(vc, va);
    const std::int64_t middle = std::max(std::min(ab, bc), std::min(std::max(ab, bc), ca));
    return middle == ab ? vc : middle == bc ? va : vb;
}

MotionVector VectorPredictor::skipped() const {
    const Motion *at = grid_[kForward].at + kFirst, &a = at[-1], &b = at[-kColumns];
    const auto still = [](const Motion& m) {
        return m.ref == Motion::kUnavailable || (m.ref == 0 && m.mv == MotionVector{});
    };
    if (still(a) || still(b)) return {};
    return predict(kForward, kWhole[0], 0).vector();
}

void VectorPredictor::set(Macroblock& mb, Direction direction, const Partition& p, Motion motion) {
    for (int y = p.y; y < p.y + p.height; ++y)
        for (int x = p.x; x < p.x + p.width; ++x) {
            grid_[direction].at[kFirst + kColumns * y + x] = motion;
            mb.motion[direction][2 * y + x] = motion;
        }
}

MotionVector VectorPredictor::symmetric(MotionVector forward) const {
    const std::int64_t ratio = std::int64_t{context_->reference[0].distance} * unit_[1];
    const auto mirrored = [&](int component) { return -((component * ratio + 256) >> 9); };
    return VectorSum{mirrored(forward.x), mirrored(forward.y)}.vector();
}

MotionVector VectorPredictor::direct(Direction direction, MotionVector vector, int distance) const {
    const std::int64_t unit = 16384 / distance;
    const std::int64_t own = context_->reference[direction == kForward ? 1 : 0].distance;
    const auto part = [&](int component) {
        const std::int64_t size = (unit + unit * std::abs(component) * own - 1) >> 14;
        return direction == kForward ? sign(component) * size : -sign(component) * size;
    };
    return VectorSum{part(vector.x), part(vector.y)}.vector();
}

}  // namespace vekdec::avs
