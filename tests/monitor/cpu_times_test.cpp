// Tests of the /proc readers: the parsers on made-up lines, and on real
// tasks that a thread's figures are its own and that a process handle keeps
// to its process through its end.
#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <time.h>

#include "child_process.h"
#include "platform/cpu_times.h"
#include "platform/posix/proc_stat.h"
#include "task_threads.h"

namespace {

using namespace vetra::platform;

TEST(ProcStat, ParsesTheCpuLine) {
    struct Case {
        const char* text;
        bool ok;
        uint64_t idle, kernel, user;
    } const cases[] = {
        {"cpu  10 2 30 400 5 6 7 8 9 10\ncpu0 1 1 1 1\n", true, 405, 448, 12},
        {"cpu  1 2 3 4\n", true, 4, 7, 3}, // an old kernel's four figures
        {"cpu0 1 2 3 4 5 6 7\n", false, 0, 0, 0},
        {"cpu  1 2 3\ncpu0 4 5 6 7\n", false, 0, 0, 0},
        {"intr 1 2 3 4", false, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SystemTicks ticks{};
        const std::string text = c.text;
        ASSERT_EQ(ParseSystemTicks(text.data(), text.size(), ticks), c.ok) << c.text;
        if (!c.ok) continue;
        EXPECT_EQ(ticks.idle, c.idle) << c.text;
        EXPECT_EQ(ticks.kernel, c.kernel) << c.text;
        EXPECT_EQ(ticks.user, c.user) << c.text;
    }
}

TEST(ProcStat, ParsesATaskLine) {
    struct Case {
        const char* text;
        bool ok;
        char state;
        uint64_t user, kernel;
    } const cases[] = {
        {"1234 (bash) S 1 1234 1234 34816 5678 4194560 2000 300 1 0 250 75 0 0 20 0 1\n", true, 'S',
         250, 75},
        {"42 (a) b) (c) R 1 2 3 -1 -1 4194560 10 0 0 0 7 8 0 0", true, 'R', 7, 8},
        {"42 (x) S 1 2 3 4 5 6 7 8 9 10 11", false, 0, 0, 0}, // cut before the kernel time
        {"42 x S 1 2 3 4 5 6 7 8 9 10 11 12", false, 0, 0, 0},
    };
    for (const Case& c : cases) {
        TaskTicks ticks{};
        const std::string text = c.text;
        ASSERT_EQ(ParseTaskTicks(text.data(), text.size(), ticks), c.ok) << c.text;
        if (!c.ok) continue;
        EXPECT_EQ(ticks.state, c.state) << c.text;
        EXPECT_EQ(ticks.user, c.user) << c.text;
        EXPECT_EQ(ticks.kernel, c.kernel) << c.text;
    }
}

// Kernel + user time of an open task, in 100 ns units; -1 if nothing was read.
int64_t UsedTime(void* task) {
    uint64_t creation, exit, kernel = 0, user = 0;
    return ReadTaskTimes(task, &creation, &exit, &kernel, &user) ? int64_t(kernel + user) : -1;
}

constexpr int64_t kMillisecond = 10000;

TEST(TaskTimes, AThreadReadsItsOwnTimesNotItsProcesss) {
    TaskThreads idle(TaskThreads::idle, 1);
    void* idleThread = OpenThreadTimes(idle.tids()[0]);
    void* mainThread = OpenThreadTimes(ThisThreadId());
    ASSERT_NE(idleThread, nullptr);
    ASSERT_NE(mainThread, nullptr);
    // Spin this thread for 200 ms of its own processor time.
    timespec used{};
    do
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    while (used.tv_sec == 0 && used.tv_nsec < 200000000);
    EXPECT_GE(UsedTime(mainThread), 150 * kMillisecond);
    EXPECT_LT(UsedTime(idleThread), 50 * kMillisecond);
    CloseTaskTimes(idleThread);
    CloseTaskTimes(mainThread);

    // A thread of another process, found through its process.
    ChildProcess child(ChildProcess::idle);
    void* childThread = OpenThreadTimes(child.pid());
    EXPECT_GE(UsedTime(childThread), 0);
    CloseTaskTimes(childThread);
}

TEST(TaskTimes, AProcessHandleKeepsItsLastTimesAfterTheEnd) {
    ChildProcess child(ChildProcess::busy);
    void* process = OpenProcessTimes(child.pid());
    ASSERT_NE(process, nullptr);
    const timespec pause{0, 100000000};
    nanosleep(&pause, nullptr);
    const int64_t running = UsedTime(process);
    EXPECT_GT(running, 0);

    child.Kill();
    child.WaitZombie();
    EXPECT_EQ(OpenProcessTimes(child.pid()), nullptr); // it has ended
    const int64_t final = UsedTime(process);
    EXPECT_GE(final, running);
    child.Reap();
    // Its pid is free for another process now; the handle reads nothing new.
    EXPECT_EQ(UsedTime(process), final);
    CloseTaskTimes(process);
}

TEST(TaskTimes, OpensOnlyWhatExists) {
    TaskThreads idle(TaskThreads::idle, 1);
    const uint32_t noSuchId = INT_MAX; // above any pid_max
    for (uint32_t id : {0u, noSuchId, uint32_t(INT_MAX) + 1u, idle.tids()[0]}) {
        void* process = OpenProcessTimes(id);
        EXPECT_EQ(process, nullptr) << id; // a thread other than the main one is no process
        CloseTaskTimes(process);
    }
    for (uint32_t id : {0u, noSuchId})
        EXPECT_EQ(OpenThreadTimes(id), nullptr) << id;
}

} // namespace
