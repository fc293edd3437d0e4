#include "h264/slice_context.h"

#include <algorithm>

namespace vekdec::h264 {
namespace {

// PicOrderCnts of a broken stream may be far apart.
int diffPicOrderCnt(int a, int b) {
    return static_cast<int>(std::clamp(std::int64_t{a} - b, std::int64_t{-128}, std::int64_t{127}));
}

ReferencePicture resolve(const Reference& reference, int structure) {
    ReferencePicture r;
    r.picture = reference.picture;
    r.structure = structure;
    if (r.picture == nullptr) return r;
    r.id = 4 * r.picture->id + structure;
    r.poc = r.picture->pocOf(structure);
    r.longTerm = reference.longTerm();
    r.progress = r.picture->progress.get();
    const int rows = structure == kFrame ? 1 : 2;  // of the frame for one of the reference
    for (int i = 0; i < 3; ++i) {
        const vekapp::Plane& memory = r.picture->plane[i];
        if (memory.data == nullptr) continue;
        r.plane[i] = {memory.data + (structure == kBottomField ? memory.stride : 0),
                      static_cast<int>(memory.stride) * rows, memory.width, memory.height / rows};
    }
    return r;
}

int implicitWeight(int current, const ReferencePicture& ref0, const ReferencePicture& ref1) {
    if (ref0.picture == nullptr || ref1.picture == nullptr || ref0.longTerm || ref1.longTerm || ref0.poc == ref1.poc)
        return 32;
    const int weight = distScaleFactor(current, ref0.poc, ref1.poc) >> 2;
    return weight < -64 || weight > 128 ? 32 : weight;
}

// Whether explicit weights (8.4.2.3.2) say no more than the default prediction does.
bool allDefault(const SliceHeader& header) {
    for (std::size_t list = 0; list < (header.type == SliceType::B ? 2u : 1u); ++list)
        for (std::size_t ref = 0; ref < static_cast<std::size_t>(header.numRefIdxActive[list]); ++ref)
            for (std::size_t i = 0; i < 3; ++i) {
                const Weight& w = header.weights[list][ref][i];
                const int denominator = i == 0 ? header.lumaLog2WeightDenom : header.chromaLog2WeightDenom;
                if (w.weight != 1 << denominator || w.offset != 0) return false;
            }
    return true;
}

}  // namespace

int distScaleFactor(int current, int poc0, int poc1) {
    const int tb = diffPicOrderCnt(current, poc0), td = diffPicOrderCnt(poc1, poc0);
    const int tx = (16384 + (td < 0 ? -td : td) / 2) / td;
    return std::clamp((tb * tx + 32) >> 6, -1024, 1023);
}

void SliceContext::begin(const Slice& s) {
    slice = &s;
    sps = s.header.sps;
    pps = s.header.pps.get();
    picture = s.picture;
    mbaff = s.header.mbaff();
    widthInMbs = picture->widthInMbs;
    mbCount = widthInMbs * picture->heightInMbs / (s.structure == kFrame ? 1 : 2);
    mbs = picture->mbs.data() + (s.structure == kBottomField ? mbCount : 0);
    const bool isB = s.header.type == SliceType::B;
    weightMode = !isB ? (pps->weightedPred ? WeightMode::Explicit : WeightMode::Default)
                      : static_cast<WeightMode>(pps->weightedBipredIdc);
    if (weightMode == WeightMode::Explicit && allDefault(s.header)) weightMode = WeightMode::Default;
    currPoc[kAsListed] = picture->pocOf(s.structure);
    currPoc[kFromTopField] = picture->pocOf(kTopField);
    currPoc[kFromBottomField] = picture->pocOf(kBottomField);
    if (!s.refPicList[1].empty() && s.refPicList[1][0].picture != nullptr)
        std::copy_n(s.refPicList[1][0].picture->poc, 2, colPoc);
    const std::size_t views = mbaff ? 3 : 1;
    for (std::size_t list = 0; list < 2; ++list) {
        const auto& entries = s.refPicList[list];
        const std::size_t count = std::min<std::size_t>(entries.size(), mbaff ? 16 : 32);
        for (std::size_t view = 0; view < 3; ++view) referenceCount[view][list] = 0;
        for (std::size_t view = 0; view < views; ++view) {
            referenceCount[view][list] = static_cast<int>(view == kAsListed ? count : 2 * count);
            const int parity = view == kFromBottomField ? kBottomField : kTopField;
            for (std::size_t i = 0; i < count; ++i) {
                if (view == kAsListed) {
                    references[view][list][i] = resolve(entries[i], entries[i].structure);
                } else {
                    references[view][list][2 * i] = resolve(entries[i], parity);
                    references[view][list][2 * i + 1] = resolve(entries[i], kFrame - parity);
                }
            }
        }
    }
    if (isB && weightMode == WeightMode::Implicit)
        for (std::size_t view = 0; view < views; ++view)
            for (std::size_t i = 0; i < static_cast<std::size_t>(referenceCount[view][0]); ++i)
                for (std::size_t j = 0; j < static_cast<std::size_t>(referenceCount[view][1]); ++j)
                    implicitWeight1[view][i][j] = static_cast<std::int16_t>(
                        implicitWeight(currPoc[view], references[view][0][i], references[view][1][j]));
}

}  // namespace vekdec::h264
