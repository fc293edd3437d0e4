#include "avs/stream_decoder.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "bits/start_code.h"
#include "report/stopwatch.h"

namespace vekdec::avs {
namespace {

// The longest picture header has fewer bytes; a draft's picture unit, which holds the macroblocks too, has more.
constexpr std::size_t kMostHeaderBytes = 32;

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : stream_(options.stream),
      tasks_(std::move(sinks), options.threads, [this](FieldTask& task) { retire(task); }),
      mostSlices_(tasks_.sideBySide() ? 512 : 0) {}

void StreamDecoder::damage(const std::string& what) {
    tasks_.report("picture " + std::to_string(pictures_) + ": " + what);
}

// Runs a step that may find the stream broken, or beyond what is decoded.
template <class Step>
void StreamDecoder::guarded(Step step) {
    try {
        step();
    } catch (const BadSyntax& e) {
        damage(e.what());
    } catch (const NotSupported& e) {
        damage(std::string("vekdec does not decode ") + e.what());
    }
}

// ---- units

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    if (!seenExtradata_ && !packet.extradata.empty()) handleAll(packet.extradata);
    seenExtradata_ = true;
    handleAll(packet.data);
}

void StreamDecoder::handleAll(Bytes bytes) {
    StartCodeReader reader(bytes);
    for (StartCodeUnit unit; reader.next(unit);) handle(unit.bytes);
}

void StreamDecoder::handle(Bytes unit) {
    const std::uint8_t code = unit[0];
    if (code == kUserData || (code > kIntraPicture && code != kInterPicture)) return;
    if (!firstPicture_.empty()) settleSyntax(code);
    switch (code) {
        case kSequenceHeader:
            finishPicture();
            guarded([&] {
                refused_ = true;  // unless it is read
                newSequence_.reset();
                WordPayload payload;
                payload.assignUnstuffed(unit.subspan(1));
                BitReader bits(payload);
                newSequence_ = parseSequenceHeader(bits);
                refused_ = false;
            });
            break;
        case kIntraPicture:
        case kInterPicture:
            finishPicture();
            if (syntax_)
                handlePicture(unit);
            else
                firstPicture_.assign(unit.begin(), unit.end());
            break;
        case kSequenceEnd:
            endSequence();
            break;
        default:
            if (code <= kLastSlice) handleSlice(unit);
            break;
    }
}

// The first picture shows what stream it is: a draft's picture has no unit for its slice.
void StreamDecoder::settleSyntax(std::uint8_t nextCode) {
    const std::vector<std::uint8_t> unit = std::move(firstPicture_);
    firstPicture_.clear();
    if (nextCode <= kLastSlice)
        syntax_ = Syntax::Standard;
    else if (unit.size() > kMostHeaderBytes)
        syntax_ = Syntax::Draft;
    else
        return damage("a picture without slices");
    handlePicture(unit);
}

void StreamDecoder::handlePicture(Bytes unit) {
    guarded([&] {
        if (refused_) return;
        activateSequence();
        auto slice = spareSlices_.take();
        slice->payload.assignUnstuffed(unit.subspan(1));
        BitReader& bits = slice->bits.emplace(slice->payload);
        ++pictures_;
        if (!haveSequence_) throw BadSyntax("a picture without a sequence header before it");
        newPicture_ = parsePictureHeader(bits, unit[0], sequence_, *syntax_);
        slice->row = 0;
        if (*syntax_ == Syntax::Draft)
            takeSlice(std::move(slice));  // its last macroblock ends it: no one bit is behind it
        else
            spareSlices_.give(std::move(slice));
    });
}

void StreamDecoder::handleSlice(Bytes unit) {
    guarded([&] {
        if (!newPicture_ && current_ == nullptr) return;
        auto slice = spareSlices_.take();
        slice->payload.assignUnstuffed(unit.subspan(1));
        slice->payload.trimToLastOne();
        BitReader& bits = slice->bits.emplace(slice->payload);
        slice->row = unit[0];
        if (sequence_.height > 2800) slice->row += static_cast<int>(bits.u(3)) * 128;
        takeSlice(std::move(slice));
    });
}

void StreamDecoder::takeSlice(std::unique_ptr<SliceTask> slice) {
    if (newPicture_ && !beginPicture()) return;
    const int rowsOfField = sequence_.heightInMbs() / 2;
    if (current_->header.fields && slice->row >= rowsOfField) {
        if (!secondField_) {
            finishField();
            beginField(true);
        }
        slice->row -= rowsOfField;
    } else if (secondField_) {
        throw BadSyntax("a slice of the first field behind the second field's");
    }
    ++slicesSeen_;
    auto& slices = task_->slices;
    slices.push_back(std::move(slice));
    if (slices.size() <= mostSlices_) return;
    tasks_.worker().decodeSlices(*task_);
    spareSlices_.give(slices, slices.size());
}

// ---- pictures

void StreamDecoder::activateSequence() {
    if (!newSequence_) return;
    const Sequence next = *newSequence_;
    newSequence_.reset();
    // The highest level has 1920x1152 samples; as for other standards, some more are taken.
    constexpr int kMostMbs = 4096 / 16 * (2304 / 16);
    if (next.widthInMbs() * next.heightInMbs() > kMostMbs) {
        refused_ = true;
        throw NotSupported("AVS of " + std::to_string(next.width) + "x" + std::to_string(next.height) + " samples");
    }
    if (next.format() != sequence_.format() || next.width != sequence_.width || next.height != sequence_.height)
        endSequence();
    sequence_ = next;
    haveSequence_ = true;
}

bool StreamDecoder::beginPicture() {
    const PictureHeader header = *newPicture_;
    newPicture_.reset();
    const PictureType type = header.type;
    if (type == PictureType::B) {
        // At the beginning of a stream, or behind a cut, B pictures may lack what they are predicted from.
        if (anchors_[0] == nullptr || anchors_[1] == nullptr) {
            ++leftOutPictures_;
            return false;
        }
        if (header.fields) throw NotSupported("AVS with B fields");
        if (anchors_[1]->header.fields) throw NotSupported("AVS with B frames between field pictures");
    }
    if (type == PictureType::P && anchors_[1] == nullptr)
        throw BadSyntax("the stream begins with a picture that needs one before it");
    if (header.repeatFirstField) ++repeated_;
    current_ = pool_.take(sequence_.format());
    current_->header = header;
    current_->progress.restart();
    beginField(false);
    return true;
}

void StreamDecoder::beginField(bool second) {
    secondField_ = second;
    task_ = std::make_unique<FieldTask>();
    task_->number = pictures_;
    task_->header = current_->header;
    task_->picture = current_;
    for (std::size_t i = 0; i < 2; ++i) task_->kept[i] = anchors_[i];
    const PictureHeader& header = task_->header;
    task_->structure = !header.fields ? RowProgress::kFrame : second ? 2 : 1;
    if (const PicturePtr& before = anchors_[1] != nullptr ? anchors_[1] : anchors_[0]; before != nullptr)
        task_->before = {before->plane, before->progress, task_->structure};
    PictureContext& context = task_->context;
    context.header = &header;
    context.type = second && header.type == PictureType::I ? PictureType::P : header.type;
    context.syntax = *syntax_;
    context.width = sequence_.widthInMbs();
    context.height = sequence_.heightInMbs() / (header.fields ? 2 : 1);
    context.mbs = current_->mbs.data() + (second ? current_->mbs.size() / 2 : 0);
    // The first field has the even rows, whichever is shown first.
    for (int i = 0; i < 3; ++i)
        context.plane[i] = header.fields ? current_->plane[i].field(second) : current_->plane[i];
    setReferences(context, second);
}

void StreamDecoder::setReferences(PictureContext& context, bool second) {
    const PictureHeader& header = *context.header;
    const int now = current_->time(second);
    const auto add = [&](const PicturePtr& picture, int structure) {
        Reference& reference = context.reference[context.references++];
        if (picture == nullptr) return;
        static_cast<PlaneSet&>(reference) = {picture->plane, picture->progress, structure};
        // Modulo 512; a distance of 0, which no good stream has, becomes 512.
        reference.distance = ((now - picture->time(structure == 2) - 1) & 511) + 1;
    };
    switch (context.type) {
        case PictureType::I:
            return;
        case PictureType::B:
            add(anchors_[1], RowProgress::kFrame);
            add(anchors_[0], RowProgress::kFrame);
            context.reference[0].distance = ((anchors_[1]->time(false) - now - 1) & 511) + 1;
            context.colocated = anchors_[1].get();
            return;
        case PictureType::P:
            break;
    }
    if (!header.fields) {
        add(anchors_[1], RowProgress::kFrame);
        add(anchors_[0], RowProgress::kFrame);
        for (int i = 0; i < 2; ++i) current_->referenceDistance[i] = context.reference[i].distance;
        return;
    }
    // The fields decoded last, from the last one on.
    if (second) add(current_, 1);
    if (header.type == PictureType::I) return;
    for (const PicturePtr& anchor : {anchors_[1], anchors_[0]})
        for (const int structure : {2, 1})
            if (context.references < kMostReferences) add(anchor, structure);
}

void StreamDecoder::finishField() { tasks_.run(std::move(task_)); }

// Counts what was found in decoding, and keeps for later what can be used again.
void StreamDecoder::retire(FieldTask& task) {
    for (std::size_t i = 0; i < std::size(kinds_); ++i) kinds_[i] += task.kinds[i];
    secondsMacroblocks_ += task.secondsMacroblocks;
    secondsFilter_ += task.secondsFilter;
    spareSlices_.give(task.slices, task.slices.size());
}

void StreamDecoder::finishPicture() {
    if (newPicture_) {
        newPicture_.reset();
        damage("a picture without slices");
    }
    if (current_ == nullptr) return;
    finishField();
    if (current_->header.fields && !secondField_) {  // a field that never came shows the lines of the other one
        damage("a field is missing");
        current_->progress.await(1, RowProgress::kAll);
        for (const vekapp::Plane& plane : current_->plane) vekapp::repeatField(plane, false);
        std::fill(current_->mbs.begin() + static_cast<std::ptrdiff_t>(current_->mbs.size() / 2), current_->mbs.end(),
                  Macroblock{});
        current_->progress.publish(RowProgress::kFrame, RowProgress::kAll);
    }
    secondField_ = false;
    const PicturePtr done = std::move(current_);
    current_ = nullptr;
    if (done->header.type == PictureType::B) {
        show(done);
        return;
    }
    showLast();
    anchors_[0] = std::move(anchors_[1]);
    anchors_[1] = done;
    newerShown_ = false;
}

void StreamDecoder::endSequence() {
    finishPicture();
    showLast();
    anchors_[0] = anchors_[1] = nullptr;
    newerShown_ = true;
}

// An anchor is given out when the next one is there.
void StreamDecoder::showLast() {
    if (newerShown_ || anchors_[1] == nullptr) return;
    newerShown_ = true;
    show(anchors_[1]);
}

void StreamDecoder::flush() {
    const Stopwatch watch(secondsTotal_);
    if (!firstPicture_.empty()) settleSyntax(kSequenceEnd);
    endSequence();
    tasks_.finish();
}

}  // namespace vekdec::avs
