// H.264 streams made of good ones (stream_maker.h) through the decoder, picture memory between forbidden pages. The
// bytes tell how to make the stream.
//
// Without libFuzzer it is a program: vekdec_structure_fuzz COUNT [SEED] makes so many streams, the first one from SEED,
// the next from SEED + 1 and so on.
#include <cstdio>
#include <cstdlib>

#include "decode_anything.h"
#include "frames/sample_memory.h"
#include "stream_maker.h"

namespace {

using vekapp::MemoryMode;

// The project's streams, and those of one more folder.
const vekvc_fuzz::StreamMaker& streamMaker() {
    static const vekvc_fuzz::StreamMaker maker = [] {
        const std::string streams = VEKVC_SOURCE_DIR "/tests/streams/";
        std::vector<std::string> others = {streams + "forged"};
        if (const char* more = std::getenv("VEKVC_FUZZ_STREAMS")) others.emplace_back(more);
        return vekvc_fuzz::StreamMaker({streams + "h264", streams + "h264_cabac"}, others);
    }();
    return maker;
}

struct Totals {
    std::size_t bytes = 0;
    long frames = 0, slices = 0, damaged = 0;
} totals;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    streamMaker();  // so that no input is blamed for it
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vekvc_fuzz::Input input(data, size);
    vekapp::setMemoryMode(input.byte() % 2 == 0 ? MemoryMode::GuardBefore : MemoryMode::GuardBehind);
    const auto stream = streamMaker().make(input);
    if (const char* name = std::getenv("VEKVC_FUZZ_KEEP"))  // to look at a finding
        if (std::FILE* file = std::fopen(name, "wb")) {
            std::fwrite(stream.data(), 1, stream.size(), file);
            std::fclose(file);
        }
    const auto statistics = vekvc_fuzz::decodeAnything(vekvc_fuzz::formatNamed("h264"), stream);
    totals.bytes += stream.size();
    totals.frames += statistics.frames;
    totals.slices += statistics.slices;
    totals.damaged += statistics.damaged;
    return 0;
}

#ifndef VEKVC_FUZZ
int main(int argc, char** argv) {
    const long count = argc > 1 ? std::atol(argv[1]) : 2000, seed = argc > 2 ? std::atol(argv[2]) : 1;
    for (long i = 0; i < count; ++i) {
        std::uint64_t state = static_cast<std::uint64_t>(seed + i) * 0x9E3779B97F4A7C15u;
        const auto next = [&] {  // splitmix64
            std::uint64_t z = state += 0x9E3779B97F4A7C15u;
            z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
            z = (z ^ z >> 27) * 0x94D049BB133111EBu;
            return z ^ z >> 31;
        };
        std::vector<std::uint8_t> recipe(16 + next() % 512);
        for (auto& byte : recipe) byte = static_cast<std::uint8_t>(next());
        LLVMFuzzerTestOneInput(recipe.data(), recipe.size());
    }
    std::printf("%ld streams of %zu parts: %zu bytes, %ld slices, %ld frames, %ld reports\n", count,
                streamMaker().streams(), totals.bytes, totals.slices, totals.frames, totals.damaged);
    // Streams of which nothing, or everything, can be decoded find nothing.
    return totals.frames > count && totals.damaged > count ? 0 : 1;
}
#endif
