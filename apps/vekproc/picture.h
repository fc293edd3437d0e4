// Pictures in memory in the layouts that the conversions know.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frames/frame.h"
#include "show/image.h"
#include "vekvc.h"

namespace vekproc {

using namespace vekapp;

// Planar 4:2:0 and 4:2:2; luma with interleaved chroma; Cb Y Cr Y; B G R A; B G R; B, G, R in 5, 6, 5 bits.
enum class Layout { Yuv420, Yuv422, Nv12, Uyvy, Bgra, Bgr24, Bgr565 };

struct LayoutName {
    const char* name;
    Layout layout;
};
inline constexpr LayoutName kLayoutNames[] = {
    {"yuv420", Layout::Yuv420}, {"yuv422", Layout::Yuv422}, {"nv12", Layout::Nv12},     {"uyvy", Layout::Uyvy},
    {"bgra", Layout::Bgra},     {"bgr24", Layout::Bgr24},   {"bgr565", Layout::Bgr565},
};

constexpr bool isPlanar(Layout layout) { return layout == Layout::Yuv420 || layout == Layout::Yuv422; }

// Rows of bytes without padding; the planes lie one behind the other as in raw files.
class Picture {
  public:
    struct Plane {
        Vek8u* data = nullptr;
        Vek32s step = 0;  // bytes of a row
        int width = 0;    // samples of a row: bytes, but for Bgr565
        int rows = 0;

        VekiSize size() const { return {width, rows}; }
    };

    Picture(Layout layout, VekiSize size);

    Layout layout() const { return layout_; }
    VekiSize size() const { return size_; }  // pixels
    int planes() const { return planes_; }
    const Plane& plane(int i) const { return plane_[i]; }
    std::vector<Vek8u>& bytes() { return bytes_; }

  private:
    Layout layout_;
    VekiSize size_;
    int planes_ = 0;
    Plane plane_[3];
    std::vector<Vek8u> bytes_;
};

using PicturePtr = std::shared_ptr<const Picture>;

// What a file says of all its pictures.
struct Sequence {
    Layout layout = Layout::Yuv420;
    VekiSize size{};
    Rational rate, sampleAspect;
    FieldOrder fields = FieldOrder::Unknown;
    ChromaPlace chromaPlace = ChromaPlace::Left;
};

// For output: the picture's planes as a frame.
Frame frameOf(const Picture& picture, const Sequence& sequence, int number);
// To look at.
Image imageOf(const Picture& picture);

}  // namespace vekproc
