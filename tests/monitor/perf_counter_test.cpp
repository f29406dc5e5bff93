// Tests of the interval timer and MulDiv64: conversions cut to whole seconds
// before scaling, the unchecked wrap, a real interval, MulDiv's rounding and
// failures.
#include <chrono>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

#include "vetra/perf_counter.h"

namespace {

constexpr uint64_t kSecond = 1000000000; // Linux's fine clock counts nanoseconds

TEST(PerfCounter, ConvertsWholeSecondsOnly) {
    struct Case {
        uint64_t start, stop, seconds;
    } const cases[] = {
        {5, 5 + 1750000000, 1},
        {0, kSecond - 1, 0},
        {10, 4, (UINT64_MAX - 5) / kSecond}, // stop before start wraps, unchecked
    };
    for (const Case& c : cases) {
        CVTPerfCounterEx timer;
        const uint64_t readings[2] = {c.start, c.stop}; // the class's layout
        static_assert(sizeof timer == sizeof readings);
        std::memcpy(static_cast<void*>(&timer), readings, sizeof readings);
        EXPECT_EQ(timer.GetPeriod(), c.stop - c.start);
        EXPECT_EQ(timer.GetSeconds(), c.seconds);
        EXPECT_EQ(timer.GetMilliSeconds(), c.seconds * 1000);
        EXPECT_EQ(timer.GetMicroSeconds(), c.seconds * 1000000);
    }
}

TEST(PerfCounter, MeasuresARealInterval) {
    CVTPerfCounterEx timer;
    timer.Start();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    timer.Stop();
    EXPECT_GE(timer.GetPeriod(), 30 * kSecond / 1000);
    EXPECT_LT(timer.GetPeriod(), 10 * kSecond);
}

TEST(MulDiv64, RoundsAndFailsAsMulDiv) {
    struct Case {
        long long a, b, c, result;
    } const cases[] = {
        {3, 5, 2, 8},                               // 7.5 rounds away from zero
        {-3, 5, 2, -8},                             // and so does -7.5
        {-7, 1, -2, 4},                             // 3.5
        {7, 1, 3, 2},                               // 2.33
        {5, 1, 3, 2},                               // 1.67
        {1, 1, 0, -1},                              // divisor 0
        {4294967298, 3, 1, 6},                      // only the low 32 bits count
        {0x100000005, 0x200000003, 0x700000002, 8}, // of every argument
        {INT_MAX, INT_MAX, INT_MAX, INT_MAX},       // a 62-bit product
        {INT_MIN, 1, 1, INT_MIN},                   // the lowest result fits
        {INT_MIN, -1, 1, -1},                       // 2^31 does not
        {0xFFFFFFFE, 1, 1, -2},                     // the result is sign-extended
    };
    for (const Case& c : cases)
        EXPECT_EQ(MulDiv64(c.a, c.b, c.c), c.result) << c.a << " * " << c.b << " / " << c.c;
}

} // namespace
