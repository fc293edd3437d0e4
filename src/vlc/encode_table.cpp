// Builder of the run/level encode table; include/vekvc/vlc.h describes its words.
#include "core/check.h"
#include "vekcore.h"
#include "vekvc/vlc.h"
#include "vlc/code_list.h"

namespace vekvc {
namespace {

constexpr Vek32s kMaxRun = 0xFFF;  // word 0 has 12 bits for the largest run

// Does the table have a section for this record's run?
bool ordinary(const CodeRecord& record) { return !record.reserved() && !outside(record.value, 0, kMaxRun); }

Vek32s packed(const CodeRecord& record, int shift) { return wrapShl(wrap32(record.code), shift) | record.length; }

VekStatus buildEncodeTable(CodeList list, VekRLEncodeTable** ppDstSpec) {
    CodeRecord record;
    Vek32s special[2] = {0, 0};  // escape, end of block
    Vek32s maxRun = 0;
    std::int64_t records = 0;
    for (list.rewind(); list.next(record); ++records) {
        if (record.reserved()) special[record.value == kRunEscape ? 0 : 1] = packed(record, 4) & 0x3FF;
        if (ordinary(record) && record.value > maxRun) maxRun = record.value;
    }
    const std::int64_t size = 2 * std::int64_t{maxRun} + records + 3;
    if (size > INT32_MAX / 4) return vekStsErrMemAlloc;
    auto* const table = static_cast<Vek32s*>(vekMalloc(static_cast<int>(4 * size)));
    auto* const half = static_cast<Vek32s*>(vekMalloc(4 * (maxRun + 1)));  // by run: half the number of records
    if (anyNull(table, half)) {
        vekFree(half);
        vekFree(table);
        return vekStsErrMemAlloc;
    }
    for (std::int64_t i = 0; i < size; ++i) table[i] = 0;
    for (Vek32s run = 0; run <= maxRun; ++run) half[run] = 0;
    table[0] = special[0] | special[1] << 10 | wrapShl(maxRun, 20);

    for (list.rewind(); list.next(record);) {
        if (ordinary(record)) ++half[record.value];
    }
    // A run's section: half[run] words on either side of its centre. All sections together have at most as many words
    // as there are records and runs.
    Vek32s* const offsets = table + 1;
    Vek32s section = maxRun + 2;
    for (Vek32s run = 0; run <= maxRun; ++run) {
        half[run] /= 2;
        offsets[run] = 4 * (section + half[run]);
        section += 2 * half[run] + 1;
    }
    // Codes go to their places as far as the table reaches; words of other sections give way, centres do not.
    const auto centreOf = [&](Vek32s run) { return std::int64_t{offsets[run] / 4}; };
    const auto inside = [&](std::int64_t word) { return word >= maxRun + 2 && word < size; };
    for (list.rewind(); list.next(record);) {
        if (!ordinary(record)) continue;
        if (const std::int64_t word = centreOf(record.value) + record.level; inside(word))
            table[word] = packed(record, 16);
    }
    // The largest level goes no further than a reader may look on both sides of the centre.
    for (Vek32s run = 0; run <= maxRun; ++run) half[run] = -1;
    for (list.rewind(); list.next(record);) {
        if (!ordinary(record)) continue;
        const std::int64_t distance = magnitude(record.level), centre = centreOf(record.value);
        if (distance > half[record.value] && centre - distance >= 0 && centre + distance < size)
            half[record.value] = static_cast<Vek32s>(distance);
    }
    for (Vek32s run = 0; run <= maxRun; ++run) table[centreOf(run)] = half[run];
    vekFree(half);
    store(ppDstSpec, table);
    return vekStsOk;
}

}  // namespace
}  // namespace vekvc

VekStatus vekiCreateRLEncodeTable(const Vek32s* pSrcTable, VekRLEncodeTable** ppDstSpec) {
    if (vekvc::anyNull(pSrcTable, ppDstSpec)) return vekStsErrNullPtr;
    return vekvc::buildEncodeTable({pSrcTable, vekvc::RecordKind::runLevel}, ppDstSpec);
}
