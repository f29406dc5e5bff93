// Tests of the /proc readers: the parsers on made-up lines, and a process handle keeping to
// its process through its end. A thread's own times are checked in cpu_usage_test.cpp.
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <time.h>

#include "platform/cpu_times.h"
#include "platform/posix/proc_stat.h"
#include "test_tasks.h"

namespace {

using namespace vetra::platform;

// What the parsers make of a line: a /proc/stat text's idle, kernel and user ticks, or a
// task line's state, user and kernel ticks; "none" when they refuse it. A refused line
// leaves the output alone (here its 9s).
std::string Parsed(const std::string& text) {
    std::ostringstream out;
    if (text.rfind("cpu", 0) == 0) {
        SystemTicks t{9, 9, 9};
        if (!ParseSystemTicks(text.data(), text.size(), t)) out << "none ";
        out << t.idle << " " << t.kernel << " " << t.user;
    } else {
        TaskTicks t{'9', 9, 9};
        if (!ParseTaskTicks(text.data(), text.size(), t)) out << "none ";
        out << t.state << " " << t.user << " " << t.kernel;
    }
    return out.str();
}

TEST(ProcStat, Lines) {
    const struct {
        std::string text, parsed;
    } cases[] = {
        {"cpu  10 2 30 400 5 6 7 8 9 10\ncpu0 1 1 1 1\n", "405 448 12"},
        {"cpu  1 2 3 4\n", "4 7 3"},            // an old kernel's four figures
        {"cpu0 1 2 3 4 5 6 7\n", "none 9 9 9"}, // one processor, not the sum
        {"42 (a) b) (c) R 1 2 3 -1 -1 4194560 10 0 0 0 7 8 0 0", "R 7 8"},
        {"42 (x) S 1 2 3 4 5 6 7 8 9 10 11", "none 9 9 9"}, // cut before the kernel time
    };
    for (const auto& c : cases)
        EXPECT_EQ(Parsed(c.text), c.parsed) << c.text;
}

// Kernel + user time of an open task in milliseconds; -1 if nothing was read.
int64_t UsedMillis(void* task) {
    uint64_t creation, exit, kernel = 0, user = 0;
    return ReadTaskTimes(task, &creation, &exit, &kernel, &user) ? (kernel + user) / 10000 : -1;
}

TEST(TaskTimes, AProcessHandleKeepsItsLastTimesAfterTheEnd) {
    ChildProcess child;
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
