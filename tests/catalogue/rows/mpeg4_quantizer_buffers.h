// The quantizer buffers (pSpec) that the rows of MPEG-4 hand to its exports.
#ifndef VEKVC_TESTS_CATALOGUE_MPEG4_QUANTIZER_BUFFERS_H
#define VEKVC_TESTS_CATALOGUE_MPEG4_QUANTIZER_BUFFERS_H

#include <algorithm>
#include <array>

#include "catalogue.h"

namespace catalogue {

using InitQuantizer = VekStatus (*)(Vek8u*, const Vek8u*, Vek32s);

struct Mpeg4Setting {
    int bitsPerPixel;
    bool matrix;
    int largestWeight;

    int largestQp() const { return (1 << (bitsPerPixel - 3)) - 1; }
};
// Numbered from 1; 0 stands for a null pointer.
inline constexpr Mpeg4Setting kMpeg4Settings[] = {
    {8, false, 0}, {8, true, 45}, {8, true, 255}, {12, true, 255}, {9, false, 0}};

using Mpeg4Buffers = std::array<std::array<Vek8u, 412>, std::size(kMpeg4Settings)>;
inline Mpeg4Buffers mpeg4Buffers(InitQuantizer init) {
    alignas(16) Mpeg4Buffers buffers = {};
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        const Mpeg4Setting& setting = kMpeg4Settings[i];
        Vek8u matrix[64];
        for (int k = 0; k < 64; ++k)
            matrix[k] = static_cast<Vek8u>(1 + (37 * k + 7) % std::max(setting.largestWeight, 1));
        matrix[40] = 1;
        init(buffers[i].data(), setting.matrix ? matrix : nullptr, setting.bitsPerPixel);
    }
    return buffers;
}
template <InitQuantizer init>
const Vek8u* mpeg4Specification(std::int64_t number) {
    alignas(16) static const Mpeg4Buffers buffers = mpeg4Buffers(init);
    return number == 0 ? nullptr : buffers[static_cast<std::size_t>(number - 1)].data();
}

inline Argument mpeg4SpecificationNumber() {
    Argument a = oneOf("pSpec", {1, 2, 3, 4, 5}).bad({0}, vekStsErrNullPtr);
    a.isRecord = true;
    return a;
}
inline Argument mpeg4Qp() {
    return integer("QP", [](Random& random,
                            const Call& c) { return draw(random, 1, kMpeg4Settings[c["pSpec"] - 1].largestQp()); })
        .bad({0, -1, 512, INT32_MAX, INT32_MIN}, vekStsErrQPRange);
}

// A row of an export whose argument `at` is a specification.
template <InitQuantizer init, int at, class... A>
bool specificationRow(const char* name, VekStatus (*)(A...), std::vector<Argument> arguments) {
    if (sizeof...(A) != arguments.size()) std::abort();
    return recordRow(name, std::move(arguments), [](void* function, const Slot* slots) {
        Slot passed[sizeof...(A)];
        std::copy_n(slots, sizeof...(A), passed);
        passed[at].pointer = const_cast<Vek8u*>(mpeg4Specification<init>(slots[at].integer));
        return callWithSlots(reinterpret_cast<VekStatus (*)(A...)>(function), passed, std::index_sequence_for<A...>{});
    });
}

}  // namespace catalogue

#endif
