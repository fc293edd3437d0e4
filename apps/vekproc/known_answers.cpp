#include "known_answers.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "output/output.h"
#include "picture.h"

namespace vekproc {
namespace {

using Bytes = std::vector<Vek8u>;

// A line of the list.
struct Case {
    VekiSize size{};
    int seed = 0, amp = 0;
    std::map<std::string, int> arguments;

    int operator[](const std::string& name) const { return arguments.at(name); }
    int chromaWidth() const { return (size.width + 1) >> 1; }
    int chromaHeight() const { return (size.height + 1) >> 1; }
};

// ---- inputs: a texture with a disc that moves in time, and noise

std::uint32_t hash(std::uint32_t v) {
    v ^= v >> 16;
    v *= 0x7feb352d;
    v ^= v >> 15;
    v *= 0x846ca68b;
    return v ^ v >> 16;
}

std::uint32_t wrapped(int x) { return static_cast<std::uint32_t>(x); }
Vek8u limited(int v) { return static_cast<Vek8u>(v < 0 ? 0 : v > 255 ? 255 : v); }

Vek8u sampleAt(int x, int y, int seed, int amp, int t) {
    const int phase = (5 * x + 3 * y + 11 * t + 17 * seed) & 511;
    int v = phase < 256 ? phase : 511 - phase;
    const int dx = x - 8 - 3 * t, dy = y - 6 - t;
    if (dx * dx + dy * dy < 30) v = 255 - v;
    if (((x + 2 * t) & 15) < 3 && (y & 8) != 0) v >>= 1;
    if (amp > 0) {
        const std::uint32_t r = hash(wrapped(seed) * 1000003u + wrapped(t) * 8191u + wrapped(y) * 131071u + wrapped(x));
        v += static_cast<int>(r % wrapped(2 * amp + 1)) - amp;
    }
    return limited(v);
}

// Rows of bytes without padding.
struct Rows {
    int width = 0, height = 0;
    Bytes bytes;

    Rows() = default;
    Rows(int w, int h) : width(w), height(h), bytes(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 0xa5) {}
    Vek8u* data() { return bytes.data(); }
};

Rows textured(int width, int height, const Case& c, int seedMore = 0, int t = 0) {
    Rows rows(width, height);
    std::size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) rows.bytes[i++] = sampleAt(x, y, c.seed + seedMore, c.amp, t);
    return rows;
}

// ---- calls

struct Outcome {
    VekStatus status = vekStsOk;
    Bytes written;

    void add(const Rows& rows) { written.insert(written.end(), rows.bytes.begin(), rows.bytes.end()); }
};
using Call = Outcome (*)(const Case&);

// Sources of three planes, the chroma rows as many as given.
struct Planes {
    Rows y, cb, cr;

    static Planes source(const Case& c, int chromaHeight) {
        return {textured(c.size.width, c.size.height, c), textured(c.chromaWidth(), chromaHeight, c, 1),
                textured(c.chromaWidth(), chromaHeight, c, 2)};
    }
    // Of a 4:2:0 or 4:2:2 picture of width x height.
    static Planes destination(int width, int height, bool halved) {
        const int cw = (width + 1) >> 1, ch = halved ? (height + 1) >> 1 : height;
        return {Rows(width, height), Rows(cw, ch), Rows(cw, ch)};
    }
};

Rows packedSource(const Case& c) { return textured(4 * c.chromaWidth(), c.size.height, c); }
Rows packedDestination(const Case& c) { return {4 * c.chromaWidth(), c.size.height}; }

bool turned(int rotation) { return rotation == 90 || rotation == 270; }

// One plane to one plane: call(source, its step, destination, its step).
template <class Filter>
Outcome filterPlane(const Case& c, Filter&& call) {
    Rows from = textured(c.size.width, c.size.height, c), to(c.size.width, c.size.height);
    Outcome outcome;
    outcome.status = call(from.data(), from.width, to.data(), to.width);
    outcome.add(to);
    return outcome;
}

template <class Filter>
Outcome filterThree(const Case& c, Filter&& call) {
    const auto frame = [&](int t) { return textured(c.size.width, c.size.height, c, 0, t); };
    Rows before = frame(0), current = frame(1), behind = frame(2), to(c.size.width, c.size.height);
    Outcome outcome;
    outcome.status = call(before.data(), current.data(), behind.data(), current.width, to.data(), to.width);
    outcome.add(to);
    return outcome;
}

Outcome adaptive(const Case& c) {
    Outcome outcome;
    VekDenoiseAdaptiveState* state = nullptr;
    outcome.status = vekiFilterDenoiseAdaptiveInitAlloc_8u_C1(c.size, c["noise"], c["frames"], &state);
    for (int k = 0; k < c["count"] && outcome.status == vekStsOk; ++k) {
        Rows from = textured(c.size.width, c.size.height, c, 0, k >> 1), to(c.size.width, c.size.height);
        std::size_t i = 0;
        for (int y = 0; y < c.size.height; ++y)
            for (int x = 0; x < c.size.width; ++x, ++i)
                from.bytes[i] =
                    limited(from.bytes[i] +
                            static_cast<int>(hash(wrapped(x) + 977u * wrapped(y) + 65537u * wrapped(k)) % 7) - 3);
        outcome.status = vekiFilterDenoiseAdaptive_8u_C1R(from.data(), from.width, to.data(), to.width, state);
        outcome.add(to);
    }
    vekiFilterDenoiseAdaptiveFree_8u_C1(state);
    return outcome;
}

Outcome mosquito(const Case& c) {
    VekDenoiseMosquitoState* state = nullptr;
    Outcome outcome = filterPlane(c, [&](auto... planes) {
        const VekStatus status = vekiFilterDenoiseMosquitoInitAlloc_8u_C1(c.size, &state);
        return status != vekStsOk ? status : vekiFilterDenoiseMosquito_8u_C1R(planes..., c["strength"], state);
    });
    vekiFilterDenoiseMosquitoFree_8u_C1(state);
    return outcome;
}

Outcome blend(const Case& c) {
    VekDeinterlaceBlendState* state = nullptr;
    Outcome outcome = filterPlane(c, [&](auto... planes) {
        const VekStatus status = vekiDeinterlaceBlendInitAlloc_8u_C1(c["low"], c["high"], &state);
        return status != vekStsOk ? status : vekiDeinterlaceBlend_8u_C1R(planes..., c.size, state);
    });
    vekiDeinterlaceBlendFree_8u_C1(state);
    return outcome;
}

// Cb Y Cr Y or planes to planes: call(source..., destination...).
template <class Convert>
Outcome toPlanes(Planes to, Convert&& call) {
    Outcome outcome;
    outcome.status = call(to.y.data(), to.y.width, to.cb.data(), to.cr.data(), to.cb.width);
    for (const Rows* rows : {&to.y, &to.cb, &to.cr}) outcome.add(*rows);
    return outcome;
}

template <class Convert>
Outcome toOne(Rows to, Convert&& call) {
    Outcome outcome;
    outcome.status = call(to.data(), to.width);
    outcome.add(to);
    return outcome;
}

// Planes to something else: call(sources..., destination, its step).
template <class Convert>
Outcome fromPlanes(const Case& c, int chromaHeight, Rows to, Convert&& call) {
    Planes from = Planes::source(c, chromaHeight);
    return toOne(std::move(to), [&](auto... destination) {
        return call(from.y.data(), from.y.width, from.cb.data(), from.cr.data(), from.cb.width, destination...);
    });
}

Outcome resize(const Case& c) {
    const int factor = c["factor"];
    const auto scaled = [&](int n) { return factor < 0 ? -factor * n : factor > 0 ? (n + factor - 1) / factor : n; };
    int width = scaled(c.size.width), height = scaled(c.size.height);
    if (turned(c["rotation"])) std::swap(width, height);
    const int bytes = c["conversion"] == 0 ? 4 * ((width + 1) >> 1) : 2 * width;
    Rows from = packedSource(c);
    return toOne({bytes, height}, [&](auto... to) {
        return vekiResizeCCRotate_8u_C2R(from.data(), from.width, c.size, to..., factor, c["interpolation"],
                                         c["conversion"], c["rotation"]);
    });
}

Planes rotatedDestination(const Case& c) {
    const bool swap = turned(c["rotation"]);
    Planes to = Planes::destination(c.size.width, c.size.height, true);
    for (Rows* rows : {&to.y, &to.cb, &to.cr})
        if (swap) std::swap(rows->width, rows->height);
    return to;
}

const std::map<std::string, Call> kCalls = {
    {"vekiDeinterlaceBlend_8u_C1R", blend},
    {"vekiDeinterlaceEdgeDetect_8u_C1R",
     [](const Case& c) {
         return filterPlane(c, [&](auto... planes) {
             return vekiDeinterlaceEdgeDetect_8u_C1R(planes..., c.size, c["field"], c["threshold"]);
         });
     }},
    {"vekiDeinterlaceMedianThreshold_8u_C1R",
     [](const Case& c) {
         return filterPlane(c, [&](auto... planes) {
             return vekiDeinterlaceMedianThreshold_8u_C1R(planes..., c.size, c["field"], c["threshold"]);
         });
     }},
    {"vekiDeinterlaceMotionAdaptive_8u_C1R",
     [](const Case& c) {
         return filterThree(c, [&](auto... planes) {
             return vekiDeinterlaceMotionAdaptive_8u_C1R(planes..., c.size, c["field"], c["firstField"]);
         });
     }},
    {"vekiDeinterlaceTriangle_8u_C1R",
     [](const Case& c) {
         return filterPlane(
             c, [&](auto... planes) { return vekiDeinterlaceTriangle_8u_C1R(planes..., c.size, c["field"]); });
     }},
    {"vekiFilterDenoiseAdaptive_8u_C1R", adaptive},
    {"vekiFilterDenoiseCAST_8u_C1R",
     [](const Case& c) {
         return filterThree(
             c, [&](auto... planes) { return vekiFilterDenoiseCAST_8u_C1R(planes..., c.size, c["noise"]); });
     }},
    {"vekiFilterDenoiseMosquito_8u_C1R", mosquito},
    {"vekiResizeCCRotate_8u_C2R", resize},
    {"vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toPlanes(rotatedDestination(c), [&](auto... to) {
             return vekiCbYCr422ToYCbCr420_Rotate_8u_C2P3R(from.data(), from.width, to..., c.size, c["rotation"]);
         });
     }},
    {"vekiCbYCr422ToYCbCr420_Rotate_8u_P3R",
     [](const Case& c) {
         Planes from = Planes::source(c, c.size.height);
         return toPlanes(rotatedDestination(c), [&](auto... to) {
             return vekiCbYCr422ToYCbCr420_Rotate_8u_P3R(from.y.data(), from.y.width, from.cb.data(), from.cr.data(),
                                                         from.cb.width, to..., c.size, c["rotation"]);
         });
     }},
    {"vekiCbYCr422ToYCbCr420_8u_C2P3R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toPlanes(Planes::destination(c.size.width, c.size.height, true), [&](auto... to) {
             return vekiCbYCr422ToYCbCr420_8u_C2P3R(from.data(), from.width, to..., c.size, c["interlaced"]);
         });
     }},
    {"vekiCbYCr422ToYCbCr422_8u_C2P3R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toPlanes(Planes::destination(c.size.width, c.size.height, false), [&](auto... to) {
             return vekiCbYCr422ToYCbCr422_8u_C2P3R(from.data(), from.width, to..., c.size);
         });
     }},
    {"vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toPlanes(Planes::destination(16, 16, true), [&](auto... to) {
             return vekiCbYCr422ToYCbCr420_16x16_8u_C2P3R(from.data(), from.width, to...);
         });
     }},
    {"vekiYCbCr422ToCbYCr422_8u_P3C2R",
     [](const Case& c) {
         return fromPlanes(c, c.size.height, packedDestination(c),
                           [&](auto... planes) { return vekiYCbCr422ToCbYCr422_8u_P3C2R(planes..., c.size); });
     }},
    {"vekiYCbCr420ToCbYCr422_8u_P3C2R",
     [](const Case& c) {
         return fromPlanes(c, c.chromaHeight(), packedDestination(c), [&](auto... planes) {
             return vekiYCbCr420ToCbYCr422_8u_P3C2R(planes..., c.size, c["interlaced"]);
         });
     }},
    {"vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R",
     [](const Case& c) {
         return fromPlanes(c, c.chromaHeight(), packedDestination(c),
                           [&](auto... planes) { return vekiYCbCr420ToCbYCr422_16x16_8u_P3C2R(planes...); });
     }},
    {"vekiYCbCr420ToYCbCr420_8u_P3P2R",
     [](const Case& c) {
         Rows chroma(2 * c.chromaWidth(), c.chromaHeight());
         Outcome outcome = fromPlanes(c, c.chromaHeight(), {c.size.width, c.size.height}, [&](auto... planes) {
             return vekiYCbCr420ToYCbCr420_8u_P3P2R(planes..., chroma.data(), chroma.width, c.size);
         });
         outcome.add(chroma);
         return outcome;
     }},
    {"vekiYCbCr420ToYCbCr420_8u_P2P3R",
     [](const Case& c) {
         Rows y = textured(c.size.width, c.size.height, c),
              chroma = textured(2 * c.chromaWidth(), c.chromaHeight(), c, 1);
         return toPlanes(Planes::destination(c.size.width, c.size.height, true), [&](auto... to) {
             return vekiYCbCr420ToYCbCr420_8u_P2P3R(y.data(), y.width, chroma.data(), chroma.width, to..., c.size);
         });
     }},
    {"vekiYCbCr420ToBGR_8u_P3C3R",
     [](const Case& c) {
         return fromPlanes(c, c.chromaHeight(), {3 * c.size.width, c.size.height},
                           [&](auto... planes) { return vekiYCbCr420ToBGR_8u_P3C3R(planes..., c.size, c["matrix"]); });
     }},
    {"vekiYCbCr420ToBGR_8u_P3C4R",
     [](const Case& c) {
         return fromPlanes(c, c.chromaHeight(), {4 * c.size.width, c.size.height},
                           [&](auto... planes) { return vekiYCbCr420ToBGR_8u_P3C4R(planes..., c.size, c["matrix"]); });
     }},
    {"vekiYCbCr420ToBGR_16x16_8u_P3C4R",
     [](const Case& c) {
         return fromPlanes(c, c.chromaHeight(), {4 * c.size.width, c.size.height},
                           [&](auto... planes) { return vekiYCbCr420ToBGR_16x16_8u_P3C4R(planes..., c["matrix"]); });
     }},
    {"vekiYCbCr420ToBGR565_8u16u_P3C1R",
     [](const Case& c) {
         Planes from = Planes::source(c, c.chromaHeight());
         return toOne({2 * c.size.width, c.size.height}, [&](Vek8u* to, Vek32s step) {
             return vekiYCbCr420ToBGR565_8u16u_P3C1R(from.y.data(), from.y.width, from.cb.data(), from.cr.data(),
                                                     from.cb.width, reinterpret_cast<Vek16u*>(to), step, c.size,
                                                     c["matrix"], c["dither"]);
         });
     }},
    {"vekiCbYCr422ToBGR_8u_C2C3R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toOne({3 * c.size.width, c.size.height}, [&](auto... to) {
             return vekiCbYCr422ToBGR_8u_C2C3R(from.data(), from.width, to..., c.size, c["matrix"]);
         });
     }},
    {"vekiCbYCr422ToBGR_8u_C2C4R",
     [](const Case& c) {
         Rows from = packedSource(c);
         return toOne({4 * c.size.width, c.size.height}, [&](auto... to) {
             return vekiCbYCr422ToBGR_8u_C2C4R(from.data(), from.width, to..., c.size, c["matrix"]);
         });
     }},
    {"vekiBGRToCbYCr422_8u_C4C2R",
     [](const Case& c) {
         Rows from = textured(4 * c.size.width, c.size.height, c);
         return toOne(packedDestination(c), [&](auto... to) {
             return vekiBGRToCbYCr422_8u_C4C2R(from.data(), from.width, to..., c.size, c["matrix"]);
         });
     }},
};

// name=value pairs; "-" stands for none.
std::map<std::string, int> pairsOf(const std::string& text) {
    std::map<std::string, int> pairs;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (const std::size_t equals = word.find('='); equals != std::string::npos)
            pairs[word.substr(0, equals)] = std::stoi(word.substr(equals + 1));
    return pairs;
}

// What the line's call gives, as it stands in the list: status and MD5.
std::string resultOf(const std::vector<std::string>& fields) {
    Case c;
    if (std::sscanf(fields[1].c_str(), "%dx%d", &c.size.width, &c.size.height) != 2)
        throw std::runtime_error("no size: " + fields[1]);
    const auto inputs = pairsOf(fields[2]);
    c.seed = inputs.at("seed");
    c.amp = inputs.at("amp");
    c.arguments = pairsOf(fields[3]);
    const Outcome outcome = kCalls.at(fields[0])(c);
    return std::to_string(outcome.status) + "\t" + md5Of(outcome.written);
}

}  // namespace

bool checkKnownAnswers(const std::string& file) {
    std::ifstream list(file);
    if (!list) throw std::runtime_error("cannot read " + file);
    long agree = 0, lines = 0;
    for (std::string line; std::getline(list, line);) {
        if (line.empty() || line[0] == '#') continue;
        ++lines;
        std::vector<std::string> fields;
        std::istringstream parts(line);
        for (std::string field; std::getline(parts, field, '\t');) fields.push_back(field);
        if (fields.size() != 6 || !kCalls.contains(fields[0]))
            throw std::runtime_error(file + " is no list of known answers");
        const std::string result = resultOf(fields);
        if (result == fields[4] + "\t" + fields[5])
            ++agree;
        else
            std::printf("differs: %s\n         here %s\n", line.c_str(), result.c_str());
    }
    std::printf("%ld of %ld known answers agree\n", agree, lines);
    return lines > 0 && agree == lines;
}

}  // namespace vekproc
