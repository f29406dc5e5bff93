// Tests of the interval timer and MulDiv64: conversions cut to whole seconds before scaling,
// the unchecked wrap, MulDiv's rounding and failures, and a real interval.
#include <chrono>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

#include "platform/clock.h"
#include "vetra/perf_counter.h"

namespace {

// The fine clock's ticks a second: 10^9 on Linux, the performance counter's on Windows.
const uint64_t kSecond = vetra::platform::FineFrequency();

// A timer row: its two readings and its whole seconds. A MulDiv64 row: a * b / c = result.
TEST(PerfCounter, ConversionsAndMulDiv64) {
    enum Kind { kTimer, kMulDiv };
    struct Case {
        Kind kind;
        long long a, b, c, result;
    };
    const long long second = static_cast<long long>(kSecond);
    const Case cases[] = {
        {kTimer, 5, 5 + second * 7 / 4, 0, 1},
        {kTimer, 0, second - 1, 0, 0},
        {kTimer, 10, 4, 0, static_cast<long long>((UINT64_MAX - 5) / kSecond)}, // wraps, unchecked
        {kMulDiv, 3, 5, 2, 8},                               // 7.5 rounds away from zero
        {kMulDiv, -3, 5, 2, -8},                             // and so does -7.5
        {kMulDiv, -7, 1, -2, 4},                             // 3.5
        {kMulDiv, 7, 1, 3, 2},                               // 2.33
        {kMulDiv, 5, 1, 3, 2},                               // 1.67
        {kMulDiv, 1, 1, 0, -1},                              // divisor 0
        {kMulDiv, 0x100000005, 0x200000003, 0x700000002, 8}, // only the low 32 bits count
        {kMulDiv, INT_MAX, INT_MAX, INT_MAX, INT_MAX},       // a 62-bit product
        {kMulDiv, INT_MIN, 1, 1, INT_MIN},                   // the lowest result fits
        {kMulDiv, INT_MIN, -1, 1, -1},                       // 2^31 does not
        {kMulDiv, 0xFFFFFFFE, 1, 1, -2},                     // the result is sign-extended
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.a << ", " << c.b << ", " << c.c);
        if (c.kind == kMulDiv) {
            EXPECT_EQ(MulDiv64(c.a, c.b, c.c), c.result);
            continue;
        }
        CVTPerfCounterEx timer;
        const uint64_t readings[2] = {uint64_t(c.a), uint64_t(c.b)}; // the class's layout
        static_assert(sizeof timer == sizeof readings);
        std::memcpy(static_cast<void*>(&timer), readings, sizeof readings);
        const uint64_t seconds = uint64_t(c.result);
        EXPECT_EQ(timer.GetPeriod(), readings[1] - readings[0]);
        EXPECT_EQ(timer.GetSeconds(), seconds);
        EXPECT_EQ(timer.GetMilliSeconds(), seconds * 1000);
        EXPECT_EQ(timer.GetMicroSeconds(), seconds * 1000000);
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

} // namespace
