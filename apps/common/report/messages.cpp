#include "report/messages.h"

#include <cstdio>

namespace vekapp {

void Messages::print(const std::string& sentence) const {
    std::fprintf(stderr, "%s: %s\n", name_.c_str(), sentence.c_str());
}

void Messages::add(const std::string& sentence) {
    if (++count_ > kMost) return;
    first_.push_back(sentence);
    if (released_) print(sentence);
}

void Messages::release() {
    if (!released_)
        for (const std::string& sentence : first_) print(sentence);
    released_ = true;
}

void Messages::finish() {
    release();
    if (count_ > kMost) print("and " + std::to_string(count_ - kMost) + " more such reports");
}

}  // namespace vekapp
