#include "picture.h"

#include <cstring>

namespace vekproc {

Picture::Picture(Layout layout, VekiSize size) : layout_(layout), size_(size) {
    const int w = size.width, h = size.height, cw = (w + 1) / 2, ch = (h + 1) / 2;
    struct Shape {
        int width, rows, bytes;  // samples, rows, bytes of a row
    };
    std::vector<Shape> shapes;
    switch (layout) {
        case Layout::Yuv420:
            shapes = {{w, h, w}, {cw, ch, cw}, {cw, ch, cw}};
            break;
        case Layout::Yuv422:
            shapes = {{w, h, w}, {cw, h, cw}, {cw, h, cw}};
            break;
        case Layout::Nv12:
            shapes = {{w, h, w}, {2 * cw, ch, 2 * cw}};
            break;
        case Layout::Uyvy:
            shapes = {{4 * cw, h, 4 * cw}};
            break;
        case Layout::Bgra:
            shapes = {{4 * w, h, 4 * w}};
            break;
        case Layout::Bgr24:
            shapes = {{3 * w, h, 3 * w}};
            break;
        case Layout::Bgr565:
            shapes = {{w, h, 2 * w}};
            break;
    }
    std::size_t bytes = 0;
    for (const Shape& s : shapes) bytes += static_cast<std::size_t>(s.bytes) * static_cast<std::size_t>(s.rows);
    bytes_.resize(bytes);
    Vek8u* data = bytes_.data();
    for (const Shape& s : shapes) {
        plane_[planes_++] = {data, s.bytes, s.width, s.rows};
        data += static_cast<std::ptrdiff_t>(s.bytes) * s.rows;
    }
}

Frame frameOf(const Picture& picture, const Sequence& sequence, int number) {
    Frame frame;
    frame.number = number;
    frame.rate = sequence.rate;
    frame.sampleAspect = sequence.sampleAspect;
    frame.fields = sequence.fields;
    frame.chromaPlace = sequence.chromaPlace;
    frame.chroma = picture.layout() == Layout::Yuv422                                       ? Chroma::C422
                   : picture.layout() == Layout::Yuv420 || picture.layout() == Layout::Nv12 ? Chroma::C420
                                                                                            : Chroma::Packed422;
    for (int i = 0; i < picture.planes(); ++i) {
        const Picture::Plane& plane = picture.plane(i);
        frame.plane[i] = {plane.data, plane.step, plane.step, plane.rows};
    }
    return frame;
}

namespace {

Image fromBgr(const Picture& picture) {
    Image image(picture.size().width, picture.size().height);
    const Picture::Plane& plane = picture.plane(0);
    const auto spread = [](int v, int bits) {
        return static_cast<std::uint8_t>(v << (8 - bits) | v >> (2 * bits - 8));
    };
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const Vek8u* row = plane.data + static_cast<std::ptrdiff_t>(plane.step) * y;
            std::uint8_t* to = image.at(x, y);
            if (picture.layout() == Layout::Bgr565) {
                std::uint16_t pixel;
                std::memcpy(&pixel, row + 2 * x, 2);
                to[0] = spread(pixel >> 11, 5);
                to[1] = spread(pixel >> 5 & 63, 6);
                to[2] = spread(pixel & 31, 5);
                continue;
            }
            const Vek8u* from = row + (picture.layout() == Layout::Bgra ? 4 : 3) * x;
            for (int c = 0; c < 3; ++c) to[c] = from[2 - c];
        }
    return image;
}

}  // namespace

Image imageOf(const Picture& picture) {
    switch (picture.layout()) {
        case Layout::Bgra:
        case Layout::Bgr24:
        case Layout::Bgr565:
            return fromBgr(picture);
        case Layout::Nv12: {
            Picture planar(Layout::Yuv420, picture.size());
            const Picture::Plane &y = picture.plane(0), &c = picture.plane(1), &to = planar.plane(0);
            vekiYCbCr420ToYCbCr420_8u_P2P3R(y.data, y.step, c.data, c.step, to.data, to.step, planar.plane(1).data,
                                            planar.plane(2).data, planar.plane(1).step, picture.size());
            return toImage(frameOf(planar, {}, 0));
        }
        default:
            return toImage(frameOf(picture, {}, 0));
    }
}

}  // namespace vekproc
