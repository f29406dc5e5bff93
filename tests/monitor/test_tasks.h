// test_tasks.h - processes and threads for the monitor's tests to watch: a child that spins
// (`sh`), spawned so that no threaded test forks, and threads of ours that spin or idle until
// the object goes.
#ifndef VETRA_TESTS_MONITOR_TEST_TASKS_H
#define VETRA_TESTS_MONITOR_TEST_TASKS_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

inline uint32_t ThisThreadId() {
    return static_cast<uint32_t>(gettid());
}

enum class Load { spinning, idle };

class ChildProcess {
  public:
    ChildProcess() {
        const char* spin[] = {"sh", "-c", "while :; do :; done", nullptr};
        posix_spawnp(&pid_, spin[0], nullptr, nullptr, const_cast<char* const*>(spin), environ);
    }
    ~ChildProcess() { Reap(); }
    uint32_t pid() const { return static_cast<uint32_t>(pid_); }
    /// Ends the child and waits until it is a zombie: ended, not yet reaped.
    void Kill() {
        kill(pid_, SIGKILL);
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
    }
    /// Reaps the child (killed first): its pid is free for another process.
    void Reap() {
        if (pid_ == 0) return;
        Kill();
        waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }

  private:
    pid_t pid_ = 0;
};

class TaskThreads {
  public:
    TaskThreads(Load load, int count) {
        std::vector<std::atomic<uint32_t>> told(static_cast<size_t>(count));
        for (std::atomic<uint32_t>& tid : told)
            threads_.emplace_back([this, load, &tid] {
                tid = ThisThreadId();
                while (!stop_)
                    if (load == Load::idle)
                        std::this_thread::sleep_for(std::chrono::milliseconds(5));
            });
        for (std::atomic<uint32_t>& tid : told) {
            while (tid == 0)
                std::this_thread::yield();
            tids_.push_back(tid);
        }
    }
    ~TaskThreads() {
        stop_ = true;
        for (std::thread& thread : threads_)
            thread.join();
    }
    const std::vector<uint32_t>& tids() const { return tids_; }

  private:
    std::atomic<bool> stop_{false};
    std::vector<uint32_t> tids_;
    std::vector<std::thread> threads_;
};

#endif // VETRA_TESTS_MONITOR_TEST_TASKS_H
