// A stage that makes each picture of itself, the one before and the one behind.
#pragma once

#include <utility>

#include "stages.h"

namespace vekproc {

// At the ends of a sequence a picture stands for the one that is missing.
class WindowStage : public Stage {
  public:
    void add(const PicturePtr& picture) final {
        if (!looksAround_) return make(picture, picture, picture);
        if (current_ != nullptr) make(before_ != nullptr ? before_ : current_, current_, picture);
        before_ = std::exchange(current_, picture);
    }
    void end() final {
        if (current_ != nullptr) make(before_ != nullptr ? before_ : current_, current_, current_);
        before_ = current_ = nullptr;
    }

  protected:
    // Without a look around each picture stands for its neighbours too, and none waits.
    WindowStage(bool looksAround, Sink sink) : Stage(std::move(sink)), looksAround_(looksAround) {}

  private:
    virtual void make(const PicturePtr& before, const PicturePtr& current, const PicturePtr& behind) = 0;

    const bool looksAround_;
    PicturePtr before_, current_;
};

}  // namespace vekproc
