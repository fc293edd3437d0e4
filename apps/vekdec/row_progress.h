// How far the rows of a picture are final: told by the thread that decodes it to those that predict from it.
#pragma once

#include <atomic>
#include <climits>
#include <condition_variable>
#include <mutex>

namespace vekdec {

// Rows are counted by field, from the top; those of a frame belong to its fields in turn.
class RowProgress {
  public:
    static constexpr int kAll = INT_MAX;
    static constexpr int kFrame = 3;  // bit 0: the top field, bit 1: the bottom field

    void restart() { rows_[0] = rows_[1] = 0; }

    // The first `rows` rows of the frame, or of the field, are final.
    void publish(int structure, int rows) {
        for (int i = 0; i < 2; ++i)
            if ((structure & 1 << i) != 0) rows_[i] = structure == kFrame && rows != kAll ? rows / 2 : rows;
        if (waiting_ == 0) return;
        std::lock_guard lock(mutex_);  // none is between looking and waiting
        changed_.notify_all();
    }

    // All rows of both fields are.
    bool complete() const { return rows_[0] == kAll && rows_[1] == kAll; }

    // Returns when so many rows are final.
    void await(int structure, int rows) {
        if (structure == kFrame && rows != kAll) rows = (rows + 1) / 2;
        if (!final(structure, rows)) [[unlikely]]
            sleepUntil(structure, rows);
    }

    // At the end of its life all rows are final, however they came to be.
    class End {
      public:
        End(RowProgress& progress, int structure) : progress_(progress), structure_(structure) {}
        ~End() { progress_.publish(structure_, kAll); }
        End(const End&) = delete;
        End& operator=(const End&) = delete;

      private:
        RowProgress& progress_;
        int structure_;
    };

  private:
    bool final(int structure, int rows) const {
        return ((structure & 1) == 0 || rows_[0] >= rows) && ((structure & 2) == 0 || rows_[1] >= rows);
    }
    [[gnu::noinline]] void sleepUntil(int structure, int rows) {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.wait(lock, [&] { return final(structure, rows); });
        --waiting_;
    }

    std::atomic<int> rows_[2] = {kAll, kAll};
    std::atomic<int> waiting_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
};

}  // namespace vekdec
