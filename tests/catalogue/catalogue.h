// The catalogue: every export described once, by one row that says what its arguments are. The engine (engine.h) draws
// calls from a row, places the operands in memory, runs them in every variant and compares; the benchmark times them.
//
//     row("vekiCopy8x8HP_8u_C1R", &vekiCopy8x8HP_8u_C1R,
//         {in<Vek8u>("pSrc", halfPel(8, 8, "acc")), step("pSrc"), out<Vek8u>("pDst", block(8, 8)), step("pDst"),
//          anyInt("acc"), anyInt("rounding")});
//
// There is one entry per argument, in order. An export that takes a record has one entry per field and a function that
// builds the record (see recordRow).
#ifndef VEKVC_TESTS_CATALOGUE_H
#define VEKVC_TESTS_CATALOGUE_H

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "vekvc.h"

namespace catalogue {

using Random = std::mt19937_64;

// A number in low..high, both included; now and then one of the two ends.
std::int64_t draw(Random& random, std::int64_t low, std::int64_t high);

// What is handed to the export for one argument.
union Slot {
    std::int64_t integer;
    void* pointer;
    VekiSize size;
};

class Call;

// The samples that an operand may touch, relative to its pointer, ends excluded; rows count in steps.
struct Rect {
    int left, top, right, bottom;
};
using Extent = std::function<Rect(const Call&)>;
using Choice = std::function<std::int64_t(Random&, const Call&)>;

enum class Use { In, Out, InOut };
enum class Kind { Memory, Step, Integer, Size, Fixed };

// One argument. Made by the functions below and refined by the members that return *this.
struct Argument {
    Argument(std::string itsName, Kind itsKind) : name(std::move(itsName)), kind(itsKind) {}

    std::string name;
    Kind kind;

    // Memory: samples of `elementBytes` each, reached by a step or, without one, a single row.
    int elementBytes = 0;
    Use use = Use::In;
    Extent touched;  // all that may be read or written
    Extent written;  // all that may be written; `touched` if it is not set
    Choice element;  // content of one sample; varied random content if it is not set
    std::function<void(Random&, const Call&, void* samples, int count)> fill;  // all samples of a single row at once
    bool running = false;        // the argument is a pointer to this pointer, which the export moves on
    bool mayBeNull = false;      // null is no error; whether the row passes it is its own affair
    bool sometimesNull = false;  // and the engine passes it now and then
    std::string seed;  // a random number of this name is drawn before all operands; content and extents may follow it

    // Step: of these operands.
    std::vector<std::string> planes;
    int stepUnit = 1;          // bytes
    bool stepChecked = false;  // must be at least the width: shorter ones are vekStsErrStep
    Extent stepWidth;          // the block or region whose width the check uses; the operand's extent if it is not set
    int stepLeast = 0;         // > 0: must be at least this instead
    bool rowsApart = false;    // rows that are only read do not overlap either: samples keep the values they were given

    // Integer, Size: valid and invalid values.
    Choice value;
    std::vector<VekiSize> sizes;
    std::vector<std::pair<std::int64_t, VekStatus>> badValues;
    std::vector<std::pair<VekiSize, VekStatus>> badSizes;
    bool isRecord = false;  // the pointer to the record itself: 0 stands for null

    // Fixed: a pointer to something that the row owns.
    std::function<const void*()> object;

    Argument writes(Extent e) const {
        return with([&](Argument& a) { a.written = std::move(e); });
    }
    Argument of(Choice c) const {
        return with([&](Argument& a) { a.element = std::move(c); });
    }
    Argument of(std::int64_t low, std::int64_t high) const {
        return of([=](Random& random, const Call&) { return draw(random, low, high); });
    }
    Argument filled(std::function<void(Random&, const Call&, void*, int)> f) const {
        return with([&](Argument& a) { a.fill = std::move(f); });
    }
    Argument movedOn() const {
        return with([](Argument& a) { a.running = true; });
    }
    Argument seeded(std::string itsName) const {
        return with([&](Argument& a) { a.seed = std::move(itsName); });
    }
    Argument nullable() const {
        return with([](Argument& a) { a.mayBeNull = true; });
    }
    Argument optional() const {
        return with([](Argument& a) { a.mayBeNull = a.sometimesNull = true; });
    }
    Argument inUnitsOf(int bytes) const {
        return with([=](Argument& a) { a.stepUnit = bytes; });
    }
    Argument atLeastWidth() const {
        return with([](Argument& a) { a.stepChecked = true; });
    }
    Argument atLeastWidthOf(Extent e) const {
        return with([&](Argument& a) {
            a.stepChecked = true;
            a.stepWidth = std::move(e);
        });
    }
    Argument atLeast(int least) const {
        return with([=](Argument& a) {
            a.stepChecked = true;
            a.stepLeast = least;
        });
    }
    Argument apart() const {
        return with([](Argument& a) { a.rowsApart = true; });
    }
    Argument bad(std::vector<std::int64_t> values, VekStatus status) const {
        return with([&](Argument& a) {
            for (const auto v : values) a.badValues.emplace_back(v, status);
        });
    }
    Argument badSize(std::vector<VekiSize> values, VekStatus status) const {
        return with([&](Argument& a) {
            for (const auto v : values) a.badSizes.emplace_back(v, status);
        });
    }

  private:
    template <class F>
    Argument with(F change) const {
        Argument copy = *this;
        change(copy);
        return copy;
    }
};

// A call under construction: the values drawn so far, by argument name.
class Call {
  public:
    std::int64_t operator[](const std::string& name) const;
    VekiSize size(const std::string& name) const;

    struct Value {
        std::string name;
        std::int64_t integer;
        VekiSize size;
    };
    std::vector<Value> values;
};

using Thunk = VekStatus (*)(void* function, const Slot* slots);

struct Row {
    std::string name;
    Thunk thunk;
    std::vector<Argument> arguments;
    int rounds = 0;  // calls per test; 0: the engine's default
};

// All rows, in order of name.
const std::vector<Row>& rows();
bool addRow(Row row);

// ---- extents

inline Extent rect(int left, int top, int right, int bottom) {
    return [=](const Call&) { return Rect{left, top, right, bottom}; };
}
inline Extent block(int width, int height) { return rect(0, 0, width, height); }
inline Extent count(int n) { return rect(0, 0, n, 1); }
inline Extent region(const std::string& size) {
    return [=](const Call& c) { return Rect{0, 0, c.size(size).width, c.size(size).height}; };
}

// ---- arguments

template <class T>
Argument memory(std::string name, Use use, Extent touched) {
    Argument a{std::move(name), Kind::Memory};
    a.elementBytes = sizeof(T);
    a.use = use;
    a.touched = std::move(touched);
    return a;
}
template <class T>
Argument in(std::string name, Extent e) {
    return memory<T>(std::move(name), Use::In, std::move(e));
}
template <class T>
Argument out(std::string name, Extent e) {
    return memory<T>(std::move(name), Use::Out, std::move(e));
}
template <class T>
Argument inOut(std::string name, Extent e) {
    return memory<T>(std::move(name), Use::InOut, std::move(e));
}

// The step of one operand, or of several that share it.
inline Argument step(std::vector<std::string> planes) {
    Argument a{planes.front() + "Step", Kind::Step};
    a.planes = std::move(planes);
    return a;
}
inline Argument step(const char* plane) { return step(std::vector<std::string>{plane}); }

inline Argument integer(std::string name, Choice value) {
    Argument a{std::move(name), Kind::Integer};
    a.value = std::move(value);
    return a;
}
inline Argument range(std::string name, std::int64_t low, std::int64_t high) {
    return integer(std::move(name), [=](Random& random, const Call&) { return draw(random, low, high); });
}
inline Argument oneOf(std::string name, std::vector<std::int64_t> values) {
    return integer(std::move(name), [values = std::move(values)](Random& random, const Call&) {
        return values[static_cast<std::size_t>(random() % values.size())];
    });
}
// Any 32-bit value, small ones often.
inline Argument anyInt(std::string name) {
    return integer(std::move(name), [](Random& random, const Call&) {
        return random() % 4 == 0 ? draw(random, INT32_MIN, INT32_MAX) : draw(random, 0, 15);
    });
}
inline Argument size(std::string name, std::vector<VekiSize> sizes) {
    Argument a{std::move(name), Kind::Size};
    a.sizes = std::move(sizes);
    return a;
}
// A pointer to an object of the row's own that the export only reads, such as a decoding table.
inline Argument fixed(std::string name, std::function<const void*()> object) {
    Argument a{std::move(name), Kind::Fixed};
    a.object = std::move(object);
    return a;
}
// The pointer to the record itself; the row's function passes null where the slot holds 0.
inline Argument record(std::string name) {
    Argument a = oneOf(std::move(name), {1}).bad({0}, vekStsErrNullPtr);
    a.isRecord = true;
    return a;
}

// ---- rows

template <class T>
T fromSlot(const Slot& slot) {
    if constexpr (std::is_pointer_v<T>)
        return static_cast<T>(slot.pointer);
    else if constexpr (std::is_same_v<T, VekiSize>)
        return slot.size;
    else
        return static_cast<T>(slot.integer);
}

template <class... A, std::size_t... I>
VekStatus callWithSlots(VekStatus (*function)(A...), const Slot* slots, std::index_sequence<I...>) {
    return function(fromSlot<A>(slots[I])...);
}

// An export whose arguments are the entries, one by one.
template <class... A>
bool row(const char* name, VekStatus (*)(A...), std::vector<Argument> arguments, int rounds = 0) {
    const Thunk thunk = [](void* function, const Slot* slots) {
        return callWithSlots(reinterpret_cast<VekStatus (*)(A...)>(function), slots, std::index_sequence_for<A...>{});
    };
    if (sizeof...(A) != arguments.size()) std::abort();
    return addRow({name, thunk, std::move(arguments), rounds});
}

// An export that takes a record: `thunk` builds it from the slots (one per entry) and calls the function.
inline bool recordRow(const char* name, std::vector<Argument> arguments, Thunk thunk, int rounds = 0) {
    return addRow({name, thunk, std::move(arguments), rounds});
}

}  // namespace catalogue

#endif
