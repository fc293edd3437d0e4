#include "h264/direct_prediction.h"

#include <algorithm>
#include <cstdlib>

namespace vekdec::h264 {

void prefetchColocated(const SliceContext& context, int address) {
    if (context.referenceCount[kAsListed][1] == 0) return;
    const Picture* col = context.references[kAsListed][1][0].picture;
    const auto i = static_cast<std::size_t>(address);
    if (col == nullptr || i >= col->mbs.size()) return;
    prefetchMacroblock(col->mbs[i]);
}

DirectPrediction::DirectPrediction(const SliceContext& context, const CurrentMacroblock& current)
    : context_(context), current_(current) {}

// 8.4.1.2.1, Tables 8-6 and 8-8.
void DirectPrediction::findColocated() {
    const ReferencePicture& listed = context_.references[kAsListed][1][0];
    if (context_.referenceCount[kAsListed][1] == 0 || listed.picture == nullptr)
        throw BadSyntax("direct prediction without a picture in list 1");
    const Picture& col = *listed.picture;
    if (col.nonExisting) {  // in a stream with losses: like an intra macroblock
        static constexpr Macroblock kNone;
        vertMvScale_ = VertMvScale::OneToOne;
        colMb_[0] = colMb_[1] = &kNone;
        for (int i = 0; i < 4; ++i) colRow_[i] = i;
        return;
    }
    if (!col.codedAsFields && col.mbaff != context_.sps->mbAdaptiveFrameField)
        throw BadSyntax("direct prediction from a picture of another kind");
    const int width = context_.widthInMbs, address = current_.address;
    awaitColocated(listed);
    const int half = static_cast<int>(col.mbs.size()) / 2;
    const auto field = [&](int structure, int i) {
        return &col.mbs[static_cast<std::size_t>(i + (structure == kBottomField ? half : 0))];
    };
    const auto frame = [&](int i) { return &col.mbs[static_cast<std::size_t>(i)]; };
    // The field of the co-located frame or pair that is nearer in output order.
    const auto nearer = [&] {
        const auto distance = [&](int poc) { return std::abs(std::int64_t{poc} - context_.currPoc[kAsListed]); };
        return distance(context_.colPoc[0]) < distance(context_.colPoc[1]) ? kTopField : kBottomField;
    };
    const auto oneToOne = [&](const Macroblock* mb) {
        vertMvScale_ = VertMvScale::OneToOne;
        colMb_[0] = colMb_[1] = mb;
        for (int i = 0; i < 4; ++i) colRow_[i] = i;
    };
    const auto frameToField = [&](const Macroblock* upper, const Macroblock* lower) {
        vertMvScale_ = VertMvScale::FrameToField;
        colMb_[0] = upper;
        colMb_[1] = lower;
        for (int i = 0; i < 4; ++i) colRow_[i] = 2 * i % 4;
    };
    const auto fieldToFrame = [&](const Macroblock* mb, int lower) {
        vertMvScale_ = VertMvScale::FieldToFrame;
        colMb_[0] = colMb_[1] = mb;
        for (int i = 0; i < 4; ++i) colRow_[i] = 2 * lower + i / 2;
    };
    if (context_.slice->header.fieldPic) {
        if (col.codedAsFields) {
            oneToOne(field(listed.structure, address));
        } else if (!col.mbaff) {
            const int upper = 2 * width * (address / width) + address % width;
            frameToField(frame(upper), frame(upper + width));
        } else if (frame(2 * address)->field) {
            oneToOne(frame(2 * address + (context_.slice->structure == kBottomField)));
        } else {
            frameToField(frame(2 * address), frame(2 * address + 1));
        }
    } else if (!context_.mbaff) {
        if (col.codedAsFields)
            fieldToFrame(field(nearer(), width * (address / (2 * width)) + address % width), address / width % 2);
        else
            oneToOne(frame(address));
    } else {
        const bool isField = current_.mb->field;
        const int pair = address / 2;
        if (col.codedAsFields) {
            if (isField)
                oneToOne(field(current_.parity(), pair));
            else
                fieldToFrame(field(nearer(), pair), address % 2);
        } else if (frame(address)->field == isField) {
            oneToOne(frame(address));
        } else if (isField) {
            frameToField(frame(2 * pair), frame(2 * pair + 1));
        } else {
            fieldToFrame(frame(2 * pair + (nearer() == kBottomField)), address % 2);
        }
    }
}

// Until the rows of the macroblock pair, or field macroblock, at our place are parsed: where half of their samples are
// final they are, in whichever of both ways the picture was coded.
void DirectPrediction::awaitColocated(const ReferencePicture& listed) const {
    if (listed.progress->complete()) return;  // saves the division
    const bool field = context_.slice->header.fieldPic;
    const int row = current_.address / ((field ? 1 : 2) * context_.widthInMbs);
    listed.await(field ? 16 * row + 9 : 32 * row + 18);
}

DirectPrediction::Colocated DirectPrediction::colocated(int x, int y) const {
    const Macroblock& mb = *colMb_[y >> 1];
    if (mb.type != MbType::Inter) return {-1, -1, {}};
    const int row = colRow_[y], quadrant = (row >> 1) * 2 + (x >> 1), block = row * 4 + x;
    const int list = mb.refIdx[0][quadrant] >= 0 ? 0 : 1;
    return {mb.refIdx[list][quadrant], mb.refPicId[list][quadrant], mb.mv[list][block]};
}

// colZeroFlag without the condition on the reference's marking.
bool DirectPrediction::colZero(int x, int y) const {
    const Colocated col = colocated(x, y);
    return col.refIdx == 0 && col.mv.x >= -1 && col.mv.x <= 1 && col.mv.y >= -1 && col.mv.y <= 1;
}

void DirectPrediction::prepare(const MotionCache& cache) {
    findColocated();
    if (!context_.slice->header.directSpatialMvPred) return;
    // 8.4.1.2.2: the least non-negative index of the neighbours, for the macroblock as a whole.
    for (int list = 0; list < 2; ++list) {
        const auto asUnsigned = [](int ref) { return static_cast<unsigned>(ref < 0 ? -1 : ref); };
        const unsigned a = asUnsigned(cache.ref[list][MotionCache::at(-1, 0)]),
                       b = asUnsigned(cache.ref[list][MotionCache::at(0, -1)]),
                       c = asUnsigned(aboveRightMotion(cache, list, 0, 0, 4).ref);
        spatialRef_[list] = static_cast<int>(std::min({a, b, c}));
        if (spatialRef_[list] >= context_.referenceCount[current_.view][static_cast<std::size_t>(list)])
            throw BadSyntax("direct prediction with a reference index outside the list");
        spatialMv_[list] = spatialRef_[list] < 0 ? MotionVector{} : predictWhole(cache, list, spatialRef_[list]);
    }
    if (spatialRef_[0] < 0 && spatialRef_[1] < 0) {  // directZeroPrediction
        spatialRef_[0] = spatialRef_[1] = 0;
        spatialMv_[0] = spatialMv_[1] = {};
    }
}

void DirectPrediction::derive(int quadrant, MotionCache& cache) const {
    if (context_.slice->header.directSpatialMvPred)
        deriveSpatial(quadrant, cache);
    else
        deriveTemporal(quadrant, cache);
}

bool DirectPrediction::deriveAll(MotionCache& cache) const {
    if (context_.slice->header.directSpatialMvPred) {
        // Most often the co-located blocks do not count, or all say the same.
        const bool counts = colocatedCounts();
        const int step = context_.sps->direct8x8Inference ? 3 : 1;
        const bool still = counts && colZero(0, 0);
        bool same = true;
        for (int y = 0; counts && y < 4; y += step)
            for (int x = 0; x < 4; x += step) same = same && colZero(x, y) == still;
        if (same) {
            for (int list = 0; list < 2; ++list)
                cache.setWhole(list, static_cast<std::int8_t>(spatialRef_[list]), spatialVector(list, still));
            return true;
        }
    }
    for (int i = 0; i < 4; ++i) derive(i, cache);
    for (int list = 0; list < 2; ++list) {
        const int first = MotionCache::at(0, 0);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) {
                const int i = MotionCache::at(x, y);
                if (cache.ref[list][i] != cache.ref[list][first] || cache.mv[list][i] != cache.mv[list][first])
                    return false;
            }
    }
    return true;
}

// Whether a still co-located block makes a difference.
bool DirectPrediction::colocatedCounts() const {
    return !context_.references[current_.view][1][0].longTerm &&
           ((spatialRef_[0] == 0 && spatialMv_[0] != MotionVector{}) ||
            (spatialRef_[1] == 0 && spatialMv_[1] != MotionVector{}));
}

void DirectPrediction::setSpatial(int x, int y, int size, bool still, MotionCache& cache) const {
    for (int list = 0; list < 2; ++list)
        cache.fill(list, x, y, size, size, static_cast<std::int8_t>(spatialRef_[list]), spatialVector(list, still));
}

void DirectPrediction::deriveSpatial(int quadrant, MotionCache& cache) const {
    const int x0 = quadrant % 2 * 2, y0 = quadrant / 2 * 2;
    if (!colocatedCounts()) {
        setSpatial(x0, y0, 2, false, cache);
    } else if (context_.sps->direct8x8Inference) {
        setSpatial(x0, y0, 2, colZero(x0 / 2 * 3, y0 / 2 * 3), cache);  // the macroblock's corner
    } else {
        for (int i = 0; i < 4; ++i) setSpatial(x0 + i % 2, y0 + i / 2, 1, colZero(x0 + i % 2, y0 + i / 2), cache);
    }
}

int DirectPrediction::mapColToList0(int refPicId) const {
    int wanted = refPicId;
    if (vertMvScale_ == VertMvScale::FieldToFrame)
        wanted |= kFrame;
    else if (vertMvScale_ == VertMvScale::FrameToField)
        wanted = (refPicId & ~3) | (context_.mbaff ? current_.parity() : context_.slice->structure);
    const auto& list0 = context_.references[current_.view][0];
    for (int i = 0; i < context_.referenceCount[current_.view][0]; ++i)
        if (list0[static_cast<std::size_t>(i)].id == wanted) return i;
    throw BadSyntax("temporal direct prediction from a picture that is not in list 0");
}

// 8.4.1.2.3.
void DirectPrediction::deriveTemporal(int quadrant, MotionCache& cache) const {
    const int x0 = quadrant % 2 * 2, y0 = quadrant / 2 * 2;
    const bool inference = context_.sps->direct8x8Inference;
    const int blocks = inference ? 1 : 4, size = inference ? 2 : 1;
    for (int i = 0; i < blocks; ++i) {
        const int x = x0 + i % 2, y = y0 + i / 2;
        Colocated col = inference ? colocated(x0 / 2 * 3, y0 / 2 * 3) : colocated(x, y);
        const int refIdx0 = col.refIdx < 0 ? 0 : mapColToList0(col.refPicId);
        if (vertMvScale_ == VertMvScale::FrameToField)
            col.mv.y = static_cast<std::int16_t>(col.mv.y / 2);
        else if (vertMvScale_ == VertMvScale::FieldToFrame)
            col.mv.y = static_cast<std::int16_t>(2 * col.mv.y);
        const ReferencePicture& pic0 = context_.references[current_.view][0][static_cast<std::size_t>(refIdx0)];
        const ReferencePicture& pic1 = context_.references[current_.view][1][0];
        MotionVector mv0 = col.mv, mv1{};
        if (!pic0.longTerm && pic0.poc != pic1.poc) {
            const int scale = distScaleFactor(context_.currPoc[current_.view], pic0.poc, pic1.poc);
            mv0.x = static_cast<std::int16_t>((scale * col.mv.x + 128) >> 8);
            mv0.y = static_cast<std::int16_t>((scale * col.mv.y + 128) >> 8);
            mv1.x = static_cast<std::int16_t>(mv0.x - col.mv.x);
            mv1.y = static_cast<std::int16_t>(mv0.y - col.mv.y);
        }
        cache.fill(0, x, y, size, size, static_cast<std::int8_t>(refIdx0), mv0);
        cache.fill(1, x, y, size, size, 0, mv1);
    }
}

}  // namespace vekdec::h264
