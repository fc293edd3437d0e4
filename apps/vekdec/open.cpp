#include "open.h"

#include <algorithm>
#include <stdexcept>

#include "source/container.h"
#include "source/elementary.h"
#include "source/file_kind.h"

namespace vekdec {
namespace {

const Format* formatOfCodec(const std::string& codec) {
    for (const Format& format : formats())
        if (std::any_of(format.codecs.begin(), format.codecs.end(), [&](const char* c) { return codec == c; }))
            return &format;
    return nullptr;
}

const Format* formatNamed(const std::string& name) {
    for (const Format& format : formats())
        if (name == format.name) return &format;
    throw std::runtime_error("no format is named " + name + "; --formats lists them");
}

const Format* probe(std::span<const std::uint8_t> begin) {
    const Format* best = nullptr;
    int surest = 0;
    for (const Format& format : formats())
        if (const int sure = format.probe(begin); sure > surest) {
            surest = sure;
            best = &format;
        }
    return best;
}

std::string knownFormats() {
    std::string names;
    for (const Format& format : formats()) names += (names.empty() ? "" : ", ") + std::string(format.name);
    return names;
}

}  // namespace

OpenStream openStream(const std::string& name, const std::string& format) {
    OpenStream stream;
    stream.file = std::make_unique<InputFile>(name);
    if (!format.empty()) stream.format = formatNamed(format);
    const auto begin = stream.file->begin(kProbeBytes);
    if (begin.empty()) throw std::runtime_error(name + " is empty");
    const FileKind kind = kindOf(begin);
    if (kind.container) {
        stream.source = openContainer(*stream.file, kind.name,
                                      [](const std::string& codec) { return formatOfCodec(codec) != nullptr; });
        const std::string& codec = stream.source->info().codec;
        if (stream.format == nullptr) stream.format = formatOfCodec(codec);
        if (stream.format == nullptr)
            throw std::runtime_error(name + ": the video is " + codec + ", which vekdec does not decode (" +
                                     knownFormats() + ")");
        return stream;
    }
    if (stream.format == nullptr) stream.format = probe(begin);
    if (stream.format == nullptr)
        throw std::runtime_error(name + " is " + (kind.name.empty() ? "nothing" : kind.name + ", nothing") +
                                 " that vekdec decodes (" + knownFormats() + ")");
    stream.source = std::make_unique<ElementarySource>(*stream.file, stream.format->split);
    return stream;
}

}  // namespace vekdec
