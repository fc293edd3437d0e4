// How the steps of a decoder give up.
#pragma once

#include <stdexcept>

namespace vekdec {

// The stream says something that its standard forbids, or that the stream's end cuts off.
struct BadSyntax : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// The stream uses a part of its standard that the decoder does not do; the sentence names it.
struct NotSupported : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace vekdec
