// The slice data and macroblock layers (H.264 7.3.4, 7.3.5): parsing of each macroblock, and the call of the steps that
// turn it into samples.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "h264/slice.h"

namespace vekdec::h264 {

// Where and why a slice broke off; the macroblocks before it are decoded.
struct SliceDamage {
    SliceDamage(int address, std::string why) : mbAddress(address), reason(std::move(why)) {}
    int mbAddress;
    std::string reason;
};

// Decodes slices macroblock by macroblock into Slice::picture. Holds what outlives a macroblock (decoding tables,
// coefficient buffers), so that no slice allocates.
class SliceDecoder {
  public:
    SliceDecoder();
    ~SliceDecoder();
    // Decodes the slice data at `bits`. Returns the damage of a broken slice, or nothing. `reached` is told, at the end
    // of every macroblock row and of the slice, the address before which all of the slice's macroblocks are decoded;
    // not where slice groups take the macroblocks out of their order.
    std::unique_ptr<SliceDamage> decode(BitReader& bits, const Slice& slice, const std::function<void(int)>& reached);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vekdec::h264
