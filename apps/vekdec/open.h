// From a file's name to packets and the format whose decoder takes them.
#pragma once

#include <memory>
#include <string>

#include "decoder.h"
#include "source/input_file.h"

namespace vekdec {

struct OpenStream {
    std::unique_ptr<InputFile> file;
    std::unique_ptr<Source> source;
    const Format* format = nullptr;
};

// `format` forces a decoder; empty: the file tells. Throws std::runtime_error with a sentence where no decoder takes
// it.
OpenStream openStream(const std::string& name, const std::string& format);

}  // namespace vekdec
