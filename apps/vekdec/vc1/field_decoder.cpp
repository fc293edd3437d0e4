#include "vc1/field_decoder.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "report/stopwatch.h"
#include "vc1/units.h"

namespace vekdec::vc1 {
namespace {

int structureOf(const PictureHeader& header) {
    return !header.isField() ? RowProgress::kFrame : header.bottomField() ? 2 : 1;
}

}  // namespace

void FieldDecoder::operator()(FieldTask& task) {
    const RowProgress::End end(task.picture->progress, structureOf(task.header));
    const PictureContext& context = task.context;
    concealment_.begin(
        context.plane,
        std::span<const Macroblock>(context.mbs, static_cast<std::size_t>(context.width * context.height)), task.before,
        task.kinds);
    {
        const vekapp::Stopwatch watch(task.secondsMacroblocks);
        decoder_.begin(context);
        if (task.units != nullptr) {
            decodeSlices(task);
        } else {
            ++task.slices;
            try {
                decodeRows(task, *task.bits, 0, context.height);
            } catch (const BadSyntax& e) {
                task.report(e.what());
            }
        }
    }
    task.secondsMacroblocks -= task.secondsFilters;
    finishRows(task, context.height);
    concealment_.report(task);
}

void FieldDecoder::decodeSlices(FieldTask& task) {
    const auto& units = task.units->units;
    const std::vector<std::uint8_t>& bytes = task.units->bytes;
    const int height = task.context.height;
    // The address of a slice, in front of it; those of a second field may count on from the first.
    const auto addressOf = [&](std::size_t i) {
        const PictureUnits::Unit& unit = units[i];
        if (unit.size < 2) return height;
        const int row = bytes[unit.begin] << 1 | bytes[unit.begin + 1] >> 7;
        return task.header.isField() ? row % height : row;
    };
    int done = 0;  // rows
    for (std::size_t i = task.first; i < task.end; ++i) {
        if (i > task.first && units[i].code != kSlice) continue;
        const int row = i == task.first ? 0 : addressOf(i);
        int endRow = height;
        for (std::size_t next = task.end; --next > i;)
            if (units[next].code == kSlice && addressOf(next) > row) endRow = std::min(addressOf(next), endRow);
        ++task.slices;
        try {
            if (row < done) throw BadSyntax("it lies over the one before");
            done = endRow;
            if (i == task.first) {
                decodeRows(task, *task.bits, 0, endRow);
                continue;
            }
            payload_.assignUnescaped(std::span(bytes).subspan(units[i].begin, units[i].size));
            WordReader sliceBits(payload_);
            sliceBits.u(9);          // SLICE_ADDR
            if (sliceBits.flag()) {  // PIC_HEADER_FLAG: the picture's header once more
                if (task.header.secondField)
                    parseSecondFieldHeader(sliceBits, task.sequence, task.header);
                else
                    parseAdvancedHeader(sliceBits, task.sequence);
            }
            decodeRows(task, sliceBits, row, endRow);
        } catch (const std::runtime_error& e) {  // BadSyntax; NotSupported from the header of a slice
            task.report("slice in row " + std::to_string(row) + ": " + e.what());
        }
    }
}

void FieldDecoder::decodeRows(FieldTask& task, WordReader& bits, int firstRow, int endRow) {
    for (int row = firstRow; row < endRow; ++row) {
        decoder_.decodeRow(bits, row, row == firstRow);
        finishRows(task, row + 1);  // no slice behind this one begins above it
    }
}

// What could not be decoded of the rows before endRow is taken from the picture before; then they are filtered, as far
// as the rows below them, which the filters read, are there.
void FieldDecoder::finishRows(FieldTask& task, int endRow) {
    const vekapp::Stopwatch watch(task.secondsFilters);
    if (!concealment_.finishRows(endRow)) return;
    const int lines = decoder_.finishRows(endRow);
    task.picture->progress.publish(structureOf(task.header), lines);
}

}  // namespace vekdec::vc1
