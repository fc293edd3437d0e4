#include "mpeg4/picture_decoder.h"

#include "report/stopwatch.h"

namespace vekdec::mpeg4 {

void PictureDecoder::operator()(VopTask& task) {
    Picture& picture = *task.context.picture;
    const RowProgress::End end(picture.progress, RowProgress::kFrame);
    concealment_.begin(picture.plane, picture.mbs, task.before, task.kinds);
    const auto report = [&](const std::string& what) { task.report(what); };
    const auto finished = [&](int endRow) {
        if (concealment_.finishRows(endRow)) picture.progress.publish(RowProgress::kFrame, 16 * endRow);
    };
    {
        const vekapp::Stopwatch watch(task.seconds);
        task.packets = vops_.decode(task.context, *task.dequantizers, *task.bits, report,
                                    task.sideBySide ? VopDecoder::Finished(finished) : VopDecoder::Finished());
    }
    finished(concealment_.rows());
    concealment_.report(task);
}

}  // namespace vekdec::mpeg4
