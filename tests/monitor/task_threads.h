// task_threads.h - threads for the monitor's tests that idle or spin until
// the object goes, and tell their Linux thread ids.
#ifndef VETRA_TESTS_MONITOR_TASK_THREADS_H
#define VETRA_TESTS_MONITOR_TASK_THREADS_H

#include <atomic>
#include <cstdint>
#include <future>
#include <thread>
#include <unistd.h>
#include <vector>

inline uint32_t ThisThreadId() {
    return static_cast<uint32_t>(gettid());
}

class TaskThreads {
  public:
    enum Kind { idle, spinning };

    TaskThreads(Kind kind, int count) {
        for (int i = 0; i < count; ++i) {
            std::promise<uint32_t> tid;
            auto told = tid.get_future();
            threads_.emplace_back([this, kind, tid = std::move(tid)]() mutable {
                tid.set_value(ThisThreadId());
                if (kind == spinning) {
                    while (!stop_.load(std::memory_order_relaxed)) {
                    }
                } else {
                    stopped_.wait();
                }
            });
            tids_.push_back(told.get());
        }
    }
    ~TaskThreads() { Stop(); }
    TaskThreads(const TaskThreads&) = delete;
    TaskThreads& operator=(const TaskThreads&) = delete;

    const std::vector<uint32_t>& tids() const { return tids_; }
    void Stop() {
        if (stop_.exchange(true)) return;
        release_.set_value();
        for (std::thread& thread : threads_)
            thread.join();
    }

  private:
    std::atomic<bool> stop_{false};
    std::promise<void> release_;
    std::shared_future<void> stopped_ = release_.get_future().share();
    std::vector<std::thread> threads_;
    std::vector<uint32_t> tids_;
};

#endif // VETRA_TESTS_MONITOR_TASK_THREADS_H
