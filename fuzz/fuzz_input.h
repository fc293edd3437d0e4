// Takes a fuzzer's bytes apart; when they are used up, zeros follow.
#ifndef VEKVC_FUZZ_INPUT_H
#define VEKVC_FUZZ_INPUT_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "vekvc/types.h"

// Ends the run: a finding.
#define FUZZ_REQUIRE(condition)                                                          \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                \
        }                                                                                \
    } while (false)

namespace vekvc_fuzz {

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    unsigned byte() {
        if (size_ == 0) return 0;
        --size_;
        return *data_++;
    }
    // low..high
    int number(int low, int high) { return low + static_cast<int>(byte() % static_cast<unsigned>(high - low + 1)); }
    Vek32u word() {
        Vek32u value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | byte();
        return value;
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
};

// A stream of exactly so many words on the heap, where the address sanitizer fences it.
class Words {
  public:
    Words(Input& input, std::size_t random, std::size_t count) : words_(new Vek32u[count]), count_(count) {
        for (std::size_t i = 0; i < count; ++i) words_[i] = i < random ? input.word() : 0;
    }
    Vek32u* begin() const { return words_.get(); }
    // Its first words alone.
    Words prefix(std::size_t count) const {
        Words copy(count);
        std::memcpy(copy.words_.get(), words_.get(), 4 * count);
        return copy;
    }
    std::size_t size() const { return count_; }

  private:
    explicit Words(std::size_t count) : words_(new Vek32u[count]), count_(count) {}
    std::unique_ptr<Vek32u[]> words_;
    std::size_t count_;
};

}  // namespace vekvc_fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
