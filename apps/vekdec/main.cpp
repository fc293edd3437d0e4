// vekdec: decodes video with nothing but the exports of vekvc, and shows what it decoded.
#include <cxxabi.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "decoder.h"
#include "frames/sample_memory.h"
#include "open.h"
#include "options.h"
#include "output/output.h"
#include "report/messages.h"
#include "report/progress.h"
#include "show/picture_output.h"

namespace {

using namespace vekdec;

constexpr char kNoMemory[] = "vekdec: not enough memory\n";

std::vector<std::unique_ptr<FrameOutput>> makeOutputs(const Options& options, const BlocksOf& blocksOf) {
    std::vector<std::unique_ptr<FrameOutput>> outputs;
    if (!options.output.empty()) outputs.push_back(makeVideoOutput(options.output));
    if (options.md5) outputs.push_back(makeMd5Output());
    if (!options.check.empty()) outputs.push_back(makeMd5Check(options.check));
    if (!options.pngDirectory.empty())
        outputs.push_back(makePngOutput(options.pngDirectory, options.overlay, blocksOf));
    if (!options.sheet.empty()) outputs.push_back(makeSheetOutput(options.sheet, options.overlay, blocksOf));
    return outputs;
}

DecoderOptions decoderOptions(const Options& options, const OpenStream& stream) {
    if ((options.interleaved || options.zoom > 1) && !stream.format->interleaves)
        throw std::runtime_error(std::string("--interleaved and --zoom are not for ") + stream.format->name);
    if ((options.postProcessing.deblock || options.postProcessing.dering) && !stream.format->postProcesses)
        throw std::runtime_error(std::string("--postprocess is not for ") + stream.format->name);
    return {stream.source->info(), options.interleaved, options.zoom, options.postProcessing, options.threads};
}

int decodeOnce(const Options& options) {
    const OpenStream stream = openStream(options.input, options.format);
    std::unique_ptr<Decoder> decoder;
    auto outputs = makeOutputs(options, [&](const Frame& frame) { return decoder->blocks(frame); });
    Progress progress(!options.quiet && options.output != "-" && !options.md5);
    Messages messages(options.input);
    long shown = 0;
    const auto wantsMore = [&] { return options.frames < 0 || shown < options.frames; };
    const auto sink = [&](const Frame& frame) {
        messages.release();
        if (frame.number < options.skip || !wantsMore()) return;
        ++shown;
        for (auto& output : outputs) output->add(frame);
    };
    // How far the decoder is ahead of the last frame that is wanted depends on its threads.
    bool good = true;
    const auto report = [&](const std::string& sentence) {
        if (!wantsMore()) return;
        good = false;
        messages.add(sentence);
    };
    decoder = stream.format->make({sink, report}, decoderOptions(options, stream));
    Packet packet;
    while (wantsMore() && stream.source->next(packet)) {
        decoder->decode(packet);
        progress.show(shown, stream.source->done(), stream.source->total());
    }
    if (wantsMore()) decoder->flush();
    const Statistics statistics = decoder->statistics();
    if (statistics.frames == 0 && options.frames != 0)
        throw std::runtime_error(options.input + ": nothing could be decoded" + messages.reason());
    messages.finish();
    if (shown == 0 && options.frames != 0) {
        std::fprintf(stderr, "%s: no frame is left behind the first %ld: it has %ld\n", options.input.c_str(),
                     options.skip, statistics.frames);
        good = false;
    }
    for (auto& output : outputs) good = output->finish() && good;
    if (options.stats) print(statistics);
    return good ? kOk : kDamaged;
}

int benchmark(const Options& options) {
    double best = 0;
    bool good = true;
    for (int i = 0; i < options.bench; ++i) {
        const OpenStream stream = openStream(options.input, options.format);
        std::string reason;
        const auto decoder = stream.format->make({[](const Frame&) {},
                                                  [&](const std::string& sentence) {
                                                      if (reason.empty()) reason = ": " + sentence;
                                                  }},
                                                 decoderOptions(options, stream));
        for (Packet packet; stream.source->next(packet);) decoder->decode(packet);
        decoder->flush();
        const Statistics statistics = decoder->statistics();
        if (statistics.frames == 0) throw std::runtime_error(options.input + ": nothing could be decoded" + reason);
        const double rate = static_cast<double>(statistics.frames) / statistics.secondsTotal;
        std::printf("%ld frames in %.3f s: %.1f frames per second\n", statistics.frames, statistics.secondsTotal, rate);
        if (rate > best) best = rate;
        if (i + 1 == options.bench && options.stats) print(statistics);
        good = good && statistics.damaged == 0;
    }
    std::printf("best: %.1f frames per second\n", best);
    return good ? kOk : kDamaged;
}

int run(const Options& options) {
    if (options.listFormats) {
        for (const Format& format : formats()) std::printf("%-8s %s\n", format.name, format.what);
        return kOk;
    }
    if (options.memory == "before") setMemoryMode(MemoryMode::GuardBefore);
    if (options.memory == "behind") setMemoryMode(MemoryMode::GuardBehind);
    return options.bench > 0 ? benchmark(options) : decodeOnce(options);
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
