#include "mpeg12/stream_decoder.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "bits/start_code.h"
#include "mpeg12/format.h"
#include "report/stopwatch.h"

namespace vekdec::mpeg12 {
namespace {

constexpr vekapp::BlockKind kKinds[] = {
    {"lost", {255, 0, 255}},      {"intra", {230, 60, 60}}, {"forward", {60, 120, 230}},
    {"backward", {60, 190, 120}}, {"both", {240, 210, 60}}, {"skipped", {60, 60, 70}},
};

BlockMap blocksOf(const Picture& picture, int coarsestQp) {
    BlockMap map{kKinds, 1, coarsestQp, {}, {}};
    const int width = picture.plane[0].width / 16;
    const std::size_t half = picture.mbs.size() / 2;
    for (std::size_t i = 0; i < picture.mbs.size(); ++i) {
        const Macroblock& mb = picture.mbs[i];
        const bool bottom = picture.codedAsFields && i >= half;
        const int address = static_cast<int>(bottom ? i - half : i);
        const int apart = picture.codedAsFields ? 2 : 1;
        const int x = 16 * (address % width), y = 16 * (address / width) * apart + (bottom ? 1 : 0);
        map.blocks.push_back({x, y, 16, 16, apart, static_cast<int>(mb.kind), mb.scale});
        for (std::size_t s = 0; s < 2; ++s)
            if (mb.uses[s])
                map.vectors.push_back({x + 8, y + 8 * apart, mb.mv[s].x / 2, mb.mv[s].y / 2 * apart, s == 1});
    }
    return map;
}

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : tasks_(std::move(sinks), options.threads, [this](PictureTask& task) { retire(task); }),
      mostSlices_(tasks_.sideBySide() ? 512 : 0) {}

void StreamDecoder::damage(const std::string& what) {
    tasks_.report("picture " + std::to_string(pictures_) + ": " + what);
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    const auto handleAll = [&](std::span<const std::uint8_t> bytes) {
        StartCodeReader reader(bytes);
        for (StartCodeUnit unit; reader.next(unit);) handle(unit.bytes);
    };
    if (!seenExtradata_ && !packet.extradata.empty()) handleAll(packet.extradata);
    seenExtradata_ = true;
    handleAll(packet.data);
}

void StreamDecoder::handle(std::span<const std::uint8_t> unit) {
    const std::uint8_t code = unit[0];
    if (code > kLastSlice && code < kSequenceHeader) return;
    try {
        if (code >= kFirstSlice && code <= kLastSlice) {
            handleSlice(unit.subspan(1), code);
            return;
        }
        payload_.assign(unit.subspan(1));
        WordReader bits(payload_);
        switch (code) {
            case kSequenceHeader:
                finishField();
                newSequence_ = parseSequenceHeader(bits);
                refused_ = false;
                break;
            case kExtension:
                handleExtension(bits);
                break;
            case kGroupOfPictures:
                finishField();
                bits.u(25);  // time_code
                closedGroup_ = bits.flag();
                break;
            case kPictureStart:
                finishField();
                leftOut_ = false;
                newPicture_ = parsePictureHeader(bits);
                newPictureExtended_ = false;
                break;
            case kSequenceEnd:
                finishField();
                finishFrame();
                showLast();
                anchors_[0] = anchors_[1] = nullptr;
                break;
            default:
                break;
        }
    } catch (const BadSyntax& e) {
        damage(e.what());
    } catch (const NotSupported& e) {
        damage(std::string("vekdec does not decode ") + e.what());
        refused_ = true;
        newSequence_.reset();
    }
}

void StreamDecoder::handleExtension(WordReader& bits) {
    switch (bits.u(4)) {
        case 1:
            if (newSequence_) parseSequenceExtension(bits, *newSequence_);
            break;
        case 3:
            parseQuantMatrixExtension(bits, newSequence_ ? newSequence_->matrices : matrices_);
            break;
        case 8:
            if (newPicture_) parsePictureCodingExtension(bits, *newPicture_);
            newPictureExtended_ = true;
            break;
        default:
            break;
    }
}

void StreamDecoder::activateSequence() {
    if (!newSequence_) return;
    const Sequence next = *newSequence_;
    newSequence_.reset();
    if (next.width == 0 || next.height == 0)
        throw BadSyntax("the picture size is " + std::to_string(next.width) + "x" + std::to_string(next.height));
    // The highest level of all profiles has 1920x1152 samples (Table 8-11); some streams go beyond it.
    constexpr int kMostMbs = 4096 / 16 * (2304 / 16);
    if (next.widthInMbs() * next.heightInMbs() > kMostMbs)
        throw NotSupported("MPEG-2 of " + std::to_string(next.width) + "x" + std::to_string(next.height) + " samples");
    if (!haveSequence_ || next.format() != sequence_.format() || next.mpeg2 != sequence_.mpeg2) {
        finishFrame();
        showLast();
        anchors_[0] = anchors_[1] = nullptr;
    }
    sequence_ = next;
    matrices_ = next.matrices;
    haveSequence_ = true;
}

bool StreamDecoder::beginPicture() {
    activateSequence();
    header_ = *newPicture_;
    newPicture_.reset();
    ++pictures_;
    if (!haveSequence_) throw BadSyntax("a picture without a sequence header before it");
    if (sequence_.mpeg2 && !newPictureExtended_) throw BadSyntax("a picture without its coding extension");
    if (!sequence_.mpeg2) header_.structure = kFrame;
    if (sequence_.progressive && header_.structure != kFrame)
        throw BadSyntax("a field picture in a progressive sequence");  // 6.3.5; its frame may have an odd row
    const bool secondField = current_ != nullptr && header_.structure == kFrame - decodedFields_;
    if (!secondField) finishFrame();
    const PictureType type = header_.type;
    const bool isB = type == PictureType::B;
    // At the beginning of a stream, or behind a cut, B pictures may lack what they are predicted from.
    if (isB && (anchors_[1] == nullptr || (anchors_[0] == nullptr && !closedGroup_))) {
        ++leftOutPictures_;
        return false;
    }
    if (type == PictureType::P && anchors_[1] == nullptr && !secondField)
        throw BadSyntax("the stream begins with a picture that needs one before it");
    if (header_.repeatFirstField) ++repeated_;
    if (!secondField) {
        current_ = pool_.take(sequence_.format());
        current_->header = header_;
        current_->codedAsFields = header_.structure != kFrame;
        current_->progress.restart();
        std::fill(current_->mbs.begin(), current_->mbs.end(), Macroblock{});
        decodedFields_ = 0;
    }
    beginTask();
    return true;
}

void StreamDecoder::beginTask() {
    task_ = std::make_unique<PictureTask>();
    task_->number = pictures_;
    task_->sequence = sequence_;
    task_->header = header_;
    task_->matrices = matrices_;
    PictureContext& context = task_->context;
    context.sequence = &task_->sequence;
    context.header = &task_->header;
    context.matrices = &task_->matrices;
    context.picture = current_.get();
    context.current = PictureViews(*current_);
    task_->kept = {current_, anchors_[0], anchors_[1]};
    const PictureType type = header_.type;
    const bool isB = type == PictureType::B;
    Picture* const forward = isB ? anchors_[0].get() : type == PictureType::P ? anchors_[1].get() : nullptr;
    Picture* const backward = isB ? anchors_[1].get() : nullptr;
    if (forward != nullptr) context.reference[0] = PictureViews(*forward);
    if (backward != nullptr) context.reference[1] = PictureViews(*backward);
    context.hasReference[0] = forward != nullptr;
    context.hasReference[1] = backward != nullptr;
    if (decodedFields_ != 0 && type == PictureType::P) {  // the first field is the nearer one of its parity (7.6.2.1)
        const int other = 1 - context.parity();
        context.reference[0].field[other] = context.current.field[other];
        if (!context.hasReference[0]) context.reference[0].field[1 - other] = context.current.field[other];
        context.hasReference[0] = true;
    }
    Picture* const before = anchors_[1] != nullptr ? anchors_[1].get() : anchors_[0].get();
    if (before != nullptr) task_->before = {before->plane, before->progress, header_.structure};
}

void StreamDecoder::handleSlice(std::span<const std::uint8_t> bytes, int verticalPosition) {
    if (refused_ || leftOut_) return;
    if (newPicture_) {
        leftOut_ = true;  // unless it begins well
        leftOut_ = !beginPicture();
        if (leftOut_) return;
    }
    if (task_ == nullptr) return;
    ++slicesSeen_;
    auto& slices = task_->slices;
    slices.push_back(spareSlices_.take());
    SliceTask& slice = *slices.back();
    slice.payload.assign(bytes);
    slice.verticalPosition = verticalPosition;
    slice.row = verticalPosition - 1;
    // slice_vertical_position_extension
    if (sequence_.height > 2800) slice.row += static_cast<int>(WordReader(slice.payload).peek32() >> 29) * 128;
    if (slices.size() <= mostSlices_) return;
    tasks_.worker().decodeSlices(*task_);
    spareSlices_.give(slices, slices.size());
}

void StreamDecoder::finishField() {
    if (task_ == nullptr) return;
    tasks_.run(std::move(task_));
    decodedFields_ |= header_.structure;
    if (decodedFields_ == kFrame) finishFrame();
}

// Counts what was found in decoding, and keeps for later what can be used again.
void StreamDecoder::retire(PictureTask& task) {
    for (std::size_t i = 0; i < std::size(kinds_); ++i) kinds_[i] += task.kinds[i];
    secondsSlices_ += task.seconds;
    spareSlices_.give(task.slices, task.slices.size());
}

void StreamDecoder::finishFrame() {
    finishField();
    if (current_ == nullptr) return;
    if (decodedFields_ != kFrame) {  // a field that never came shows the lines of the other one
        damage("a field is missing");
        current_->progress.await(decodedFields_, RowProgress::kAll);
        for (const vekapp::Plane& plane : current_->plane) vekapp::repeatField(plane, decodedFields_ == kBottomField);
        current_->progress.publish(kFrame, RowProgress::kAll);
    }
    const PicturePtr done = std::move(current_);
    current_ = nullptr;
    decodedFields_ = 0;
    if (done->header.type == PictureType::B || done->header.type == PictureType::D) {
        show(done);
        return;
    }
    showLast();
    anchors_[0] = std::move(anchors_[1]);
    anchors_[1] = done;
    newerShown_ = false;
}

// An anchor is given out when the next one is there.
void StreamDecoder::showLast() {
    if (newerShown_ || anchors_[1] == nullptr) return;
    newerShown_ = true;
    show(anchors_[1]);
}

void StreamDecoder::show(const PicturePtr& picture) {
    Frame frame;
    frame.chroma = sequence_.chroma;
    frame.chromaPlace = sequence_.mpeg2 ? ChromaPlace::Left : ChromaPlace::Centre;
    frame.rate = sequence_.rate();
    frame.sampleAspect = sequence_.sampleAspect();
    const PictureHeader& header = picture->header;
    const bool topFirst = picture->codedAsFields ? header.structure == kTopField : header.topFieldFirst;
    frame.fields = sequence_.progressive || (header.progressiveFrame && !picture->codedAsFields)
                       ? FieldOrder::Progressive
                   : topFirst ? FieldOrder::TopFirst
                              : FieldOrder::BottomFirst;
    showPlanes(frame, picture->plane, sequence_.width, sequence_.height);
    tasks_.show(frame, [picture, coarsestQp = sequence_.mpeg2 ? 62 : 31] { return blocksOf(*picture, coarsestQp); });
}

void StreamDecoder::flush() {
    const Stopwatch watch(secondsTotal_);
    finishFrame();
    showLast();
    anchors_[0] = anchors_[1] = nullptr;
    tasks_.finish();
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = tasks_.frames();
    s.pictures = pictures_;
    s.slices = slicesSeen_;
    s.damaged = tasks_.damaged();
    s.bits = 8 * bytes_;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i].name, kinds_[i]);
    s.seconds.emplace_back("macroblocks", secondsSlices_);
    s.secondsTotal = secondsTotal_;
    if (repeated_ > 0)
        s.remarks.push_back(std::to_string(repeated_) +
                            " frames ask to be shown for a field longer "
                            "(repeat_first_field); they are given out once");
    if (leftOutPictures_ > 0)
        s.remarks.push_back(std::to_string(leftOutPictures_) +
                            " B pictures at the beginning lack their references and are left out");
    return s;
}

namespace {

// A sequence header, and soon behind it a picture with a slice.
int probe(std::span<const std::uint8_t> begin) {
    StartCodeReader reader(begin);
    bool sequence = false;
    StartCodeUnit unit;
    for (int i = 0; i < 32 && reader.next(unit); ++i) {
        if (i == 0 && unit.position > 64) return 0;
        const std::uint8_t code = unit.bytes[0];
        if (code == kSequenceHeader) {
            if (unit.bytes.size() < 8 || (unit.bytes[7] & 0x20) == 0) return 0;  // marker bit
            sequence = true;
        }
        if (sequence && code == kPictureStart) return 95;
    }
    return 0;
}

constexpr const char* kCodecs[] = {"mpeg1video", "mpeg2video"};

}  // namespace

Format format() {
    return {.name = "mpeg2",
            .what = "MPEG-1 and MPEG-2 video (ISO 11172-2, 13818-2): Main and 4:2:2 profile, 8 bits",
            .codecs = kCodecs,
            .probe = probe,
            .split = splitAtStartCode,
            .make = makeDecoder<StreamDecoder>,
            .threaded = true};
}

}  // namespace vekdec::mpeg12
