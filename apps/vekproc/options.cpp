#include "options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <thread>

namespace vekproc {
namespace {

std::string versionText() {
    const VekLibraryVersion* v = vekvcGetLibVersion();
    return std::string("vekproc on ") + v->libraryName + ", version " + v->versionText;
}

template <class T>
struct Choice {
    const char* name;
    T value;
};

// An option that takes one of a few words.
template <class T, std::size_t n>
CLI::Option* addChoice(CLI::App& app, const char* flags, T& value, const Choice<T> (&choices)[n],
                       const std::string& what) {
    std::map<std::string, T> byName;
    std::vector<std::string> names;
    for (const Choice<T>& choice : choices) {
        byName[choice.name] = choice.value;
        names.emplace_back(choice.name);
    }
    return app
        .add_option_function<std::string>(
            flags, [&value, byName](const std::string& name) { value = byName.at(name); }, what)
        ->check(CLI::IsMember(names));
}

void parseSize(const std::string& text, VekiSize& size) {
    char behind = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &size.width, &size.height, &behind) != 2 || size.width < 1 ||
        size.height < 1)
        throw CLI::ValidationError("--size", text + " is no size: WxH, such as 352x288");
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app(
        "Deinterlaces, denoises, resizes, rotates and converts uncompressed video (y4m or raw), in this order.\n"
        "Examples:\n"
        "  vekproc tape.y4m -o frames.y4m --deinterlace motion --rate field\n"
        "  vekproc dark.y4m -o clean.y4m --denoise cast --noise 5 --sheet clean.png\n"
        "  vekdec clip.264 -o - | vekproc - --size 352x288 --format yuv420 -o half.y4m --resize 1/2\n"
        "  vekproc clip.y4m -o clip.bgra --to bgra --matrix 709\n"
        "Exit status: 0 all is well, 1 the result differs from what was asked for, 2 it could not be done.",
        "vekproc");
    constexpr Choice<Layout> kFormats[] = {{"yuv420", Layout::Yuv420},
                                           {"yuv422", Layout::Yuv422},
                                           {"nv12", Layout::Nv12},
                                           {"uyvy", Layout::Uyvy},
                                           {"bgra", Layout::Bgra}};
    constexpr Choice<Layout> kTargets[] = {
        {"yuv420", Layout::Yuv420}, {"yuv422", Layout::Yuv422}, {"nv12", Layout::Nv12},    {"uyvy", Layout::Uyvy},
        {"bgra", Layout::Bgra},     {"bgr24", Layout::Bgr24},   {"bgr565", Layout::Bgr565}};
    constexpr Choice<Deinterlacing> kDeinterlacers[] = {
        {"blend", Deinterlacing::Blend},   {"edge", Deinterlacing::Edge}, {"median", Deinterlacing::Median},
        {"motion", Deinterlacing::Motion}, {"mix", Deinterlacing::Mix},   {"triangle", Deinterlacing::Triangle}};
    constexpr Choice<Denoising> kDenoisers[] = {{"adaptive", Denoising::Adaptive},
                                                {"cast", Denoising::Cast},
                                                {"mosquito", Denoising::Mosquito},
                                                {"smooth", Denoising::Smooth}};
    constexpr Choice<int> kOrders[] = {{"tff", 0}, {"bff", 1}};
    constexpr Choice<bool> kRates[] = {{"frame", false}, {"field", true}};
    constexpr Choice<int> kFactors[] = {{"1", 1}, {"1/2", 2}, {"1/4", 4}, {"1/8", 8}, {"2", -2}, {"4", -4}};
    constexpr Choice<int> kInterpolations[] = {{"nearest", 0}, {"linear", 1}, {"smooth", 2}};
    constexpr Choice<int> kMatrices[] = {{"601", 0}, {"709", 1}, {"601full", 2}, {"709full", 3}};

    app.add_option("IN", options.input, "y4m, or raw pictures one behind the other; - is standard input");
    app.add_option("-o,--output", options.output, "NAME.y4m, or raw pictures in any other name; - is standard output");
    app.add_option_function<std::string>(
        "--size", [&](const std::string& text) { parseSize(text, options.raw.size); }, "WxH of raw pictures");
    addChoice(app, "--format", options.raw.layout, kFormats, "their samples");
    auto* to = addChoice(app, "--to,--convert", options.conversion.to, kTargets,
                         "the samples of the result; as they came where nothing is said");
    addChoice(app, "--matrix", options.conversion.matrix, kMatrices,
              "between YCbCr and BGR: BT.601, BT.709, full range");
    app.add_flag("--dither", options.conversion.dither, "bgr565: spread what the lost bits held");
    addChoice(app, "--deinterlace", options.deinterlace.method, kDeinterlacers,
              "blend both fields where they comb; rebuild one field along edges, by the median, by motion or by a "
              "triangle; or mix both everywhere");
    addChoice(app, "--order", options.order, kOrders, "which field is earlier; as the file says, else top first");
    addChoice(app, "--rate", options.deinterlace.fieldRate, kRates, "a picture for each frame or for each field");
    app.add_option("--threshold", options.deinterlace.threshold, "edge: 8; median: 0")->check(CLI::Range(0, 255));
    app.add_option("--low", options.deinterlace.low, "blend: combs up to it stay")->check(CLI::Range(0, 254));
    app.add_option("--high", options.deinterlace.high, "blend: from it on they are blended wholly")
        ->check(CLI::Range(1, 255));
    addChoice(app, "--denoise", options.denoise.method, kDenoisers,
              "over time, by likeness of patches, the ringing of codecs, or a plain smoothing");
    app.add_option("--noise", options.denoise.sigma, "adaptive, cast: the noise's standard deviation")
        ->check(CLI::Range(0.0, 64.0));
    app.add_option("--frames", options.denoise.frames, "adaptive: over so many")->check(CLI::Range(1, 64));
    app.add_option("--strength", options.denoise.strength, "mosquito: the codec's quantizer scale")
        ->check(CLI::Range(0, 63));
    addChoice(app, "--resize", options.resize.factor, kFactors, "times the size");
    addChoice(app, "--interpolation", options.resize.interpolation, kInterpolations, "of --resize");
    app.add_option("--rotate", options.resize.rotation, "degrees clockwise")->check(CLI::IsMember({0, 90, 180, 270}));
    app.add_flag("--interlaced-chroma", options.conversion.interlacedChroma, "4:2:0 and 4:2:2 field by field");
    app.add_option("--sheet", options.sheet, "a PNG: source above result, and a part of both enlarged");
    app.add_option("--compare,--psnr", options.compare, "print the luma PSNR against this file");
    app.add_option("--known-answers", options.knownAnswers, "run a list of calls with known results, and nothing else");
    options.threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    app.add_option("--threads", options.threads, "so many; all processors by default")->check(CLI::Range(1, 256));
    app.add_flag("-q,--quiet", options.quiet, "no progress bar");
    app.set_version_flag("--version", versionText);
    try {
        app.parse(argc, argv);
        if (options.knownAnswers.empty() && options.input.empty()) throw CLI::RequiredError("IN");
        if (options.output == "-" && !options.compare.empty())
            throw CLI::ValidationError("-o -", "fills standard output, where --compare writes too");
        options.convert = to->count() > 0;
        return true;
    } catch (const CLI::ParseError& e) {
        status = app.exit(e) == 0 ? kOk : kCannot;
        return false;
    }
}

}  // namespace vekproc
