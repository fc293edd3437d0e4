#include <algorithm>

#include "bands.h"
#include "stages.h"
#include "window.h"

namespace vekproc {
namespace {

struct FreeBlend {
    void operator()(VekDeinterlaceBlendState* state) const { vekiDeinterlaceBlendFree_8u_C1(state); }
};

class Deinterlacer : public WindowStage {
  public:
    Deinterlacer(const DeinterlaceOptions& options, int threads, Sink sink)
        : WindowStage(options.method == Deinterlacing::Motion, std::move(sink)), options_(options), threads_(threads) {
        VekDeinterlaceBlendState* state = nullptr;
        const VekStatus status = vekiDeinterlaceBlendInitAlloc_8u_C1(options.low, options.high, &state);
        blend_.reset(state);
        if (status != vekStsOk) throw std::bad_alloc();
        if (options_.threshold < 0) options_.threshold = options.method == Deinterlacing::Edge ? 8 : 0;
    }

  private:
    void make(const PicturePtr& before, const PicturePtr& current, const PicturePtr& behind) override {
        const bool mixes = options_.method == Deinterlacing::Blend || options_.method == Deinterlacing::Mix;
        const bool both = options_.fieldRate && !mixes;
        for (int i = 0; i < (both ? 2 : 1); ++i) {
            const int field = i == 0 ? options_.firstField : 1 - options_.firstField;
            const auto result = std::make_shared<Picture>(current->layout(), current->size());
            for (int p = 0; p < result->planes(); ++p)
                filterInBands(threads_, result->plane(p), kReach, [&](int row, int rows, Vek8u* to, Vek32s toStep) {
                    filter(before->plane(p), current->plane(p), behind->plane(p), row, rows, to, toStep, field);
                });
            sink_(result);
        }
    }

    void filter(const Picture::Plane& before, const Picture::Plane& current, const Picture::Plane& behind, int row,
                int rows, Vek8u* to, Vek32s toStep, int field) const {
        const auto at = [&](const Picture::Plane& plane) {
            return plane.data + static_cast<std::ptrdiff_t>(plane.step) * row;
        };
        const Vek8u* const from = at(current);
        const Vek32s step = current.step;
        const VekiSize size = {current.width, rows};
        switch (options_.method) {
            case Deinterlacing::Blend:
                vekiDeinterlaceBlend_8u_C1R(from, step, to, toStep, size, blend_.get());
                break;
            case Deinterlacing::Edge:
                vekiDeinterlaceEdgeDetect_8u_C1R(from, step, to, toStep, size, field, options_.threshold);
                break;
            case Deinterlacing::Median:
                vekiDeinterlaceMedianThreshold_8u_C1R(from, step, to, toStep, size, field, options_.threshold);
                break;
            case Deinterlacing::Motion:
                vekiDeinterlaceMotionAdaptive_8u_C1R(at(before), from, at(behind), step, to, toStep, size, field,
                                                     options_.firstField);
                break;
            case Deinterlacing::Triangle:
            case Deinterlacing::Mix:
                vekiDeinterlaceTriangle_8u_C1R(from, step, to, toStep, size,
                                               options_.method == Deinterlacing::Mix ? 2 : field);
                break;
            case Deinterlacing::None:
                break;
        }
    }

    static constexpr int kReach = 4;  // rows: Blend; the others need fewer
    DeinterlaceOptions options_;
    int threads_;
    std::unique_ptr<VekDeinterlaceBlendState, FreeBlend> blend_;
};

}  // namespace

std::unique_ptr<Stage> makeDeinterlacer(const DeinterlaceOptions& options, int threads, Sink sink) {
    return std::make_unique<Deinterlacer>(options, threads, std::move(sink));
}

}  // namespace vekproc
