#include "compare.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace vekproc {

void Compare::add(const Picture& picture) {
    const auto reference = ended_ ? nullptr : reader_.next();
    ended_ = reference == nullptr;
    if (ended_) return;
    if (!isPlanar(picture.layout()) || !isPlanar(reference->layout()))
        throw std::runtime_error("--compare needs pictures of planes");
    const VekiSize size = picture.size(), other = reference->size();
    if (size.width != other.width || size.height != other.height)
        throw std::runtime_error("the reference is " + std::to_string(other.width) + "x" +
                                 std::to_string(other.height) + ", the result " + std::to_string(size.width) + "x" +
                                 std::to_string(size.height));
    const Picture::Plane &a = picture.plane(0), &b = reference->plane(0);
    std::int64_t sum = 0;
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(a.step) * a.rows; ++i) {
        const int d = a.data[i] - b.data[i];
        sum += d * d;
    }
    squares_ += static_cast<double>(sum);
    samples_ += static_cast<double>(a.step) * a.rows;
    ++pictures_;
}

bool Compare::finish() {
    const bool whole = !ended_ && reader_.next() == nullptr;
    const double error = samples_ > 0 ? squares_ / samples_ : 0;
    if (error > 0)
        std::printf("luma PSNR %.2f dB over %ld pictures\n", 10 * std::log10(255 * 255 / error), pictures_);
    else
        std::printf("luma without a difference over %ld pictures\n", pictures_);
    if (!whole) std::printf("the reference has %s pictures than the result\n", ended_ ? "fewer" : "more");
    return whole;
}

}  // namespace vekproc
