#include "reader.h"

#include <charconv>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace vekproc {
namespace {

constexpr std::string_view kMagic = "YUV4MPEG2 ";
constexpr std::size_t kLongestLine = 4096;
constexpr int kLargestSize = 1 << 15;

int numberOf(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

Rational ratioOf(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return {};
    return {numberOf(text.substr(0, colon)), numberOf(text.substr(colon + 1))};
}

}  // namespace

Reader::Reader(const std::string& name, const Sequence& raw) : file_(name), sequence_(raw) {
    const auto begin = file_.begin(kMagic.size());
    y4m_ = std::string_view(reinterpret_cast<const char*>(begin.data()), begin.size()) == kMagic;
    if (y4m_) parseHeader(readLine());
    if (sequence_.size.width == 0)
        throw std::runtime_error(name + " is no y4m file; say what it holds: --size WxH --format FORMAT");
    if (sequence_.size.width < 1 || sequence_.size.height < 1 || sequence_.size.width > kLargestSize ||
        sequence_.size.height > kLargestSize)
        throw std::runtime_error(name + ": a picture of " + std::to_string(sequence_.size.width) + "x" +
                                 std::to_string(sequence_.size.height) + " samples");
}

std::string Reader::readLine() {
    std::string line;
    for (std::uint8_t c; file_.read({&c, 1}) == 1 && c != '\n';) {
        line += static_cast<char>(c);
        if (line.size() > kLongestLine)
            throw std::runtime_error(file_.name() + ": a line of the y4m header has no end");
    }
    return line;
}

void Reader::parseHeader(const std::string& line) {
    std::istringstream words(line.substr(kMagic.size()));
    sequence_ = {};
    for (std::string word; words >> word;) {
        const std::string value = word.substr(1);
        switch (word[0]) {
            case 'W':
                sequence_.size.width = numberOf(value);
                break;
            case 'H':
                sequence_.size.height = numberOf(value);
                break;
            case 'F':
                sequence_.rate = ratioOf(value);
                break;
            case 'A':
                sequence_.sampleAspect = ratioOf(value);
                break;
            case 'I':
                sequence_.fields = value == "p"   ? FieldOrder::Progressive
                                   : value == "t" ? FieldOrder::TopFirst
                                   : value == "b" ? FieldOrder::BottomFirst
                                   : value == "m" ? FieldOrder::Mixed
                                                  : FieldOrder::Unknown;
                break;
            case 'C':
                if (value == "420" || value == "420jpeg" || value == "420mpeg2" || value == "420paldv")
                    sequence_.layout = Layout::Yuv420;
                else if (value == "422")
                    sequence_.layout = Layout::Yuv422;
                else
                    throw std::runtime_error(file_.name() + ": samples in the format " + value +
                                             "; vekproc takes 8 bits of 420 or 422");
                sequence_.chromaPlace = value == "420jpeg"    ? ChromaPlace::Centre
                                        : value == "420paldv" ? ChromaPlace::Dv
                                                              : ChromaPlace::Left;
                break;
            default:
                break;
        }
    }
}

std::shared_ptr<Picture> Reader::next() {
    if (y4m_) {
        const std::string line = readLine();
        if (line.empty()) return nullptr;
        if (!line.starts_with("FRAME")) throw std::runtime_error(file_.name() + ": no FRAME where one should begin");
    }
    auto picture = std::make_shared<Picture>(sequence_.layout, sequence_.size);
    std::vector<Vek8u>& bytes = picture->bytes();
    std::size_t have = 0;
    for (std::size_t n; have < bytes.size(); have += n) {
        n = file_.read(std::span(bytes).subspan(have));
        if (n == 0) break;
    }
    if (have == bytes.size()) return picture;
    if (have > 0 || y4m_) throw std::runtime_error(file_.name() + " ends inside a picture");
    return nullptr;
}

}  // namespace vekproc
