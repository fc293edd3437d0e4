// Pictures decoded side by side, and what is told of them in the order in which one thread would come to it.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "decoder.h"

namespace vekdec {

// What the tasks of all decoders have: a frame or field, filled by whoever reads the stream, with a copy of all that
// later headers change.
struct PictureTask {
    long number = 0;                  // in decoding order, for sentences
    bool begun = false;               // parts of it were decoded while others came; by the reader's own worker
    std::vector<std::string> damage;  // found in decoding: whole sentences

    void report(const std::string& what) { damage.push_back("picture " + std::to_string(number) + ": " + what); }
};

// A Worker decodes tasks: worker(task). Task is a PictureTask. With one thread a task is decoded when it is given; else
// each thread has a Worker of its own, and they take the tasks in the order in which they were given. A task may wait
// for what earlier ones do.
template <class Worker, class Task>
class PictureTasks {
  public:
    // `retire` gets every task when it is over and its damage is reported.
    PictureTasks(Sinks sinks, int threads, std::function<void(Task&)> retire)
        : sinks_(std::move(sinks)), retire_(std::move(retire)), most_(threads + 1) {
        try {
            for (int i = 0; threads > 1 && i < threads; ++i)
                threads_.emplace_back([this](const std::stop_token& end) { work(end); });
        } catch (const std::system_error& e) {
            throw std::runtime_error("cannot start " + std::to_string(threads) + " threads: " + e.what());
        }
    }
    PictureTasks(const PictureTasks&) = delete;
    PictureTasks& operator=(const PictureTasks&) = delete;

    bool sideBySide() const { return !threads_.empty(); }
    // The reader's own, for a task that is decoded as it comes.
    Worker& worker() { return worker_; }

    // Waits where more tasks are under way than the threads and one, which waits so that no thread does.
    void run(std::unique_ptr<Task> task) {
        const bool here = !sideBySide() || task->begun;
        Event& event = events_.emplace_back();
        event.task = std::move(task);
        ++underWay_;
        if (here) {
            decode(worker_, event);
            event.done = true;
        } else {
            {
                std::lock_guard lock(mutex_);
                waiting_.push_back(&event);
            }
            given_.notify_one();
        }
        deliver(most_);
    }
    // Calls `tell` when the tasks given so far are over.
    void then(std::function<void()> tell) {
        events_.emplace_back().tell = std::move(tell);
        deliver(most_);
    }
    void report(std::string sentence) {
        then([this, said = std::move(sentence)] { say(said); });
    }
    // `blocks` keeps what it reads, and the frame's planes are of.
    void show(const Frame& frame, std::function<BlockMap()> blocks) {
        then([this, frame, map = std::move(blocks)] { give(frame, map); });
    }
    // Waits for all tasks.
    void finish() { deliver(0); }

    // For calls from `tell`: the frame at once. Its number is set here.
    void give(Frame frame, const std::function<BlockMap()>& blocks) {
        frame.number = static_cast<int>(frames_++);
        shown_ = &blocks;
        sinks_.frame(frame);
        shown_ = nullptr;
    }
    // For calls from Sinks::frame.
    BlockMap blocks() const { return (*shown_)(); }

    // What was told so far.
    long frames() const { return frames_; }
    long damaged() const { return damaged_; }

  private:
    // A task, or what is told behind those before.
    struct Event {
        std::unique_ptr<Task> task;
        std::function<void()> tell;
        std::exception_ptr failure;  // other than of the stream
        bool done = false;           // of tasks; under the mutex
    };

    void say(const std::string& sentence) {
        ++damaged_;
        sinks_.report(sentence);
    }
    static void decode(Worker& worker, Event& event) {
        try {
            worker(*event.task);
        } catch (...) {
            event.failure = std::current_exception();
        }
    }
    bool isDone(const Event& event, bool await) {
        if (!sideBySide()) return true;
        std::unique_lock lock(mutex_);
        if (await) done_.wait(lock, [&] { return event.done; });
        return event.done;
    }
    // Tells what there is to tell, as far as it is decoded; waits where more tasks are under way.
    void deliver(int most) {
        while (!events_.empty()) {
            if (events_.front().task != nullptr && !isDone(events_.front(), underWay_ > most)) return;
            const Event event = std::move(events_.front());
            events_.pop_front();
            if (event.task == nullptr) {
                event.tell();
                continue;
            }
            --underWay_;
            if (event.failure) std::rethrow_exception(event.failure);
            for (const std::string& sentence : event.task->damage) say(sentence);
            retire_(*event.task);
        }
    }
    // All tasks given are run, also where the threads are to end before.
    void work(const std::stop_token& end) {
        Worker worker;
        for (;;) {
            Event* event = nullptr;
            {
                std::unique_lock lock(mutex_);
                if (!given_.wait(lock, end, [&] { return !waiting_.empty(); })) return;
                event = waiting_.front();
                waiting_.pop_front();
            }
            decode(worker, *event);
            {
                std::lock_guard lock(mutex_);
                event->done = true;
            }
            done_.notify_one();
        }
    }

    Sinks sinks_;
    std::function<void(Task&)> retire_;
    std::deque<Event> events_;  // in the order of one thread; the threads keep addresses
    int underWay_ = 0;          // tasks among them
    const int most_;
    const std::function<BlockMap()>* shown_ = nullptr;  // during Sinks::frame
    long frames_ = 0, damaged_ = 0;
    Worker worker_;

    std::mutex mutex_;
    std::condition_variable_any given_;
    std::condition_variable done_;
    std::deque<Event*> waiting_;
    std::vector<std::jthread> threads_;  // end before what they use
};

}  // namespace vekdec
