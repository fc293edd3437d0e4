// Where decoded frames go: raw video, y4m, checksums.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "frames/frame.h"

namespace vekapp {

// Frames in the order of output; add() is called once per frame, finish() after the last.
class FrameOutput {
  public:
    virtual ~FrameOutput() = default;
    virtual void add(const Frame& frame) = 0;
    virtual bool finish() { return true; }  // false: the program shall exit with status 1
};

// All samples of the frame, Y, U, V without padding. Monochrome gets chroma planes of 4:2:0 at half range.
void packFrame(const Frame& frame, std::vector<std::uint8_t>& bytes);
// The MD5 of those bytes, 32 hexadecimal digits.
std::string md5Of(const std::vector<std::uint8_t>& bytes);

// A file of raw planar video, or y4m where the name ends so; "-" is standard output. Made when the first frame comes; a
// frame of another size or depth begins the next file, NAME-2.y4m. All outputs throw std::runtime_error if they cannot
// write.
std::unique_ptr<FrameOutput> makeVideoOutput(const std::string& file);
// One line per frame on standard output.
std::unique_ptr<FrameOutput> makeMd5Output();
// Compares with a list of MD5s: names the first frame that differs and the count.
std::unique_ptr<FrameOutput> makeMd5Check(const std::string& file);

}  // namespace vekapp
