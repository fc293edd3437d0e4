#include "avs/stream_decoder.h"

#include <algorithm>
#include <string>

#include "avs/loop_filter.h"
#include "bits/start_code.h"
#include "concealment.h"
#include "report/stopwatch.h"

namespace vekdec::avs {
namespace {

// The longest picture header has fewer bytes; a draft's picture unit, which holds the macroblocks too, has more.
constexpr std::size_t kMostHeaderBytes = 32;

}  // namespace

void StreamDecoder::damage(const std::string& what) {
    ++damaged_;
    sinks_.report("picture " + std::to_string(pictures_) + ": " + what);
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
                payload_.assignUnstuffed(unit.subspan(1));
                BitReader bits(payload_);
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
        payload_.assignUnstuffed(unit.subspan(1));
        BitReader bits(payload_);
        ++pictures_;
        if (!haveSequence_) throw BadSyntax("a picture without a sequence header before it");
        newPicture_ = parsePictureHeader(bits, unit[0], sequence_, *syntax_);
        if (*syntax_ == Syntax::Draft) decodeSlice(bits, 0);  // its last macroblock ends it: no one bit is behind it
    });
}

void StreamDecoder::handleSlice(Bytes unit) {
    guarded([&] {
        if (!newPicture_ && current_ == nullptr) return;
        int row = unit[0];
        payload_.assignUnstuffed(unit.subspan(1));
        payload_.trimToLastOne();
        BitReader bits(payload_);
        if (sequence_.height > 2800) row += static_cast<int>(bits.u(3)) * 128;
        decodeSlice(bits, row);
    });
}

void StreamDecoder::decodeSlice(BitReader& bits, int row) {
    if (newPicture_ && !beginPicture()) return;
    const int rowsOfField = sequence_.heightInMbs() / 2;
    if (header_.fields && row >= rowsOfField) {
        if (!secondField_) {
            finishField();
            beginField(true);
        }
        row -= rowsOfField;
    } else if (secondField_) {
        throw BadSyntax("a slice of the first field behind the second field's");
    }
    ++slicesSeen_;
    const Stopwatch watch(secondsMacroblocks_);
    try {
        slices_.decode(bits, row);
    } catch (const BadSyntax& e) {
        throw BadSyntax("slice in row " + std::to_string(row) + ": " + e.what());
    }
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
    header_ = *newPicture_;
    newPicture_.reset();
    const PictureType type = header_.type;
    if (type == PictureType::B) {
        // At the beginning of a stream, or behind a cut, B pictures may lack what they are predicted from.
        if (anchors_[0] == nullptr || anchors_[1] == nullptr) {
            ++leftOutPictures_;
            return false;
        }
        if (header_.fields) throw NotSupported("AVS with B fields");
        if (anchors_[1]->header.fields) throw NotSupported("AVS with B frames between field pictures");
    }
    if (type == PictureType::P && anchors_[1] == nullptr)
        throw BadSyntax("the stream begins with a picture that needs one before it");
    if (header_.repeatFirstField) ++repeated_;
    current_ = pool_.take(sequence_.format());
    current_->header = header_;
    beginField(false);
    return true;
}

void StreamDecoder::beginField(bool second) {
    secondField_ = second;
    context_ = {};
    context_.header = &header_;
    context_.type = second && header_.type == PictureType::I ? PictureType::P : header_.type;
    context_.syntax = *syntax_;
    context_.width = sequence_.widthInMbs();
    context_.height = sequence_.heightInMbs() / (header_.fields ? 2 : 1);
    context_.mbs = current_->mbs.data() + (second ? current_->mbs.size() / 2 : 0);
    // The first field has the even rows, whichever is shown first.
    for (int i = 0; i < 3; ++i)
        context_.plane[i] = header_.fields ? current_->plane[i].field(second) : current_->plane[i];
    setReferences(second);
    slices_.begin(context_);
}

void StreamDecoder::setReferences(bool second) {
    const int now = current_->time(second);
    const auto add = [&](const PicturePtr& picture, bool field, bool secondField) {
        Reference& reference = context_.reference[context_.references++];
        if (picture == nullptr) return;
        for (int i = 0; i < 3; ++i)
            reference.plane[i] = field ? picture->plane[i].field(secondField) : picture->plane[i];
        // Modulo 512; a distance of 0, which no good stream has, becomes 512.
        reference.distance = ((now - picture->time(secondField) - 1) & 511) + 1;
    };
    switch (context_.type) {
        case PictureType::I:
            return;
        case PictureType::B:
            add(anchors_[1], false, false);
            add(anchors_[0], false, false);
            context_.reference[0].distance = ((anchors_[1]->time(false) - now - 1) & 511) + 1;
            context_.colocated = anchors_[1].get();
            return;
        case PictureType::P:
            break;
    }
    if (!header_.fields) {
        add(anchors_[1], false, false);
        add(anchors_[0], false, false);
        for (int i = 0; i < 2; ++i) current_->referenceDistance[i] = context_.reference[i].distance;
        return;
    }
    // The fields decoded last, from the last one on.
    if (second) add(current_, true, false);
    if (header_.type == PictureType::I) return;
    for (const PicturePtr& anchor : {anchors_[1], anchors_[0]})
        for (const bool secondField : {true, false})
            if (context_.references < kMostReferences) add(anchor, true, secondField);
}

// What no slice brought is taken from the picture before.
void StreamDecoder::conceal() {
    const PicturePtr& before = anchors_[1] != nullptr ? anchors_[1] : anchors_[0];
    vekapp::Plane from[3];
    for (int p = 0; p < 3 && before != nullptr; ++p)
        from[p] = header_.fields ? before->plane[p].field(secondField_) : before->plane[p];
    const auto count = static_cast<std::size_t>(context_.width * context_.height);
    const long missing = concealLost<Macroblock>(context_.plane, std::span<const Macroblock>(context_.mbs, count),
                                                 before != nullptr ? from : nullptr, kinds_);
    if (missing > 0) damage(missingMacroblocks(missing, count));
}

void StreamDecoder::finishField() {
    conceal();
    const Stopwatch watch(secondsFilter_);
    if (header_.loopFilter) filterPicture(context_);
}

void StreamDecoder::finishPicture() {
    if (newPicture_) {
        newPicture_.reset();
        damage("a picture without slices");
    }
    if (current_ == nullptr) return;
    finishField();
    if (header_.fields && !secondField_) {  // a field that never came shows the lines of the other one
        damage("a field is missing");
        for (const vekapp::Plane& plane : current_->plane) vekapp::repeatField(plane, false);
        std::fill(current_->mbs.begin() + static_cast<std::ptrdiff_t>(current_->mbs.size() / 2), current_->mbs.end(),
                  Macroblock{});
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
}

}  // namespace vekdec::avs
