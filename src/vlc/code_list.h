// Reading a caller's code list (include/vekvc/vlc.h describes the format).
#ifndef VEKVC_VLC_CODE_LIST_H
#define VEKVC_VLC_CODE_LIST_H

#include "core/arith.h"
#include "core/memory.h"

namespace vekvc {

inline constexpr Vek32s kRunEscape = 255;
inline constexpr Vek32s kRunEndOfBlock = 254;

enum class RecordKind { value, runLevel };

struct CodeRecord {
    int length;          // of the code, in bits
    std::uint64_t code;  // right-aligned, no bits beyond the length
    Vek32s value;        // or run
    Vek32s level;        // 0 for single values and for the reserved runs

    bool reserved() const { return value == kRunEscape || value == kRunEndOfBlock; }
    // The code's first n bits (0 to length).
    std::uint64_t top(std::int64_t n) const { return length - n > 63 ? 0 : code >> (length - n); }
};

// Walks the records of a list in order.
class CodeList {
  public:
    CodeList(const Vek32s* list, RecordKind kind) : list_(list), kind_(kind) { rewind(); }

    int levels() const { return clip3(0, INT32_MAX, load<Vek32s>(list_ + 1)); }
    // Bits looked up by level i; 40 stands for all that no memory could hold.
    int width(int i) const { return i < levels() ? clip3(0, 40, load<Vek32s>(list_ + 2 + i)) : 0; }

    void rewind() {
        next_ = list_ + 2 + levels();
        left_ = load<Vek32s>(next_++);
        length_ = 1;
    }

    bool next(CodeRecord& record) {
        while (left_ == 0) {
            left_ = load<Vek32s>(next_++);
            ++length_;
        }
        if (left_ < 0) return false;
        --left_;
        const Vek32u code = load<Vek32u>(next_++);
        record.length = length_;
        record.code = length_ < 32 ? code & ((Vek32u{1} << length_) - 1) : code;
        record.value = load<Vek32s>(next_++);
        record.level = 0;
        if (kind_ == RecordKind::runLevel) {
            const Vek32s level = load<Vek32s>(next_++);
            if (!record.reserved()) record.level = level;
        }
        return true;
    }

  private:
    const Vek32s* list_;
    const Vek32s* next_ = nullptr;
    Vek32s left_ = 0;  // records still to come of this length
    int length_ = 1;
    RecordKind kind_;
};

}  // namespace vekvc

#endif
