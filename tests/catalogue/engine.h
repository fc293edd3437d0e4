// The engine behind the catalogue: draws a call from a row, lays its operands out in memory, runs it in a variant of
// the library and tells what it did.
#ifndef VEKVC_TESTS_ENGINE_H
#define VEKVC_TESTS_ENGINE_H

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "catalogue.h"

namespace catalogue {

// The built variants that this processor runs, loaded side by side; px, the plain one, comes first.
struct Variant {
    std::string code;
    void* handle;
    void* find(const std::string& name) const;
};
const std::vector<Variant>& variants();

// Where the operands lie.
enum class Layout {
    Free,         // anywhere: odd addresses, odd, negative and zero steps, garbage around
    TopLeft,      // every row begins at the first byte of a page behind a forbidden one; nothing above the first row
    BottomRight,  // every row ends at the last byte of a page before a forbidden one; nothing below the last row
    Picture,      // ordinary positive steps, for the benchmark
};

// What one run left behind.
struct Outcome {
    std::string fault;  // the access that was stopped; empty if none was
    VekStatus status = vekStsOk;
    std::vector<std::byte> written;       // all bytes that the contract allows to be written, operand by operand
    std::vector<std::ptrdiff_t> movedOn;  // by how many bytes each running pointer moved
    bool wroteNothing = true;             // all bytes and running pointers are as before
    std::string strayWrite;               // the operand that was written outside its extent; empty if none was
};

// One drawn call with its operands in memory.
class Instance {
  public:
    Instance(const Row& row, Layout layout, Random& random);
    Instance(Instance&&) = default;

    // New garbage where the export must not look: around the operands and in what is only written.
    void scramble(Random& random);
    // Restores all operands and runs the function.
    Outcome run(void* function);
    // The same without looking at the effects; for the benchmark. Operands are restored by restore().
    VekStatus runBare(void* function) { return row_.thunk(function, slots_.data()); }
    void restore();

    // One way to make the call fail: the argument at fault, its status, and the slot that makes it so.
    struct Failure {
        std::size_t argument;
        VekStatus status;
        std::string what;
        Slot slot;
        bool inner = false;  // the pointer behind the argument is null
    };
    // The checks in the order in which the export must make them; each group's members fail alike.
    std::vector<std::vector<Failure>> failures() const;
    void apply(const Failure& failure);

    const std::vector<Slot>& slots() const { return slots_; }
    std::string describe() const;

  private:
    // A stretch of memory that holds some or all rows of an operand.
    struct Span {
        std::byte* start;
        std::vector<std::byte> initial;
        std::vector<std::uint8_t> kind;  // per byte: kOutside, kTouched, kWritten
    };
    struct Operand {
        std::size_t argument;
        Rect touched;
        std::ptrdiff_t step = 0;  // bytes
        std::byte* pointer = nullptr;
        std::vector<Span> spans;
    };

    void drawValues(Random& random);
    void chooseSteps(Random& random);
    void place(Operand& operand, Random& random);
    void mark(Operand& operand, const Rect& rect, std::uint8_t kind);
    void fillContent(Operand& operand, Random& random);
    std::ptrdiff_t leastStep(const Argument& step) const;
    std::string explainFault(const void* address) const;
    Operand* operandOf(const std::string& name);
    const Operand* operandOf(const std::string& name) const { return const_cast<Instance*>(this)->operandOf(name); }

    const Row& row_;
    Layout layout_;
    Call call_;
    std::vector<Slot> slots_;
    std::deque<void*> cells_;              // the pointers behind running arguments, by operand
    std::vector<std::size_t> innerNulls_;  // operands whose inner pointer apply() made null
    std::vector<Operand> operands_;
    std::vector<std::vector<std::byte>> storage_;
};

}  // namespace catalogue

#endif
