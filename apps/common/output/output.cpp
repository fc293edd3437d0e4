#include "output/output.h"

#include <md5.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace vekapp {
namespace {

[[noreturn]] void cannotWrite(const std::string& name) {
    throw std::runtime_error("cannot write " + name + ": " + std::strerror(errno));
}

// What a header says of the frames behind it; where nothing is known, 25 frames per second of square samples.
std::string y4mHeader(const Frame& frame) {
    const auto pair = [](Rational r, const char* otherwise) {
        return r.known() ? std::to_string(r.num) + ":" + std::to_string(r.den) : std::string(otherwise);
    };
    std::string chroma = frame.chroma == Chroma::C422 ? "422" : frame.chroma == Chroma::C411 ? "411" : "420";
    if (frame.bitDepth > 8)
        chroma += "p" + std::to_string(frame.bitDepth);
    else if (chroma == "420")
        chroma += frame.chroma == Chroma::None || frame.chromaPlace == ChromaPlace::Centre ? "jpeg"
                  : frame.chromaPlace == ChromaPlace::Dv                                   ? "paldv"
                                                                                           : "mpeg2";
    const char* const fields = frame.fields == FieldOrder::TopFirst      ? "t"
                               : frame.fields == FieldOrder::BottomFirst ? "b"
                               : frame.fields == FieldOrder::Mixed       ? "m"
                               : frame.fields == FieldOrder::Progressive ? "p"
                                                                         : "?";
    const char* const range = frame.range == ColourRange::Full      ? " XCOLORRANGE=FULL"
                              : frame.range == ColourRange::Limited ? " XCOLORRANGE=LIMITED"
                                                                    : "";
    return "YUV4MPEG2 W" + std::to_string(frame.plane[0].width) + " H" + std::to_string(frame.plane[0].height) + " F" +
           pair(frame.rate, "25:1") + " I" + fields + " A" + pair(frame.sampleAspect, "0:0") + " C" + chroma + range +
           "\n";
}

// A change of these needs a new file.
std::string formatOf(const Frame& frame) {
    const Chroma chroma = frame.chroma == Chroma::None ? Chroma::C420 : frame.chroma;  // as it is written
    return std::to_string(frame.plane[0].width) + "x" + std::to_string(frame.plane[0].height) + " " +
           std::to_string(frame.bitDepth) + " " + std::to_string(static_cast<int>(chroma));
}

// A file holds frames of one format. Where the stream changes it, the next file begins (NAME-2.y4m); of a pipe or a
// device there is no next one: frames of other formats than its first are left out, and finish() says so.
class VideoOutput : public FrameOutput {
  public:
    explicit VideoOutput(const std::string& name) : name_(name), y4m_(name.size() > 4 && name.ends_with(".y4m")) {}
    ~VideoOutput() override {
        if (file_ != nullptr && file_ != stdout) std::fclose(file_);
    }
    void add(const Frame& frame) override {
        if (y4m_ && frame.chroma == Chroma::Packed422)
            throw std::runtime_error(name_ + ": y4m holds planes, not interleaved samples; give another name");
        if (!takes(frame)) {
            ++leftOut_;
            return;
        }
        if (y4m_) write("FRAME\n", 6);
        if (frame.chroma == Chroma::None) {
            packFrame(frame, bytes_);
            write(bytes_.data(), bytes_.size());
            return;
        }
        for (const FramePlane& plane : frame.plane) {
            if (plane.data == nullptr) continue;
            const std::size_t rowBytes = static_cast<std::size_t>(plane.width) * (frame.bitDepth > 8 ? 2 : 1);
            if (plane.stride == static_cast<std::ptrdiff_t>(rowBytes)) {  // nothing between the rows
                write(plane.data, rowBytes * static_cast<std::size_t>(plane.height));
                continue;
            }
            for (int y = 0; y < plane.height; ++y) write(plane.data + plane.stride * y, rowBytes);
        }
    }
    bool finish() override {
        close();
        if (leftOut_ > 0)
            std::fprintf(stderr, "%s: %ld frames of another format than the first were left out\n", name_.c_str(),
                         leftOut_);
        return leftOut_ == 0;
    }

  private:
    // Opens the file that the frame belongs to, unless it is open; false: there is none.
    bool takes(const Frame& frame) {
        const std::string format = formatOf(frame);
        if (format == format_) return true;
        if (!format_.empty()) {
            if (file_ == stdout || !std::filesystem::is_regular_file(fileName_)) return false;
            close();
            const std::filesystem::path path(name_);
            fileName_ = path.parent_path() /
                        (path.stem().string() + "-" + std::to_string(++files_) + path.extension().string());
            std::fprintf(stderr, "%s: the format changes at frame %d; from there on the frames are in %s\n",
                         name_.c_str(), frame.number, fileName_.c_str());
        }
        file_ = fileName_ == "-" ? stdout : std::fopen(fileName_.c_str(), "wb");
        if (file_ == nullptr) cannotWrite(fileName_);
        format_ = format;
        const std::string header = y4mHeader(frame);
        if (y4m_) write(header.data(), header.size());
        return true;
    }
    void write(const void* bytes, std::size_t count) {
        if (std::fwrite(bytes, 1, count, file_) != count) cannotWrite(fileName_);
    }
    void close() {
        std::FILE* file = std::exchange(file_, nullptr);
        if (file != nullptr && (file == stdout ? std::fflush(file) : std::fclose(file)) != 0) cannotWrite(fileName_);
    }

    std::string name_, fileName_ = name_;  // as given; of the open file
    bool y4m_;
    int files_ = 1;
    std::string format_;  // of the open file
    std::FILE* file_ = nullptr;
    long leftOut_ = 0;
    std::vector<std::uint8_t> bytes_;
};

class Md5Output : public FrameOutput {
  public:
    void add(const Frame& frame) override {
        packFrame(frame, bytes_);
        if (std::puts(md5Of(bytes_).c_str()) == EOF) cannotWrite("standard output");
    }
    bool finish() override {
        if (std::fflush(stdout) != 0) cannotWrite("standard output");
        return true;
    }

  private:
    std::vector<std::uint8_t> bytes_;
};

class Md5Check : public FrameOutput {
  public:
    explicit Md5Check(const std::string& name) {
        std::ifstream file(name);
        if (!file) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
        char line[4096];  // longer ones are of no list
        while (file.getline(line, sizeof line))
            if (line[0] != '\0' && line[0] != '#') wanted_.emplace_back(line, strnlen(line, 32));
        if (!file.eof()) throw std::runtime_error(name + " is no list of checksums");
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
    if (frame.chroma == Chroma::None) {
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

}  // namespace vekapp
