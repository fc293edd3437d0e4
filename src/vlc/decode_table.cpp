// Builders of the decode tables. They run once per table and have one form only.
#include "core/check.h"
#include "vekcore.h"
#include "vekvc/vlc.h"
#include "vlc/code_list.h"
#include "vlc/look_up.h"

using namespace vekvc;

namespace {

constexpr std::int64_t kMaxOffset = 1 << 23;  // a pointer slot has 23 bits for a sub-table's offset

// Entries of a (sub-)table that looks up `width` bits.
std::int64_t entries(int width) { return 1 + (std::int64_t{1} << width); }

class TableBuilder {
  public:
    TableBuilder(const Vek32s* list, RecordKind kind) : list_(list, kind), kind_(kind) {
        for (int i = 0; i < list_.levels(); ++i) longest_ += list_.width(i);
    }

    VekStatus build(VekVlcTable_32s** ppDstSpec) {
        const std::int64_t size = countEntries();
        if (size > INT32_MAX / 4) return vekStsErrMemAlloc;
        table_ = static_cast<Vek32s*>(vekMalloc(static_cast<int>(4 * size)));
        if (table_ == nullptr) return vekStsErrMemAlloc;
        for (std::int64_t i = 0; i < size; ++i) table_[i] = kVlcEmptySlot;
        table_[0] = list_.width(0);
        used_ = entries(list_.width(0));
        CodeRecord record;
        for (list_.rewind(); list_.next(record);) {
            if (record.length <= longest_) enter(record);
        }
        store(ppDstSpec, table_);
        return vekStsOk;
    }

  private:
    // The table's size: one sub-table for every distinct prefix that longer codes share. INT64_MAX if the layout cannot
    // address it.
    std::int64_t countEntries() {
        std::int64_t size = entries(list_.width(0));
        CodeRecord record;
        list_.rewind();
        for (std::int64_t index = 0; list_.next(record); ++index) {
            if (record.length > longest_) continue;
            int level = 0;
            for (std::int64_t sum = list_.width(0); record.length > sum; sum += list_.width(level)) {
                ++level;
                if (prefixSeen(record, index, sum)) continue;
                if (size >= kMaxOffset) return INT64_MAX;
                size += entries(list_.width(level));
            }
        }
        return size;
    }

    // Does one of the `count` codes before `record` lead through the same first n bits to a deeper level?
    bool prefixSeen(const CodeRecord& record, std::int64_t count, std::int64_t n) const {
        CodeList earlier = list_;
        CodeRecord other;
        earlier.rewind();
        for (; count > 0 && earlier.next(other); --count) {
            if (other.length > n && other.length <= longest_ && other.top(n) == record.top(n)) return true;
        }
        return false;
    }

    void enter(const CodeRecord& record) {
        Vek32s* sub = table_;
        int level = 0;
        std::int64_t sum = list_.width(0);  // bits looked up including this level's
        while (record.length > sum) {
            Vek32s* slot = sub + 1 + (record.top(sum) & ((std::uint64_t{1} << list_.width(level)) - 1));
            ++level;
            if ((*slot & kVlcPointerFlag) == 0) {
                table_[used_] = list_.width(level);
                *slot = wrapShl(static_cast<Vek32s>(used_), 8) | kVlcPointerFlag;
                used_ += entries(list_.width(level));
            }
            sub = table_ + (*slot >> 8);
            sum += list_.width(level);
        }
        const int giveBack = static_cast<int>(sum - record.length);
        const std::uint64_t mask = (std::uint64_t{1} << list_.width(level)) - 1;
        Vek32s* slot = sub + 1 + (record.code << giveBack & mask);
        for (std::int64_t i = 0; i < std::int64_t{1} << giveBack; ++i) slot[i] = leaf(record) | giveBack;
    }

    Vek32s leaf(const CodeRecord& record) const {
        if (kind_ == RecordKind::value) return wrapShl(record.value, 8);
        return wrapShl(record.level, 16) | (record.value & 0xFF) << 8;
    }

    CodeList list_;
    RecordKind kind_;
    std::int64_t longest_ = 0;  // the sum of all widths
    Vek32s* table_ = nullptr;
    std::int64_t used_ = 0;  // entries in use
};

}  // namespace

VekStatus vekiHuffmanTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec) {
    if (anyNull(pSrcTable, ppDstSpec)) return vekStsErrNullPtr;
    return TableBuilder(pSrcTable, RecordKind::value).build(ppDstSpec);
}

VekStatus vekiHuffmanRunLevelTableInitAlloc_32s(const Vek32s* pSrcTable, VekVlcTable_32s** ppDstSpec) {
    if (anyNull(pSrcTable, ppDstSpec)) return vekStsErrNullPtr;
    return TableBuilder(pSrcTable, RecordKind::runLevel).build(ppDstSpec);
}

VekStatus vekiHuffmanTableFree_32s(VekVlcTable_32s* pDecodeTable) {
    if (anyNull(pDecodeTable)) return vekStsErrNullPtr;
    vekFree(pDecodeTable);
    return vekStsOk;
}
