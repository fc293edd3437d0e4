#include "source/elementary.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vekapp {

namespace {
// Pieces in which the file is read, and the longest packet that is waited for: more than any picture takes.
constexpr std::size_t kPiece = 1 << 18, kMost = 1 << 26;
}  // namespace

bool ElementarySource::next(Packet& packet) {
    std::size_t searched = 0;
    for (;;) {
        const auto waiting = std::span(buffer_).subspan(begin_, end_ - begin_);
        std::size_t length = waiting.empty() ? 0 : split_(waiting, searched);
        if (length == 0 && atEnd_) length = waiting.size();
        if (length > 0) {
            packet.data = waiting.first(length);
            packet.position = done();
            begin_ += length;
            return true;
        }
        if (atEnd_) return false;
        if (waiting.size() >= kMost)
            throw std::runtime_error(file_.name() + ": no end of a unit in " + std::to_string(kMost >> 20) +
                                     " MB from byte " + std::to_string(done()) + " on");
        std::copy(waiting.begin(), waiting.end(), buffer_.begin());
        end_ -= begin_;
        begin_ = 0;
        if (buffer_.size() < end_ + kPiece) buffer_.resize(std::max(2 * end_, end_ + kPiece));
        const std::size_t n = file_.read(std::span(buffer_).subspan(end_));
        end_ += n;
        atEnd_ = n == 0;
    }
}

}  // namespace vekapp
