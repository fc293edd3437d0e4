// The engine itself: what it must notice. Each case is a faulty copy of an 8x8 block.
#include "engine.h"

#include <gtest/gtest.h>

#include <cstring>

namespace catalogue {
namespace {

using Copy = VekStatus (*)(const Vek8u*, Vek32s, Vek8u*, Vek32s);

VekStatus right(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    for (std::ptrdiff_t y = 0; y < 8; ++y) std::memcpy(pDst + y * dstStep, pSrc + y * srcStep, 8);
    return vekStsOk;
}
volatile Vek8u sink;
VekStatus readsPastRow(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    sink = pSrc[3 * std::ptrdiff_t{srcStep} + 8];
    return right(pSrc, srcStep, pDst, dstStep);
}
VekStatus readsBeforeRow(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    sink = pSrc[5 * std::ptrdiff_t{srcStep} - 1];
    return right(pSrc, srcStep, pDst, dstStep);
}
VekStatus readsSpareRow(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    sink = pSrc[8 * std::ptrdiff_t{srcStep}];
    return right(pSrc, srcStep, pDst, dstStep);
}
VekStatus writesPastRow(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    pDst[2 * std::ptrdiff_t{dstStep} + 8] ^= 1;
    return right(pSrc, srcStep, pDst, dstStep);
}
VekStatus writesSource(const Vek8u* pSrc, Vek32s srcStep, Vek8u* pDst, Vek32s dstStep) {
    const VekStatus status = right(pSrc, srcStep, pDst, dstStep);
    const_cast<Vek8u*>(pSrc)[0] ^= 1;
    return status;
}

Row copyRow() {
    return {"copy",
            [](void* function, const Slot* s) {
                return callWithSlots(reinterpret_cast<Copy>(function), s, std::make_index_sequence<4>());
            },
            {in<Vek8u>("pSrc", block(8, 8)), step("pSrc"), out<Vek8u>("pDst", block(8, 8)), step("pDst")}};
}

// Does one of many calls end in the given way?
template <class Judge>
bool noticed(Copy function, Layout layout, Judge judge) {
    Random random(7);
    const Row row = copyRow();
    for (int i = 0; i < 50; ++i) {
        Instance instance(row, layout, random);
        if (judge(instance.run(reinterpret_cast<void*>(function)))) return true;
    }
    return false;
}

TEST(Engine, AcceptsTheRightCopy) {
    const auto anything = [](const Outcome& o) { return !o.fault.empty() || !o.strayWrite.empty() || o.status != 0; };
    for (const Layout layout : {Layout::Free, Layout::TopLeft, Layout::BottomRight, Layout::Picture})
        EXPECT_FALSE(noticed(right, layout, anything));
}

TEST(Engine, NoticesAccessesOutsideTheOperands) {
    const auto faultAtSource = [](const Outcome& o) { return o.fault.find("operand pSrc") != std::string::npos; };
    EXPECT_TRUE(noticed(readsPastRow, Layout::BottomRight, faultAtSource));
    EXPECT_TRUE(noticed(readsBeforeRow, Layout::TopLeft, faultAtSource));
    EXPECT_TRUE(noticed(readsSpareRow, Layout::BottomRight, faultAtSource));
    EXPECT_TRUE(noticed(writesPastRow, Layout::Free, [](const Outcome& o) { return o.strayWrite == "pDst"; }));
    EXPECT_TRUE(noticed(writesSource, Layout::Free, [](const Outcome& o) { return o.strayWrite == "pSrc"; }));
}

}  // namespace
}  // namespace catalogue
