// Layouts, sizes and rotations.
#include "stages.h"

namespace vekproc {
namespace {

using Plane = Picture::Plane;

std::shared_ptr<Picture> make(Layout layout, VekiSize size) { return std::make_shared<Picture>(layout, size); }

// Planes to Cb Y Cr Y and back.
void interleave(const Picture& from, const Picture& to, bool interlacedChroma) {
    const Plane &y = from.plane(0), &cb = from.plane(1), &cr = from.plane(2), &all = to.plane(0);
    if (from.layout() == Layout::Yuv422)
        vekiYCbCr422ToCbYCr422_8u_P3C2R(y.data, y.step, cb.data, cr.data, cb.step, all.data, all.step, from.size());
    else
        vekiYCbCr420ToCbYCr422_8u_P3C2R(y.data, y.step, cb.data, cr.data, cb.step, all.data, all.step, from.size(),
                                        interlacedChroma);
}

void separate(const Picture& from, const Picture& to, bool interlacedChroma) {
    const Plane &all = from.plane(0), &y = to.plane(0), &cb = to.plane(1), &cr = to.plane(2);
    if (to.layout() == Layout::Yuv422)
        vekiCbYCr422ToYCbCr422_8u_C2P3R(all.data, all.step, y.data, y.step, cb.data, cr.data, cb.step, from.size());
    else
        vekiCbYCr422ToYCbCr420_8u_C2P3R(all.data, all.step, y.data, y.step, cb.data, cr.data, cb.step, from.size(),
                                        interlacedChroma);
}

// 4:2:0 planes to NV12 and to BGR.
void fromYuv420(const Picture& from, const Picture& to, const ConvertOptions& options) {
    const Plane &y = from.plane(0), &cb = from.plane(1), &cr = from.plane(2), &first = to.plane(0);
    switch (to.layout()) {
        case Layout::Nv12:
            vekiYCbCr420ToYCbCr420_8u_P3P2R(y.data, y.step, cb.data, cr.data, cb.step, first.data, first.step,
                                            to.plane(1).data, to.plane(1).step, from.size());
            break;
        case Layout::Bgra:
            vekiYCbCr420ToBGR_8u_P3C4R(y.data, y.step, cb.data, cr.data, cb.step, first.data, first.step, from.size(),
                                       options.matrix);
            break;
        case Layout::Bgr24:
            vekiYCbCr420ToBGR_8u_P3C3R(y.data, y.step, cb.data, cr.data, cb.step, first.data, first.step, from.size(),
                                       options.matrix);
            break;
        default:
            vekiYCbCr420ToBGR565_8u16u_P3C1R(y.data, y.step, cb.data, cr.data, cb.step,
                                             reinterpret_cast<Vek16u*>(first.data), first.step, from.size(),
                                             options.matrix, options.dither);
            break;
    }
}

PicturePtr convert(const PicturePtr& from, const ConvertOptions& options) {
    if (from->layout() == options.to) return from;
    const auto through = [&](Layout layout) {
        ConvertOptions first = options;
        first.to = layout;
        return convert(convert(from, first), options);
    };
    const bool interlaced = options.interlacedChroma;
    const auto result = make(options.to, from->size());
    const Plane &source = from->plane(0), &to = result->plane(0);
    switch (from->layout()) {
        case Layout::Yuv420:
            if (options.to == Layout::Yuv422) return through(Layout::Uyvy);
            if (options.to == Layout::Uyvy)
                interleave(*from, *result, interlaced);
            else
                fromYuv420(*from, *result, options);
            return result;
        case Layout::Yuv422:
            if (options.to != Layout::Uyvy) return through(Layout::Uyvy);
            interleave(*from, *result, false);
            return result;
        case Layout::Uyvy:
            switch (options.to) {
                case Layout::Bgra:
                    vekiCbYCr422ToBGR_8u_C2C4R(source.data, source.step, to.data, to.step, from->size(),
                                               options.matrix);
                    return result;
                case Layout::Bgr24:
                    vekiCbYCr422ToBGR_8u_C2C3R(source.data, source.step, to.data, to.step, from->size(),
                                               options.matrix);
                    return result;
                case Layout::Nv12:
                case Layout::Bgr565:
                    return through(Layout::Yuv420);
                default:
                    separate(*from, *result, interlaced);
                    return result;
            }
        case Layout::Nv12: {
            if (options.to != Layout::Yuv420) return through(Layout::Yuv420);
            const Plane& chroma = from->plane(1);
            vekiYCbCr420ToYCbCr420_8u_P2P3R(source.data, source.step, chroma.data, chroma.step, to.data, to.step,
                                            result->plane(1).data, result->plane(2).data, result->plane(1).step,
                                            from->size());
            return result;
        }
        default:  // Bgra: the other BGR layouts are not read
            if (options.to != Layout::Uyvy) return through(Layout::Uyvy);
            vekiBGRToCbYCr422_8u_C4C2R(source.data, source.step, to.data, to.step, from->size(), options.matrix);
            return result;
    }
}

class Converter : public Stage {
  public:
    Converter(const ConvertOptions& options, Sink sink) : Stage(std::move(sink)), options_(options) {}
    void add(const PicturePtr& picture) override { sink_(convert(picture, options_)); }

  private:
    ConvertOptions options_;
};

class Planarizer : public Stage {
  public:
    Planarizer(int matrix, Sink sink) : Stage(std::move(sink)) { options_.matrix = matrix; }
    void add(const PicturePtr& picture) override {
        const Layout layout = picture->layout();
        options_.to = layout == Layout::Yuv420 || layout == Layout::Nv12 ? Layout::Yuv420 : Layout::Yuv422;
        sink_(convert(picture, options_));
    }

  private:
    ConvertOptions options_;
};

class Resizer : public Stage {
  public:
    Resizer(const ResizeOptions& options, const ConvertOptions& conversion, Sink sink)
        : Stage(std::move(sink)), options_(options), conversion_(conversion) {
        conversion_.to = Layout::Uyvy;
    }
    void add(const PicturePtr& picture) override {
        const PicturePtr from = convert(picture, conversion_);
        const auto result = make(Layout::Uyvy, options_.resultOf(from->size()));
        const Plane &source = from->plane(0), &to = result->plane(0);
        vekiResizeCCRotate_8u_C2R(source.data, source.step, from->size(), to.data, to.step, options_.factor,
                                  options_.interpolation, 0, options_.rotation);
        sink_(result);
    }

  private:
    ResizeOptions options_;
    ConvertOptions conversion_;
};

}  // namespace

VekiSize ResizeOptions::resultOf(VekiSize size) const {
    const auto scaled = [&](int n) { return factor < 0 ? n * -factor : (n + factor - 1) / factor; };
    const VekiSize upright = {scaled(size.width), scaled(size.height)};
    return rotation % 180 == 0 ? upright : VekiSize{upright.height, upright.width};
}

std::unique_ptr<Stage> makeConverter(const ConvertOptions& options, Sink sink) {
    return std::make_unique<Converter>(options, std::move(sink));
}
std::unique_ptr<Stage> makePlanarizer(int matrix, Sink sink) {
    return std::make_unique<Planarizer>(matrix, std::move(sink));
}
std::unique_ptr<Stage> makeResizer(const ResizeOptions& options, const ConvertOptions& conversion, Sink sink) {
    return std::make_unique<Resizer>(options, conversion, std::move(sink));
}

}  // namespace vekproc
