// Macroblocks that did not come.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "frames/plane.h"
#include "picture_tasks.h"
#include "plane_set.h"

namespace vekdec {

// Takes the lost ones of `mbs`, by raster from a row of macroblocks on, from the planes before(), or makes them grey
// where it gives none; their number. It is asked where one is lost. Counts all by kind.
template <class Macroblock, class Before>
long concealLost(const vekapp::Plane (&planes)[3], std::span<const Macroblock> mbs, long* kinds, Before before,
                 int row = 0) {
    using Kind = decltype(Macroblock::kind);
    const auto columns = static_cast<std::size_t>(planes[0].width / 16);
    const vekapp::Plane* from = nullptr;
    long missing = 0;
    for (std::size_t i = 0; i < mbs.size(); ++i) {
        ++kinds[static_cast<int>(mbs[i].kind)];
        if (mbs[i].kind != Kind::Lost) continue;
        if (++missing == 1) from = before();
        for (int p = 0; p < 3; ++p) {
            const int width = 16 * planes[p].width / planes[0].width, height = 16 * planes[p].height / planes[0].height;
            const int x = static_cast<int>(i % columns) * width;
            const int y = (row + static_cast<int>(i / columns)) * height;
            vekapp::copyOrGrey(planes[p], from != nullptr ? from + p : nullptr, x, y, width, height);
        }
    }
    return missing;
}

inline std::string missingMacroblocks(long missing, std::size_t all) {
    return std::to_string(missing) + " of " + std::to_string(all) + " macroblocks are missing";
}

// The same row by row, while other threads may already predict from the rows above.
template <class Macroblock>
class RowConcealment {
  public:
    // `mbs`, by raster, are those of the planes; `before` may have none.
    void begin(const vekapp::Plane (&planes)[3], std::span<const Macroblock> mbs, const PlaneSet& before, long* kinds) {
        planes_ = &planes;
        mbs_ = mbs;
        before_ = &before;
        kinds_ = kinds;
        rows_ = 0;
        missing_ = 0;
    }
    // Nothing decodes the rows of macroblocks before `end` any more. Returns whether there are new ones.
    bool finishRows(int end) {
        if (end <= rows_) return false;
        const auto columns = static_cast<std::size_t>((*planes_)[0].width / 16);
        const auto first = static_cast<std::size_t>(rows_) * columns;
        const auto before = [&]() -> const vekapp::Plane* {
            if (!before_->present()) return nullptr;
            before_->await(16 * end);
            return before_->plane;
        };
        missing_ += concealLost(*planes_, mbs_.subspan(first, static_cast<std::size_t>(end) * columns - first), kinds_,
                                before, rows_);
        rows_ = end;
        return true;
    }
    int rows() const { return static_cast<int>(mbs_.size()) / ((*planes_)[0].width / 16); }
    // What there is to say of all rows; nothing where all came.
    void report(PictureTask& task) const {
        if (missing_ > 0) task.report(missingMacroblocks(missing_, mbs_.size()));
    }

  private:
    const vekapp::Plane (*planes_)[3] = nullptr;
    std::span<const Macroblock> mbs_;
    const PlaneSet* before_ = nullptr;
    long* kinds_ = nullptr;
    int rows_ = 0;
    long missing_ = 0;
};

}  // namespace vekdec
