// Tests of the sampling pass and the sample ring on made-up readings: the
// baseline, the two bases of the figures, tasks that end, counters and a wall
// clock that go backwards. Every scenario runs a process and a thread record.
#include <gtest/gtest.h>
#include <vector>

#include "monitor/cpu_sampling.h"

namespace {

using vetra::monitor::UsageRecord;

constexpr uint64_t H = 5000000; // half a second in 100 ns units
constexpr uint64_t P = H / 100; // 1% of it
constexpr uint64_t T = 133000000000000000;

struct SystemReading {
    uint64_t idle, kernel, user;
};
struct TaskReading {
    uint64_t kernel, user;
    bool readable; // false: the task has gone and gives nothing
};

SystemReading g_system;

int ReadSystem(uint64_t* idle, uint64_t* kernel, uint64_t* user) {
    *idle = g_system.idle;
    *kernel = g_system.kernel;
    *user = g_system.user;
    return 1;
}

// A task's handle points at its current reading.
int ReadTask(void* task, uint64_t* creation, uint64_t* exit, uint64_t* kernel, uint64_t* user) {
    *creation = *exit = 0;
    const auto* reading = static_cast<const TaskReading*>(task);
    if (!reading->readable) return 0;
    *kernel = reading->kernel;
    *user = reading->user;
    return 1;
}

const vetra::platform::CpuTimeReaders kFakeReaders{ReadSystem, ReadTask, ReadTask};

// One pass: the clock, what the readers give, and the figures after it.
struct Step {
    uint64_t now;
    SystemReading system;
    TaskReading task;
    int systemUsage, taskUsage, taskSamples;
};

struct Scenario {
    const char* name;
    std::vector<Step> steps;
};

// A record that holds a fake handle, cleared before the record closes it.
struct FakeRecord : UsageRecord {
    explicit FakeRecord(TaskReading* reading) { hObject = reading; }
    ~FakeRecord() { hObject = nullptr; }
};

TEST(SamplePass, FiguresFromReadings) {
    const Scenario scenarios[] = {
        {"first pass takes only a baseline, then an idle machine of two cores",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T + H, {2 * H, 2 * H, 0}, {0, 0, true}, 0, 0, 1}}},
        {"one busy core of two; a task keeping one core busy",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T + H, {H, H, H}, {H / 5, 4 * H / 5, true}, 50, 100, 1},
          {T + 2 * H, {2 * H, 2 * H, 2 * H}, {2 * H / 5, 8 * H / 5, true}, 50, 100, 2}}},
        {"a task on four cores is not divided by them",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T + H, {0, H, 3 * H}, {H, 3 * H, true}, 100, 400, 1}}},
        {"moving mean of the last two samples: 40, 51, 60 give 40, 45, 55",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T + H, {60 * P, 60 * P, 40 * P}, {0, 40 * P, true}, 40, 40, 1},
          {T + 2 * H, {109 * P, 109 * P, 91 * P}, {0, 91 * P, true}, 45, 45, 2},
          {T + 3 * H, {149 * P, 149 * P, 151 * P}, {0, 151 * P, true}, 55, 55, 2}}},
        {"a task that ends: its times stop, its figure falls to 0 in two passes",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T + H, {0, 0, 0}, {0, H, true}, 0, 100, 1},
          {T + 2 * H, {0, 0, 0}, {0, 0, false}, 0, 50, 2},
          {T + 3 * H, {0, 0, 0}, {0, 0, false}, 0, 0, 2}}},
        {"counters that go backwards count as no progress, then as the baseline",
         {{T, {10 * H, 10 * H, 0}, {4 * H, 0, true}, 0, 0, 0},
          {T + H, {9 * H, 9 * H, 0}, {2 * H, 0, true}, 0, 0, 1},
          {T + 2 * H, {10 * H, 10 * H, H}, {3 * H, 0, true}, 25, 50, 2}}},
        {"no wall-clock time passed: no task sample, but a machine sample",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T, {H, H, H}, {0, H, true}, 50, 0, 0},
          {T + H, {H, H, H}, {0, H, true}, 25, 100, 1}}},
        {"the wall clock steps back: that task sample is 0",
         {{T, {0, 0, 0}, {0, 0, true}, 0, 0, 0},
          {T - H, {0, 0, 0}, {0, H, true}, 0, 0, 1},
          {T, {0, 0, 0}, {0, 2 * H, true}, 0, 50, 2}}},
    };
    for (const Scenario& scenario : scenarios) {
        SCOPED_TRACE(scenario.name);
        UsageRecord system;
        TaskReading processReading{};
        TaskReading threadReading{};
        FakeRecord process(&processReading);
        FakeRecord thread(&threadReading);
        for (size_t i = 0; i < scenario.steps.size(); ++i) {
            const Step& step = scenario.steps[i];
            g_system = step.system;
            processReading = threadReading = step.task;
            vetra::monitor::SamplePass(system, &process, &thread, kFakeReaders, step.now);
            EXPECT_EQ(system.nUsage, step.systemUsage) << "pass " << i;
            for (const UsageRecord* task : {&process, &thread}) {
                EXPECT_EQ(task->nUsage, step.taskUsage) << "pass " << i;
                EXPECT_EQ(task->nSampleCount, step.taskSamples) << "pass " << i;
            }
        }
    }
}

} // namespace
