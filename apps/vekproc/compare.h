// How near the result is to a reference.
#pragma once

#include "reader.h"

namespace vekproc {

// Luma PSNR of the mean squared error over all pictures.
class Compare {
  public:
    // Raw references have the result's own format.
    Compare(const std::string& reference, const Sequence& result) : reader_(reference, result) {}
    void add(const Picture& picture);
    // The line that tells it; false: the pictures differ in number.
    bool finish();

  private:
    Reader reader_;
    double squares_ = 0, samples_ = 0;
    long pictures_ = 0;
    bool ended_ = false;
};

}  // namespace vekproc
