// Exports: the decoding table of DV's codes.
#include "dv/huffman_table.h"

#include "core/check.h"
#include "vekcore.h"

using namespace vekvc;

VekStatus vekiHuffmanTableInitAlloc_DV_32s(VekDVHuffmanTable_32s** ppTable) {
    if (anyNull(ppTable)) return vekStsErrNullPtr;
    auto* const table = static_cast<Vek32s*>(vekMalloc(4 * dv::kTableEntries));
    store(ppTable, table);
    if (table == nullptr) return vekStsErrMemAlloc;
    Vek32s* entry = table;
    for (Vek32u i = 0; i < 1u << dv::kShortBits; ++i)
        *entry++ = dv::packEntry(dv::readCode(i << (dv::kLongestCode - dv::kShortBits)));
    for (Vek32u i = 0; i < 1u << dv::kLongBits; ++i) *entry++ = dv::packEntry(dv::readCode(31u << dv::kLongBits | i));
    return vekStsOk;
}

VekStatus vekiHuffmanTableFree_DV_32s(VekDVHuffmanTable_32s* pTable) {
    if (anyNull(pTable)) return vekStsErrNullPtr;
    vekFree(pTable);
    return vekStsOk;
}
