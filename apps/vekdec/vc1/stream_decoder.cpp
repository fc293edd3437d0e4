#include "vc1/stream_decoder.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "bits/start_code.h"
#include "concealment.h"
#include "report/stopwatch.h"
#include "vc1/reference_map.h"
#include "vc1/units.h"

namespace vekdec::vc1 {
namespace {

// Slices and fields that a picture can have, and more.
constexpr std::size_t kMostUnits = 2048;

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

// ---- packets and units

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    const Bytes data = packet.data;
    if (!seenExtradata_ && !packet.extradata.empty()) handleExtradata(packet.extradata);
    seenExtradata_ = true;
    if (stream_.codec == "wmv3") {
        decodeSimpleMain(data);
    } else if (!stream_.codec.empty()) {
        const bool units = data.size() >= 4 && data[0] == 0 && data[1] == 0 && data[2] == 1;
        handleUnits(data, !units);
    } else if (data.size() >= kRecordHead && isFileHeader(data)) {
        guarded([&] { activate(parseFileHeader(data)); });
    } else if (data.size() >= kRecordHead && isFrameRecord(data)) {
        decodeSimpleMain(data.subspan(kRecordHead));
    } else {
        handleUnits(data, false);
    }
}

void StreamDecoder::handleExtradata(Bytes extradata) {
    if (stream_.codec != "wmv3") {
        handleUnits(extradata, false);
        return;
    }
    guarded([&] {
        if (extradata.size() < 4) throw BadSyntax("the container's description is not whole");
        activate(parseStructC(extradata, stream_.width, stream_.height));
    });
}

// `bareFrame`: the first unit is a frame that lacks its start code, as some containers have it.
void StreamDecoder::handleUnits(Bytes bytes, bool bareFrame) {
    if (bareFrame) {
        const std::size_t end = findStartCode(bytes, 0);
        if (end > 0) {
            decodeWaiting();
            keepUnit(kFrame, bytes.first(end));
        }
    }
    StartCodeReader reader(bytes);
    for (StartCodeUnit unit; reader.next(unit);) handleUnit(unit.bytes);
}

void StreamDecoder::handleUnit(Bytes unit) {
    const std::uint8_t code = unit[0];
    switch (code) {
        case kFrame:
            decodeWaiting();
            keepUnit(code, unit.subspan(1));
            break;
        case kField:
        case kSlice:
            if (!waiting_.empty()) keepUnit(code, unit.subspan(1));
            break;
        case kSequenceHeader:
            decodeWaiting();
            guarded([&] {
                payload_.assignUnescaped(unit.subspan(1));
                WordReader bits(payload_);
                haveEntryPoint_ = false;
                newSequence_.reset();
                newSequence_ = parseSequenceHeader(bits);
            });
            break;
        case kEntryPoint:
            decodeWaiting();
            guarded([&] {
                haveEntryPoint_ = false;
                if (!newSequence_ && !(haveSequence_ && sequence_.advanced()))
                    throw BadSyntax("an entry point without its sequence");
                payload_.assignUnescaped(unit.subspan(1));
                WordReader bits(payload_);
                Sequence next = newSequence_ ? *newSequence_ : sequence_;
                parseEntryPoint(bits, next);
                activate(next);
                newSequence_.reset();
                haveEntryPoint_ = true;
            });
            break;
        case kEndOfSequence:
            decodeWaiting();
            showLast();
            forgetAnchors();
            break;
        default:
            break;
    }
}

// A picture is decoded when all its units are there: where a slice ends, the next one says.
void StreamDecoder::keepUnit(std::uint8_t code, Bytes bytes) {
    if (waiting_.size() >= kMostUnits) return;
    waiting_.push_back({code, waitingBytes_.size(), bytes.size()});
    waitingBytes_.insert(waitingBytes_.end(), bytes.begin(), bytes.end());
}

void StreamDecoder::activate(const Sequence& next) {
    if (haveSequence_ && (next.format() != sequence_.format() || next.width != sequence_.width ||
                          next.height != sequence_.height || next.profile != sequence_.profile)) {
        showLast();
        forgetAnchors();
    }
    sequence_ = next;
    haveSequence_ = true;
}

void StreamDecoder::forgetAnchors() {
    anchors_[0].reset();
    anchors_[1].reset();
    newerShown_ = true;
}

// ---- pictures

void StreamDecoder::decodeSimpleMain(Bytes frame) {
    ++pictures_;
    guarded([&] {
        if (!haveSequence_ || sequence_.advanced()) throw BadSyntax("a picture without a sequence header before it");
        if (frame.size() <= 1) {
            skipPicture();
            return;
        }
        payload_.assign(frame);
        WordReader bits(payload_);
        PictureHeader header = parseSimpleMainHeader(bits, sequence_);
        if (header.reducedResolution != 0) throw NotSupported("VC-1 pictures of reduced resolution");
        if (header.isIntra())
            rounding_ = true;
        else if (header.type == PictureType::P)
            rounding_ = !rounding_;
        header.rounding = rounding_;
        if (!beginFrame(header)) return;
        beginField(header);
        ++slicesSeen_;
        try {
            const Stopwatch watch(secondsMacroblocks_);
            pictureDecoder_.decodeRows(bits, 0, context_.height);
        } catch (const BadSyntax& e) {
            damage(e.what());
        }
        finishField();
        finishFrame(true);
    });
}

void StreamDecoder::decodeWaiting() {
    if (waiting_.empty()) return;
    ++pictures_;
    guarded([&] {
        if (!haveSequence_ || !haveEntryPoint_) throw BadSyntax("a picture without a sequence header before it");
        const auto bytesOf = [&](const Unit& unit) { return Bytes(waitingBytes_).subspan(unit.begin, unit.size); };
        payload_.assignUnescaped(bytesOf(waiting_[0]));
        WordReader bits(payload_);
        const PictureHeader header = parseAdvancedHeader(bits, sequence_);
        if (header.type == PictureType::Skipped) {
            skipPicture();
            return;
        }
        if (!beginFrame(header)) return;
        const auto second =
            std::find_if(waiting_.begin(), waiting_.end(), [](const Unit& unit) { return unit.code == kField; });
        const auto firstEnd = static_cast<std::size_t>(second - waiting_.begin());
        beginField(header);
        decodeSlices(bits, 0, header.isField() ? firstEnd : waiting_.size());
        finishField();
        bool complete = true;
        if (header.isField()) {
            complete = false;
            guarded([&] {
                if (second == waiting_.end()) throw BadSyntax("a field is missing");
                payload_.assignUnescaped(bytesOf(*second));
                WordReader secondBits(payload_);
                beginField(parseSecondFieldHeader(secondBits, sequence_, header));
                complete = true;
                decodeSlices(secondBits, firstEnd, waiting_.size());
                finishField();
            });
        }
        finishFrame(complete);
    });
    waiting_.clear();
    waitingBytes_.clear();
}

void StreamDecoder::decodeSlices(WordReader& bits, std::size_t first, std::size_t end) {
    // The address of a slice, in front of it; those of a second field may count on from the first.
    const auto addressOf = [&](std::size_t i) {
        const Unit& unit = waiting_[i];
        if (unit.size < 2) return context_.height;
        const int row = waitingBytes_[unit.begin] << 1 | waitingBytes_[unit.begin + 1] >> 7;
        return header_.isField() ? row % context_.height : row;
    };
    const Stopwatch watch(secondsMacroblocks_);
    int done = 0;  // rows
    for (std::size_t i = first; i < end; ++i) {
        if (i > first && waiting_[i].code != kSlice) continue;
        const int row = i == first ? 0 : addressOf(i);
        int endRow = context_.height;
        for (std::size_t next = end; --next > i;)
            if (waiting_[next].code == kSlice && addressOf(next) > row) endRow = std::min(addressOf(next), endRow);
        ++slicesSeen_;
        try {
            if (row < done) throw BadSyntax("it lies over the one before");
            done = endRow;
            if (i == first) {
                pictureDecoder_.decodeRows(bits, 0, endRow);
                continue;
            }
            payload_.assignUnescaped(Bytes(waitingBytes_).subspan(waiting_[i].begin, waiting_[i].size));
            WordReader sliceBits(payload_);
            sliceBits.u(9);          // SLICE_ADDR
            if (sliceBits.flag()) {  // PIC_HEADER_FLAG: the picture's header once more
                if (header_.secondField)
                    parseSecondFieldHeader(sliceBits, sequence_, header_);
                else
                    parseAdvancedHeader(sliceBits, sequence_);
            }
            pictureDecoder_.decodeRows(sliceBits, row, endRow);
        } catch (const std::runtime_error& e) {  // BadSyntax; NotSupported from the header of a slice
            damage("slice in row " + std::to_string(row) + ": " + e.what());
        }
    }
}

// The samples of the picture before, once more (7.1.1.4 and Annex J: a frame of at most one byte).
void StreamDecoder::skipPicture() {
    if (!anchors_[1]) throw BadSyntax("the stream begins with a picture that needs one before it");
    ++skippedPictures_;
    Anchor anchor;
    anchor.picture = anchors_[1]->picture;
    anchor.skipped = true;
    keepAnchor(std::move(anchor));
}

bool StreamDecoder::beginFrame(const PictureHeader& header) {
    const PictureType type = header.type;
    if (type == PictureType::B && (!anchors_[0] || !anchors_[1])) {
        ++leftOutPictures_;  // at the beginning of a stream, or behind a cut
        return false;
    }
    if (type == PictureType::P && !anchors_[1])
        throw BadSyntax("the stream begins with a picture that needs one before it");
    if (header.repeatFirstField || header.repeatFrame != 0) ++repeated_;
    current_ = pool_.take(sequence_.format());
    current_->type = type;
    current_->fields = header.isField();
    current_->interlaced = header.coding != Coding::Progressive;
    current_->topFieldFirst = header.topFieldFirst;
    current_->rangeReduced = header.rangeReduced;
    current_->rangeMapY = sequence_.rangeMapY;
    current_->rangeMapUv = sequence_.rangeMapUv;
    for (ReferenceMap& map : currentMap_) setIdentity(map);
    return true;
}

// The frame, or its field of parity `field`, as far as predictions see it.
Reference StreamDecoder::referenceTo(const PicturePtr& picture, int field) const {
    Reference reference;
    const bool advanced = sequence_.advanced();
    for (int i = 0; i < 3; ++i) {
        vekapp::Plane plane = picture->plane[i];
        if (advanced) {
            plane.width = i == 0 ? sequence_.width : sequence_.width / 2;
            plane.height = i == 0 ? sequence_.height : sequence_.height / 2;
        }
        if (field >= 0) {
            plane = plane.field(field == 1);
            plane.height = std::max(plane.height, 1);  // of a chroma plane of one row
        }
        reference.plane[i] = plane;
    }
    return reference;
}

void StreamDecoder::beginField(const PictureHeader& header) {
    header_ = header;
    const bool field = header_.isField(), bottom = header_.bottomField();
    context_ = {};
    context_.sequence = &sequence_;
    context_.header = &header_;
    context_.width = sequence_.widthInMbs();
    context_.height = field ? sequence_.fieldHeightInMbs() : sequence_.heightInMbs();
    context_.codedWidth = sequence_.width;
    context_.codedHeight = field ? (sequence_.height + (bottom ? 0 : 1)) / 2 : sequence_.height;
    context_.rounding = header_.rounding;
    context_.mbs = current_->mbs.data() + (bottom ? current_->mbs.size() / 2 : 0);
    for (int i = 0; i < 3; ++i) context_.plane[i] = field ? current_->plane[i].field(bottom) : current_->plane[i];
    if (field)
        setFieldReferences();
    else if (!header_.isIntra())
        setFrameReferences();
    pictureDecoder_.begin(context_);
}

void StreamDecoder::setFrameReferences() {
    const bool isB = header_.type == PictureType::B;
    Anchor& forward = isB ? *anchors_[0] : *anchors_[1];
    // The compensation stays in force for this reference when B pictures use it.
    if (header_.compensates) compensate(forward.map[0], header_.compensation[0]);
    const auto attach = [&](const Anchor& anchor, bool compensated, ReferenceMap& map, Reference& reference) {
        reference = referenceTo(anchor.picture, -1);
        setIdentity(map);
        if (compensated && anchor.map[0].active) map = anchor.map[0];
        if (anchor.picture->rangeReduced != header_.rangeReduced) changeRange(map, header_.rangeReduced);
        if (map.active) reference.map = &map;
    };
    attach(forward, true, forwardMap_, context_.forward);
    if (!isB) return;
    const Anchor& backward = *anchors_[1];
    attach(backward, false, backwardMap_, context_.backward);
    context_.colocated = backward.skipped ? nullptr : backward.picture->mbs.data();
}

void StreamDecoder::setFieldReferences() {
    if (header_.isIntra()) return;
    const int parity = header_.bottomField() ? 1 : 0;
    for (const int p : {0, 1}) {
        const bool ofCurrent = header_.secondField && p != parity;
        if (!ofCurrent && !anchors_[1]) continue;
        context_.field[p] = referenceTo(ofCurrent ? current_ : anchors_[1]->picture, p);
        ReferenceMap& map = ofCurrent ? currentMap_[p] : anchors_[1]->map[p];
        if (header_.compensatesField[p]) compensate(map, header_.compensation[p]);
        if (map.active) context_.field[p].map = &map;
    }
    // Where there is no frame before, the first field is all that can be predicted from.
    for (const int p : {0, 1})
        if (!context_.field[p].present()) context_.field[p] = context_.field[1 - p];
}

void StreamDecoder::finishField() {
    conceal();
    const Stopwatch watch(secondsFilters_);
    pictureDecoder_.finish();
}

// What could not be decoded is taken from the picture before.
void StreamDecoder::conceal() {
    const int field = !header_.isField() ? -1 : header_.bottomField() ? 1 : 0;
    Reference before;
    const auto& anchor = anchors_[1] ? anchors_[1] : anchors_[0];
    if (anchor)
        for (int i = 0; i < 3; ++i)
            before.plane[i] = field < 0 ? anchor->picture->plane[i] : anchor->picture->plane[i].field(field == 1);
    const auto count = static_cast<std::size_t>(context_.width * context_.height);
    const long missing = concealLost<Macroblock>(context_.plane, std::span<const Macroblock>(context_.mbs, count),
                                                 before.present() ? before.plane : nullptr, kinds_);
    if (missing > 0) damage(missingMacroblocks(missing, count));
}

void StreamDecoder::finishFrame(bool complete) {
    if (!complete) {  // a field that never came shows the lines of the other one
        const int have = current_->topFieldFirst ? 0 : 1;
        for (const vekapp::Plane& plane : current_->plane) vekapp::repeatField(plane, have == 1);
        const auto half = static_cast<std::ptrdiff_t>(current_->mbs.size() / 2);
        std::fill_n(current_->mbs.begin() + (have == 0 ? half : 0), half, Macroblock{});
    }
    const PicturePtr done = std::move(current_);
    current_ = nullptr;
    if (done->type == PictureType::B || done->type == PictureType::BI) {
        show(done);
        return;
    }
    Anchor anchor;
    anchor.picture = done;
    anchor.map[0] = currentMap_[0];
    anchor.map[1] = currentMap_[1];
    keepAnchor(std::move(anchor));
}

void StreamDecoder::keepAnchor(Anchor anchor) {
    if (anchor.skipped)
        for (ReferenceMap& map : anchor.map) setIdentity(map);
    showLast();
    anchors_[0] = std::move(anchors_[1]);
    anchors_[1] = std::move(anchor);
    newerShown_ = false;
}

// An anchor is given out when the next one is there.
void StreamDecoder::showLast() {
    if (newerShown_ || !anchors_[1]) return;
    newerShown_ = true;
    show(anchors_[1]->picture);
}

void StreamDecoder::flush() {
    const Stopwatch watch(secondsTotal_);
    decodeWaiting();
    showLast();
    forgetAnchors();
}

}  // namespace vekdec::vc1
