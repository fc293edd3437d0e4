// Rows of exports with optional pointers: each is drawn given or null, by an entry "<name>Given" behind the others.
#ifndef VEKVC_TESTS_CATALOGUE_OPTIONAL_H
#define VEKVC_TESTS_CATALOGUE_OPTIONAL_H

#include <algorithm>

#include "catalogue.h"

namespace catalogue {

// n samples in a row if the argument is given.
inline Extent whenGiven(const std::string& argument, int n) {
    return [=](const Call& c) { return Rect{0, 0, c[argument + "Given"] ? n : 0, 1}; };
}

// A row whose arguments number `optional...` are optional; they must be declared nullable.
template <int... optional, class... A>
bool optionalRow(const char* name, VekStatus (*)(A...), std::vector<Argument> arguments, int rounds = 0) {
    if (sizeof...(A) != arguments.size()) std::abort();
    for (const int i : {optional...}) {
        if (!arguments[static_cast<std::size_t>(i)].mayBeNull) std::abort();
        arguments.push_back(oneOf(arguments[static_cast<std::size_t>(i)].name + "Given", {0, 1}));
    }
    return recordRow(
        name, std::move(arguments),
        [](void* function, const Slot* slots) {
            constexpr std::size_t n = sizeof...(A);
            Slot passed[n];
            std::copy_n(slots, n, passed);
            const Slot* given = slots + n;
            for (const int i : {optional...})
                if ((given++)->integer == 0) passed[i].pointer = nullptr;
            return callWithSlots(reinterpret_cast<VekStatus (*)(A...)>(function), passed,
                                 std::index_sequence_for<A...>{});
        },
        rounds);
}

}  // namespace catalogue

#endif
