// Sentences about damage on standard error.
#pragma once

#include <string>
#include <vector>

namespace vekapp {

// They wait until a frame shows that anything could be decoded at all; after the first ten they are counted only.
class Messages {
  public:
    explicit Messages(std::string name) : name_(std::move(name)) {}
    void add(const std::string& sentence);
    void release();
    void finish();
    // Why nothing was decoded, as far as the stream told.
    std::string reason() const { return first_.empty() ? "" : ": " + first_.front(); }

  private:
    static constexpr long kMost = 10;
    void print(const std::string& sentence) const;

    std::string name_;
    std::vector<std::string> first_;
    long count_ = 0;
    bool released_ = false;
};

}  // namespace vekapp
