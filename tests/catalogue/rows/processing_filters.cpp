// Rows of the deinterlacers and denoisers. Their pictures have ramps, edges and combs besides noise; states are made
// by the variant under test, once for each set of parameters.
#include <dlfcn.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <tuple>

#include "catalogue.h"

namespace catalogue {
namespace {

// ---- pictures

// One row after the other of a picture that follows from a number: waves of any slope, in steps or not, rows that
// alternate, noise. What belongs to the time t moves.
struct Painter {
    std::uint64_t style = 0;
    std::int64_t y = 0;

    Vek8u sample(Random& random, std::int64_t x, std::int64_t t) const {
        const auto bits = [&](int from, std::uint64_t mask) { return static_cast<std::int64_t>(style >> from & mask); };
        const std::int64_t moved = bits(20, 3) == 0 ? t : 0;
        std::int64_t v = (bits(0, 7) * (x - 2 * moved) + (bits(3, 15) - 7) * y + bits(8, 255)) & 511;
        v = v < 256 ? v : 511 - v;
        if (bits(16, 3) == 0) v = v < 128 ? bits(24, 63) : 255 - bits(30, 63);
        if (bits(18, 3) == 0 && (y & 1) != 0 && ((x + moved) & 31) < 16) v += bits(36, 31) - 16;
        constexpr std::int64_t kNoise[] = {0, 0, 1, 3, 8, 20, 60, 255};
        const std::int64_t noise = kNoise[bits(41, 7)];
        if (noise > 0) v += draw(random, -noise, noise);
        return static_cast<Vek8u>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
};
Argument picture(const char* name, const char* size, int t = 0) {
    const auto painter = std::make_shared<Painter>();
    return in<Vek8u>(name, region(size)).filled([=](Random& random, const Call& c, void* samples, int n) {
        const auto style = static_cast<std::uint64_t>(c["style"]);
        *painter = {style, style == painter->style ? painter->y + 1 : 0};
        for (int x = 0; x < n; ++x) static_cast<Vek8u*>(samples)[x] = painter->sample(random, x, t);
    });
}
Argument style() {
    return integer("style", [](Random& random, const Call&) { return random() >> 1; });
}
Argument pictureSize(const char* name, std::vector<VekiSize> more = {}) {
    std::vector<VekiSize> sizes = {{8, 8}, {9, 17}, {33, 18}, {64, 40}, {75, 9}, {48, 12}, {131, 11}, {300, 8}};
    sizes.insert(sizes.end(), more.begin(), more.end());
    return size(name, sizes);
}
// Widths just beyond those in which the fast forms cut a row are among them.
Argument roi() {
    return pictureSize("roiSize", {{1, 1},
                                   {1, 9},
                                   {9, 1},
                                   {2, 2},
                                   {3, 3},
                                   {4, 5},
                                   {40, 2},
                                   {17, 3},
                                   {20, 4},
                                   {20, 6},
                                   {61, 9},
                                   {62, 9},
                                   {122, 7},
                                   {514, 6},
                                   {700, 5},
                                   {1026, 5}})
        .badSize({{0, 8}, {8, 0}, {-1, 8}, {8, INT32_MIN}}, vekStsErrSize);
}
Argument selector(const char* name, int most) {
    return range(name, 0, most).bad({-1, most + 1, INT32_MIN, INT32_MAX}, vekStsErrBadArg);
}
// A number that the export limits to low..high.
Argument limited(const char* name, int low, int high) {
    return integer(name, [=](Random& random, const Call&) {
        return random() % 16 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, low - 2, high + 2);
    });
}
std::vector<Argument> onePlane(std::vector<Argument> more) {
    std::vector<Argument> a = {picture("pSrc", "roiSize"), step("pSrc"), out<Vek8u>("pDst", region("roiSize")),
                               step("pDst"), roi()};
    a.insert(a.end(), more.begin(), more.end());
    return a;
}
std::vector<Argument> threePlanes(std::vector<Argument> more) {
    std::vector<Argument> a = {picture("pPrev", "roiSize"),
                               picture("pCur", "roiSize", 1),
                               picture("pNext", "roiSize", 2),
                               step({"pPrev", "pCur", "pNext"}).apart(),
                               out<Vek8u>("pDst", region("roiSize")),
                               step("pDst"),
                               roi()};
    a.insert(a.end(), more.begin(), more.end());
    return a;
}

// An export whose arguments are followed by the entry `style`, which it does not take.
template <class... A>
bool styledRow(const char* name, VekStatus (*)(A...), std::vector<Argument> arguments, int rounds) {
    arguments.push_back(style());
    if (sizeof...(A) + 1 != arguments.size()) std::abort();
    return recordRow(
        name, std::move(arguments),
        [](void* function, const Slot* slots) {
            return callWithSlots(reinterpret_cast<VekStatus (*)(A...)>(function), slots,
                                 std::index_sequence_for<A...>{});
        },
        rounds);
}

// ---- states

// The export of the same library as `function`.
template <class F>
F* sibling(void* function, const char* name) {
    Dl_info info = {};
    if (dladdr(function, &info) == 0) std::abort();
    void* library = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    auto* found = reinterpret_cast<F*>(dlsym(library, name));
    if (found == nullptr) std::abort();
    dlclose(library);
    return found;
}

// The argument of a state: null, or any pointer that stands for the state.
Argument stateArgument() {
    static constexpr int kAny = 0;
    return fixed("pState", [] { return static_cast<const void*>(&kAny); });
}
// The state for these parameters and this library, made by `init` when it is first asked for. It lives on from call to
// call: a recursive filter sees the same sequence in every variant.
template <class State, class Init>
State* stateFor(void* function, std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int64_t> parameters,
                Init&& init) {
    // Never destroyed: the states live as long as the program.
    static auto& states = *new std::map<std::pair<void*, decltype(parameters)>, State*>;
    State*& state = states[{function, parameters}];
    if (state == nullptr && init(&state) != vekStsOk) std::abort();
    return state;
}

VekStatus callBlend(void* function, const Slot* slots) {
    Slot passed[6];
    std::copy_n(slots, 6, passed);
    const auto low = static_cast<Vek32s>(slots[6].integer), high = static_cast<Vek32s>(slots[7].integer);
    if (passed[5].pointer != nullptr)
        passed[5].pointer = stateFor<VekDeinterlaceBlendState>(function, {low, high, 0, 0}, [&](auto** state) {
            return sibling<decltype(vekiDeinterlaceBlendInitAlloc_8u_C1)>(
                function, "vekiDeinterlaceBlendInitAlloc_8u_C1")(low, high, state);
        });
    return callWithSlots(reinterpret_cast<decltype(&vekiDeinterlaceBlend_8u_C1R)>(function), passed,
                         std::make_index_sequence<6>());
}
VekStatus callAdaptive(void* function, const Slot* slots) {
    Slot passed[5];
    std::copy_n(slots, 5, passed);
    const VekiSize size = slots[5].size;
    const auto noise = static_cast<Vek32s>(slots[6].integer), frames = static_cast<Vek32s>(slots[7].integer);
    if (passed[4].pointer != nullptr)
        passed[4].pointer =
            stateFor<VekDenoiseAdaptiveState>(function, {size.width, size.height, noise, frames}, [&](auto** state) {
                return sibling<decltype(vekiFilterDenoiseAdaptiveInitAlloc_8u_C1)>(
                    function, "vekiFilterDenoiseAdaptiveInitAlloc_8u_C1")(size, noise, frames, state);
            });
    return callWithSlots(reinterpret_cast<decltype(&vekiFilterDenoiseAdaptive_8u_C1R)>(function), passed,
                         std::make_index_sequence<5>());
}
VekStatus callMosquito(void* function, const Slot* slots) {
    Slot passed[6];
    std::copy_n(slots, 6, passed);
    const VekiSize size = slots[6].size;
    if (passed[5].pointer != nullptr)
        passed[5].pointer =
            stateFor<VekDenoiseMosquitoState>(function, {size.width, size.height, 0, 0}, [&](auto** state) {
                return sibling<decltype(vekiFilterDenoiseMosquitoInitAlloc_8u_C1)>(
                    function, "vekiFilterDenoiseMosquitoInitAlloc_8u_C1")(size, state);
            });
    return callWithSlots(reinterpret_cast<decltype(&vekiFilterDenoiseMosquito_8u_C1R)>(function), passed,
                         std::make_index_sequence<6>());
}

std::vector<Argument> statePlane(std::vector<Argument> more) {
    std::vector<Argument> a = {picture("pSrc", "size"), step("pSrc"), out<Vek8u>("pDst", region("size")), step("pDst")};
    a.insert(a.end(), more.begin(), more.end());
    a.push_back(style());
    return a;
}

[[maybe_unused]] const bool kRows[] = {
    styledRow("vekiDeinterlaceTriangle_8u_C1R", &vekiDeinterlaceTriangle_8u_C1R, onePlane({selector("field", 2)}), 800),
    styledRow("vekiDeinterlaceMedianThreshold_8u_C1R", &vekiDeinterlaceMedianThreshold_8u_C1R,
              onePlane({selector("field", 1), limited("threshold", 0, 255)}), 800),
    styledRow("vekiDeinterlaceEdgeDetect_8u_C1R", &vekiDeinterlaceEdgeDetect_8u_C1R,
              onePlane({selector("field", 1), limited("threshold", 0, 30)}), 600),
    styledRow("vekiDeinterlaceMotionAdaptive_8u_C1R", &vekiDeinterlaceMotionAdaptive_8u_C1R,
              threePlanes({selector("field", 1), selector("firstField", 1)}), 600),
    recordRow("vekiDeinterlaceBlend_8u_C1R",
              onePlane({stateArgument(), limited("low", 0, 254), limited("high", 0, 255), style()}), callBlend, 300),
    recordRow(
        "vekiFilterDenoiseAdaptive_8u_C1R",
        statePlane({stateArgument(), pictureSize("size", {{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 3}, {17, 5}, {700, 5}}),
                    oneOf("noise", {-1, 6, 10, 20, 40, 60, 100, 255, 256}), oneOf("frames", {0, 1, 2, 10, 70})}),
        callAdaptive, 600),
    styledRow("vekiFilterDenoiseCAST_8u_C1R", &vekiFilterDenoiseCAST_8u_C1R, threePlanes({limited("noise", 6, 255)}),
              150),
    recordRow("vekiFilterDenoiseMosquito_8u_C1R",
              statePlane({limited("strength", 0, 63), stateArgument(),
                          pictureSize("size", {{15, 8}, {8, 15}, {17, 16}, {10, 9}})
                              .badSize({{7, 8}, {8, 7}, {1, 1}}, vekStsErrUnsupported)}),
              callMosquito, 400),
};

}  // namespace
}  // namespace catalogue
