#include "avs/field_decoder.h"

#include <string>

#include "avs/loop_filter.h"
#include "report/stopwatch.h"

namespace vekdec::avs {

void FieldDecoder::operator()(FieldTask& task) {
    const RowProgress::End end(task.picture->progress, task.structure);
    decodeSlices(task);
    finishRows(task, task.context.height);
    concealment_.report(task);
}

void FieldDecoder::decodeSlices(FieldTask& task) {
    PictureContext& context = task.context;
    if (!task.begun) {
        slices_.begin(context);
        const auto count = static_cast<std::size_t>(context.width * context.height);
        concealment_.begin(context.plane, std::span<const Macroblock>(context.mbs, count), task.before, task.kinds);
        filteredRows_ = 0;
    }
    task.begun = true;
    const double filterBefore = task.secondsFilter;
    {
        const vekapp::Stopwatch watch(task.secondsMacroblocks);
        for (const auto& slice : task.slices) try {
                slices_.decode(*slice->bits, slice->row, [&](int endRow) { finishRows(task, endRow); });
            } catch (const BadSyntax& e) {
                task.report("slice in row " + std::to_string(slice->row) + ": " + e.what());
            }
    }
    task.secondsMacroblocks -= task.secondsFilter - filterBefore;
}

// What no slice brought of the rows before endRow is taken from the picture before. A row is filtered when the one
// below it, which is predicted from unfiltered samples, is decoded; that one's upper edge changes at most four more
// rows of samples, in luma and in chroma.
void FieldDecoder::finishRows(FieldTask& task, int endRow) {
    const vekapp::Stopwatch watch(task.secondsFilter);
    if (!concealment_.finishRows(endRow)) return;
    int lines = 16 * endRow;
    if (task.header.loopFilter) {
        const bool last = endRow == task.context.height;
        for (const int end = last ? endRow : endRow - 1; filteredRows_ < end; ++filteredRows_)
            filterRow(task.context, filteredRows_);
        lines = 16 * filteredRows_ - (last ? 0 : 8);
    }
    task.picture->progress.publish(task.structure, lines);
}

}  // namespace vekdec::avs
