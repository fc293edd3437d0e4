// Things whose memory is used again.
#pragma once

#include <memory>
#include <vector>

namespace vekdec {

template <class Thing>
class Spares {
  public:
    // One that was given back, as it was then, or a new one.
    std::unique_ptr<Thing> take() {
        if (things_.empty()) return std::make_unique<Thing>();
        auto thing = std::move(things_.back());
        things_.pop_back();
        return thing;
    }
    void give(std::unique_ptr<Thing> thing) { things_.push_back(std::move(thing)); }
    // The first `count` of them, which go from the list.
    void give(std::vector<std::unique_ptr<Thing>>& list, std::size_t count) {
        const auto end = list.begin() + static_cast<std::ptrdiff_t>(count);
        for (auto i = list.begin(); i != end; ++i) give(std::move(*i));
        list.erase(list.begin(), end);
    }

  private:
    std::vector<std::unique_ptr<Thing>> things_;
};

}  // namespace vekdec
