// One slice from bits to samples: parsing, and behind it, a row later, reconstruction.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "h264/macroblock_parser.h"
#include "h264/reconstruction.h"

namespace vekdec::h264 {

// Where and why a slice broke off; the macroblocks before it are decoded.
struct SliceDamage {
    int mbAddress;
    std::string reason;
};

// Holds what outlives a slice (decoding tables, buffers), so that no slice allocates.
class SliceDecoder {
  public:
    // Decodes the slice data at `bits` into the context's picture. Returns the damage of a broken slice, or nothing.
    // `reached` is told, at the end of every macroblock row and of the slice, the address before which all of the slice's
    // macroblocks are decoded; not where slice groups take the macroblocks out of their order.
    std::optional<SliceDamage> decode(BitReader& bits, const SliceContext& context,
                                      const std::function<void(int)>& reached);

  private:
    template <typename Syntax>
    std::optional<SliceDamage> decodeWith(MacroblockParser<Syntax>& parser, BitReader& bits,
                                          const std::function<void(int)>& reached);
    std::optional<SliceDamage> reconstructParsed();

    const SliceContext* context_ = nullptr;
    MacroblockParser<CavlcSyntax> cavlcParser_;
    MacroblockParser<CabacSyntax> cabacParser_;
    ParsedRow parsed_;
    LevelScales scales_;
};

}  // namespace vekdec::h264
