// Threads that take tasks in the order in which they were given.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace vekdec {

// Task is told apart by its address. Each thread has a Worker of its own, which runs tasks: worker(task).
template <class Worker, class Task>
class TaskThreads {
  public:
    explicit TaskThreads(int count) {
        try {
            for (int i = 0; i < count; ++i) threads_.emplace_back([this](const std::stop_token& end) { work(end); });
        } catch (const std::system_error& e) {
            throw std::runtime_error("cannot start " + std::to_string(count) + " threads: " + e.what());
        }
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
    void work(const std::stop_token& end) {
        Worker worker;
        for (;;) {
            Task* task = nullptr;
            {
                std::unique_lock lock(mutex_);
                if (!given_.wait(lock, end, [&] { return !waiting_.empty(); })) return;
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
    std::condition_variable_any given_;
    std::condition_variable done_;
    std::deque<Task*> waiting_;
    std::vector<Task*> unfinished_;
    std::vector<std::jthread> threads_;  // ends before what it uses
};

}  // namespace vekdec
