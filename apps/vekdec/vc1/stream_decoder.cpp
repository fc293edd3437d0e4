#include "vc1/stream_decoder.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "bits/start_code.h"
#include "report/stopwatch.h"
#include "vc1/reference_map.h"
#include "vc1/units.h"

namespace vekdec::vc1 {
namespace {

// Slices and fields that a picture can have, and more.
constexpr std::size_t kMostUnits = 2048;

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : stream_(options.stream), tasks_(std::move(sinks), options.threads, [this](FieldTask& task) { retire(task); }) {}

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
            if (!waiting_->units.empty()) keepUnit(code, unit.subspan(1));
            break;
        case kSequenceHeader:
            decodeWaiting();
            guarded([&] {
                payload_->assignUnescaped(unit.subspan(1));
                WordReader bits(*payload_);
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
                payload_->assignUnescaped(unit.subspan(1));
                WordReader bits(*payload_);
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
    PictureUnits& waiting = *waiting_;
    if (waiting.units.size() >= kMostUnits) return;
    waiting.units.push_back({code, waiting.bytes.size(), bytes.size()});
    waiting.bytes.insert(waiting.bytes.end(), bytes.begin(), bytes.end());
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
        payload_->assign(frame);
        WordReader bits(*payload_);
        PictureHeader header = parseSimpleMainHeader(bits, sequence_);
        if (header.reducedResolution != 0) throw NotSupported("VC-1 pictures of reduced resolution");
        if (header.isIntra())
            rounding_ = true;
        else if (header.type == PictureType::P)
            rounding_ = !rounding_;
        header.rounding = rounding_;
        if (!beginFrame(header)) return;
        decodeField(header, bits, nullptr, 0, 0);
        finishFrame(true);
    });
}

void StreamDecoder::decodeWaiting() {
    if (waiting_->units.empty()) return;
    ++pictures_;
    guarded([&] {
        if (!haveSequence_ || !haveEntryPoint_) throw BadSyntax("a picture without a sequence header before it");
        const auto& units = waiting_->units;
        const auto bytesOf = [&](const PictureUnits::Unit& unit) {
            return Bytes(waiting_->bytes).subspan(unit.begin, unit.size);
        };
        payload_->assignUnescaped(bytesOf(units[0]));
        WordReader bits(*payload_);
        const PictureHeader header = parseAdvancedHeader(bits, sequence_);
        if (header.type == PictureType::Skipped) {
            skipPicture();
            return;
        }
        if (!beginFrame(header)) return;
        const auto second = std::find_if(units.begin(), units.end(),
                                         [](const PictureUnits::Unit& unit) { return unit.code == kField; });
        const auto firstEnd = static_cast<std::size_t>(second - units.begin());
        decodeField(header, bits, waiting_, 0, header.isField() ? firstEnd : units.size());
        bool complete = true;
        if (header.isField()) {
            complete = false;
            guarded([&] {
                if (second == units.end()) throw BadSyntax("a field is missing");
                payload_->assignUnescaped(bytesOf(*second));
                WordReader secondBits(*payload_);
                const PictureHeader secondHeader = parseSecondFieldHeader(secondBits, sequence_, header);
                complete = true;
                decodeField(secondHeader, secondBits, waiting_, firstEnd, units.size());
            });
        }
        finishFrame(complete);
    });
    if (waiting_.use_count() > 1) {
        waiting_ = std::make_shared<PictureUnits>();
    } else {
        waiting_->units.clear();
        waiting_->bytes.clear();
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
    current_->progress.restart();
    for (ReferenceMap& map : currentMap_) setIdentity(map);
    return true;
}

// The frame, or its field of parity `field`, as far as predictions see it.
Reference StreamDecoder::referenceTo(const PicturePtr& picture, int field) const {
    Reference reference;
    reference.structure = field < 0 ? RowProgress::kFrame : 1 << field;
    reference.progress = picture->progress.complete() ? nullptr : &picture->progress;
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

// The frame or field whose header is read up to `bits`, which are of payload_; units from `first` to before `end`.
void StreamDecoder::decodeField(const PictureHeader& header, const WordReader& bits,
                                std::shared_ptr<const PictureUnits> units, std::size_t first, std::size_t end) {
    auto task = std::make_unique<FieldTask>();
    task->number = pictures_;
    task->sequence = sequence_;
    task->header = header;
    task->units = std::move(units);
    task->first = first;
    task->end = end;
    task->picture = current_;
    for (std::size_t i = 0; i < 2; ++i)
        if (anchors_[i]) task->kept[i] = anchors_[i]->picture;
    const bool field = header.isField(), bottom = header.bottomField();
    if (const auto& before = anchors_[1] ? anchors_[1] : anchors_[0]; before)
        task->before = {before->picture->plane, before->picture->progress,
                        !field   ? RowProgress::kFrame
                        : bottom ? 2
                                 : 1};
    PictureContext& context = task->context;
    context.sequence = &task->sequence;
    context.header = &task->header;
    context.width = sequence_.widthInMbs();
    context.height = field ? sequence_.fieldHeightInMbs() : sequence_.heightInMbs();
    context.codedWidth = sequence_.width;
    context.codedHeight = field ? (sequence_.height + (bottom ? 0 : 1)) / 2 : sequence_.height;
    context.rounding = header.rounding;
    context.mbs = current_->mbs.data() + (bottom ? current_->mbs.size() / 2 : 0);
    for (int i = 0; i < 3; ++i) context.plane[i] = field ? current_->plane[i].field(bottom) : current_->plane[i];
    if (field)
        setFieldReferences(*task);
    else if (!header.isIntra())
        setFrameReferences(*task);
    task->payload = std::move(payload_);  // where `bits` reads on
    task->bits = bits;
    payload_ = sparePayloads_.take();
    tasks_.run(std::move(task));
}

// Counts what was found in decoding, and keeps for later what can be used again.
void StreamDecoder::retire(FieldTask& task) {
    slicesSeen_ += task.slices;
    for (std::size_t i = 0; i < std::size(kinds_); ++i) kinds_[i] += task.kinds[i];
    secondsMacroblocks_ += task.secondsMacroblocks;
    secondsFilters_ += task.secondsFilters;
    sparePayloads_.give(std::move(task.payload));
}

void StreamDecoder::setFrameReferences(FieldTask& task) {
    const PictureHeader& header = task.header;
    PictureContext& context = task.context;
    const bool isB = header.type == PictureType::B;
    Anchor& forward = isB ? *anchors_[0] : *anchors_[1];
    // The compensation stays in force for this reference when B pictures use it.
    if (header.compensates) compensate(forward.map[0], header.compensation[0]);
    const auto attach = [&](const Anchor& anchor, bool compensated, ReferenceMap& map, Reference& reference) {
        reference = referenceTo(anchor.picture, -1);
        setIdentity(map);
        if (compensated && anchor.map[0].active) map = anchor.map[0];
        if (anchor.picture->rangeReduced != header.rangeReduced) changeRange(map, header.rangeReduced);
        if (map.active) reference.map = &map;
    };
    attach(forward, true, task.maps[0], context.forward);
    if (!isB) return;
    const Anchor& backward = *anchors_[1];
    attach(backward, false, task.maps[1], context.backward);
    context.colocated = backward.skipped ? nullptr : backward.picture->mbs.data();
}

void StreamDecoder::setFieldReferences(FieldTask& task) {
    const PictureHeader& header = task.header;
    Reference(&references)[2] = task.context.field;
    if (header.isIntra()) return;
    const int parity = header.bottomField() ? 1 : 0;
    for (const int p : {0, 1}) {
        const bool ofCurrent = header.secondField && p != parity;
        if (!ofCurrent && !anchors_[1]) continue;
        references[p] = referenceTo(ofCurrent ? current_ : anchors_[1]->picture, p);
        ReferenceMap& map = ofCurrent ? currentMap_[p] : anchors_[1]->map[p];
        if (header.compensatesField[p]) compensate(map, header.compensation[p]);
        if (!map.active) continue;
        task.maps[p] = map;
        references[p].map = &task.maps[p];
    }
    // Where there is no frame before, the first field is all that can be predicted from.
    for (const int p : {0, 1})
        if (!references[p].present()) references[p] = references[1 - p];
}

void StreamDecoder::finishFrame(bool complete) {
    if (!complete) {  // a field that never came shows the lines of the other one
        const int have = current_->topFieldFirst ? 0 : 1;
        current_->progress.await(1 << have, RowProgress::kAll);
        for (const vekapp::Plane& plane : current_->plane) vekapp::repeatField(plane, have == 1);
        const auto half = static_cast<std::ptrdiff_t>(current_->mbs.size() / 2);
        std::fill_n(current_->mbs.begin() + (have == 0 ? half : 0), half, Macroblock{});
        current_->progress.publish(RowProgress::kFrame, RowProgress::kAll);
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
    tasks_.finish();
}

}  // namespace vekdec::vc1
