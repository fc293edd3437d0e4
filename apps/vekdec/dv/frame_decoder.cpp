#include "dv/frame_decoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace vekdec::dv {
namespace {

// Macroblocks whose STA says that the recorder found errors and concealed nothing (SMPTE 314M, status of the
// macroblock).
bool markedDamaged(const VekDVBlockInfo& info) { return info.sta == 7 || info.sta == 15; }

// Rows of `width` bytes.
void copyRows(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t step, int width, int rows) {
    for (int row = 0; row < rows; ++row)
        std::memcpy(to + step * row, from + step * row, static_cast<std::size_t>(width));
}

}  // namespace

Picture::Picture(const System& system, bool packed, int zoom) {
    if (packed)
        interleaved.assign(static_cast<std::size_t>(2 * (system.width >> zoom) * (system.height >> zoom)), 128);
    else
        planar = vekapp::PictureMemory({system.width, system.height, system.chroma(), 8});
}

FrameDecoder::FrameDecoder() {
    VekDVHuffmanTable_32s* table = nullptr;
    if (vekiHuffmanTableInitAlloc_DV_32s(&table) != vekStsOk) throw std::bad_alloc();
    table_.reset(table);
}

void FrameDecoder::operator()(FrameTask& task) {
    const RowProgress::End end(task.picture->progress, RowProgress::kFrame);
    task_ = &task;
    system_ = task.system;
    picture_ = task.picture.get();
    picture_->blocks.clear();
    int concealed = 0;
    for (int c = 0; c < system_->channels; ++c)
        for (int q = 0; q < system_->sequences; ++q) {
            const std::uint8_t* sequence =
                task.bytes.data() + static_cast<std::size_t>(c * system_->sequences + q) * kSequenceBytes;
            for (int k = 0; k < kSegments; ++k) {
                const std::size_t first = static_cast<std::size_t>(
                    (((c + (task.secondOfPair ? 2 : 0)) * system_->sequences + q) * kSegments + k) * kMacroblocks);
                MacroblockPlace places[kMacroblocks];
                std::copy_n(task.places->begin() + static_cast<std::ptrdiff_t>(first), kMacroblocks, places);
                if (places[0].shape == Shape::None) continue;
                const std::uint8_t* segment = sequence + segmentOffset(k);
                ++task.segments;
                // A DIF block that is none of video brings nothing.
                bool lost = false;
                for (int m = 0; m < kMacroblocks; ++m) lost = lost || segment[m * kDifBytes] >> 5 != 4;
                if (lost) {
                    concealed += kMacroblocks;
                    for (const MacroblockPlace& place : places) keepBefore(place);
                } else {
                    concealed += decodeSegment(segment, places);
                }
            }
        }
    if (concealed > 0)
        task.damage.push_back("frame " + std::to_string(task.number) + ": " + std::to_string(concealed) +
                              " macroblocks are damaged and taken from the frame before");
}

// The place of a macroblock that did not come shows what it did in the frame before.
void FrameDecoder::keepBefore(const MacroblockPlace& at) {
    if (task_->before == nullptr || task_->before.get() == picture_) return;
    Picture& before = *task_->before;
    before.progress.await(RowProgress::kFrame, RowProgress::kAll);
    const bool wide = at.shape == Shape::Bottom || (at.shape == Shape::Whole && system_->sampling == Sampling::C411);
    const bool low = wide || system_->sampling == Sampling::C422;
    const int width = wide ? 32 : 16, height = low ? 8 : 16;
    if (task_->packed) {
        const int step = 2 * (system_->width >> task_->zoom);
        const std::ptrdiff_t first = std::ptrdiff_t{step} * (at.y >> task_->zoom) + 2 * (at.x >> task_->zoom);
        copyRows(before.interleaved.data() + first, picture_->interleaved.data() + first, step,
                 2 * (width >> task_->zoom), height >> task_->zoom);
        return;
    }
    for (int i = 0; i < 3; ++i) {
        const int shiftX = i == 0 ? 0 : chromaShiftX(system_->chroma());
        const int shiftY = i == 0 ? 0 : chromaShiftY(system_->chroma());
        copyRows(before.planar.plane[i].at(at.x >> shiftX, at.y >> shiftY),
                 picture_->planar.plane[i].at(at.x >> shiftX, at.y >> shiftY), picture_->planar.plane[i].stride,
                 width >> shiftX, height >> shiftY);
    }
}

// Returns how many macroblocks are marked as damaged.
int FrameDecoder::decodeSegment(const std::uint8_t* segment, const MacroblockPlace (&places)[kMacroblocks]) {
    alignas(64) Vek16s coeffs[kMacroblocks * 8 * 64];
    VekDVBlockInfo info[kMacroblocks * 8];
    const int n = system_->blocksPerMacroblock();
    const Sampling sampling = system_->sampling;
    (sampling == Sampling::C422    ? vekiDecodeCoeffsSegment422_DV_1u16s
     : sampling == Sampling::Dv100 ? vekiDecodeCoeffsSegment_DV100_1u16s
                                   : vekiDecodeCoeffsSegment_DV_1u16s)(segment, coeffs, info, table_.get());
    if (sampling != Sampling::Dv100) vekiQuantInv8x8xN_DV_16s_C1I(coeffs, info, kMacroblocks * n);
    int concealed = 0;
    for (int m = 0; m < kMacroblocks; ++m) {
        Vek16s* const mb = coeffs + 64 * n * m;
        const VekDVBlockInfo* const mbInfo = info + n * m;
        if (markedDamaged(mbInfo[0])) {
            ++concealed;
            keepBefore(places[m]);
            continue;
        }
        if (sampling == Sampling::Dv100) {
            const int weights = system_->height == 1080 ? 0 : 2;
            vekiQuantInv8x8xN_DV100_16s_C1I(mb, mbInfo, 4, weights);
            vekiQuantInv8x8xN_DV100_16s_C1I(mb + 4 * 64, mbInfo + 4, 4, weights + 1);
        }
        noteBlocks(mbInfo, places[m]);
        if (task_->packed)
            storePacked(mb, mbInfo, places[m]);
        else
            storePlanar(mb, mbInfo, places[m]);
    }
    return concealed;
}

// One block of samples, plus 128. Of an 8-8 block the DC brings them: a sample holds an eighth of it.
void FrameDecoder::storeBlock(Vek16s* coeffs, bool is248, std::uint8_t* to, std::ptrdiff_t step) {
    coeffs[0] = static_cast<Vek16s>(coeffs[0] + 8 * 128);
    if (!is248) {
        vekiDCT8x8Inv_16s8u_C1R(coeffs, to, static_cast<Vek32s>(step));
        return;
    }
    vekiDCT8x8Inv248_DV_16s_C1I(coeffs);
    for (int y = 0; y < 8; ++y) std::memset(to + step * y, 0, 8);
    vekiAdd8x8_16s8u_C1IRS(coeffs, 16, to, static_cast<Vek32s>(step));
}

void FrameDecoder::storePlanar(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    const bool field = dv100 && at.shape == Shape::Whole && info[0].dctMode != 0;
    const auto is248 = [&](int b) { return !dv100 && info[b].dctMode != 0; };
    const bool wide = at.shape == Shape::Bottom || (at.shape == Shape::Whole && system_->sampling == Sampling::C411);
    const int lumaBlocks = system_->sampling == Sampling::C422 ? 2 : 4;
    // Blocks of a row of 32, or two by two; of fields the second two are the odd lines.
    for (int b = 0; b < lumaBlocks; ++b) {
        const int column = wide ? b : b % 2, row = wide ? 0 : b / 2;
        const vekapp::Plane& plane = picture_->planar.plane[0];
        std::uint8_t* to = plane.at(at.x + 8 * column, at.y + (field ? row : 8 * row));
        storeBlock(coeffs + 64 * b, is248(b), to, field ? 2 * plane.stride : plane.stride);
    }
    const int perComponent = dv100 ? 2 : 1;
    for (int component = 0; component < 2; ++component)
        for (int i = 0; i < perComponent; ++i) {
            const int b = lumaBlocks + component * perComponent + i;
            const vekapp::Plane& plane = picture_->planar.plane[component == 0 ? 2 : 1];  // Cr comes first
            const int x = at.x >> chromaShiftX(system_->chroma()), y = at.y >> chromaShiftY(system_->chroma());
            if (at.shape == Shape::Edge) {  // 4 wide and 16 high: its right half is the lower one
                std::uint8_t whole[64];
                storeBlock(coeffs + 64 * b, is248(b), whole, 8);
                for (int line = 0; line < 16; ++line)
                    std::memcpy(plane.at(x, y + line), whole + 8 * (line % 8) + 4 * (line / 8), 4);
                continue;
            }
            std::uint8_t* to =
                at.shape == Shape::Bottom ? plane.at(x + 8 * i, y) : plane.at(x, y + (field ? i : 8 * i));
            storeBlock(coeffs + 64 * b, is248(b), to, field ? 2 * plane.stride : plane.stride);
        }
}

void FrameDecoder::storePacked(Vek16s* coeffs, const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    for (int b = 0; b < system_->blocksPerMacroblock(); ++b)
        (!dv100 && info[b].dctMode != 0 ? vekiDCT8x8Inv248_DV_16s_C1I : vekiDCT8x8Inv_16s_C1I)(coeffs + 64 * b);
    const int step = 2 * (system_->width >> task_->zoom);
    std::uint8_t* to =
        picture_->interleaved.data() + std::ptrdiff_t{step} * (at.y >> task_->zoom) + 2 * (at.x >> task_->zoom);
    switch (system_->sampling) {
        case Sampling::C411:
            if (task_->zoom == 0)
                vekiYCrCb411ToCbYCr422_DV_16s8u_C2R(coeffs, to, step, at.shape == Shape::Edge);
            else
                vekiYCrCb411ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, at.shape == Shape::Edge, task_->zoom);
            break;
        case Sampling::C420:
            if (task_->zoom == 0)
                vekiYCrCb420ToCbYCr422_DV_16s8u_C2R(coeffs, to, step);
            else
                vekiYCrCb420ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, task_->zoom);
            break;
        case Sampling::C422:
            if (task_->zoom == 0)
                vekiYCrCb422ToCbYCr422_DV_16s8u_C2R(coeffs, to, step);
            else
                vekiYCrCb422ToCbYCr422ZoomOut_DV_16s8u_C2R(coeffs, to, step, task_->zoom);
            break;
        case Sampling::Dv100: {
            const int layout = at.shape == Shape::Bottom ? 2 : info[0].dctMode;
            if (task_->zoom == 0)
                vekiYCrCb422ToCbYCr422_DV100_16s8u_C2R(coeffs, to, step, layout);
            else
                vekiYCrCb422ToCbYCr422ZoomOut_DV100_16s8u_C2R(coeffs, to, step, layout, task_->zoom);
            break;
        }
    }
}

void FrameDecoder::noteBlocks(const VekDVBlockInfo* info, const MacroblockPlace& at) {
    const bool dv100 = system_->sampling == Sampling::Dv100;
    const bool wide = at.shape == Shape::Bottom || (at.shape == Shape::Whole && system_->sampling == Sampling::C411);
    const int lumaBlocks = system_->sampling == Sampling::C422 ? 2 : 4;
    for (int b = 0; b < system_->blocksPerMacroblock(); ++b) {
        ++task_->modes[info[dv100 ? 0 : b].dctMode];
        ++task_->ends[info[b].end];
        if (b >= lumaBlocks) continue;
        const int column = wide ? b : b % 2, row = wide ? 0 : b / 2, size = 8 >> task_->zoom;
        picture_->blocks.push_back({(at.x >> task_->zoom) + size * column, (at.y >> task_->zoom) + size * row, size,
                                    size, 1, 4 * info[dv100 ? 0 : b].dctMode + info[b].classNo, info[b].qNo});
    }
}

}  // namespace vekdec::dv
