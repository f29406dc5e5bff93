// Tests of CVTCpuUsage on the real machine: the results of adding and
// removing, the figures under a known load against /proc's own counts, a
// restart, getters from several threads while instances come and go, and
// many starts and stops leaving nothing behind.
#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>

#include "child_process.h"
#include "task_threads.h"
#include "vetra/cpu_usage.h"

namespace {

using Clock = std::chrono::steady_clock;

// Entries of a /proc/self folder: threads or open descriptors.
size_t CountEntries(const char* folder) {
    size_t count = 0;
    if (DIR* dir = opendir(folder)) {
        while (readdir(dir) != nullptr)
            ++count;
        closedir(dir);
    }
    return count;
}

// utime + stime in a /proc stat file, in clock ticks, read by the test itself.
uint64_t TicksIn(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) return 0;
    char line[1024] = {};
    const size_t got = std::fread(line, 1, sizeof line - 1, file);
    std::fclose(file);
    const char* fields = std::strrchr(line, ')');
    unsigned long long user = 0, kernel = 0;
    if (got == 0 || fields == nullptr ||
        std::sscanf(fields + 2, "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &user,
                    &kernel) != 2)
        return 0;
    return user + kernel;
}

TEST(CpuUsage, AddAndRemoveResults) {
    CVTCpuUsage cpu;
    const uint32_t self = static_cast<uint32_t>(getpid());
    TaskThreads idle(TaskThreads::idle, 4);
    const std::vector<uint32_t>& tids = idle.tids();

    EXPECT_EQ(cpu.AddProcess(self), 1);
    EXPECT_EQ(cpu.AddProcess(self), 0); // already watched: still one record
    EXPECT_EQ(cpu.RemoveProcess(self), 1);
    EXPECT_EQ(cpu.RemoveProcess(self), 0);
    for (uint32_t refused : {0u, uint32_t(INT_MAX), tids[0]}) // a thread is no process
        EXPECT_EQ(cpu.AddProcess(refused), 0) << refused;
    EXPECT_EQ(cpu.AddThread(0, 1), 0);

    // The list runs newest first: tids[3] is its head, tids[1] in its middle.
    for (uint32_t tid : tids)
        EXPECT_EQ(cpu.AddThread(tid, 1), 1);
    EXPECT_EQ(cpu.AddThread(tids[2], 5), 0);
    EXPECT_EQ(cpu.RemoveThread(tids[3]), 1);
    EXPECT_EQ(cpu.RemoveThread(tids[1]), 1);
    for (uint32_t kept : {tids[0], tids[2]})
        EXPECT_EQ(cpu.AddThread(kept, 1), 0) << kept;
    for (uint32_t tid : tids)
        EXPECT_EQ(cpu.RemoveThread(tid), tid == tids[0] || tid == tids[2]);
    EXPECT_EQ(cpu.GetThreadClassCpuUsage(1), 0);
}

// Percent of one core that a task used between two readings of its ticks.
struct TaskLoad {
    explicit TaskLoad(std::string statPath) : path(std::move(statPath)) {}
    void Mark() {
        ticks = TicksIn(path);
        time = Clock::now();
    }
    double PercentSinceMark() const {
        const double seconds = std::chrono::duration<double>(Clock::now() - time).count();
        return double(TicksIn(path) - ticks) / double(sysconf(_SC_CLK_TCK)) / seconds * 100;
    }

    std::string path;
    uint64_t ticks = 0;
    Clock::time_point time;
};

TEST(CpuUsage, FiguresUnderLoadAndAfterARestart) {
    auto cpu = std::make_unique<CVTCpuUsage>();
    const Clock::time_point started = Clock::now();
    const int cores = std::max(2, static_cast<int>(std::thread::hardware_concurrency()));
    // Every core busy: a child process on one, threads of ours on the others.
    ChildProcess child(ChildProcess::busy);
    TaskThreads spinners(TaskThreads::spinning, cores - 1);
    const uint32_t spinner = spinners.tids()[0];
    ASSERT_EQ(cpu->AddProcess(child.pid()), 1);
    for (uint32_t tid : spinners.tids())
        ASSERT_EQ(cpu->AddThread(tid, 1), 1);
    ASSERT_EQ(cpu->AddThread(ThisThreadId(), 2), 1);

    // Passes come at about 0.5 s (the baselines), 1 s and 1.5 s: the figures
    // read at 1.6 s cover 0.5 s to 1.5 s, and so do the test's own counts.
    std::this_thread::sleep_until(started + std::chrono::milliseconds(520));
    TaskLoad childLoad("/proc/" + std::to_string(child.pid()) + "/stat");
    TaskLoad spinnerLoad("/proc/self/task/" + std::to_string(spinner) + "/stat");
    childLoad.Mark();
    spinnerLoad.Mark();
    std::this_thread::sleep_until(started + std::chrono::milliseconds(1520));
    const double childExpected = childLoad.PercentSinceMark();
    const double spinnerExpected = spinnerLoad.PercentSinceMark();
    std::this_thread::sleep_until(started + std::chrono::milliseconds(1600));

    // The counts agree within a few points; a wrong base (per core,
    // unconverted ticks, a share of idle time) misses by far more.
    const int process = cpu->GetProcessCpuUsage(child.pid());
    EXPECT_NEAR(process, childExpected, 4 + childExpected / 5);
    EXPECT_GE(process, 5);
    const int thread = cpu->GetThreadCpuUsage(spinner);
    EXPECT_NEAR(thread, spinnerExpected, 4 + spinnerExpected / 5);
    EXPECT_GE(thread, 5);
    EXPECT_GE(cpu->GetThreadClassCpuUsage(1), thread);
    EXPECT_LE(cpu->GetThreadClassCpuUsage(2), 10); // this thread mostly sleeps
    const int system = cpu->GetSystemCpuUsage();
    EXPECT_GE(system, 60);
    EXPECT_LE(system, 100);

    // Stopped and started again, with the load still on: the system figure
    // is kept and shown before any pass, the watched lists are not.
    cpu.reset();
    cpu = std::make_unique<CVTCpuUsage>();
    EXPECT_GE(cpu->GetSystemCpuUsage(), 30);
    EXPECT_EQ(cpu->GetThreadCpuUsage(spinner), 0);
    EXPECT_EQ(cpu->AddProcess(child.pid()), 1);
}

TEST(CpuUsage, GettersFromSeveralThreadsWhileInstancesComeAndGo) {
    std::mutex lifetimes; // the application serialises construction and destruction
    CVTCpuUsage keeper;
    const uint32_t self = static_cast<uint32_t>(getpid());
    keeper.AddProcess(self);
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(1200);
    auto work = [&](int nClass) {
        const uint32_t tid = ThisThreadId();
        while (Clock::now() < end) {
            CVTCpuUsage* mine;
            {
                std::lock_guard<std::mutex> hold(lifetimes);
                mine = new CVTCpuUsage;
            }
            const int system = mine->GetSystemCpuUsage();
            EXPECT_TRUE(system >= 0 && system <= 100) << system;
            EXPECT_GE(mine->GetProcessCpuUsage(self), 0);
            EXPECT_EQ(mine->AddThread(tid, nClass), 1);
            EXPECT_GE(mine->GetThreadCpuUsage(tid), 0);
            EXPECT_GE(mine->GetThreadClassCpuUsage(nClass), 0);
            mine->AddProcess(self);
            mine->RemoveProcess(self);
            EXPECT_EQ(mine->RemoveThread(tid), 1);
            std::lock_guard<std::mutex> hold(lifetimes);
            delete mine;
        }
    };
    std::thread workers[4] = {std::thread(work, 1), std::thread(work, 2), std::thread(work, 3),
                              std::thread(work, 4)};
    for (std::thread& worker : workers)
        worker.join();
}

TEST(CpuUsage, StartsAndStopsLeaveNothingBehind) {
    // Each cycle starts and stops the monitor and its thread: some 0.1 ms,
    // half a millisecond under ThreadSanitizer.
    const int cycles = 10000;
    const uint32_t self = static_cast<uint32_t>(getpid());
    const size_t threads = CountEntries("/proc/self/task");
    const size_t descriptors = CountEntries("/proc/self/fd");
    for (int i = 0; i < cycles; ++i) {
        CVTCpuUsage cpu;
        ASSERT_EQ(cpu.AddProcess(self), 1);
        ASSERT_EQ(cpu.AddThread(ThisThreadId(), 0), 1);
    }
    EXPECT_EQ(CountEntries("/proc/self/task"), threads);
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
}

} // namespace
