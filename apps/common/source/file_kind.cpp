#include "source/file_kind.h"

#include <algorithm>
#include <string_view>

namespace vekapp {
namespace {

using namespace std::string_view_literals;

struct Magic {
    std::size_t at;
    std::string_view bytes;
    const char* name;
    bool container;
};
constexpr Magic kMagics[] = {
    {4, "ftyp"sv, "an MP4 or QuickTime file", true},
    {4, "moov"sv, "a QuickTime file", true},
    {4, "mdat"sv, "a QuickTime file", true},
    {4, "wide"sv, "a QuickTime file", true},
    {0, "\x1a\x45\xdf\xa3"sv, "a Matroska or WebM file", true},
    {8, "AVI "sv, "an AVI file", true},
    {0, "\x30\x26\xb2\x75\x8e\x66\xcf\x11"sv, "an ASF or WMV file", true},
    {0, "\x06\x0e\x2b\x34"sv, "an MXF file", true},
    {0, "\0\0\1\xba"sv, "an MPEG program stream", true},
    {0, "OggS"sv, "an Ogg file", true},
    {0, "FLV\1"sv, "a Flash video", true},
    {8, "WAVE"sv, "a WAV sound", false},
    {0, "\x89PNG\r\n\x1a\n"sv, "a PNG picture", false},
    {0, "\xff\xd8\xff"sv, "a JPEG picture", false},
    {0, "GIF8"sv, "a GIF picture", false},
    {8, "WEBP"sv, "a WebP picture", false},
    {0, "BM"sv, "a BMP picture", false},
    {0, "II*\0"sv, "a TIFF picture", false},
    {0, "MM\0*"sv, "a TIFF picture", false},
    {0, "YUV4MPEG2 "sv, "uncompressed video (y4m)", false},
    {0, "DKIF"sv, "an IVF file (VP8, VP9 or AV1)", false},
    {0, "ID3"sv, "an MP3 sound", false},
    {0, "fLaC"sv, "a FLAC sound", false},
    {0, "%PDF"sv, "a PDF document", false},
    {0, "PK\3\4"sv, "a ZIP archive", false},
    {0, "\x1f\x8b"sv, "a gzip archive", false},
    {0,
     "\xfd"
     "7zXZ\0"sv,
     "an xz archive", false},
    {0, "7z\xbc\xaf"sv, "a 7-Zip archive", false},
    {0,
     "\x7f"
     "ELF"sv,
     "a program", false},
    {0, "<?xml"sv, "an XML document", false},
    {0, "<!DOCTYPE html"sv, "a web page", false},
};

// Packets of `length` bytes of which the one at `at` is the sync byte.
bool isTransportStream(std::span<const std::uint8_t> begin, std::size_t length, std::size_t at) {
    if (begin.size() < 3 * length) return false;
    for (std::size_t i = at; i < std::min(begin.size(), 8 * length); i += length)
        if (begin[i] != 0x47) return false;
    return true;
}

bool isText(std::span<const std::uint8_t> begin) {
    const auto some = begin.first(std::min<std::size_t>(begin.size(), 4096));
    return std::all_of(some.begin(), some.end(),
                       [](std::uint8_t c) { return c >= 32 || c == '\n' || c == '\r' || c == '\t'; });
}

}  // namespace

FileKind kindOf(std::span<const std::uint8_t> begin) {
    const std::string_view text(reinterpret_cast<const char*>(begin.data()), begin.size());
    for (const Magic& magic : kMagics)
        if (text.size() >= magic.at && text.substr(magic.at).starts_with(magic.bytes))
            return {magic.name, magic.container};
    if (isTransportStream(begin, 188, 0) || isTransportStream(begin, 192, 4)) return {"an MPEG transport stream", true};
    if (!begin.empty() && isText(begin)) return {"a text", false};
    return {};
}

}  // namespace vekapp
