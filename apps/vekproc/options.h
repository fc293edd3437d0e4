// The command line of vekproc.
#pragma once

#include <string>

#include "stages.h"

namespace vekproc {

inline constexpr int kOk = 0, kDiffers = 1, kCannot = 2;  // exit status

struct Options {
    std::string input, output, sheet, compare, knownAnswers;
    Sequence raw;  // what --size and --format say
    bool convert = false;
    int order = -1;  // the parity of the earlier field; -1: as the file says
    DeinterlaceOptions deinterlace;
    DenoiseOptions denoise;
    ResizeOptions resize;
    ConvertOptions conversion;
    int threads = 1;
    bool quiet = false;
};

// False: the program is to end with `status` at once; what there was to say is said.
bool parseOptions(int argc, char** argv, Options& options, int& status);

}  // namespace vekproc
