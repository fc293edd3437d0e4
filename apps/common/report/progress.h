// A progress bar on a terminal; nothing elsewhere.
#pragma once

#include <chrono>
#include <cstddef>

namespace vekapp {

class Progress {
  public:
    explicit Progress(bool wanted);
    ~Progress();
    void show(long frames, std::size_t done, std::size_t total);

  private:
    using Clock = std::chrono::steady_clock;
    bool shown_ = false, wanted_;
    Clock::time_point start_ = Clock::now(), last_ = start_;
};

}  // namespace vekapp
