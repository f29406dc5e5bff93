// Tests of the /proc readers: the parsers on made-up lines; on real tasks,
// that a thread's times are its own and that a process handle keeps to its
// process through its end.
#include <gtest/gtest.h>
#include <string>
#include <time.h>

#include "platform/cpu_times.h"
#include "platform/posix/proc_stat.h"
#include "test_tasks.h"

namespace {

using namespace vetra::platform;

TEST(ProcStat, ParsesTheCpuLine) {
    struct Case {
        std::string text;
        bool ok;
        SystemTicks ticks;
    } const cases[] = {
        {"cpu  10 2 30 400 5 6 7 8 9 10\ncpu0 1 1 1 1\n", true, {405, 448, 12}},
        {"cpu  1 2 3 4\n", true, {4, 7, 3}}, // an old kernel's four figures
        {"cpu0 1 2 3 4 5 6 7\n", false, {}}, // one processor, not the sum
    };
    for (const Case& c : cases) {
        SystemTicks ticks{};
        ASSERT_EQ(ParseSystemTicks(c.text.data(), c.text.size(), ticks), c.ok) << c.text;
        EXPECT_EQ(ticks.idle, c.ticks.idle) << c.text;
        EXPECT_EQ(ticks.kernel, c.ticks.kernel) << c.text;
        EXPECT_EQ(ticks.user, c.ticks.user) << c.text;
    }
}

TEST(ProcStat, ParsesATaskLine) {
    struct Case {
        std::string text;
        bool ok;
        TaskTicks ticks;
    } const cases[] = {
        {"1234 (bash) S 1 1234 1234 34816 5678 4194560 2000 300 1 0 250 75 0 0 20\n",
         true,
         {'S', 250, 75}},
        {"42 (a) b) (c) R 1 2 3 -1 -1 4194560 10 0 0 0 7 8 0 0", true, {'R', 7, 8}},
        {"42 (x) S 1 2 3 4 5 6 7 8 9 10 11", false, {}}, // cut before the kernel time
    };
    for (const Case& c : cases) {
        TaskTicks ticks{};
        ASSERT_EQ(ParseTaskTicks(c.text.data(), c.text.size(), ticks), c.ok) << c.text;
        EXPECT_EQ(ticks.state, c.ticks.state) << c.text;
        EXPECT_EQ(ticks.user, c.ticks.user) << c.text;
        EXPECT_EQ(ticks.kernel, c.ticks.kernel) << c.text;
    }
}

// Kernel + user time of an open task in milliseconds; -1 if nothing was read.
int64_t UsedMillis(void* task) {
    uint64_t creation, exit, kernel = 0, user = 0;
    return ReadTaskTimes(task, &creation, &exit, &kernel, &user) ? (kernel + user) / 10000 : -1;
}

TEST(TaskTimes, AThreadsTimesAreItsOwnNotItsProcesss) {
    TaskThreads idle(Load::idle, 1);
    void* idleThread = OpenThreadTimes(idle.tids()[0]);
    void* mainThread = OpenThreadTimes(ThisThreadId());
    timespec used{};
    do
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    while (used.tv_sec == 0 && used.tv_nsec < 200000000);
    EXPECT_GE(UsedMillis(mainThread), 150);
    EXPECT_LT(UsedMillis(idleThread), 50);
    CloseTaskTimes(idleThread);
    CloseTaskTimes(mainThread);

    ChildProcess child(Load::idle); // its main thread, found through its process
    void* childThread = OpenThreadTimes(child.pid());
    EXPECT_GE(UsedMillis(childThread), 0);
    CloseTaskTimes(childThread);
}

TEST(TaskTimes, AProcessHandleKeepsItsLastTimesAfterTheEnd) {
    ChildProcess child(Load::spinning);
    void* process = OpenProcessTimes(child.pid());
    const timespec pause{0, 100000000};
    nanosleep(&pause, nullptr);
    const int64_t running = UsedMillis(process);
    EXPECT_GT(running, 0);

    child.Kill();
    EXPECT_EQ(OpenProcessTimes(child.pid()), nullptr); // ended
    const int64_t final = UsedMillis(process);
    EXPECT_GE(final, running);
    child.Reap();
    EXPECT_EQ(UsedMillis(process), final); // nothing new, whoever has the pid now
    CloseTaskTimes(process);
}

} // namespace
