// Tests of the interval timer and MulDiv64: the conversions cut to whole
// seconds before scaling, the unchecked wrap, a real interval, and MulDiv's
// rounding and failure cases.
#include <chrono>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

#include "vetra/perf_counter.h"

namespace {

// A timer holding the given readings (start, then stop: the class's layout).
CVTPerfCounterEx TimerWith(uint64_t start, uint64_t stop) {
    CVTPerfCounterEx timer;
    const uint64_t readings[2] = {start, stop};
    static_assert(sizeof timer == sizeof readings);
    std::memcpy(static_cast<void*>(&timer), readings, sizeof readings);
    return timer;
}

// On Linux the monotonic clock is chosen, at a nanosecond a tick.
constexpr uint64_t kSecond = 1000000000;

TEST(PerfCounter, ConvertsWholeSecondsOnly) {
    struct Case {
        uint64_t start, stop, period, seconds, millis, micros;
    } const cases[] = {
        {5, 5 + 1750000000, 1750000000, 1, 1000, 1000000},
        {0, kSecond - 1, kSecond - 1, 0, 0, 0},
        {100, 100 + 3 * kSecond, 3 * kSecond, 3, 3000, 3000000},
        // Stop before start wraps, unchecked.
        {10, 4, UINT64_MAX - 5, (UINT64_MAX - 5) / kSecond, (UINT64_MAX - 5) / kSecond * 1000,
         (UINT64_MAX - 5) / kSecond * 1000000},
    };
    for (const Case& c : cases) {
        const CVTPerfCounterEx timer = TimerWith(c.start, c.stop);
        EXPECT_EQ(timer.GetPeriod(), c.period) << c.start << ".." << c.stop;
        EXPECT_EQ(timer.GetSeconds(), c.seconds) << c.start << ".." << c.stop;
        EXPECT_EQ(timer.GetMilliSeconds(), c.millis) << c.start << ".." << c.stop;
        EXPECT_EQ(timer.GetMicroSeconds(), c.micros) << c.start << ".." << c.stop;
    }
}

TEST(PerfCounter, MeasuresARealInterval) {
    CVTPerfCounterEx timer;
    timer.Start();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    timer.Stop();
    EXPECT_GE(timer.GetPeriod(), 30 * kSecond / 1000);
    EXPECT_LT(timer.GetPeriod(), 10 * kSecond);
    EXPECT_EQ(timer.GetSeconds(), timer.GetPeriod() / kSecond);
}

TEST(MulDiv64, RoundsAndFailsAsMulDiv) {
    struct Case {
        long long a, b, c, result;
    } const cases[] = {
        {3, 5, 2, 8},                               // 7.5 rounds away from zero
        {-3, 5, 2, -8},                             // and so does -7.5
        {-7, 1, -2, 4},                             // 3.5, both signs negative
        {7, 1, 3, 2},                               // 2.33 rounds down
        {5, 1, 3, 2},                               // 1.67 rounds up
        {1, 1, 0, -1},                              // divisor 0
        {4294967298, 3, 1, 6},                      // only the low 32 bits of a count
        {0x100000005, 0x200000003, 0x700000002, 8}, // of each argument
        {INT_MAX, INT_MAX, INT_MAX, INT_MAX},       // the product needs 62 bits, the result not
        {INT_MIN, 1, 1, INT_MIN},                   // the lowest result fits
        {INT_MIN, -1, 1, -1},                       // 2^31 does not
        {1 << 30, 4, 1, -1},                        // 2^32 does not
        {0xFFFFFFFE, 1, 1, -2},                     // a low half of 0xFFFFFFFE is -2
    };
    for (const Case& c : cases)
        EXPECT_EQ(MulDiv64(c.a, c.b, c.c), c.result) << c.a << " * " << c.b << " / " << c.c;
}

} // namespace
