// vekdec: decodes video with nothing but the exports of vekvc, and shows what it decoded.
#include <cxxabi.h>
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "h264/decoder.h"
#include "h264/overlay.h"
#include "image.h"
#include "output.h"
#include "progress.h"

namespace {

using namespace vekdec;

constexpr int kOk = 0, kDamaged = 1, kCannot = 2;
constexpr char kNoMemory[] = "vekdec: not enough memory\n";

struct Options {
    std::string input, output, check, pngDirectory, sheet, memory;
    Overlay overlay = Overlay::None;
    bool md5 = false, stats = false, quiet = false;
    long frames = -1, skip = 0;
    int bench = 0;
};

// The whole stream; what does not begin like one is not read on, for a device may never end.
std::vector<std::uint8_t> readStream(const std::string& name) {
    std::FILE* file = name == "-" ? stdin : std::fopen(name.c_str(), "rb");
    if (file == nullptr) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    const auto closed = [](std::FILE* f) {
        if (f != stdin) std::fclose(f);
    };
    const std::unique_ptr<std::FILE, decltype(closed)> owner(file, closed);
    std::setvbuf(file, nullptr, _IONBF, 0);  // the chunks below are large
    std::vector<std::uint8_t> bytes;
    bool known = false;
    const auto sniff = [&] {
        if (!h264::looksLikeH264(bytes))
            throw std::runtime_error(name +
                                     " is no video stream that vekdec knows (H.264 in a byte stream with start codes)");
        known = true;
        std::error_code unknown;  // of a pipe
        const auto size = std::filesystem::file_size(name, unknown);
        if (!unknown) bytes.reserve(size);
    };
    std::uint8_t chunk[1 << 16];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;) {
        bytes.insert(bytes.end(), chunk, chunk + n);
        if (!known && bytes.size() >= h264::kBytesToKnow) sniff();
    }
    if (std::ferror(file) != 0) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    if (bytes.empty()) throw std::runtime_error(name + " is empty");
    if (!known) sniff();
    return bytes;
}

// Sentences about damage. They wait until a frame shows that anything could be decoded at all; after the first ten they
// are counted only.
class Reports {
  public:
    explicit Reports(const std::string& name) : name_(name) {}
    void add(const std::string& sentence) {
        if (++count_ > kMost) return;
        first_.push_back(sentence);
        if (released_) print(sentence);
    }
    void release() {
        if (!released_)
            for (const std::string& sentence : first_) print(sentence);
        released_ = true;
    }
    void finish() {
        release();
        if (count_ > kMost) print("and " + std::to_string(count_ - kMost) + " more such reports");
    }
    // Why nothing was decoded, as far as the stream told.
    std::string reason() const { return first_.empty() ? "" : ": " + first_.front(); }

  private:
    static constexpr long kMost = 10;
    void print(const std::string& sentence) { std::fprintf(stderr, "%s: %s\n", name_.c_str(), sentence.c_str()); }

    const std::string& name_;
    std::vector<std::string> first_;
    long count_ = 0;
    bool released_ = false;
};

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
    Reports reports(options.input);
    long shown = 0;
    const auto sink = [&](const Frame& frame) {
        reports.release();
        if (frame.number < options.skip || (options.frames >= 0 && frame.number - options.skip >= options.frames))
            return;
        ++shown;
        for (auto& output : outputs) output->add(frame);
    };
    h264::Decoder decoder(sink, [&](const std::string& sentence) { reports.add(sentence); });
    decoder.decode(stream, [&](std::size_t done) {
        progress.show(shown, done, stream.size());
        return options.frames < 0 || shown < options.frames;
    });
    const h264::Statistics& statistics = decoder.statistics();
    if (statistics.frames == 0 && options.frames != 0)
        throw std::runtime_error(options.input + ": nothing could be decoded" + reports.reason());
    reports.finish();
    bool good = statistics.damagedSlices == 0;
    if (shown == 0 && options.frames != 0) {
        std::fprintf(stderr, "%s: no frame is left behind the first %ld: it has %ld\n", options.input.c_str(),
                     options.skip, statistics.frames);
        good = false;
    }
    for (auto& output : outputs) good = output->finish() && good;
    if (options.stats) printStatistics(statistics);
    return good ? kOk : kDamaged;
}

int benchmark(const Options& options, const std::vector<std::uint8_t>& stream) {
    double best = 0;
    bool good = true;
    for (int i = 0; i < options.bench; ++i) {
        std::string reason;
        h264::Decoder decoder([](const Frame&) {},
                              [&](const std::string& sentence) {
                                  if (reason.empty()) reason = ": " + sentence;
                              });
        decoder.decode(stream);
        const h264::Statistics& statistics = decoder.statistics();
        if (statistics.frames == 0) throw std::runtime_error(options.input + ": nothing could be decoded" + reason);
        const double rate = static_cast<double>(statistics.frames) / statistics.secondsTotal;
        std::printf("%ld frames in %.3f s: %.1f frames per second\n", statistics.frames, statistics.secondsTotal, rate);
        if (rate > best) best = rate;
        if (i + 1 == options.bench && options.stats) printStatistics(statistics);
        good = good && statistics.damagedSlices == 0;
    }
    std::printf("best: %.1f frames per second\n", best);
    return good ? kOk : kDamaged;
}

int run(const Options& options) {
    if (options.memory == "before") h264::setMemoryMode(h264::MemoryMode::GuardBefore);
    if (options.memory == "behind") h264::setMemoryMode(h264::MemoryMode::GuardBehind);
    const auto stream = readStream(options.input);
    return options.bench > 0 ? benchmark(options, stream) : decodeOnce(options, stream);
}

std::string versionText() {
    const VekLibraryVersion* v = vekvcGetLibVersion();
    return std::string("vekdec on ") + v->libraryName + ", version " + v->versionText;
}

// A number from `least` on; one sentence otherwise.
CLI::Validator numberFrom(long least) {
    return CLI::Validator(
        [least](std::string& text) {
            long number = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
            const bool good = error == std::errc() && end == text.data() + text.size() && number >= least;
            return good ? std::string() : text + " is no whole number from " + std::to_string(least) + " on";
        },
        "");
}

// What the options say, or nothing if the program is to end with `status` at once.
bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app(
        "Decodes an H.264 byte stream (CAVLC; Baseline, Extended, Main and High up to 4:2:2 and 10 bits) bit-exactly.\n"
        "Examples:\n"
        "  vekdec clip.264 -o clip.y4m                       decode to a file that players open\n"
        "  vekdec clip.264 --sheet clip.png --overlay mb     look at it: a contact sheet with macroblock types\n"
        "  vekdec clip.264 --check clip.md5                  compare every frame with known checksums\n"
        "Exit status: 0 all is well, 1 damaged slices, differing or missing frames, 2 nothing could be decoded, or "
        "the\n"
        "work broke off (an output that cannot be written, no memory).",
        "vekdec");
    const CLI::Validator named([](std::string& name) { return std::string(name.empty() ? "the name is empty" : ""); },
                               "");
    app.add_option("INPUT", options.input, "the stream; - is standard input")->required()->check(named);
    auto* output =
        app.add_option("-o,--output", options.output,
                       "write the frames: NAME.y4m, or planar samples in any other name (more than 8 bits: 16-bit "
                       "little endian words); - is standard output; frames of another size begin NAME-2.y4m")
            ->check(named);
    auto* md5 = app.add_flag("--md5", options.md5, "print the MD5 of every frame");
    auto* check =
        app.add_option("--check", options.check, "compare the frames with a list of MD5s; names the first that differs")
            ->check(named);
    auto* png =
        app.add_option("--png", options.pngDirectory, "write every frame as a PNG into this folder")->check(named);
    auto* sheet =
        app.add_option("--sheet", options.sheet, "write a contact sheet of evenly spaced frames (PNG)")->check(named);
    app.add_option("--overlay", options.overlay,
                   "draw on the PNGs and the sheet: mb macroblock types, mv motion vectors, qp quantizers")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Overlay>{
            {"mb", Overlay::MacroblockTypes}, {"mv", Overlay::MotionVectors}, {"qp", Overlay::Qp}}));
    auto* frames = app.add_option("--frames", options.frames, "stop after so many frames")->check(numberFrom(0));
    auto* skip = app.add_option("--skip", options.skip, "leave out the first frames (they are decoded, not written)")
                     ->check(numberFrom(0));
    app.add_flag("--stats", options.stats, "say what the stream was made of and where the time went");
    auto* bench =
        app.add_option("--bench", options.bench, "decode so many times without output and tell the frames per second")
            ->check(numberFrom(1));
    app.add_flag("-q,--quiet", options.quiet, "no progress bar");
    app.add_option("--guard", options.memory,
                   "for tests: picture memory between forbidden pages, right `before` or `behind` it")
        ->check(CLI::IsMember({"before", "behind"}));
    app.set_version_flag("--version", versionText);
    try {
        app.parse(argc, argv);
        if (options.overlay != Overlay::None && options.pngDirectory.empty() && options.sheet.empty())
            throw CLI::ValidationError("--overlay", "draws on pictures: give --png or --sheet too");
        if (options.output == "-" && (options.md5 || !options.check.empty()))
            throw CLI::ValidationError("-o -", "fills standard output, where --md5 and --check write too");
        for (const CLI::Option* other : {output, md5, check, png, sheet, frames, skip})
            if (bench->count() > 0 && other->count() > 0)
                throw CLI::ValidationError("--bench", "writes nothing and decodes all: no " + other->get_name());
        return true;
    } catch (const CLI::ParseError& e) {
        status = app.exit(e) == 0 ? kOk : kCannot;
        return false;
    }
}

// What comes before main, the static objects of libraries, ends like the rest where there is no memory.
[[gnu::constructor(101)]] void setTerminate() {
    std::set_terminate([] {
        const std::type_info* thrown = abi::__cxa_current_exception_type();
        if (thrown == nullptr || *thrown != typeid(std::bad_alloc)) std::abort();
        std::fputs(kNoMemory, stderr);
        _exit(kCannot);
    });
}

// Where a standard stream is closed, the next file opened would take its place and get what is meant for it. An end
// that cannot be used takes it instead.
bool holdStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(fd, F_GETFD) == -1 && open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) return false;
    return true;
}

// All that was printed has arrived.
bool closeStandardOutput() {
    const bool failed = std::ferror(stdout) != 0;
    return std::fclose(stdout) == 0 && !failed;
}

}  // namespace

int main(int argc, char** argv) {
    if (!holdStandardStreams()) return kCannot;
    static char printed[1 << 14];
    std::setvbuf(stdout, printed, isatty(STDOUT_FILENO) != 0 ? _IOLBF : _IOFBF, sizeof printed);
    int status = kCannot;
    try {
        Options options;
        if (parseOptions(argc, argv, options, status)) status = run(options);
        if (status != kCannot && !closeStandardOutput()) throw std::runtime_error("cannot write standard output");
        return status;
    } catch (const std::bad_alloc&) {
        std::fputs(kNoMemory, stderr);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vekdec: %s\n", e.what());
    }
    return kCannot;
}
