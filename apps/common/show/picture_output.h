// Frames as pictures to look at.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "output/output.h"
#include "show/overlay.h"

namespace vekapp {

using BlocksOf = std::function<BlockMap(const Frame&)>;

// DIR/frame-00000.png and so on.
std::unique_ptr<FrameOutput> makePngOutput(const std::string& directory, Overlay overlay, BlocksOf blocksOf);
// A contact sheet of up to 12 evenly spaced frames.
std::unique_ptr<FrameOutput> makeSheetOutput(const std::string& file, Overlay overlay, BlocksOf blocksOf);

}  // namespace vekapp
