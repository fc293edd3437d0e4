// Raw elementary streams, read piece by piece and split into packets.
#pragma once

#include <vector>

#include "source/input_file.h"
#include "source/packet.h"

namespace vekapp {

class ElementarySource : public Source {
  public:
    ElementarySource(InputFile& file, SplitPacket split) : file_(file), split_(split) {}
    bool next(Packet& packet) override;
    const StreamInfo& info() const override { return info_; }
    std::uint64_t done() const override { return file_.position() - (end_ - begin_); }
    std::uint64_t total() const override { return file_.size(); }

  private:
    InputFile& file_;
    SplitPacket split_;
    StreamInfo info_;
    std::vector<std::uint8_t> buffer_;
    std::size_t begin_ = 0, end_ = 0;  // what is read and not yet given out
    bool atEnd_ = false;
};

}  // namespace vekapp
