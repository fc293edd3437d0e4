// Adds the time between its making and its end to a sum of seconds.
#pragma once

#include <chrono>

namespace vekapp {

class Stopwatch {
  public:
    explicit Stopwatch(double& sum) : sum_(sum) {}
    ~Stopwatch() { sum_ += std::chrono::duration<double>(Clock::now() - start_).count(); }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

  private:
    using Clock = std::chrono::steady_clock;
    double& sum_;
    Clock::time_point start_ = Clock::now();
};

}  // namespace vekapp
