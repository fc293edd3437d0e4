#include "dv/stream_decoder.h"

#include <algorithm>
#include <string>

#include "dv/format.h"
#include "report/stopwatch.h"

namespace vekdec::dv {
namespace {

// By DCT mode (8-8 or frame, 2-4-8 or field), then class.
constexpr BlockKind kKinds[] = {
    {"8-8 class 0", {60, 120, 230}},   {"8-8 class 1", {60, 190, 120}},  {"8-8 class 2", {240, 210, 60}},
    {"8-8 class 3", {240, 130, 40}},   {"2-4-8 class 0", {90, 60, 180}}, {"2-4-8 class 1", {30, 110, 80}},
    {"2-4-8 class 2", {170, 140, 30}}, {"2-4-8 class 3", {200, 40, 60}},
};

}  // namespace

StreamDecoder::StreamDecoder(Sinks sinks, const DecoderOptions& options)
    : packed_(options.interleaved || options.zoom > 1),
      zoom_(options.zoom == 8   ? 3
            : options.zoom == 4 ? 2
            : options.zoom == 2 ? 1
                                : 0),
      tasks_(std::move(sinks), options.threads, [this](const FrameTask& task) { retire(task); }) {}

void StreamDecoder::begin(const System& system) {
    if (&system == system_) return;
    system_ = &system;
    picture_ = nullptr;
    pictures_.clear();
    auto places = std::make_shared<std::vector<MacroblockPlace>>();
    // 720 lines: channels 2 and 3 are those of the second frames of pairs.
    const int channels = system.height == 720 ? 4 : system.channels;
    for (int c = 0; c < channels; ++c)
        for (int q = 0; q < system.sequences; ++q)
            for (int k = 0; k < kSegments; ++k)
                for (int m = 0; m < kMacroblocks; ++m) places->push_back(placeOf(system, c, q, k, m));
    places_ = std::move(places);
}

// Memory for the next frame. One thread decodes into the same always, so that what is damaged stays as it was.
std::shared_ptr<Picture> StreamDecoder::nextPicture() {
    if (picture_ != nullptr && !tasks_.sideBySide()) return picture_;
    for (const auto& picture : pictures_)
        if (picture.use_count() == 1) return picture;
    return pictures_.emplace_back(std::make_shared<Picture>(*system_, packed_, zoom_));
}

void StreamDecoder::decode(const Packet& packet) {
    const Stopwatch watch(seconds_);
    ++packets_;
    bytes_ += packet.data.size();
    const auto frame = packet.data;
    const System* system = systemOf(frame);
    if (system == nullptr || frame.size() < system->frameBytes()) {
        tasks_.report("frame " + std::to_string(frames_) +
                      (system == nullptr ? ": no frame of a system of DV" : ": the frame is cut short"));
        return;
    }
    begin(*system);
    auto task = std::make_unique<FrameTask>();
    task->number = frames_++;
    task->bytes = frame;
    if (tasks_.sideBySide()) {
        task->copy.assign(frame.begin(), frame.end());
        task->bytes = task->copy;
    }
    task->system = system;
    task->places = places_;
    task->secondOfPair = system->height == 720 && (frame[1] & 4) == 0;  // FSP
    task->packed = packed_;
    task->zoom = zoom_;
    task->before = picture_;
    picture_ = task->picture = nextPicture();
    picture_->progress.restart();
    tasks_.run(std::move(task));
    show(frame);
}

void StreamDecoder::retire(const FrameTask& task) {
    segments_ += task.segments;
    for (std::size_t i = 0; i < std::size(modes_); ++i) modes_[i] += task.modes[i];
    for (std::size_t i = 0; i < std::size(ends_); ++i) ends_[i] += task.ends[i];
}

void StreamDecoder::show(std::span<const std::uint8_t> bytes) {
    Frame frame;
    frame.rate = system_->rate;
    frame.fields = system_->fields;
    frame.chroma = packed_ ? Chroma::Packed422 : system_->chroma();
    frame.chromaPlace = ChromaPlace::Dv;
    // DISP of the VAUX source control pack: 2 and 7 are 16:9. Pictures of DV100 always are.
    bool wide = system_->sampling == Sampling::Dv100;
    for (std::size_t pack = 0; pack < 45; ++pack) {
        const std::uint8_t* p = bytes.data() + kDifBytes * (3 + pack / 15) + 3 + 5 * (pack % 15);
        if (p[0] == 0x61 && ((p[2] & 7) == 2 || (p[2] & 7) == 7)) wide = true;
    }
    switch (system_->height) {
        case 480:
            frame.sampleAspect = wide ? Rational{32, 27} : Rational{8, 9};
            break;
        case 576:
            frame.sampleAspect = wide ? Rational{64, 45} : Rational{16, 15};
            break;
        default:
            frame.sampleAspect = system_->width == 1280 ? Rational{3, 2} : Rational{4, 3};
            break;
    }
    if (packed_) {
        const int width = 2 * (system_->width >> zoom_);
        frame.plane[0] = {picture_->interleaved.data(), width, width, system_->height >> zoom_};
    } else {
        for (int i = 0; i < 3; ++i) {
            const vekapp::Plane& plane = picture_->planar.plane[i];
            frame.plane[i] = {plane.data, plane.stride, plane.width, plane.height};
        }
    }
    tasks_.show(frame, [picture = picture_] { return BlockMap{kKinds, 15, 0, picture->blocks, {}}; });
}

void StreamDecoder::flush() {
    const Stopwatch watch(seconds_);
    tasks_.finish();
}

Statistics StreamDecoder::statistics() const {
    Statistics s;
    s.frames = tasks_.frames();
    s.pictures = packets_;
    s.slices = segments_;
    s.damaged = tasks_.damaged();
    s.bits = 8 * bytes_;
    s.unit = "blocks";
    s.kinds = {{"8-8 or frame", modes_[0]}, {"2-4-8 or field", modes_[1]}};
    s.of = {{"ended in pass 1", ends_[1]}, {"in pass 2", ends_[2]}, {"in pass 3", ends_[3]}, {"not at all", ends_[0]}};
    s.secondsTotal = seconds_;
    if (system_ != nullptr) s.remarks.push_back(system_->name);
    return s;
}

namespace {

int probe(std::span<const std::uint8_t> begin) { return systemOf(begin) != nullptr ? 95 : 0; }

// A packet is a frame.
std::size_t split(std::span<const std::uint8_t> bytes, std::size_t& searched) {
    if (bytes.size() < 8 * kDifBytes) return 0;
    if (const System* system = systemOf(bytes)) return bytes.size() >= system->frameBytes() ? system->frameBytes() : 0;
    // Lost: the next DIF sequence with which a frame may begin.
    for (std::size_t at = std::max<std::size_t>(searched, kDifBytes); at + 8 * kDifBytes <= bytes.size();
         at += kDifBytes) {
        searched = at;
        if (systemOf(bytes.subspan(at)) != nullptr) return at;
    }
    return bytes.size() > 64 * kSequenceBytes ? bytes.size() / kDifBytes * kDifBytes - 8 * kDifBytes : 0;
}

constexpr const char* kCodecs[] = {"dvvideo"};

}  // namespace

Format format() {
    return {.name = "dv",
            .what = "DV and DV100 (IEC 61834-2, SMPTE 314M, 370M): 25, 50 and 100 Mb/s",
            .codecs = kCodecs,
            .probe = probe,
            .split = split,
            .make = makeDecoder<StreamDecoder>,
            .interleaves = true,
            .threaded = true};
}

}  // namespace vekdec::dv
