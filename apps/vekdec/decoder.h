// The one interface between the application and the decoders of the standards, and the list of these.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "frames/frame.h"
#include "report/statistics.h"
#include "show/blocks.h"
#include "source/packet.h"

namespace vekdec {

using namespace vekapp;

// Where a decoder's frames and sentences go.
struct Sinks {
    std::function<void(const Frame&)> frame;         // in output order; valid during the call
    std::function<void(const std::string&)> report;  // one sentence per damaged slice or what it is
};

class Decoder {
  public:
    virtual ~Decoder() = default;
    // Decodes what is in the packet: any number of the standard's units. Damage is reported, never thrown; what the
    // decoder does not do is reported too and left out.
    virtual void decode(const Packet& packet) = 0;
    // Gives out the frames that wait for others, at the end of the stream.
    virtual void flush() = 0;
    virtual Statistics statistics() const = 0;
    // The blocks of the frame that is being given out; for calls from Sinks::frame.
    virtual BlockMap blocks(const Frame& frame) const = 0;
};

// Filters of the shown pictures; references stay as the standard has them.
struct PostProcessing {
    bool deblock = false, dering = false;
};

// What the command line offers to every decoder; each takes what it knows.
struct DecoderOptions {
    StreamInfo stream;              // what the container says
    bool interleaved = false;       // give out Cb Y Cr Y; of formats with Format::interleaves
    int zoom = 1;                   // and reduced so many times: 1, 2, 4, 8
    PostProcessing postProcessing;  // of formats with Format::postProcesses
    int threads = 1;                // of formats with Format::threaded
};

// The decoder that Format::make gives.
template <class StreamDecoder>
std::unique_ptr<Decoder> makeDecoder(Sinks sinks, const DecoderOptions& options) {
    return std::make_unique<StreamDecoder>(std::move(sinks), options);
}

struct Format {
    const char* name;                     // as --format takes it
    const char* what;                     // a line for --formats
    std::span<const char* const> codecs;  // libavcodec's names of it in containers
    // How surely a raw stream with this beginning is of the format: 0 not at all, 100 without doubt.
    int (*probe)(std::span<const std::uint8_t> begin);
    SplitPacket split;  // of raw streams
    std::unique_ptr<Decoder> (*make)(Sinks sinks, const DecoderOptions& options);
    bool interleaves = false;
    bool postProcesses = false;
    bool threaded = false;
};

// Looking at more of a stream tells no more.
inline constexpr std::size_t kProbeBytes = 1 << 20;

std::span<const Format> formats();

}  // namespace vekdec
