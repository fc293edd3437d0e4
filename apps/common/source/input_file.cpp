#include "source/input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace vekapp {

InputFile::InputFile(const std::string& name)
    : name_(name), file_(name == "-" ? stdin : std::fopen(name.c_str(), "rb")) {
    if (file_ == nullptr) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    std::setvbuf(file_, nullptr, _IONBF, 0);  // it is read in large pieces
    std::error_code unknown;                  // of a pipe
    if (file_ != stdin && std::filesystem::is_regular_file(name, unknown)) {
        size_ = std::filesystem::file_size(name, unknown);
        if (unknown) size_ = 0;
        seekable_ = size_ > 0;
    }
}

InputFile::~InputFile() {
    if (file_ != stdin) std::fclose(file_);
}

std::size_t InputFile::readFile(std::uint8_t* to, std::size_t most) {
    const std::size_t n = std::fread(to, 1, most, file_);
    if (n < most && std::ferror(file_) != 0)
        throw std::runtime_error("cannot read " + name_ + ": " + std::strerror(errno));
    return n;
}

std::span<const std::uint8_t> InputFile::begin(std::size_t most) {
    const std::size_t have = begin_.size();
    if (have < most) {
        begin_.resize(most);
        begin_.resize(have + readFile(begin_.data() + have, most - have));
    }
    return std::span(begin_).first(std::min(most, begin_.size()));
}

std::size_t InputFile::read(std::span<std::uint8_t> bytes) {
    std::size_t n = 0;
    if (position_ < begin_.size()) {
        n = std::min(bytes.size(), begin_.size() - static_cast<std::size_t>(position_));
        std::memcpy(bytes.data(), begin_.data() + position_, n);
    } else {
        n = readFile(bytes.data(), bytes.size());
    }
    position_ += n;
    return n;
}

void InputFile::seek(std::uint64_t position) {
    begin_.clear();
    if (fseeko(file_, static_cast<off_t>(position), SEEK_SET) != 0)
        throw std::runtime_error("cannot read " + name_ + ": " + std::strerror(errno));
    position_ = position;
}

}  // namespace vekapp
