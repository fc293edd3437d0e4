// Memory of a picture's planes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vekapp {

// Where picture memory lies. Guarded modes are for tests: each plane gets pages of its own between forbidden ones and
// begins (or ends) right at one, so that an access outside the picture stops the program.
enum class MemoryMode { Plain, GuardBefore, GuardBehind };
void setMemoryMode(MemoryMode mode);

class SampleMemory {
  public:
    explicit SampleMemory(std::size_t bytes);
    ~SampleMemory();
    SampleMemory(const SampleMemory&) = delete;
    SampleMemory& operator=(const SampleMemory&) = delete;
    std::uint8_t* data() const { return data_; }

  private:
    std::uint8_t* data_;
    void* base_;
    std::size_t mapped_;  // 0: from vekMalloc
};

}  // namespace vekapp
