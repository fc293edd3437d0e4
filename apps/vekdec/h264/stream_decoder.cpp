#include "h264/stream_decoder.h"

#include <algorithm>
#include <iterator>

#include "bits/start_code.h"
#include "h264/blocks.h"
#include "h264/format.h"
#include "h264/reference_lists.h"
#include "h264/slice_groups.h"
#include "report/stopwatch.h"

namespace vekdec::h264 {
namespace {

// First slice of a new primary coded picture, 7.4.1.2.4.
bool beginsPicture(const SliceHeader& a, const SliceHeader& b) {
    return a.frameNum != b.frameNum || a.pps != b.pps || a.fieldPic != b.fieldPic || a.bottomField != b.bottomField ||
           (a.nalRefIdc == 0) != (b.nalRefIdc == 0) || a.idr != b.idr || (a.idr && a.idrPicId != b.idrPicId) ||
           a.pocLsb != b.pocLsb || a.deltaPocBottom != b.deltaPocBottom || a.deltaPoc != b.deltaPoc;
}

Frame frameOf(const Picture& picture, const SequenceParameterSet& sps, const StreamInfo& stream) {
    Frame frame;
    frame.bitDepth = sps.bitDepth();
    frame.chroma = sps.chroma();
    frame.chromaPlace = sps.chromaSampleLocType == 1 ? ChromaPlace::Centre : ChromaPlace::Left;
    frame.rate = sps.frameRate.known() ? sps.frameRate : stream.rate;
    frame.sampleAspect = sps.sampleAspect.known() ? sps.sampleAspect : stream.sampleAspect;
    if (sps.rangeGiven) frame.range = sps.fullRange ? ColourRange::Full : ColourRange::Limited;
    frame.fields = sps.frameMbsOnly || picture.poc[0] == picture.poc[1] ? FieldOrder::Progressive
                   : picture.poc[0] < picture.poc[1]                    ? FieldOrder::TopFirst
                                                                        : FieldOrder::BottomFirst;
    for (int i = 0; i < 3; ++i) {
        const vekapp::Plane& plane = picture.plane[i];
        if (plane.data == nullptr) continue;
        const int subX = i == 0 ? 1 : 16 / sps.chromaWidthMb(), subY = i == 0 ? 1 : 16 / sps.chromaHeightMb();
        frame.plane[i].data =
            plane.data + plane.stride * (sps.cropTop / subY) + sps.cropLeft / subX * picture.bytesPerSample;
        frame.plane[i].stride = plane.stride;
        frame.plane[i].width = plane.width - (sps.cropLeft + sps.cropRight) / subX;
        frame.plane[i].height = plane.height - (sps.cropTop + sps.cropBottom) / subY;
    }
    return frame;
}

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : stream_(options.stream),
      buffer_([this](const auto& picture, const auto& sps) { show(picture, sps); }),
      tasks_(std::move(sinks), options.threads, [this](PictureTask& task) { retire(task); }),
      mostSlices_(tasks_.sideBySide() ? 64 : 0) {}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(count_.secondsTotal);
    count_.bytes += packet.data.size();
    if (!std::ranges::equal(packet.extradata, configuration_)) configure(packet.extradata, packet.position);
    if (lengthBytes_ == 0) {
        StartCodeReader reader(packet.data);
        for (StartCodeUnit unit; reader.next(unit);) handle(unit.bytes, packet.position + unit.position);
        return;
    }
    for (std::size_t at = 0; at < packet.data.size();) {
        const auto left = packet.data.subspan(at);
        std::size_t size = 0, head = static_cast<std::size_t>(lengthBytes_);
        for (std::size_t i = 0; i < std::min(head, left.size()); ++i) size = size << 8 | left[i];
        if (left.size() < head || size > left.size() - head) {
            damage("a unit of " + std::to_string(size) + " bytes in a sample that has fewer");
            return;
        }
        handle(left.subspan(head, size), packet.position + at);
        at += head + size;
    }
}

void StreamDecoder::configure(std::span<const std::uint8_t> extradata, std::uint64_t position) {
    configuration_.assign(extradata.begin(), extradata.end());
    DecoderConfiguration found;
    if (parseDecoderConfiguration(configuration_, found)) {
        lengthBytes_ = found.lengthBytes;
        for (const auto unit : found.units) handle(unit, position);
        return;
    }
    lengthBytes_ = 0;
    StartCodeReader reader(configuration_);
    for (StartCodeUnit unit; reader.next(unit);) handle(unit.bytes, position);
}

void StreamDecoder::flush() {
    const Stopwatch watch(count_.secondsTotal);
    finishPicture();
    buffer_.flush();
    tasks_.finish();
}

void StreamDecoder::damage(const std::string& what) {
    tasks_.report("picture " + std::to_string(count_.pictures) + ": " + what);
    if (task_ != nullptr) task_->reported = true;
}

void StreamDecoder::handle(std::span<const std::uint8_t> bytes, std::uint64_t position) {
    NalUnit nal;
    nal.position = position;
    if (readNalUnit(bytes, nal)) handle(nal);
}

void StreamDecoder::handle(const NalUnit& nal) {
    try {
        switch (nal.type) {
            case NalUnitType::Slice:
            case NalUnitType::IdrSlice:
                handleSlice(nal);
                break;
            case NalUnitType::SequenceParameterSet:
                parameterSets_.takeSequence(nal.payload);  // a broken one ends nothing
                finishPicture();
                break;
            case NalUnitType::PictureParameterSet:
                parameterSets_.takePicture(nal.payload);
                break;
            case NalUnitType::SlicePartitionA:
            case NalUnitType::SlicePartitionB:
            case NalUnitType::SlicePartitionC:
                throw NotSupported("H.264 with data partitioning");
            case NalUnitType::AccessUnitDelimiter:
            case NalUnitType::EndOfStream:
                if (nal.refIdc == 0) finishPicture();  // else it is none, 7.4.1
                break;
            default:
                break;
        }
    } catch (const BadSyntax& e) {
        damage(e.what());
    } catch (const NotSupported& e) {
        damage("vekdec does not decode " + std::string(e.what()) + " (at byte " + std::to_string(nal.position) + ")");
    }
}

void StreamDecoder::handleSlice(const NalUnit& nal) {
    std::unique_ptr<SliceTask> taken = spareSlices_.take();
    Slice& slice = taken->slice;
    taken->payload.assignUnescaped(nal.payload);
    taken->bits.emplace(taken->payload);
    taken->ready = false;
    slice = {};
    slice.header = parseSliceHeader(*taken->bits, nal, parameterSets_);
    const SliceHeader& header = slice.header;
    if (header.redundantPicCnt > 0) return;
    if (task_ != nullptr && beginsPicture(task_->last().header, header)) finishPicture();
    if (task_ == nullptr) {
        // Nothing can be shown before the first intra picture.
        if (!seenIntra_ && header.type != SliceType::I)
            throw BadSyntax("the stream begins with a slice that needs a picture before it");
        seenIntra_ = true;
        slice.picture = &buffer_.begin(header);
        task_ = std::make_unique<PictureTask>();
        if (header.pps->numSliceGroups > 1) makeSliceGroupMap(header, task_->sliceGroupMap);
        task_->number = ++count_.pictures;
        if (buffer_.lost() > 0) damage(std::to_string(buffer_.lost()) + " frames before it are missing");
    } else {
        slice.picture = task_->last().picture;
    }
    slice.structure = !header.fieldPic ? kFrame : header.bottomField ? kBottomField : kTopField;
    auto& slices = slice.picture->slices[slice.structure == kBottomField];
    slice.number = static_cast<int>(slices.size());
    slice.mbToSliceGroupMap = header.pps->numSliceGroups > 1 ? &task_->sliceGroupMap : nullptr;
    slices.push_back({header.disableDeblockingIdc, header.alphaC0Offset, header.betaOffset,
                      header.pps->chromaQpIndexOffset, header.type == SliceType::B});
    ++count_.slices;
    try {
        makeReferenceLists(buffer_.pictures(), slice);
        taken->context.begin(slice);
        taken->ready = true;
    } catch (const BadSyntax& e) {
        damage(e.what());
    }
    task_->slices.push_back(std::move(taken));
    if (task_->slices.size() > mostSlices_) decodeHere();
}

// A picture of one thread, and one of more slices than should wait at once, is decoded as it comes. The last slice
// stays for what is asked of its header.
void StreamDecoder::decodeHere() {
    tasks_.worker().decodeSlices(*task_);
    spareSlices_.give(task_->slices, task_->slices.size() - 1);
}

void StreamDecoder::finishPicture() {
    if (task_ == nullptr) return;
    const SliceHeader header = task_->last().header;
    task_->kept = buffer_.pictures();
    task_->previous = buffer_.previous();
    tasks_.run(std::move(task_));
    buffer_.end(header);
}

// Counts what was found in decoding, and keeps for later what can be used again.
void StreamDecoder::retire(PictureTask& task) {
    for (std::size_t i = 0; i < std::size(count_.macroblocks); ++i) count_.macroblocks[i] += task.macroblocks[i];
    count_.skipped += task.skipped;
    count_.secondsMacroblocks += task.secondsMacroblocks;
    count_.secondsDeblocking += task.secondsDeblocking;
    spareSlices_.give(task.slices, task.slices.size());
}

void StreamDecoder::show(const std::shared_ptr<const Picture>& picture,
                         const std::shared_ptr<const SequenceParameterSet>& sps) {
    tasks_.show(frameOf(*picture, *sps, stream_),
                [picture, sps] { return blocksOf(*picture, sps->cropLeft, sps->cropTop); });
}

Statistics StreamDecoder::statistics() const {
    static constexpr const char* kKinds[] = {"lost", "Intra 4x4", "Intra 8x8", "Intra 16x16", "I_PCM", "inter"};
    Statistics s;
    s.frames = tasks_.frames();
    s.pictures = count_.pictures;
    s.slices = count_.slices;
    s.damaged = tasks_.damaged();
    s.bits = 8 * count_.bytes;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i], count_.macroblocks[i]);
    s.of.emplace_back("skipped", count_.skipped);
    s.seconds = {{"macroblocks", count_.secondsMacroblocks}, {"deblocking", count_.secondsDeblocking}};
    s.secondsTotal = count_.secondsTotal;
    return s;
}

Format format() {
    static constexpr const char* kCodecs[] = {"h264"};
    return {.name = "h264",
            .what = "H.264 (ISO 14496-10), CAVLC and CABAC: Baseline, Extended, Main and High up to 4:2:2 and 10 bits",
            .codecs = kCodecs,
            .probe = probe,
            .split = splitAtStartCode,
            .make = makeDecoder<StreamDecoder>,
            .threaded = true};
}

}  // namespace vekdec::h264
