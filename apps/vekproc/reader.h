// Uncompressed video: y4m, and raw files whose format is told.
#pragma once

#include "picture.h"
#include "source/input_file.h"

namespace vekproc {

class Reader {
  public:
    // `raw`: what is known of a file without a header; its size is 0 where nothing is. Throws std::runtime_error with a
    // sentence.
    Reader(const std::string& name, const Sequence& raw);

    const Sequence& sequence() const { return sequence_; }
    std::shared_ptr<Picture> next();  // null: the end
    std::uint64_t done() const { return file_.position(); }
    std::uint64_t total() const { return file_.size(); }

  private:
    std::string readLine();
    void parseHeader(const std::string& line);

    InputFile file_;
    Sequence sequence_;
    bool y4m_ = false;
};

}  // namespace vekproc
