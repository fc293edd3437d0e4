#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "vekvc.h"

namespace vekdec {
namespace {

using vekapp::Overlay;

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

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& status) {
    CLI::App app(
        "Decodes video bit-exactly: raw streams, and what containers (mp4, mkv, avi, ts and others) hold of them.\n"
        "Examples:\n"
        "  vekdec clip.264 -o clip.y4m                       decode to a file that players open\n"
        "  vekdec clip.mp4 --sheet clip.png --overlay mb     look at it: a contact sheet with macroblock types\n"
        "  vekdec clip.264 --check clip.md5                  compare every frame with known checksums\n"
        "  vekdec --formats                                  what it decodes\n"
        "Exit status: 0 all is well, 1 damaged slices, differing or missing frames, 2 nothing could be decoded, or\n"
        "the work broke off (an output that cannot be written, no memory).",
        "vekdec");
    const CLI::Validator named([](std::string& name) { return std::string(name.empty() ? "the name is empty" : ""); },
                               "");
    auto* input = app.add_option("INPUT", options.input, "the stream; - is standard input")->check(named);
    app.add_option("--format", options.format, "take the stream for this format (see --formats)")->check(named);
    app.add_flag("--formats", options.listFormats, "list the formats");
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
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Overlay>{{"mb", Overlay::Kinds}, {"mv", Overlay::Vectors}, {"qp", Overlay::Qp}}));
    auto* frames = app.add_option("--frames", options.frames, "stop after so many frames")->check(numberFrom(0));
    auto* skip = app.add_option("--skip", options.skip, "leave out the first frames (they are decoded, not written)")
                     ->check(numberFrom(0));
    app.add_flag("--interleaved", options.interleaved, "DV: write bytes Cb Y Cr Y instead of planes");
    app.add_option("--zoom", options.zoom, "DV: write them reduced 2, 4 or 8 times")
        ->check(CLI::IsMember({1, 2, 4, 8}));
    const std::map<std::string, PostProcessing> filters{
        {"deblock", {true, false}}, {"dering", {false, true}}, {"both", {true, true}}};
    app.add_option_function<std::string>(
           "--postprocess", [&](const std::string& name) { options.postProcessing = filters.at(name); },
           "MPEG-4, H.263, H.261: filter the shown pictures: deblock block edges, dering, or both")
        ->check(CLI::IsMember({"deblock", "dering", "both"}));
    app.add_option("--threads", options.threads,
                   "decode so many pictures at a time (H.263, H.261: one); as the machine has processors")
        ->check(CLI::Range(1, 64));
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
        if (!options.listFormats && input->count() == 0) throw CLI::RequiredError("INPUT");
        if (options.overlay != Overlay::None && options.pngDirectory.empty() && options.sheet.empty())
            throw CLI::ValidationError("--overlay", "draws on pictures: give --png or --sheet too");
        if (options.output == "-" && (options.md5 || !options.check.empty()))
            throw CLI::ValidationError("-o -", "fills standard output, where --md5 and --check write too");
        for (const CLI::Option* other : {output, md5, check, png, sheet, frames, skip})
            if (bench->count() > 0 && other->count() > 0)
                throw CLI::ValidationError("--bench", "writes nothing and decodes all: no " + other->get_name());
        if (options.bench > 1 && options.input == "-")
            throw CLI::ValidationError("--bench", "reads the stream several times: standard input cannot be");
        return true;
    } catch (const CLI::ParseError& e) {
        status = app.exit(e) == 0 ? kOk : kCannot;
        return false;
    }
}

}  // namespace vekdec
