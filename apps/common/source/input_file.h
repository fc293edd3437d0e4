// A file, pipe or device that is read from front to back, and whose beginning can be looked at first.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace vekapp {

class InputFile {
  public:
    explicit InputFile(const std::string& name);  // "-": standard input. Throws std::runtime_error
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& name() const { return name_; }
    // The first bytes, as many as there are up to `most`; they will be read again.
    std::span<const std::uint8_t> begin(std::size_t most);
    // Reads up to bytes.size() bytes; 0 at the end.
    std::size_t read(std::span<std::uint8_t> bytes);
    bool seekable() const { return seekable_; }
    void seek(std::uint64_t position);  // of a seekable file
    std::uint64_t position() const { return position_; }
    std::uint64_t size() const { return size_; }  // 0: not known

  private:
    std::size_t readFile(std::uint8_t* to, std::size_t most);

    std::string name_;
    std::FILE* file_;
    std::vector<std::uint8_t> begin_;
    std::uint64_t position_ = 0;  // of the next byte that read() gives
    std::uint64_t size_ = 0;
    bool seekable_ = false;
};

}  // namespace vekapp
