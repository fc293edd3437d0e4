#include <cmath>

#include "bands.h"
#include "stages.h"
#include "window.h"

namespace vekproc {
namespace {

struct FreeAdaptive {
    void operator()(VekDenoiseAdaptiveState* state) const { vekiFilterDenoiseAdaptiveFree_8u_C1(state); }
};
struct FreeMosquito {
    void operator()(VekDenoiseMosquitoState* state) const { vekiFilterDenoiseMosquitoFree_8u_C1(state); }
};

class Denoiser : public WindowStage {
  public:
    Denoiser(const DenoiseOptions& options, int threads, Sink sink)
        : WindowStage(options.method == Denoising::Cast, std::move(sink)),
          options_(options),
          threads_(threads),
          noise_(static_cast<Vek32s>(std::lround(4 * std::min(options.sigma, 1000.0)))) {}

  private:
    void make(const PicturePtr& before, const PicturePtr& current, const PicturePtr& behind) override {
        const auto result = std::make_shared<Picture>(current->layout(), current->size());
        const int planes = result->planes();
        if (options_.method == Denoising::Adaptive || options_.method == Denoising::Mosquito) {
            for (int p = 0; p < planes; ++p) makeState(p, current->plane(p).size());
            parallel(threads_, planes, [&](int p) { filterWithState(p, current->plane(p), result->plane(p)); });
        } else {
            for (int p = 0; p < planes; ++p)
                filterInBands(threads_, result->plane(p), kReach, [&](int row, int rows, Vek8u* to, Vek32s toStep) {
                    filter(before->plane(p), current->plane(p), behind->plane(p), row, rows, to, toStep);
                });
        }
        sink_(result);
    }

    void makeState(int p, VekiSize size) {
        if (adaptive_[p] != nullptr || mosquito_[p] != nullptr) return;
        VekStatus status;
        if (options_.method == Denoising::Adaptive) {
            VekDenoiseAdaptiveState* state = nullptr;
            status = vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(size, noise_, options_.frames, &state);
            adaptive_[p].reset(state);
        } else {
            VekDenoiseMosquitoState* state = nullptr;
            status = vekiFilterDenoiseMosquitoInitAlloc_8u_C1(size, &state);
            mosquito_[p].reset(state);
        }
        if (status != vekStsOk) throw std::bad_alloc();
    }

    void filterWithState(int p, const Picture::Plane& from, const Picture::Plane& to) const {
        if (options_.method == Denoising::Adaptive)
            vekiFilterDenoiseAdaptive_8u_C1R(from.data, from.step, to.data, to.step, adaptive_[p].get());
        else if (vekiFilterDenoiseMosquito_8u_C1R(from.data, from.step, to.data, to.step, options_.strength,
                                                  mosquito_[p].get()) == vekStsErrUnsupported)
            copy(from, to);  // too small
    }

    void filter(const Picture::Plane& before, const Picture::Plane& current, const Picture::Plane& behind, int row,
                int rows, Vek8u* to, Vek32s toStep) const {
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(current.step) * row;
        const VekiSize size = {current.width, rows};
        if (options_.method == Denoising::Cast)
            vekiFilterDenoiseCAST_8u_C1R(before.data + offset, current.data + offset, behind.data + offset,
                                         current.step, to, toStep, size, noise_);
        else if (vekiFilterDenoiseSmooth_8u_C1R(current.data + offset, current.step, to, toStep, size) ==
                 vekStsErrUnsupported)
            copy({current.data + offset, current.step, current.width, rows}, {to, toStep, current.width, rows});
    }

    static void copy(const Picture::Plane& from, const Picture::Plane& to) {
        std::memcpy(to.data, from.data, static_cast<std::size_t>(from.step) * static_cast<std::size_t>(from.rows));
    }

    static constexpr int kReach = 4;  // rows: CAST; Smooth needs fewer
    DenoiseOptions options_;
    int threads_;
    Vek32s noise_;  // in quarters of a grey level
    std::unique_ptr<VekDenoiseAdaptiveState, FreeAdaptive> adaptive_[3];
    std::unique_ptr<VekDenoiseMosquitoState, FreeMosquito> mosquito_[3];
};

}  // namespace

std::unique_ptr<Stage> makeDenoiser(const DenoiseOptions& options, int threads, Sink sink) {
    return std::make_unique<Denoiser>(options, threads, std::move(sink));
}

}  // namespace vekproc
