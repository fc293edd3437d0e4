// What happens to the pictures of a sequence: deinterlacing, denoising, resizing with rotation, conversion. Each stage
// gives what it makes to the next one.
#pragma once

#include <functional>
#include <memory>

#include "picture.h"

namespace vekproc {

using Sink = std::function<void(const PicturePtr&)>;

class Stage {
  public:
    explicit Stage(Sink sink) : sink_(std::move(sink)) {}
    virtual ~Stage() = default;
    virtual void add(const PicturePtr& picture) = 0;
    virtual void end() {}  // of the sequence

  protected:
    Sink sink_;
};

enum class Deinterlacing { None, Blend, Edge, Median, Motion, Triangle, Mix };
struct DeinterlaceOptions {
    Deinterlacing method = Deinterlacing::None;
    int firstField = 0;      // the parity of the field that is earlier
    bool fieldRate = false;  // a picture for each field, of the methods that rebuild one
    int threshold = -1;      // -1: the method's usual one
    int low = 4, high = 12;
};

enum class Denoising { None, Adaptive, Cast, Mosquito, Smooth };
struct DenoiseOptions {
    Denoising method = Denoising::None;
    double sigma = 5;  // standard deviation of the noise
    int frames = 10, strength = 8;
};

struct ResizeOptions {
    int factor = 1, interpolation = 2, rotation = 0;
    bool wanted() const { return factor != 1 || rotation != 0; }
    VekiSize resultOf(VekiSize size) const;
};

struct ConvertOptions {
    Layout to = Layout::Yuv420;
    int matrix = 0;
    bool dither = false, interlacedChroma = false;
};

// The planes of planar pictures, on so many threads.
std::unique_ptr<Stage> makeDeinterlacer(const DeinterlaceOptions& options, int threads, Sink sink);
std::unique_ptr<Stage> makeDenoiser(const DenoiseOptions& options, int threads, Sink sink);
// To planes without loss of a sample, but of BGR: 4:2:0 and NV12 to 4:2:0, the rest to 4:2:2.
std::unique_ptr<Stage> makePlanarizer(int matrix, Sink sink);
std::unique_ptr<Stage> makeResizer(const ResizeOptions& options, const ConvertOptions& conversion, Sink sink);
std::unique_ptr<Stage> makeConverter(const ConvertOptions& options, Sink sink);

}  // namespace vekproc
