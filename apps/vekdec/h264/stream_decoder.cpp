#include "h264/stream_decoder.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "bits/start_code.h"
#include "h264/blocks.h"
#include "h264/concealment.h"
#include "h264/deblocking.h"
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

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : sinks_(std::move(sinks)),
      stream_(options.stream),
      buffer_([this](const Picture& p, const SequenceParameterSet& sps) { show(p, sps); }) {}
StreamDecoder::~StreamDecoder() = default;

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
}

void StreamDecoder::damage(const std::string& what) {
    ++count_.damaged;
    sinks_.report("picture " + std::to_string(count_.pictures) + ": " + what);
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
    payload_.assignUnescaped(nal.payload);
    BitReader bits(payload_);
    SliceHeader header = parseSliceHeader(bits, nal, parameterSets_);
    if (header.redundantPicCnt > 0) return;
    if (slice_ != nullptr && beginsPicture(slice_->header, header)) finishPicture();
    if (slice_ == nullptr) {
        // Nothing can be shown before the first intra picture.
        if (!seenIntra_ && header.type != SliceType::I)
            throw BadSyntax("the stream begins with a slice that needs a picture before it");
        seenIntra_ = true;
        damagedBefore_ = count_.damaged;
        picture_ = &buffer_.begin(header);
        slice_ = std::make_unique<Slice>();
        const int structure = !header.fieldPic ? kFrame : header.bottomField ? kBottomField : kTopField;
        const std::size_t count = picture_->mbs.size() / (header.fieldPic ? 2 : 1);
        const std::size_t first = structure == kBottomField ? count : 0;
        for (std::size_t i = 0; i < count; ++i) {
            picture_->mbs[first + i].type = MbType::Missing;
            picture_->mbs[first + i].field = header.fieldPic;
        }
        if (header.pps->numSliceGroups > 1) makeSliceGroupMap(header, sliceGroupMap_);
        decodedTo_ = 0;
        finishedRows_ = 0;
        ++count_.pictures;
        if (buffer_.lost() > 0) damage(std::to_string(buffer_.lost()) + " frames before it are missing");
    }
    slice_->header = std::move(header);
    slice_->picture = picture_;
    slice_->structure = !slice_->header.fieldPic ? kFrame : slice_->header.bottomField ? kBottomField : kTopField;
    slice_->number = static_cast<int>(picture_->slices.size());
    slice_->mbToSliceGroupMap = slice_->header.pps->numSliceGroups > 1 ? &sliceGroupMap_ : nullptr;
    picture_->slices.push_back({slice_->header.disableDeblockingIdc, slice_->header.alphaC0Offset,
                                slice_->header.betaOffset, slice_->header.pps->chromaQpIndexOffset,
                                slice_->header.type == SliceType::B});
    ++count_.slices;
    makeReferenceLists(buffer_.pictures(), *slice_);
    const double deblockingBefore = count_.secondsDeblocking;
    double seconds = 0;
    std::optional<Stopwatch> watch(std::in_place, seconds);
    const int pair = slice_->header.mbaff() ? 2 : 1;
    const bool inOrder = slice_->header.firstMbInSlice * pair == decodedTo_;
    const auto broken = sliceDecoder_.decode(bits, *slice_, [&](int address) {
        if (!inOrder) return;
        decodedTo_ = address;
        // The last row stays as it is until the row below it, predicted from it, is decoded.
        finishRows(address / (pair * picture_->widthInMbs) - 1);
    });
    watch.reset();
    count_.secondsMacroblocks += seconds - (count_.secondsDeblocking - deblockingBefore);
    if (broken) damage("macroblock " + std::to_string(broken->mbAddress) + ": " + broken->reason);
}

// Deblocks the macroblock rows (of MBAFF frames: rows of pairs) before endRow that are not yet done.
void StreamDecoder::finishRows(int endRow) {
    if (endRow <= finishedRows_) return;
    const Stopwatch watch(count_.secondsDeblocking);
    deblockRows(*picture_, slice_->structure, *slice_->header.sps, finishedRows_, endRow);
    const std::size_t perRow = static_cast<std::size_t>(picture_->widthInMbs * (slice_->header.mbaff() ? 2 : 1));
    const std::size_t first = slice_->structure == kBottomField ? picture_->mbs.size() / 2 : 0;
    for (std::size_t i = static_cast<std::size_t>(finishedRows_) * perRow;
         i < static_cast<std::size_t>(endRow) * perRow; ++i) {
        const Macroblock& mb = picture_->mbs[first + i];
        ++count_.macroblocks[static_cast<std::size_t>(mb.type)];
        count_.skipped += mb.skipped;
    }
    finishedRows_ = endRow;
}

void StreamDecoder::finishPicture() {
    if (slice_ == nullptr) return;
    const SliceHeader& header = slice_->header;
    const int rows = picture_->heightInMbs / (header.fieldPic || header.mbaff() ? 2 : 1);
    if (decodedTo_ < rows * picture_->widthInMbs * (header.mbaff() ? 2 : 1)) {
        const int missing = concealMissing(*picture_, slice_->structure, buffer_.previous(), header.sps->bitDepthLuma,
                                           header.sps->bitDepthChroma);
        if (missing > 0 && count_.damaged == damagedBefore_)
            damage(std::to_string(missing) + " macroblocks are missing");
    }
    finishRows(rows);
    buffer_.end(slice_->header);
    slice_.reset();
    picture_ = nullptr;
}

void StreamDecoder::show(const Picture& picture, const SequenceParameterSet& sps) {
    Frame frame;
    frame.bitDepth = sps.bitDepth();
    frame.chroma = sps.chroma();
    frame.chromaPlace = sps.chromaSampleLocType == 1 ? ChromaPlace::Centre : ChromaPlace::Left;
    frame.number = static_cast<int>(count_.frames++);
    frame.rate = sps.frameRate.known() ? sps.frameRate : stream_.rate;
    frame.sampleAspect = sps.sampleAspect.known() ? sps.sampleAspect : stream_.sampleAspect;
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
    shown_ = &picture;
    shownSps_ = &sps;
    sinks_.frame(frame);
    shown_ = nullptr;
}

BlockMap StreamDecoder::blocks(const Frame&) const {
    return blocksOf(*shown_, shownSps_->cropLeft, shownSps_->cropTop);
}

Statistics StreamDecoder::statistics() const {
    static constexpr const char* kKinds[] = {"lost", "Intra 4x4", "Intra 8x8", "Intra 16x16", "I_PCM", "inter"};
    Statistics s;
    s.frames = count_.frames;
    s.pictures = count_.pictures;
    s.slices = count_.slices;
    s.damaged = count_.damaged;
    s.bits = 8 * count_.bytes;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i], count_.macroblocks[i]);
    s.of.emplace_back("skipped", count_.skipped);
    s.seconds = {{"macroblocks", count_.secondsMacroblocks}, {"deblocking", count_.secondsDeblocking}};
    s.secondsTotal = count_.secondsTotal;
    return s;
}

Format format() {
    static constexpr const char* kCodecs[] = {"h264"};
    return {"h264",
            "H.264 (ISO 14496-10), CAVLC and CABAC: Baseline, Extended, Main and High up to 4:2:2 and 10 bits",
            kCodecs,
            probe,
            splitAtStartCode,
            makeDecoder<StreamDecoder>};
}

}  // namespace vekdec::h264
