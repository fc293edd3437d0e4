#include "mpeg4/stream_decoder.h"

#include <algorithm>
#include <string>

#include "bits/start_code.h"
#include "h263/format.h"
#include "h263/headers.h"
#include "mpeg4/format.h"
#include "report/stopwatch.h"

namespace vekdec::mpeg4 {
namespace {

constexpr vekapp::BlockKind kKinds[] = {
    {"lost", {255, 0, 255}},          {"intra", {230, 60, 60}},    {"one vector", {60, 120, 230}},
    {"four vectors", {60, 190, 190}}, {"fields", {150, 90, 220}},  {"global motion", {240, 150, 40}},
    {"skipped", {60, 60, 70}},        {"direct", {150, 150, 160}}, {"forward", {90, 150, 250}},
    {"backward", {60, 190, 120}},     {"both", {240, 210, 60}},
};

// The bytes from a short_video_start_marker on (6.2.8: 22 bits) with which a stream or an object begins; none: it does
// not.
std::span<const std::uint8_t> shortHeader(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > 4 && findStartCode(bytes, 0) == 0 && bytes[3] <= kLastVideoObject) bytes = bytes.subspan(4);
    return h263::findPictureStart(bytes, 0) == 0 ? bytes : bytes.first(0);
}

BlockMap blocksOf(const Picture& picture, bool quarterSample) {
    BlockMap map{kKinds, 1, 31, {}, {}};
    const int width = picture.plane[0].width / 16, unit = quarterSample ? 4 : 2;
    for (std::size_t i = 0; i < picture.mbs.size(); ++i) {
        const Macroblock& mb = picture.mbs[i];
        const int x = 16 * (static_cast<int>(i) % width), y = 16 * (static_cast<int>(i) / width);
        map.blocks.push_back({x, y, 16, 16, 1, static_cast<int>(mb.kind), mb.quantizer});
        const auto vector = [&](int cx, int cy, MotionVector mv, bool backward) {
            map.vectors.push_back({cx, cy, mv.x / unit, mv.y / unit, backward});
        };
        switch (mb.kind) {
            case MbKind::Lost:
            case MbKind::Intra:
            case MbKind::Skipped:
                break;
            case MbKind::FourVectors:
                for (int k = 0; k < 4; ++k) vector(x + 4 + k % 2 * 8, y + 4 + k / 2 * 8, mb.mv[k], false);
                break;
            default:
                if (mb.kind != MbKind::Backward) vector(x + 8, y + 8, mb.mv[0], false);
                if (mb.kind == MbKind::Direct || mb.kind == MbKind::Backward || mb.kind == MbKind::Both)
                    vector(x + 8, y + 8, mb.backward, true);
                break;
        }
    }
    return map;
}

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : sinks_(std::move(sinks)),
      options_(options),
      postFilter_(options.postProcessing),
      tasks_(sinks_, options.threads, [this](VopTask& task) { retire(task); }) {}

void StreamDecoder::damage(const std::string& what) {
    tasks_.report("picture " + std::to_string(pictures_) + ": " + what);
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(secondsTotal_);
    bytes_ += packet.data.size();
    if (decodeShortHeader(packet)) return;
    if (!seenExtradata_ && !packet.extradata.empty()) decodeUnits(packet.extradata);
    seenExtradata_ = true;
    decodeUnits(packet.data);
}

// Streams with short headers are H.263 (6.3.5.2), alone or behind a visual object's start code.
bool StreamDecoder::decodeShortHeader(const Packet& packet) {
    if (shortHeader_ == nullptr) {
        if (layer_ != nullptr || shortHeader(packet.data).empty()) return false;
        shortHeader_ = h263::format().make(sinks_, options_);
    }
    shortHeader_->decode(packet);
    return true;
}

void StreamDecoder::decodeUnits(std::span<const std::uint8_t> bytes) {
    StartCodeReader reader(bytes);
    for (StartCodeUnit unit; reader.next(unit);) handle(unit.bytes);
}

void StreamDecoder::handle(std::span<const std::uint8_t> unit) {
    const std::uint8_t code = unit[0];
    const bool layer = code >= kFirstLayer && code <= kLastLayer;
    if (!layer && code != kGroupOfVops && code != kVop) return;
    payload_->assign(unit.subspan(1));
    ByteReader bits(*payload_);
    try {
        if (layer)
            handleLayer(bits);
        else if (code == kGroupOfVops)
            seconds_ = parseGroupTime(bits);
        else
            handleVop(bits);
    } catch (const BadSyntax& e) {
        damage(e.what());
    } catch (const NotSupported& e) {
        damage(std::string("vekdec does not decode ") + e.what());
        refused_ = true;
    }
}

void StreamDecoder::handleLayer(ByteReader& bits) {
    const Layer next = parseLayer(bits);
    if (next.width == 0 || next.height == 0)
        throw BadSyntax("the picture size is " + std::to_string(next.width) + "x" + std::to_string(next.height));
    constexpr int kMostMbs = 4096 / 16 * (2304 / 16);  // the highest level has 720x576 samples; streams go beyond it
    if (next.widthInMbs() * next.heightInMbs() > kMostMbs)
        throw NotSupported("MPEG-4 of " + std::to_string(next.width) + "x" + std::to_string(next.height) + " samples");
    if (layer_ != nullptr && (next.width != layer_->width || next.height != layer_->height)) dropAnchors();
    refused_ = false;
    layer_ = std::make_shared<const Layer>(next);
    const auto dequantizers = std::make_shared<Dequantizers>();
    dequantizers->init(next);
    dequantizers_ = dequantizers;
}

// ---- VOPs

// 6.3.5: modulo_time_base counts from the last VOP but B-VOPs, and for B-VOPs from the one before that.
std::int64_t StreamDecoder::timeOf(const Vop& vop) {
    if (vop.type != VopType::B) {
        secondsB_ = seconds_;
        seconds_ += vop.time.seconds;
        return seconds_ * layer_->timeResolution + vop.time.ticks;
    }
    return (secondsB_ + vop.time.seconds) * layer_->timeResolution + vop.time.ticks;
}

void StreamDecoder::setTimes(VopContext& context) {
    const std::int64_t time = context.picture->time, earlier = anchors_[0]->time, later = anchors_[1]->time;
    context.trb = time - earlier;
    context.trd = later - earlier;
    if (frameTicks_ == 0) frameTicks_ = std::max<std::int64_t>(context.trb, 1);
    context.trbFields = fieldsBetween(time, earlier, frameTicks_);
    context.trdFields = fieldsBetween(later, earlier, frameTicks_);
}

void StreamDecoder::setWarp(VopTask& task) {
    const Layer& layer = *layer_;
    const Vop& vop = *task.context.vop;
    const VekStatus status = vekiWarpInit_MPEG4(
        task.warp, vop.du, vop.dv, layer.warpingPoints, layer.warpingAccuracy, {layer.width, layer.height},
        {16 * layer.widthInMbs(), 16 * layer.heightInMbs()}, vop.rounding, layer.quarterSample);
    if (status != vekStsOk) throw NotSupported("MPEG-4 global motion of such a size");
    task.context.warp = task.warp;
}

void StreamDecoder::handleVop(ByteReader& bits) {
    if (refused_) return;
    ++pictures_;
    if (layer_ == nullptr) throw BadSyntax("a VOP without a video object layer before it");
    const Vop vop = parseVop(bits, *layer_);
    const std::int64_t time = timeOf(vop);
    if (!vop.coded) {
        ++notCoded_;
        return;
    }
    const bool isB = vop.type == VopType::B;
    // At the beginning of a stream, or behind a cut, B-VOPs may lack what they are predicted from.
    if (isB && (anchors_[0] == nullptr || anchors_[1] == nullptr)) {
        ++leftOutPictures_;
        return;
    }
    if (vop.type != VopType::I && anchors_[1] == nullptr)
        throw BadSyntax("the stream begins with a VOP that needs one before it");
    const PicturePtr picture = pool_.take(layer_->format());
    picture->vop = vop;
    picture->time = time;
    std::fill(picture->mbs.begin(), picture->mbs.end(), Macroblock{});
    picture->progress.restart();
    auto task = std::make_unique<VopTask>();
    task->number = pictures_;
    task->layer = layer_;
    task->dequantizers = dequantizers_;
    task->kept = {picture, anchors_[0], anchors_[1]};
    task->sideBySide = tasks_.sideBySide();
    if (anchors_[1] != nullptr) task->before = {anchors_[1]->plane, anchors_[1]->progress};
    VopContext& context = task->context;
    context.layer = layer_.get();
    context.vop = &picture->vop;
    context.picture = picture.get();
    if (vop.type != VopType::I) {
        Picture& forward = *anchors_[isB ? 0 : 1];
        context.reference[0] = {forward.plane, forward.progress};
    }
    if (isB) {
        context.reference[1] = {anchors_[1]->plane, anchors_[1]->progress};
        context.coLocated = anchors_[1]->mbs.data();
        setTimes(context);
    }
    if (vop.type == VopType::S) setWarp(*task);
    task->payload = std::move(payload_);  // where `bits` reads on
    task->bits = bits;
    payload_ = sparePayloads_.take();
    tasks_.run(std::move(task));
    if (!isB)
        keepAnchor(picture);
    else
        show(picture);
}

// Counts what was found in decoding, and keeps for later what can be used again.
void StreamDecoder::retire(VopTask& task) {
    packets_ += task.packets;
    for (std::size_t i = 0; i < std::size(kinds_); ++i) kinds_[i] += task.kinds[i];
    secondsVops_ += task.seconds;
    sparePayloads_.give(std::move(task.payload));
}

// ---- output

void StreamDecoder::keepAnchor(PicturePtr picture) {
    showLast();
    anchors_[0] = std::move(anchors_[1]);
    anchors_[1] = std::move(picture);
    newerShown_ = false;
    if (layer_->lowDelay) showLast();
}

// An anchor is given out when the next one is there.
void StreamDecoder::showLast() {
    if (newerShown_ || anchors_[1] == nullptr) return;
    newerShown_ = true;
    show(anchors_[1]);
}

void StreamDecoder::dropAnchors() {
    showLast();
    anchors_[0] = anchors_[1] = nullptr;
    frameTicks_ = 0;
}

void StreamDecoder::show(const PicturePtr& picture) {
    Frame frame;
    frame.chroma = Chroma::C420;
    frame.chromaPlace = ChromaPlace::Left;
    frame.rate = options_.stream.rate.known() ? options_.stream.rate : layer_->rate();
    frame.sampleAspect = layer_->sampleAspect;
    frame.fields = !layer_->interlaced          ? FieldOrder::Progressive
                   : picture->vop.topFieldFirst ? FieldOrder::TopFirst
                                                : FieldOrder::BottomFirst;
    tasks_.then([this, picture, frame, layer = layer_] {
        Frame shown = frame;
        const auto quantizerOf = [&](std::size_t mb) -> int { return picture->mbs[mb].quantizer; };
        showPlanes(shown, postFilter_.wanted() ? postFilter_.apply(picture->plane, quantizerOf) : picture->plane,
                   layer->width, layer->height);
        tasks_.give(shown, [&] { return blocksOf(*picture, layer->quarterSample); });
    });
}

void StreamDecoder::flush() {
    const Stopwatch watch(secondsTotal_);
    if (shortHeader_ != nullptr)
        shortHeader_->flush();
    else
        dropAnchors();
    tasks_.finish();
}

Statistics StreamDecoder::statistics() const {
    if (shortHeader_ != nullptr) return shortHeader_->statistics();
    Statistics s;
    s.frames = tasks_.frames();
    s.pictures = pictures_;
    s.slices = packets_;
    s.damaged = tasks_.damaged();
    s.bits = 8 * bytes_;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) s.kinds.emplace_back(kKinds[i].name, kinds_[i]);
    s.seconds.emplace_back("macroblocks", secondsVops_);
    s.secondsTotal = secondsTotal_;
    if (notCoded_ > 0) s.remarks.push_back(std::to_string(notCoded_) + " VOPs are not coded and give no frame");
    if (leftOutPictures_ > 0)
        s.remarks.push_back(std::to_string(leftOutPictures_) +
                            " B-VOPs at the beginning lack their references and are left out");
    return s;
}

BlockMap StreamDecoder::blocks(const Frame& frame) const {
    return shortHeader_ != nullptr ? shortHeader_->blocks(frame) : tasks_.blocks();
}

// ---- the format

namespace {

// A video object layer, and soon behind it a VOP, or a video object with short headers.
int probe(std::span<const std::uint8_t> begin) {
    if (findStartCode(begin, 0) == 0 && !shortHeader(begin).empty()) return 70;
    StartCodeReader reader(begin);
    bool layer = false;
    StartCodeUnit unit;
    for (int i = 0; i < 32 && reader.next(unit); ++i) {
        if (i == 0 && unit.position > 64) return 0;
        const std::uint8_t code = unit.bytes[0];
        if (code >= kFirstLayer && code <= kLastLayer) layer = true;
        if (layer && code == kVop) return 90;
    }
    return 0;
}

constexpr const char* kCodecs[] = {"mpeg4"};

}  // namespace

Format format() {
    return {.name = "mpeg4",
            .what = "MPEG-4 Part 2 (ISO 14496-2): Simple and Advanced Simple profile, short headers",
            .codecs = kCodecs,
            .probe = probe,
            .split = splitAtStartCode,
            .make = makeDecoder<StreamDecoder>,
            .postProcesses = true,
            .threaded = true};
}

}  // namespace vekdec::mpeg4
