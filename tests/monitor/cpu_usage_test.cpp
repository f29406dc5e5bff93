// Tests of CVTCpuUsage on the real machine: the results of adding and
// removing, the figures under a known load against /proc's own counts, a
// restart, getters from several threads while instances come and go, and
// many starts and stops leaving nothing behind.
#include <algorithm>
#include <chrono>
#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>

#include "platform/posix/proc_stat.h"
#include "test_tasks.h"
#include "text/file_fixture.h"
#include "vetra/cpu_usage.h"

namespace {

using Clock = std::chrono::steady_clock;

size_t CountEntries(const char* folder) {
    return size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
}

// A task's processor time in percent of one core since it was made, from
// its stat file in clock ticks, converted here rather than by the library.
struct TaskLoad {
    explicit TaskLoad(std::string statPath) : path(std::move(statPath)), start(Ticks()) {}
    uint64_t Ticks() const {
        const std::string line = vetra::test::ReadWholeFile(path);
        vetra::platform::TaskTicks used{};
        vetra::platform::ParseTaskTicks(line.data(), line.size(), used);
        return used.user + used.kernel;
    }
    double Percent() const {
        const double seconds = std::chrono::duration<double>(Clock::now() - time).count();
        return double(Ticks() - start) / double(sysconf(_SC_CLK_TCK)) / seconds * 100;
    }
    std::string path;
    uint64_t start;
    Clock::time_point time = Clock::now();
};

TEST(CpuUsage, AddAndRemoveResults) {
    CVTCpuUsage cpu;
    const uint32_t self = static_cast<uint32_t>(getpid());
    TaskThreads idle(Load::idle, 4);
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
    EXPECT_EQ(cpu.RemoveThread(tids[3]), 1);
    EXPECT_EQ(cpu.RemoveThread(tids[1]), 1);
    for (uint32_t tid : tids)
        EXPECT_EQ(cpu.RemoveThread(tid), tid == tids[0] || tid == tids[2]);
}

TEST(CpuUsage, FiguresUnderLoadAndAfterARestart) {
    auto cpu = std::make_unique<CVTCpuUsage>();
    const Clock::time_point started = Clock::now();
    // Every core busy: a child process on one, threads of ours on the others.
    const int cores = std::max(2, static_cast<int>(std::thread::hardware_concurrency()));
    ChildProcess child;
    TaskThreads spinners(Load::spinning, cores - 1);
    const uint32_t spinner = spinners.tids()[0];
    ASSERT_EQ(cpu->AddProcess(child.pid()), 1);
    for (uint32_t tid : spinners.tids())
        ASSERT_EQ(cpu->AddThread(tid, 1), 1);
    ASSERT_EQ(cpu->AddThread(ThisThreadId(), 2), 1);
    ASSERT_EQ(cpu->AddThread(child.pid(), 3), 1); // another process's (only) thread

    // Passes come at about 0.5 s (the baselines), 1 s and 1.5 s: the figures
    // read at 1.6 s cover 0.5 s to 1.5 s, and so do the test's own counts.
    std::this_thread::sleep_until(started + std::chrono::milliseconds(520));
    TaskLoad childLoad("/proc/" + std::to_string(child.pid()) + "/stat");
    TaskLoad spinnerLoad("/proc/self/task/" + std::to_string(spinner) + "/stat");
    std::this_thread::sleep_until(started + std::chrono::milliseconds(1520));
    const double childExpected = childLoad.Percent();
    const double spinnerExpected = spinnerLoad.Percent();
    std::this_thread::sleep_until(started + std::chrono::milliseconds(1600));

    // The counts agree within a few points; a wrong base (per core,
    // unconverted ticks, a share of idle time) misses by far more.
    const int process = cpu->GetProcessCpuUsage(child.pid());
    EXPECT_NEAR(process, childExpected, 4 + childExpected / 5);
    EXPECT_GE(process, 5);
    EXPECT_NEAR(cpu->GetThreadCpuUsage(child.pid()), childExpected, 4 + childExpected / 5);
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
            std::unique_lock<std::mutex> hold(lifetimes);
            auto mine = std::make_unique<CVTCpuUsage>();
            hold.unlock();
            const int system = mine->GetSystemCpuUsage();
            EXPECT_TRUE(system >= 0 && system <= 100) << system;
            EXPECT_GE(mine->GetProcessCpuUsage(self), 0);
            EXPECT_EQ(mine->AddThread(tid, nClass), 1);
            EXPECT_GE(mine->GetThreadClassCpuUsage(nClass), 0);
            mine->AddProcess(self);
            mine->RemoveProcess(self);
            EXPECT_EQ(mine->RemoveThread(tid), 1);
            hold.lock();
        }
    };
    std::thread workers[3] = {std::thread(work, 1), std::thread(work, 2), std::thread(work, 3)};
    for (std::thread& worker : workers)
        worker.join();
}

TEST(CpuUsage, StartsAndStopsLeaveNothingBehind) {
    // Each cycle starts and stops the monitor and its thread: some 0.25 ms,
    // half a millisecond under ThreadSanitizer.
    const uint32_t self = static_cast<uint32_t>(getpid());
    CVTCpuUsage().AddProcess(self); // a sanitizer's own thread starts with the first one
    const size_t threads = CountEntries("/proc/self/task");
    const size_t descriptors = CountEntries("/proc/self/fd");
    for (int i = 0; i < 10000; ++i) {
        CVTCpuUsage cpu;
        ASSERT_EQ(cpu.AddProcess(self), 1);
        ASSERT_EQ(cpu.AddThread(ThisThreadId(), 0), 1);
    }
    EXPECT_EQ(CountEntries("/proc/self/task"), threads);
    EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
}

} // namespace
