#include "engine.h"

#include <dlfcn.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace catalogue {

namespace {

constexpr std::uint8_t kOutside = 0, kTouched = 1, kWritten = 2;
constexpr std::ptrdiff_t kPage = 4096, kRowBytes = 2 * kPage;
constexpr int kArenaRows = 96;
constexpr int kArenaMargin = 8;  // forbidden row pitches above and below

// Rows of two pages each with forbidden pages between them.
class Arena {
  public:
    static constexpr std::ptrdiff_t kPitch = kRowBytes + kPage;

    Arena() {
        base_ = static_cast<std::byte*>(mmap(nullptr, (kArenaRows + 2 * kArenaMargin) * kPitch, PROT_NONE,
                                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        if (base_ == MAP_FAILED) std::abort();
        for (int i = 0; i < kArenaRows; ++i)
            if (mprotect(row(i), kRowBytes, PROT_READ | PROT_WRITE) != 0) std::abort();
    }
    std::byte* row(int i) const { return base_ + (kArenaMargin + i) * kPitch + kPage; }
    bool contains(const void* p) const {
        const auto* b = static_cast<const std::byte*>(p);
        return b >= base_ && b < base_ + (kArenaRows + 2 * kArenaMargin) * kPitch;
    }

  private:
    std::byte* base_;
};

const Arena& arena(std::size_t i) {
    static std::vector<std::unique_ptr<Arena>> all;
    while (all.size() <= i) all.push_back(std::make_unique<Arena>());
    return *all[i];
}

// ---- accesses to forbidden pages become results

sigjmp_buf landing;
volatile sig_atomic_t armed = 0;
int caughtSignal = 0;
void* caughtAddress = nullptr;

void onFault(int number, siginfo_t* info, void*) {
    if (!armed) {
        signal(number, SIG_DFL);
        return;
    }
    armed = 0;
    caughtSignal = number;
    caughtAddress = info->si_addr;
    siglongjmp(landing, 1);
}

void catchFaults() {
    static const bool installed = [] {
        struct sigaction action = {};
        action.sa_sigaction = onFault;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE}) sigaction(number, &action, nullptr);
        return true;
    }();
    (void)installed;
}

// Calls the function; false if a fault stopped it. By itself, so that no object lives across the jump.
[[gnu::noinline]] bool callGuarded(Thunk thunk, void* function, const Slot* slots, VekStatus& status) {
    if (sigsetjmp(landing, 1) != 0) return false;
    armed = 1;
    status = thunk(function, slots);
    armed = 0;
    return true;
}

// ---- content

// One sample drawn in a style: noise, flat extremes, mixed extremes, near the middle, small.
std::int64_t sampleOf(Random& random, int style, int elementBytes) {
    const std::int64_t high = elementBytes == 1 ? 255 : elementBytes == 2 ? 32767 : INT32_MAX;
    const std::int64_t low = elementBytes == 1 ? 0 : -high - 1;
    switch (style) {
        case 0:
            return low;
        case 1:
            return high;
        case 2:
            return random() % 2 == 0 ? low : high;
        case 3:
            return (elementBytes == 1 ? 128 : 0) + static_cast<std::int64_t>(random() % 9) - 4;
        case 4:
            return (elementBytes == 1 ? 0 : -256) +
                   static_cast<std::int64_t>(random() % (elementBytes == 1 ? 256 : 513));
        default:
            return static_cast<std::int64_t>(random());
    }
}

void putSample(void* p, std::int64_t value, int elementBytes) {
    std::memcpy(p, &value, static_cast<std::size_t>(elementBytes));  // little endian: the low bytes
}

void noise(Random& random, std::byte* p, std::size_t n) {
    for (std::size_t i = 0; i < n; i += 8) {
        const std::uint64_t bits = random();
        std::memcpy(p + i, &bits, std::min<std::size_t>(8, n - i));
    }
}

Slot integerSlot(std::int64_t value) {
    Slot slot = {};
    slot.integer = value;
    return slot;
}
Slot pointerSlot(void* p) {
    Slot slot = {};
    slot.pointer = p;
    return slot;
}
Slot sizeSlot(VekiSize s) {
    Slot slot = {};
    slot.size = s;
    return slot;
}

}  // namespace

const std::vector<Variant>& variants() {
    static const std::vector<Variant> all = [] {
        std::vector<Variant> found;
        for (const char* code : {"px", "sf", "av", "az"}) {
            const std::string file = std::string(VEKVC_LIB_DIR) + "/libvekvc-" + code + ".so.6.1";
            if (void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
                found.push_back({code, handle});
            else if (FILE* exists = fopen(file.c_str(), "rb")) {
                std::fclose(exists);
                std::fprintf(stderr, "variant %s does not load here: %s\n", code, dlerror());
            }
        }
        if (found.empty() || found.front().code != "px") {
            std::fprintf(stderr, "no plain library in %s\n", VEKVC_LIB_DIR);
            std::abort();
        }
        return found;
    }();
    return all;
}

void* Variant::find(const std::string& name) const { return dlsym(handle, name.c_str()); }

Instance::Instance(const Row& row, Layout layout, Random& random) : row_(row), layout_(layout) {
    drawValues(random);
    const auto& arguments = row_.arguments;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (arguments[i].kind == Kind::Memory) operands_.push_back({i, arguments[i].touched(call_), 0, nullptr, {}});
    chooseSteps(random);
    cells_.resize(operands_.size());
    for (auto& operand : operands_) {
        place(operand, random);
        const Argument& a = arguments[operand.argument];
        mark(operand, operand.touched, kTouched);
        if (a.use != Use::In) mark(operand, a.written ? a.written(call_) : operand.touched, kWritten);
        fillContent(operand, random);
        slots_[operand.argument].pointer = a.sometimesNull && random() % 4 == 0 ? nullptr : operand.pointer;
        if (a.running)
            slots_[operand.argument].pointer = &cells_[static_cast<std::size_t>(&operand - operands_.data())];
    }
    restore();
}

void Instance::drawValues(Random& random) {
    for (const auto& a : row_.arguments) {
        if (!a.seed.empty()) call_.values.push_back({a.seed, static_cast<std::int64_t>(random() >> 1), {}});
        Slot slot = {};
        if (a.kind == Kind::Integer) {
            slot.integer = a.value(random, call_);
            call_.values.push_back({a.name, slot.integer, {}});
        } else if (a.kind == Kind::Size) {
            slot.size = a.sizes[static_cast<std::size_t>(random() % a.sizes.size())];
            call_.values.push_back({a.name, 0, slot.size});
        } else if (a.kind == Kind::Fixed) {
            slot.pointer = const_cast<void*>(a.object());
        }
        slots_.push_back(slot);
    }
}

std::ptrdiff_t Instance::leastStep(const Argument& step) const {
    if (step.stepLeast > 0) return step.stepLeast;
    const Operand& first = *operandOf(step.planes.front());
    const Rect r = step.stepWidth ? step.stepWidth(call_) : first.touched;
    return (r.right - r.left) * row_.arguments[first.argument].elementBytes / step.stepUnit;
}

void Instance::chooseSteps(Random& random) {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Argument& a = row_.arguments[i];
        if (a.kind != Kind::Step) continue;
        std::ptrdiff_t widest = 1;
        bool onlyRead = !a.rowsApart;
        for (const auto& name : a.planes) {
            const Operand& operand = *operandOf(name);
            const Argument& plane = row_.arguments[operand.argument];
            widest =
                std::max<std::ptrdiff_t>(widest, (operand.touched.right - operand.touched.left) * plane.elementBytes);
            onlyRead = onlyRead && plane.use == Use::In;
        }
        std::ptrdiff_t step = 0;
        const auto pick = random() % 16;
        if (layout_ == Layout::Picture) {
            step = (widest + 79) / 64 * 64;
        } else if (layout_ != Layout::Free) {
            step = a.stepChecked || pick < 12 ? Arena::kPitch : -Arena::kPitch;
        } else if (a.stepChecked) {
            step = std::max<std::ptrdiff_t>(widest, leastStep(a) * a.stepUnit) +
                   static_cast<std::ptrdiff_t>(pick < 4 ? 0 : random() % 40);
        } else if (pick == 0 && onlyRead) {
            step = 0;
        } else if (pick == 1 && onlyRead) {
            step = static_cast<std::ptrdiff_t>(random() % 7) - 3;
        } else {
            step = widest + static_cast<std::ptrdiff_t>(random() % 40);
            if (pick < 7) step = -step;
        }
        step = step / a.stepUnit * a.stepUnit;
        if (a.stepChecked) step = std::max(step, (widest + a.stepUnit - 1) / a.stepUnit * a.stepUnit);
        slots_[i] = integerSlot(step / a.stepUnit);
        for (const auto& name : a.planes) operandOf(name)->step = step;
    }
}

void Instance::place(Operand& operand, Random& random) {
    const Rect& r = operand.touched;
    const std::ptrdiff_t element = row_.arguments[operand.argument].elementBytes;
    const std::ptrdiff_t rowBytes = (r.right - r.left) * element;
    const int rowCount = std::max(r.bottom - r.top, 0);
    if (layout_ == Layout::Free || layout_ == Layout::Picture) {
        const std::ptrdiff_t first = r.top * operand.step, last = (r.bottom - 1) * operand.step;
        const std::ptrdiff_t low = std::min(first, last) + r.left * element,
                             high = std::max(first, last) + r.right * element;
        const std::ptrdiff_t margin = 96;
        const std::ptrdiff_t shift = layout_ == Layout::Free ? static_cast<std::ptrdiff_t>(random() % 32) : 0;
        auto& memory = storage_.emplace_back(static_cast<std::size_t>(high - low + 2 * margin + 32));
        operand.pointer = memory.data() + margin + shift - low;
        if (layout_ == Layout::Picture)  // rows begin at multiples of 32, as in a decoder's pictures
            operand.pointer += (32 - reinterpret_cast<std::uintptr_t>(operand.pointer) % 32) % 32;
        operand.spans.push_back({memory.data(), {}, {}});
        operand.spans.back().initial.resize(memory.size());
    } else {
        const Arena& a = arena(static_cast<std::size_t>(&operand - operands_.data()));
        if (rowBytes > kRowBytes || rowCount > kArenaRows) std::abort();  // the operand is too large for the arena
        const bool top = layout_ == Layout::TopLeft;
        const bool down = operand.step >= 0;
        const int lowest = top ? 0 : kArenaRows - rowCount;  // the arena row at the lowest address
        const int firstRow = down ? lowest : lowest + rowCount - 1;
        const std::ptrdiff_t column = top ? 0 : kRowBytes - rowBytes;
        const std::ptrdiff_t pitch = down ? Arena::kPitch : -Arena::kPitch;
        operand.pointer = a.row(0) + firstRow * Arena::kPitch + column - r.top * pitch - r.left * element;
        for (int y = 0; y < rowCount; ++y) {  // of each page, the row and its neighbourhood
            const std::ptrdiff_t watched = std::min<std::ptrdiff_t>(kRowBytes, rowBytes + 64);
            operand.spans.push_back({a.row(firstRow + (down ? y : -y)) + (top ? 0 : kRowBytes - watched), {}, {}});
            operand.spans.back().initial.resize(static_cast<std::size_t>(watched));
        }
    }
    for (auto& span : operand.spans) {
        noise(random, span.initial.data(), span.initial.size());
        span.kind.assign(span.initial.size(), kOutside);
    }
}

void Instance::mark(Operand& operand, const Rect& r, std::uint8_t kind) {
    const std::ptrdiff_t element = row_.arguments[operand.argument].elementBytes;
    for (int y = r.top; y < r.bottom; ++y) {
        std::byte* from = operand.pointer + y * operand.step + r.left * element;
        for (auto& span : operand.spans) {
            const std::ptrdiff_t at = from - span.start;
            if (at < 0 || at >= static_cast<std::ptrdiff_t>(span.kind.size())) continue;
            std::fill_n(span.kind.begin() + at, (r.right - r.left) * element, kind);
        }
    }
}

void Instance::fillContent(Operand& operand, Random& random) {
    const Argument& a = row_.arguments[operand.argument];
    if (a.use == Use::Out) return;
    const Rect& r = operand.touched;
    const int style = static_cast<int>(random() % 10);
    const auto initialAt = [&](const std::byte* p) -> std::byte* {
        for (auto& span : operand.spans)
            if (p >= span.start && p < span.start + span.initial.size()) return span.initial.data() + (p - span.start);
        std::abort();
    };
    for (int y = r.top; y < r.bottom; ++y) {
        std::byte* line =
            r.left == r.right ? nullptr : initialAt(operand.pointer + y * operand.step + r.left * a.elementBytes);
        if (a.fill) {
            a.fill(random, call_, line, r.right - r.left);
            continue;
        }
        for (int x = r.left; x < r.right; ++x, line += a.elementBytes)
            putSample(line, a.element ? a.element(random, call_) : sampleOf(random, style, a.elementBytes),
                      a.elementBytes);
    }
}

void Instance::scramble(Random& random) {
    for (auto& operand : operands_) {
        const bool onlyWritten = row_.arguments[operand.argument].use == Use::Out;
        for (auto& span : operand.spans) {
            auto bits = random();
            for (std::size_t i = 0; i < span.kind.size(); ++i) {
                bits = bits * 6364136223846793005u + 1442695040888963407u;
                if (span.kind[i] == kOutside || (span.kind[i] == kWritten && onlyWritten))
                    span.initial[i] = static_cast<std::byte>(bits >> 56);
            }
        }
    }
}

void Instance::restore() {
    for (std::size_t i = 0; i < operands_.size(); ++i) cells_[i] = operands_[i].pointer;
    for (const std::size_t i : innerNulls_) cells_[i] = nullptr;
    for (const auto& operand : operands_)
        for (const auto& span : operand.spans)
            if (!span.initial.empty()) std::memcpy(span.start, span.initial.data(), span.initial.size());
}

Outcome Instance::run(void* function) {
    catchFaults();
    restore();
    Outcome outcome;
    if (!callGuarded(row_.thunk, function, slots_.data(), outcome.status)) {
        outcome.fault = std::string(strsignal(caughtSignal)) + explainFault(caughtAddress);
        return outcome;
    }
    for (std::size_t i = 0; i < operands_.size(); ++i) {
        const auto& operand = operands_[i];
        if (row_.arguments[operand.argument].running && cells_[i] != nullptr) {
            outcome.movedOn.push_back(static_cast<std::byte*>(cells_[i]) - operand.pointer);
            outcome.wroteNothing = outcome.wroteNothing && outcome.movedOn.back() == 0;
        }
        for (const auto& span : operand.spans)
            for (std::size_t k = 0; k < span.kind.size(); ++k) {
                const bool changed = span.start[k] != span.initial[k];
                outcome.wroteNothing = outcome.wroteNothing && !changed;
                if (span.kind[k] == kWritten)
                    outcome.written.push_back(span.start[k]);
                else if (changed)
                    outcome.strayWrite = row_.arguments[operand.argument].name;
            }
    }
    return outcome;
}

std::string Instance::explainFault(const void* address) const {
    for (const auto& operand : operands_) {
        const Argument& a = row_.arguments[operand.argument];
        const Arena& where = arena(static_cast<std::size_t>(&operand - operands_.data()));
        if (layout_ == Layout::Free || !where.contains(address)) continue;
        const std::ptrdiff_t distance = static_cast<const std::byte*>(address) - operand.pointer;
        return " at operand " + a.name + ", " + std::to_string(distance / Arena::kPitch) + " pitches and " +
               std::to_string(distance % Arena::kPitch) + " bytes from its pointer";
    }
    return " elsewhere";
}

std::vector<std::vector<Instance::Failure>> Instance::failures() const {
    std::vector<std::vector<Failure>> groups;
    std::vector<Failure> outer, inner;
    const auto& arguments = row_.arguments;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Argument& a = arguments[i];
        if (a.isRecord) groups.push_back({{i, vekStsErrNullPtr, a.name + " null", integerSlot(0)}});
        if ((a.kind != Kind::Memory && a.kind != Kind::Fixed) || a.mayBeNull) continue;
        outer.push_back({i, vekStsErrNullPtr, a.name + " null", pointerSlot(nullptr)});
        if (a.running) inner.push_back({i, vekStsErrNullPtr, "*" + a.name + " null", slots_[i], true});
    }
    if (!outer.empty()) groups.push_back(outer);
    if (!inner.empty()) groups.push_back(inner);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Argument& a = arguments[i];
        if (a.kind != Kind::Step || !a.stepChecked) continue;
        std::vector<Failure> group;
        for (const std::int64_t value :
             {static_cast<std::int64_t>(leastStep(a)) - 1, std::int64_t{0}, std::int64_t{-1}, std::int64_t{INT32_MIN}})
            group.push_back({i, vekStsErrStep, a.name + " = " + std::to_string(value), integerSlot(value)});
        groups.push_back(group);
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Argument& a = arguments[i];
        std::vector<Failure> group;
        if (!a.isRecord)
            for (const auto& [value, status] : a.badValues)
                group.push_back({i, status, a.name + " = " + std::to_string(value), integerSlot(value)});
        for (const auto& [value, status] : a.badSizes)
            group.push_back({i, status,
                             a.name + " = " + std::to_string(value.width) + "x" + std::to_string(value.height),
                             sizeSlot(value)});
        if (!group.empty()) groups.push_back(group);
    }
    return groups;
}

void Instance::apply(const Failure& failure) {
    if (!failure.inner) {
        slots_[failure.argument] = failure.slot;
        return;
    }
    for (std::size_t i = 0; i < operands_.size(); ++i)
        if (operands_[i].argument == failure.argument) innerNulls_.push_back(i);
}

Instance::Operand* Instance::operandOf(const std::string& name) {
    for (auto& operand : operands_)
        if (row_.arguments[operand.argument].name == name) return &operand;
    std::fprintf(stderr, "%s: no operand %s\n", row_.name.c_str(), name.c_str());
    std::abort();
}

std::string Instance::describe() const {
    std::string text = row_.name + "(";
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Argument& a = row_.arguments[i];
        if (i > 0) text += ", ";
        text += a.name;
        if (a.kind == Kind::Integer || a.kind == Kind::Step) text += "=" + std::to_string(slots_[i].integer);
        if (a.kind == Kind::Size)
            text += "=" + std::to_string(slots_[i].size.width) + "x" + std::to_string(slots_[i].size.height);
    }
    return text + ")";
}

}  // namespace catalogue
