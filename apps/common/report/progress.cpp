#include "report/progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace vekapp {

Progress::Progress(bool wanted) : wanted_(wanted && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\x1b[K", stderr);
}

void Progress::show(long frames, std::size_t done, std::size_t total) {
    if (!wanted_) return;
    const auto now = Clock::now();
    if (now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    shown_ = true;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double part = total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
    constexpr int kWidth = 30;
    const auto filled = static_cast<std::size_t>(part * kWidth);
    const std::string bar = std::string(filled, '=') + std::string(kWidth - filled, ' ');
    std::fprintf(stderr, "\r[%s] %3.0f %%  %ld frames, %.0f per second, %.0f s left\x1b[K", bar.c_str(), 100 * part,
                 frames, static_cast<double>(frames) / seconds, part > 0 ? seconds / part - seconds : 0.0);
    std::fflush(stderr);
}

}  // namespace vekapp
