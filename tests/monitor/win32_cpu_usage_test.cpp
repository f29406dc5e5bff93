// Tests of CVTCpuUsage in the Windows build: the monitor started and stopped
// by its instances (a thread of _beginthreadex, a critical section), this
// process watched while it keeps a core busy, and a stop that doesn't wait
// for the sampling period. The Linux build's own tests hold the figures to
// /proc; these hold the Windows side to sane values.
#include <chrono>
#include <gtest/gtest.h>

#include <windows.h>

#include "vetra/cpu_usage.h"

namespace {

using Clock = std::chrono::steady_clock;

TEST(Win32CpuUsage, MonitorsThisProcessAndStopsAtOnce) {
    const vtdword self = ::GetCurrentProcessId();
    auto* cpu = new CVTCpuUsage;
    {
        CVTCpuUsage second; // only counts
        EXPECT_EQ(second.AddProcess(self), 1);
    }
    EXPECT_EQ(cpu->AddProcess(self), 0); // still watched: the monitor kept running
    EXPECT_EQ(cpu->AddProcess(0), 0);

    // Two passes and a little more, with this thread busy all along.
    volatile unsigned spin = 0;
    for (const auto end = Clock::now() + std::chrono::milliseconds(1300); Clock::now() < end;)
        spin = spin + 1;
    const int system = cpu->GetSystemCpuUsage();
    EXPECT_GT(system, 0);
    EXPECT_LE(system, 100);
    EXPECT_GT(cpu->GetProcessCpuUsage(self), 20); // one busy thread: near 100
    EXPECT_EQ(cpu->GetThreadClassCpuUsage(7), 0);
    EXPECT_EQ(cpu->RemoveProcess(self), 1);
    EXPECT_EQ(cpu->RemoveProcess(self), 0);

    const auto stop = Clock::now();
    delete cpu;
    EXPECT_LT(Clock::now() - stop, std::chrono::milliseconds(400));
}

} // namespace
