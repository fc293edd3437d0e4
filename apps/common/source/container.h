// The video stream of a container, through libavformat.
#pragma once

#include <memory>
#include <string>

#include "source/input_file.h"
#include "source/packet.h"

namespace vekapp {

// The stream for which `wanted` takes the codec's name, or the first video stream. Throws std::runtime_error where the
// file cannot be read or holds no video, with what it holds, or where libavformat was not there at build time, with
// what to install. `kind` is what the file is, for the sentences.
std::unique_ptr<Source> openContainer(InputFile& file, const std::string& kind,
                                      bool (*wanted)(const std::string& codec));

}  // namespace vekapp
