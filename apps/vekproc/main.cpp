// vekproc: pre- and post-processing of video with nothing but the exports of vekvc.
#include <cstdio>
#include <deque>
#include <exception>
#include <new>
#include <stdexcept>

#include "compare.h"
#include "known_answers.h"
#include "options.h"
#include "output/output.h"
#include "reader.h"
#include "report/progress.h"
#include "sheet.h"

namespace {

using namespace vekproc;

// The last stage: counts and hands out.
class Results {
  public:
    Results(const Options& options, const Sequence& result, bool doubled)
        : result_(result), perSource_(doubled ? 2 : 1), keepsSources_(!options.sheet.empty()), sheet_(options.sheet) {
        if (!options.output.empty()) {
            if (options.output.ends_with(".y4m") && !isPlanar(result.layout))
                throw std::runtime_error(options.output + ": y4m holds planes; give another name, or --to yuv420");
            video_ = makeVideoOutput(options.output);
        }
        if (!options.compare.empty()) compare_ = std::make_unique<Compare>(options.compare, result);
    }
    void source(const PicturePtr& picture) {
        if (keepsSources_) sources_.push_back(picture);
    }
    void add(const PicturePtr& picture) {
        if (video_ != nullptr) video_->add(frameOf(*picture, result_, static_cast<int>(count_)));
        if (compare_ != nullptr) compare_->add(*picture);
        if (keepsSources_) {
            if (sheet_.wants(count_)) sheet_.add(*sources_.front(), *picture);
            if ((count_ + 1) % perSource_ == 0) sources_.pop_front();
        }
        ++count_;
    }
    bool finish() {
        bool good = true;
        if (video_ != nullptr) good = video_->finish();
        if (keepsSources_) sheet_.finish();
        if (compare_ != nullptr) good = compare_->finish() && good;
        return good;
    }
    long count() const { return count_; }

  private:
    Sequence result_;
    int perSource_;
    bool keepsSources_;
    Sheet sheet_;
    std::deque<PicturePtr> sources_;  // whose results have not come yet
    std::unique_ptr<FrameOutput> video_;
    std::unique_ptr<Compare> compare_;
    long count_ = 0;
};

int process(Options options) {
    Reader reader(options.input, options.raw);
    const Sequence& source = reader.sequence();
    const bool deinterlaces = options.deinterlace.method != Deinterlacing::None;
    const bool denoises = options.denoise.method != Denoising::None;
    options.deinterlace.firstField = options.order >= 0                         ? options.order
                                     : source.fields == FieldOrder::BottomFirst ? 1
                                                                                : 0;
    if (!options.convert) options.conversion.to = source.layout;

    Sequence result = source;
    result.layout = options.conversion.to;
    result.size = options.resize.resultOf(source.size);
    if (deinterlaces) result.fields = FieldOrder::Progressive;
    const bool mixes =
        options.deinterlace.method == Deinterlacing::Blend || options.deinterlace.method == Deinterlacing::Mix;
    const bool doubled = deinterlaces && options.deinterlace.fieldRate && !mixes;
    if (doubled) result.rate.num *= 2;
    if (options.resize.rotation % 180 != 0) std::swap(result.sampleAspect.num, result.sampleAspect.den);
    Results results(options, result, doubled);

    // From the last stage to the first.
    std::vector<std::unique_ptr<Stage>> stages;
    Sink next = [&](const PicturePtr& picture) { results.add(picture); };
    const auto put = [&](std::unique_ptr<Stage> stage) {
        Stage* const first = stage.get();
        stages.push_back(std::move(stage));
        next = [first](const PicturePtr& picture) { first->add(picture); };
    };
    put(makeConverter(options.conversion, next));
    if (options.resize.wanted()) put(makeResizer(options.resize, options.conversion, next));
    if (denoises) put(makeDenoiser(options.denoise, options.threads, next));
    if (deinterlaces) put(makeDeinterlacer(options.deinterlace, options.threads, next));
    if (denoises || deinterlaces) put(makePlanarizer(options.conversion.matrix, next));

    Progress progress(!options.quiet && options.output != "-");
    while (const auto picture = reader.next()) {
        results.source(picture);
        next(picture);
        progress.show(results.count(), static_cast<std::size_t>(reader.done()),
                      static_cast<std::size_t>(reader.total()));
    }
    for (auto stage = stages.rbegin(); stage != stages.rend(); ++stage) (*stage)->end();
    if (results.count() == 0) throw std::runtime_error(options.input + " holds no picture");
    return results.finish() ? kOk : kDiffers;
}

}  // namespace

int main(int argc, char** argv) {
    int status = kCannot;
    try {
        Options options;
        if (!parseOptions(argc, argv, options, status)) return status;
        status = options.knownAnswers.empty()              ? process(options)
                 : checkKnownAnswers(options.knownAnswers) ? kOk
                                                           : kDiffers;
        if (std::fflush(stdout) != 0) throw std::runtime_error("cannot write standard output");
        return status;
    } catch (const std::bad_alloc&) {
        std::fputs("vekproc: not enough memory\n", stderr);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vekproc: %s\n", e.what());
    }
    return kCannot;
}
