#include "frames/sample_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "vekcore.h"

namespace vekapp {
namespace {
MemoryMode memoryMode = MemoryMode::Plain;
}

void setMemoryMode(MemoryMode mode) { memoryMode = mode; }

SampleMemory::SampleMemory(std::size_t bytes) : data_(nullptr), base_(nullptr), mapped_(0) {
    if (memoryMode == MemoryMode::Plain) {
        base_ = bytes <= INT32_MAX ? vekMalloc(static_cast<int>(bytes)) : nullptr;
        if (base_ == nullptr) throw std::bad_alloc();
        data_ = static_cast<std::uint8_t*>(base_);
    } else {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t inside = (bytes + page - 1) / page * page;
        mapped_ = inside + 2 * page;
        base_ = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base_ == MAP_FAILED) throw std::bad_alloc();
        auto* first = static_cast<std::uint8_t*>(base_) + page;
        if (mprotect(first, inside, PROT_READ | PROT_WRITE) != 0) {
            munmap(base_, mapped_);
            throw std::bad_alloc();
        }
        data_ = memoryMode == MemoryMode::GuardBefore ? first : first + inside - bytes;
    }
    std::memset(data_, 0, bytes);
}

SampleMemory::~SampleMemory() {
    if (mapped_ != 0)
        munmap(base_, mapped_);
    else
        vekFree(base_);
}

}  // namespace vekapp
