#include "output.h"

#include <md5.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace vekdec {
namespace {

class VideoOutput : public FrameOutput {
  public:
    explicit VideoOutput(const std::string& name) : name_(name), y4m_(name.size() > 4 && name.ends_with(".y4m")) {
        file_ = name == "-" ? stdout : std::fopen(name.c_str(), "wb");
        if (file_ == nullptr) throw std::runtime_error("cannot write " + name + ": " + std::strerror(errno));
    }
    ~VideoOutput() override {
        if (file_ != nullptr && file_ != stdout) std::fclose(file_);
    }
    void add(const Frame& frame) override {
        if (y4m_) {
            if (frame.number == 0 || !begun_) {
                const std::string depth = frame.bitDepth > 8 ? "p" + std::to_string(frame.bitDepth) : "";
                const std::string format = (frame.chromaFormatIdc == 2 ? "422"
                                            : depth.empty()            ? "420jpeg"
                                                                       : "420") +
                                           depth;
                std::fprintf(file_, "YUV4MPEG2 W%d H%d F25:1 Ip A1:1 C%s\n", frame.plane[0].width,
                             frame.plane[0].height, format.c_str());
            }
            std::fputs("FRAME\n", file_);
        }
        begun_ = true;
        if (frame.chromaFormatIdc == 0) {
            packFrame(frame, bytes_);
            write(bytes_.data(), bytes_.size());
            return;
        }
        for (const FramePlane& plane : frame.plane) {
            const std::size_t rowBytes = static_cast<std::size_t>(plane.width) * (frame.bitDepth > 8 ? 2 : 1);
            if (plane.stride == static_cast<std::ptrdiff_t>(rowBytes)) {  // nothing between the rows
                write(plane.data, rowBytes * static_cast<std::size_t>(plane.height));
                continue;
            }
            for (int y = 0; y < plane.height; ++y) write(plane.data + plane.stride * y, rowBytes);
        }
    }
    bool finish() override {
        if (std::fflush(file_) != 0) fail();
        return true;
    }

  private:
    void write(const std::uint8_t* bytes, std::size_t count) {
        if (std::fwrite(bytes, 1, count, file_) != count) fail();
    }
    [[noreturn]] void fail() { throw std::runtime_error("cannot write " + name_ + ": " + std::strerror(errno)); }

    std::string name_;
    bool y4m_, begun_ = false;
    std::FILE* file_;
    std::vector<std::uint8_t> bytes_;
};

class Md5Output : public FrameOutput {
  public:
    void add(const Frame& frame) override {
        packFrame(frame, bytes_);
        std::puts(md5Of(bytes_).c_str());
    }

  private:
    std::vector<std::uint8_t> bytes_;
};

class Md5Check : public FrameOutput {
  public:
    explicit Md5Check(const std::string& name) {
        std::ifstream file(name);
        if (!file) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
        for (std::string line; std::getline(file, line);)
            if (!line.empty() && line[0] != '#') wanted_.push_back(line.substr(0, 32));
        if (wanted_.empty()) throw std::runtime_error(name + " holds no checksums");
    }
    void add(const Frame& frame) override {
        packFrame(frame, bytes_);
        if (seen_ < wanted_.size() && md5Of(bytes_) != wanted_[seen_]) {
            if (differ_++ == 0) first_ = seen_;
        }
        ++seen_;
    }
    bool finish() override {
        if (differ_ == 0 && seen_ == wanted_.size()) {
            std::printf("bit-exact: %zu frames\n", seen_);
            return true;
        }
        if (differ_ > 0)
            std::printf("frame %zu differs (counted from 0; %zu of %zu frames differ)\n", first_, differ_, seen_);
        if (seen_ != wanted_.size()) std::printf("%zu frames, but %zu checksums\n", seen_, wanted_.size());
        return false;
    }

  private:
    std::vector<std::string> wanted_;
    std::vector<std::uint8_t> bytes_;
    std::size_t seen_ = 0, differ_ = 0, first_ = 0;
};

}  // namespace

void packFrame(const Frame& frame, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    const std::size_t sampleBytes = frame.bitDepth > 8 ? 2 : 1;
    for (const FramePlane& plane : frame.plane)
        for (int y = 0; y < plane.height && plane.data != nullptr; ++y) {
            const std::uint8_t* row = plane.data + plane.stride * y;
            bytes.insert(bytes.end(), row, row + static_cast<std::size_t>(plane.width) * sampleBytes);
        }
    if (frame.chromaFormatIdc == 0) {
        const auto width = static_cast<std::size_t>((frame.plane[0].width + 1) / 2),
                   height = static_cast<std::size_t>((frame.plane[0].height + 1) / 2);
        const int grey = 1 << (frame.bitDepth - 1);
        for (std::size_t i = 0; i < 2 * width * height; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(grey));
            if (sampleBytes == 2) bytes.push_back(static_cast<std::uint8_t>(grey >> 8));
        }
    }
}

std::string md5Of(const std::vector<std::uint8_t>& bytes) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, bytes.data(), bytes.size());
    char text[MD5_DIGEST_STRING_LENGTH];
    return MD5End(&context, text);
}

std::unique_ptr<FrameOutput> makeVideoOutput(const std::string& file) { return std::make_unique<VideoOutput>(file); }
std::unique_ptr<FrameOutput> makeMd5Output() { return std::make_unique<Md5Output>(); }
std::unique_ptr<FrameOutput> makeMd5Check(const std::string& file) { return std::make_unique<Md5Check>(file); }

}  // namespace vekdec
