#include "mpeg12/picture_decoder.h"

#include <algorithm>
#include <string>

#include "report/stopwatch.h"

namespace vekdec::mpeg12 {

void PictureDecoder::operator()(PictureTask& task) {
    const PlaneSet& target = task.context.target();
    const RowProgress::End end(*target.progress, target.structure);
    if (task.begun) {
        decodeSlices(task);
    } else {
        begin(task);
        // Slices may come in any order, and twice. None changes a row above its first one.
        std::vector<int> nextRow(task.slices.size(), concealment_.rows());
        for (std::size_t i = task.slices.size(); i-- > 1;) nextRow[i - 1] = std::min(nextRow[i], task.slices[i]->row);
        for (std::size_t i = 0; i < task.slices.size(); ++i) decodeSlice(task, *task.slices[i], nextRow[i]);
    }
    finishRows(task, concealment_.rows());
    concealment_.report(task);
}

void PictureDecoder::decodeSlices(PictureTask& task) {
    if (!task.begun) begin(task);
    task.begun = true;
    for (const auto& slice : task.slices) decodeSlice(task, *slice, 0);
}

void PictureDecoder::begin(PictureTask& task) {
    slices_.begin(task.context);
    const PlaneSet& target = task.context.target();
    const std::span<const Macroblock> mbs = task.context.picture->mbs;
    const std::size_t count = mbs.size() / (task.context.isFrame() ? 1 : 2);
    concealment_.begin(target.plane, mbs.subspan(target.structure == kBottomField ? count : 0, count), task.before,
                       task.kinds);
}

// Slices that come later begin in `nextRow` or below it.
void PictureDecoder::decodeSlice(PictureTask& task, const SliceTask& slice, int nextRow) {
    WordReader bits(slice.payload);
    {
        const vekapp::Stopwatch watch(task.seconds);
        try {
            slices_.decode(bits, slice.row, [&](int y) { finishRows(task, std::min(y, nextRow)); });
        } catch (const BadSyntax& e) {
            task.report("slice in row " + std::to_string(slice.verticalPosition) + ": " + e.what());
        }
    }
    finishRows(task, nextRow);
}

// What no slice brought of the rows before endRow is taken from the picture before.
void PictureDecoder::finishRows(PictureTask& task, int endRow) {
    const PlaneSet& target = task.context.target();
    if (concealment_.finishRows(endRow)) target.progress->publish(target.structure, 16 * endRow);
}

}  // namespace vekdec::mpeg12
