#include "h264/picture_decoder.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "h264/concealment.h"
#include "h264/deblocking.h"
#include "report/stopwatch.h"

namespace vekdec::h264 {

void PictureDecoder::operator()(PictureTask& task) {
    const RowProgress::End end(*task.last().picture->progress, task.last().structure);
    decodeSlices(task);
    finish(task);
}

void PictureDecoder::begin(PictureTask& task) {
    task.begun = true;
    decodedTo_ = 0;
    clearedTo_ = 0;
    finishedRows_ = 0;
}

void PictureDecoder::clearTo(const Slice& slice, int address) {
    Picture& picture = *slice.picture;
    const bool fieldPicture = slice.structure != kFrame;
    const int count = static_cast<int>(picture.mbs.size()) / (fieldPicture ? 2 : 1);
    Macroblock* const mbs = picture.mbs.data() + (slice.structure == kBottomField ? count : 0);
    for (const int end = std::min(address, count); clearedTo_ < end; ++clearedTo_) {
        mbs[clearedTo_].type = MbType::Missing;
        mbs[clearedTo_].field = fieldPicture;
    }
}

void PictureDecoder::decodeSlices(PictureTask& task) {
    if (!task.begun) begin(task);
    for (const auto& slice : task.slices)
        if (std::exchange(slice->ready, false)) decodeSlice(task, *slice);
}

void PictureDecoder::finish(PictureTask& task) {
    const Slice& last = task.last();
    const SliceHeader& header = last.header;
    Picture& picture = *last.picture;
    const int rows = picture.heightInMbs / (header.fieldPic || header.mbaff() ? 2 : 1);
    const int count = rows * picture.widthInMbs * (header.mbaff() ? 2 : 1);
    if (decodedTo_ < count) {
        clearTo(last, count);
        if (task.previous != nullptr) task.previous->progress->await(kFrame, RowProgress::kAll);
        const int missing = concealMissing(picture, last.structure, task.previous, header.sps->bitDepthLuma,
                                           header.sps->bitDepthChroma);
        if (missing > 0 && !task.reported && task.damage.empty())
            task.report(std::to_string(missing) + " macroblocks are missing");
    }
    finishRows(task, rows);
}

void PictureDecoder::decodeSlice(PictureTask& task, SliceTask& slice) {
    const SliceHeader& header = slice.slice.header;
    const int pair = header.mbaff() ? 2 : 1;
    const int firstAddress = header.firstMbInSlice * pair;
    const int perRow = pair * slice.slice.picture->widthInMbs;
    if (firstAddress < finishedRows_ * perRow) {  // other pictures may have seen them
        task.report("a slice begins at macroblock " + std::to_string(firstAddress) + ", which was decoded before");
        return;
    }
    const double deblockingBefore = task.secondsDeblocking;
    double seconds = 0;
    std::optional<vekapp::Stopwatch> watch(std::in_place, seconds);
    const bool inOrder = firstAddress == decodedTo_;
    const auto clearRowOf = [&](int address) { clearTo(slice.slice, (address / perRow + 1) * perRow); };
    if (slice.slice.mbToSliceGroupMap == nullptr)
        clearRowOf(firstAddress);
    else
        clearTo(slice.slice, slice.context.mbCount);
    const auto broken = sliceDecoder_.decode(*slice.bits, slice.context, [&](int address) {
        clearRowOf(address);
        if (!inOrder) return;
        decodedTo_ = address;
        // The last row stays as it is until the row below it, predicted from it, is decoded.
        finishRows(task, address / perRow - 1);
    });
    watch.reset();
    task.secondsMacroblocks += seconds - (task.secondsDeblocking - deblockingBefore);
    if (broken) task.report("macroblock " + std::to_string(broken->mbAddress) + ": " + broken->reason);
}

// Deblocks the rows before endRow that are not yet done.
void PictureDecoder::finishRows(PictureTask& task, int endRow) {
    if (endRow <= finishedRows_) return;
    const Slice& last = task.last();
    Picture& picture = *last.picture;
    {
        const vekapp::Stopwatch watch(task.secondsDeblocking);
        deblockRows(picture, last.structure, *last.header.sps, finishedRows_, endRow);
        const auto perRow = static_cast<std::size_t>(picture.widthInMbs * (last.header.mbaff() ? 2 : 1));
        const std::size_t first = last.structure == kBottomField ? picture.mbs.size() / 2 : 0;
        for (std::size_t i = static_cast<std::size_t>(finishedRows_) * perRow;
             i < static_cast<std::size_t>(endRow) * perRow; ++i) {
            const Macroblock& mb = picture.mbs[first + i];
            ++task.macroblocks[static_cast<std::size_t>(mb.type)];
            task.skipped += mb.skipped;
        }
    }
    finishedRows_ = endRow;
    // The row below filters up to three rows, of each field where it is a pair, above its edge.
    const int height = last.header.mbaff() ? 32 : 16, kept = last.header.mbaff() ? 6 : 3;
    picture.progress->publish(last.structure, height * endRow - kept);
}

}  // namespace vekdec::h264
