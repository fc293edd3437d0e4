// Sequence and entry-point headers of VC-1 (SMPTE 421M 6.1, 6.2, Annex J, Annex L).
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "bits/word_reader.h"
#include "frames/plane.h"

namespace vekdec::vc1 {

enum class Profile { Simple, Main, Advanced };

struct Sequence {
    Profile profile = Profile::Simple;
    int width = 0, height = 0;  // coded, in luma samples
    vekapp::Rational rate, sampleAspect;

    // Of all pictures; Advanced profile: of those behind an entry point.
    bool loopFilter = false, fastChroma = false, extendedMv = false, vsTransform = false, overlap = false;
    int dquant = 0, quantizer = 0;

    // Simple and Main profile.
    bool multiResolution = false, rangeReduction = false;
    int maxBFrames = 0;
    // Simple, Main and Advanced.
    bool frameInterpolation = false;
    // Advanced.
    bool interlace = false, postProcessing = false, pulldown = false, frameCounter = false, segmentedFrames = false;
    int maxWidth = 0, maxHeight = 0;
    int leakyBuckets = 0;
    bool panScan = false, referenceDistance = false, extendedDmv = false;
    bool brokenLink = false, closedEntry = false;
    int rangeMapY = -1, rangeMapUv = -1;  // -1: none

    bool advanced() const { return profile == Profile::Advanced; }
    int widthInMbs() const { return (width + 15) / 16; }
    int heightInMbs() const { return (height + 15) / 16; }
    int fieldHeightInMbs() const { return ((height + 1) / 2 + 15) / 16; }
    // Whole macroblocks of frames and of fields.
    vekapp::PictureFormat format() const {
        const int rows = interlace ? std::max(heightInMbs(), 2 * fieldHeightInMbs()) : heightInMbs();
        return {16 * widthInMbs(), 16 * rows, vekapp::Chroma::C420, 8};
    }
};

// STRUCT_C (Annex J), at least four bytes.
Sequence parseStructC(std::span<const std::uint8_t> bytes, int width, int height);
// The file header of Annex L.2.
Sequence parseFileHeader(std::span<const std::uint8_t> bytes);

// The bits behind the start code.
Sequence parseSequenceHeader(WordReader& bits);
void parseEntryPoint(WordReader& bits, Sequence& sequence);

}  // namespace vekdec::vc1
