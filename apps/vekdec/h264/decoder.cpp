#include "decoder.h"

#include <chrono>

#include "concealment.h"
#include "deblocking.h"
#include "reference_lists.h"
#include "slice_groups.h"

namespace vekdec::h264 {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// First slice of a new primary coded picture, 7.4.1.2.4.
bool beginsPicture(const SliceHeader& a, const SliceHeader& b) {
    return a.frameNum != b.frameNum || a.pps != b.pps || a.fieldPic != b.fieldPic || a.bottomField != b.bottomField ||
           (a.nalRefIdc == 0) != (b.nalRefIdc == 0) || a.idr != b.idr || (a.idr && a.idrPicId != b.idrPicId) ||
           a.pocLsb != b.pocLsb || a.deltaPocBottom != b.deltaPocBottom || a.deltaPoc != b.deltaPoc;
}

}  // namespace

Decoder::Decoder(FrameSink sink, Report report)
    : sink_(std::move(sink)),
      report_(std::move(report)),
      buffer_([this](const Picture& p, const SequenceParameterSet& sps) { show(p, sps); }) {}
Decoder::~Decoder() = default;

void Decoder::decode(std::span<const std::uint8_t> stream, const std::function<bool(std::size_t)>& progress) {
    const auto start = Clock::now();
    NalUnitReader reader(stream);
    NalUnit nal;
    bool goOn = true;
    while (goOn && reader.next(nal)) {
        handle(nal);
        if (progress) goOn = progress(reader.position());
    }
    if (goOn) {
        finishPicture();
        buffer_.flush();
    }
    statistics_.bits += 8 * stream.size();
    statistics_.secondsTotal += secondsSince(start);
}

void Decoder::damage(const std::string& what) {
    ++statistics_.damagedSlices;
    report_("picture " + std::to_string(statistics_.pictures) + ": " + what);
}

void Decoder::handle(const NalUnit& nal) {
    try {
        switch (nal.type) {
            case 1:
            case 5:
                handleSlice(nal);
                break;
            case 7:
                parameterSets_.takeSequence(nal.payload);  // a broken one ends nothing
                finishPicture();
                break;
            case 8:
                parameterSets_.takePicture(nal.payload);
                break;
            case 2:
            case 3:
            case 4:
                throw NotSupported("data partitioning");
            case 9:
            case 11:
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

void Decoder::handleSlice(const NalUnit& nal) {
    payload_.assign(nal.payload.data(), nal.payload.size());
    BitReader bits(payload_);
    SliceHeader header = parseSliceHeader(bits, nal.refIdc, nal.type, parameterSets_);
    if (header.redundantPicCnt > 0) return;
    if (slice_ != nullptr && beginsPicture(slice_->header, header)) finishPicture();
    if (slice_ == nullptr) {
        // Nothing can be shown before the first intra picture.
        if (!seenIntra_ && header.type != SliceType::I)
            throw BadSyntax("the stream begins with a slice that needs a picture before it");
        seenIntra_ = true;
        damagedBefore_ = statistics_.damagedSlices;
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
        ++statistics_.pictures;
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
    ++statistics_.slices;
    makeReferenceLists(buffer_.pictures(), *slice_);
    const auto start = Clock::now();
    const double deblockingBefore = statistics_.secondsDeblocking;
    const int pair = slice_->header.mbaff() ? 2 : 1;
    const bool inOrder = slice_->header.firstMbInSlice * pair == decodedTo_;
    const auto broken = sliceDecoder_.decode(bits, *slice_, [&](int address) {
        if (!inOrder) return;
        decodedTo_ = address;
        // The last row stays as it is until the row below it, predicted from it, is decoded.
        finishRows(address / (pair * picture_->widthInMbs) - 1);
    });
    statistics_.secondsParsing += secondsSince(start) - (statistics_.secondsDeblocking - deblockingBefore);
    if (broken != nullptr) damage("macroblock " + std::to_string(broken->mbAddress) + ": " + broken->reason);
}

// Deblocks the macroblock rows (of MBAFF frames: rows of pairs) before endRow that are not yet done.
void Decoder::finishRows(int endRow) {
    if (endRow <= finishedRows_) return;
    const auto start = Clock::now();
    deblockRows(*picture_, slice_->structure, *slice_->header.sps, finishedRows_, endRow);
    const std::size_t perRow = static_cast<std::size_t>(picture_->widthInMbs * (slice_->header.mbaff() ? 2 : 1));
    const std::size_t first = slice_->structure == kBottomField ? picture_->mbs.size() / 2 : 0;
    for (std::size_t i = static_cast<std::size_t>(finishedRows_) * perRow;
         i < static_cast<std::size_t>(endRow) * perRow; ++i) {
        const Macroblock& mb = picture_->mbs[first + i];
        ++statistics_.macroblocks[static_cast<std::size_t>(mb.type)];
        statistics_.skipped += mb.skipped;
    }
    finishedRows_ = endRow;
    statistics_.secondsDeblocking += secondsSince(start);
}

void Decoder::finishPicture() {
    if (slice_ == nullptr) return;
    const SliceHeader& header = slice_->header;
    const int rows = picture_->heightInMbs / (header.fieldPic || header.mbaff() ? 2 : 1);
    if (decodedTo_ < rows * picture_->widthInMbs * (header.mbaff() ? 2 : 1)) {
        const int missing = concealMissing(*picture_, slice_->structure, buffer_.previous(), header.sps->bitDepthLuma,
                                           header.sps->bitDepthChroma);
        if (missing > 0 && statistics_.damagedSlices == damagedBefore_)
            damage(std::to_string(missing) + " macroblocks are missing");
    }
    finishRows(rows);
    buffer_.end(slice_->header);
    slice_.reset();
    picture_ = nullptr;
}

void Decoder::show(const Picture& picture, const SequenceParameterSet& sps) {
    Frame frame;
    frame.bitDepth = sps.bitDepth();
    frame.chromaFormatIdc = sps.chromaFormatIdc;
    frame.number = static_cast<int>(statistics_.frames++);
    frame.details = &picture;
    for (int i = 0; i < 3; ++i) {
        const PlaneMemory& plane = picture.plane[i];
        if (plane.data == nullptr) continue;
        const int subX = i == 0 ? 1 : 16 / sps.chromaWidthMb(), subY = i == 0 ? 1 : 16 / sps.chromaHeightMb();
        frame.plane[i].data =
            plane.data + plane.stride * (sps.cropTop / subY) + sps.cropLeft / subX * picture.bytesPerSample;
        frame.plane[i].stride = plane.stride;
        frame.plane[i].width = plane.width - (sps.cropLeft + sps.cropRight) / subX;
        frame.plane[i].height = plane.height - (sps.cropTop + sps.cropBottom) / subY;
    }
    sink_(frame);
}

}  // namespace vekdec::h264
