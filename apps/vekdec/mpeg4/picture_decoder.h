// One VOP behind its header to samples: what a thread does, while others decode those before and behind.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "concealment.h"
#include "mpeg4/vop_decoder.h"

namespace vekdec::mpeg4 {

struct VopTask : PictureTask {
    std::unique_ptr<BytePayload> payload;
    std::optional<ByteReader> bits;  // of it, behind the VOP's header
    std::shared_ptr<const Layer> layer;
    std::shared_ptr<const Dequantizers> dequantizers;
    VopContext context;
    static constexpr std::size_t kWarpBytes = 384;  // as vekiWarpGetSize_MPEG4 tells
    Vek8u warp[kWarpBytes];
    std::vector<std::shared_ptr<Picture>> kept;  // the pictures that it refers to, and its own
    PlaneSet before;                             // for concealment
    bool sideBySide = false;                     // others wait for its rows

    // Found in decoding.
    long packets = 0;
    long kinds[11] = {};
    double seconds = 0;
};

// Holds what outlives a VOP.
class PictureDecoder {
  public:
    void operator()(VopTask& task);

  private:
    VopDecoder vops_;
    RowConcealment<Macroblock> concealment_;
};

}  // namespace vekdec::mpeg4
