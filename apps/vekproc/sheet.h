// A picture to look at: a few pictures of the source above what became of them, and a part of both enlarged.
#pragma once

#include <string>
#include <vector>

#include "picture.h"

namespace vekproc {

class Sheet {
  public:
    explicit Sheet(std::string file) : file_(std::move(file)) {}
    // Is this result one of those that may be shown? Then add() it.
    bool wants(long number) const { return number % interval_ == 0; }
    void add(const Picture& source, const Picture& result);
    void finish() const;  // throws std::runtime_error

  private:
    struct Column {
        Image source, result, sourcePart, resultPart;
    };
    std::string file_;
    std::vector<Column> columns_;
    long interval_ = 1;
};

}  // namespace vekproc
