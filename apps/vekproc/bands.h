// Planes filtered on several threads, in bands of rows.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "picture.h"

namespace vekproc {

// Calls work(0) to work(count - 1) on up to `threads` threads.
inline void parallel(int threads, int count, const std::function<void(int)>& work) {
    std::atomic<int> next = 0;
    const auto run = [&] {
        for (int i; (i = next++) < count;) work(i);
    };
    std::vector<std::jthread> helpers;
    for (int t = 1; t < threads && t < count; ++t) helpers.emplace_back(run);
    run();
}

// The rows `reach` above and below a row decide what a filter makes of it. A band is filtered with so many rows around
// it, as far as there are any, into memory of its own: that way it comes out as if the whole plane were filtered.
// filter(firstRow, rows, to, toStep) filters the region of whole rows from firstRow, an even number, on.
using FilterRows = std::function<void(int firstRow, int rows, Vek8u* to, Vek32s toStep)>;
inline void filterInBands(int threads, const Picture::Plane& to, int reach, const FilterRows& filter) {
    constexpr int kLeastRows = 64;
    const int bands = std::clamp(to.rows / kLeastRows, 1, threads);
    if (bands == 1) {
        filter(0, to.rows, to.data, to.step);
        return;
    }
    const int halo = (reach + 1) & ~1;
    parallel(threads, bands, [&](int i) {
        const auto edge = [&](int n) { return static_cast<int>(std::int64_t{to.rows} * n / bands) & ~1; };
        const int first = edge(i), end = i + 1 == bands ? to.rows : edge(i + 1);
        const int top = std::max(0, first - halo), bottom = std::min(to.rows, end + halo);
        std::vector<Vek8u> own(static_cast<std::size_t>(to.step) * static_cast<std::size_t>(bottom - top));
        filter(top, bottom - top, own.data(), to.step);
        std::memcpy(to.data + static_cast<std::ptrdiff_t>(to.step) * first,
                    own.data() + static_cast<std::ptrdiff_t>(to.step) * (first - top),
                    static_cast<std::size_t>(to.step) * static_cast<std::size_t>(end - first));
    });
}

}  // namespace vekproc
