// What a file is, told from its first bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vekapp {

struct FileKind {
    std::string name;        // with its article, as in "a PNG picture"; empty: not known
    bool container = false;  // one that may hold video
};
FileKind kindOf(std::span<const std::uint8_t> begin);

}  // namespace vekapp
