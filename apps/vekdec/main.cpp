// vekdec: decodes video with nothing but the exports of vekvc, and shows what it decoded.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <stdexcept>

#include "h264/decoder.h"
#include "h264/overlay.h"
#include "image.h"
#include "output.h"
#include "progress.h"

namespace {

using namespace vekdec;

constexpr int kOk = 0, kDamaged = 1, kCannot = 2;

struct Options {
    std::string input, output, check, pngDirectory, sheet, memory;
    Overlay overlay = Overlay::None;
    bool md5 = false, stats = false, quiet = false;
    long frames = -1, skip = 0;
    int bench = 0;
};

std::vector<std::uint8_t> readFile(const std::string& name) {
    std::FILE* file = name == "-" ? stdin : std::fopen(name.c_str(), "rb");
    if (file == nullptr) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    std::vector<std::uint8_t> bytes;
    std::error_code unknown;  // of a pipe
    const auto size = std::filesystem::file_size(name, unknown);
    if (!unknown) bytes.reserve(size);
    std::uint8_t chunk[1 << 16];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;)
        bytes.insert(bytes.end(), chunk, chunk + n);
    const bool failed = std::ferror(file) != 0;
    const int error = errno;
    if (file != stdin) std::fclose(file);
    if (failed) throw std::runtime_error("cannot read " + name + ": " + std::strerror(error));
    return bytes;
}

std::vector<std::unique_ptr<FrameOutput>> makeOutputs(const Options& options) {
    std::vector<std::unique_ptr<FrameOutput>> outputs;
    if (!options.output.empty()) outputs.push_back(makeVideoOutput(options.output));
    if (options.md5) outputs.push_back(makeMd5Output());
    if (!options.check.empty()) outputs.push_back(makeMd5Check(options.check));
    if (!options.pngDirectory.empty())
        outputs.push_back(makePngOutput(options.pngDirectory, options.overlay, h264::drawOverlay));
    if (!options.sheet.empty()) outputs.push_back(makeSheetOutput(options.sheet, options.overlay, h264::drawOverlay));
    return outputs;
}

void printStatistics(const h264::Statistics& s) {
    static const char* const kKinds[] = {"lost", "Intra 4x4", "Intra 8x8", "Intra 16x16", "I_PCM", "inter"};
    long all = 0;
    for (const long count : s.macroblocks) all += count;
    const auto share = [&](double part) { return s.secondsTotal > 0 ? 100 * part / s.secondsTotal : 0.0; };
    std::fprintf(stderr, "%ld frames, %ld pictures, %ld slices (%ld damaged), %llu bits, %.1f bits per macroblock\n",
                 s.frames, s.pictures, s.slices, s.damagedSlices, static_cast<unsigned long long>(s.bits),
                 all > 0 ? static_cast<double>(s.bits) / static_cast<double>(all) : 0.0);
    std::fprintf(stderr, "macroblocks: %ld", all);
    for (std::size_t i = 0; i < std::size(kKinds); ++i)
        if (s.macroblocks[i] > 0)
            std::fprintf(stderr, ", %s %.1f %%", kKinds[i],
                         100.0 * static_cast<double>(s.macroblocks[i]) / static_cast<double>(all));
    std::fprintf(stderr, " (of all, skipped %.1f %%)\n",
                 all > 0 ? 100.0 * static_cast<double>(s.skipped) / static_cast<double>(all) : 0.0);
    std::fprintf(stderr,
                 "time: macroblocks %.1f %%, deblocking %.1f %%, the rest %.1f %% (parsing of headers, output)\n",
                 share(s.secondsParsing), share(s.secondsDeblocking),
                 share(s.secondsTotal - s.secondsParsing - s.secondsDeblocking));
}

int decodeOnce(const Options& options, const std::vector<std::uint8_t>& stream) {
    auto outputs = makeOutputs(options);
    Progress progress(!options.quiet && options.output != "-" && !options.md5);
    long shown = 0;
    const auto sink = [&](const Frame& frame) {
        if (frame.number < options.skip || (options.frames >= 0 && frame.number >= options.skip + options.frames))
            return;
        ++shown;
        for (auto& output : outputs) output->add(frame);
    };
    h264::Decoder decoder(sink, [&](const std::string& sentence) {
        std::fprintf(stderr, "%s: %s\n", options.input.c_str(), sentence.c_str());
    });
    decoder.decode(stream, [&](std::size_t done) {
        progress.show(shown, done, stream.size());
        return options.frames < 0 || shown < options.frames;
    });
    bool good = true;
    for (auto& output : outputs) good = output->finish() && good;
    if (options.stats) printStatistics(decoder.statistics());
    return good && decoder.statistics().damagedSlices == 0 ? kOk : kDamaged;
}

int benchmark(const Options& options, const std::vector<std::uint8_t>& stream) {
    double best = 0;
    for (int i = 0; i < options.bench; ++i) {
        h264::Decoder decoder([](const Frame&) {}, [](const std::string&) {});
        decoder.decode(stream);
        const double rate = static_cast<double>(decoder.statistics().frames) / decoder.statistics().secondsTotal;
        std::printf("%ld frames in %.3f s: %.1f frames per second\n", decoder.statistics().frames,
                    decoder.statistics().secondsTotal, rate);
        if (rate > best) best = rate;
        if (i + 1 == options.bench && options.stats) printStatistics(decoder.statistics());
    }
    std::printf("best: %.1f frames per second\n", best);
    return kOk;
}

int run(const Options& options) {
    if (options.memory == "before") h264::setMemoryMode(h264::MemoryMode::GuardBefore);
    if (options.memory == "behind") h264::setMemoryMode(h264::MemoryMode::GuardBehind);
    const auto stream = readFile(options.input);
    if (stream.empty()) throw std::runtime_error(options.input + " is empty");
    if (!h264::looksLikeH264(stream))
        throw std::runtime_error(options.input +
                                 " is no video stream that vekdec knows (H.264 in a byte stream with start codes)");
    return options.bench > 0 ? benchmark(options, stream) : decodeOnce(options, stream);
}

std::string versionText() {
    const VekLibraryVersion* v = vekvcGetLibVersion();
    return std::string("vekdec on ") + v->libraryName + ", version " + v->versionText;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Decodes an H.264 byte stream (CAVLC; Baseline, Extended, Main and High up to 4:2:2 and 10 bits) bit-exactly.\n"
        "Examples:\n"
        "  vekdec clip.264 -o clip.y4m                       decode to a file that players open\n"
        "  vekdec clip.264 --sheet clip.png --overlay mb     look at it: a contact sheet with macroblock types\n"
        "  vekdec clip.264 --check clip.md5                  compare every frame with known checksums\n"
        "Exit status: 0 all is well, 1 damaged slices or differing frames, 2 nothing could be decoded.",
        "vekdec");
    app.add_option("INPUT", options.input, "the stream; - is standard input")->required();
    app.add_option("-o,--output", options.output,
                   "write the frames: NAME.y4m, or planar samples in any other name (more than 8 bits: 16-bit little "
                   "endian words); - is standard output");
    app.add_flag("--md5", options.md5, "print the MD5 of every frame");
    app.add_option("--check", options.check, "compare the frames with a list of MD5s; names the first that differs");
    app.add_option("--png", options.pngDirectory, "write every frame as a PNG into this folder");
    app.add_option("--sheet", options.sheet, "write a contact sheet of evenly spaced frames (PNG)");
    app.add_option("--overlay", options.overlay,
                   "draw on the PNGs and the sheet: mb macroblock types, mv motion vectors, qp quantizers")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Overlay>{
            {"mb", Overlay::MacroblockTypes}, {"mv", Overlay::MotionVectors}, {"qp", Overlay::Qp}}));
    app.add_option("--frames", options.frames, "stop after so many frames")->check(CLI::NonNegativeNumber);
    app.add_option("--skip", options.skip, "leave out the first frames (they are decoded, not written)")
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--stats", options.stats, "say what the stream was made of and where the time went");
    app.add_option("--bench", options.bench, "decode so many times without output and tell the frames per second")
        ->check(CLI::PositiveNumber);
    app.add_flag("-q,--quiet", options.quiet, "no progress bar");
    app.add_option("--guard", options.memory,
                   "for tests: picture memory between forbidden pages, right `before` or `behind` it")
        ->check(CLI::IsMember({"before", "behind"}));
    app.set_version_flag("--version", versionText);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kOk : kCannot;
    }
    try {
        return run(options);
    } catch (const h264::NotSupported& e) {
        std::fprintf(stderr, "%s: vekdec does not decode %s\n", options.input.c_str(), e.what());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: not enough memory\n", options.input.c_str());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vekdec: %s\n", e.what());
    }
    return kCannot;
}
