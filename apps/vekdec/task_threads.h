// Threads that take tasks in the order in which they were given.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace vekdec {

// Task is told apart by its address. Each thread has a Worker of its own, which runs tasks: worker(task).
template <class Worker, class Task>
class TaskThreads {
  public:
    explicit TaskThreads(int count) {
        for (int i = 0; i < count; ++i) threads_.emplace_back([this] { work(); });
    }
    ~TaskThreads() {
        {
            std::lock_guard lock(mutex_);
            ends_ = true;
        }
        given_.notify_all();
        for (std::thread& thread : threads_) thread.join();
    }
    TaskThreads(const TaskThreads&) = delete;
    TaskThreads& operator=(const TaskThreads&) = delete;

    // The task stays the caller's, who keeps it until finished() or wait() says that it is done. All tasks given are
    // run, also where the threads end before.
    void run(Task& task) {
        {
            std::lock_guard lock(mutex_);
            waiting_.push_back(&task);
            unfinished_.push_back(&task);
        }
        given_.notify_one();
    }
    bool finished(const Task& task) {
        std::lock_guard lock(mutex_);
        return isFinished(task);
    }
    void wait(const Task& task) {
        std::unique_lock lock(mutex_);
        done_.wait(lock, [&] { return isFinished(task); });
    }

  private:
    bool isFinished(const Task& task) const {
        for (const Task* other : unfinished_)
            if (other == &task) return false;
        return true;
    }
    void work() {
        Worker worker;
        for (;;) {
            Task* task = nullptr;
            {
                std::unique_lock lock(mutex_);
                given_.wait(lock, [&] { return ends_ || !waiting_.empty(); });
                if (waiting_.empty()) return;
                task = waiting_.front();
                waiting_.pop_front();
            }
            worker(*task);
            {
                std::lock_guard lock(mutex_);
                std::erase(unfinished_, task);
            }
            done_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable given_, done_;
    std::deque<Task*> waiting_;
    std::vector<Task*> unfinished_;
    bool ends_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace vekdec
