// The pictures before and behind one.
#pragma once

#include <utility>

#include "picture.h"

namespace vekproc {

// At the ends of a sequence a picture stands for the one that is missing.
class Window {
  public:
    // Calls use(before, current, behind) for the picture added before this one.
    void add(const PicturePtr& picture, const auto& use) {
        if (current_ != nullptr) use(before_ != nullptr ? before_ : current_, current_, picture);
        before_ = std::exchange(current_, picture);
    }
    void end(const auto& use) {
        if (current_ != nullptr) use(before_ != nullptr ? before_ : current_, current_, current_);
        before_ = current_ = nullptr;
    }

  private:
    PicturePtr before_, current_;
};

}  // namespace vekproc
