// The command line of vekdec.
#pragma once

#include <algorithm>
#include <string>
#include <thread>

#include "decoder.h"
#include "show/overlay.h"

namespace vekdec {

inline constexpr int kOk = 0, kDamaged = 1, kCannot = 2;  // exit status

struct Options {
    std::string input, output, check, pngDirectory, sheet, memory, format;
    vekapp::Overlay overlay = vekapp::Overlay::None;
    int zoom = 1;
    PostProcessing postProcessing;
    bool interleaved = false, md5 = false, stats = false, quiet = false, listFormats = false;
    long frames = -1, skip = 0;
    int bench = 0;
    int threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 64);
};

// What the options say. False: the program is to end with `status` at once; what there was to say is said.
bool parseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace vekdec
