// perf_counter.h - CVTPerfCounterEx, a stopwatch on the finest clock the
// machine offers, and MulDiv64, a rounding multiply-divide on 32-bit values.
//
// The clock is chosen once per process, on first use: on Linux the monotonic
// clock in nanoseconds (1,000,000,000 ticks a second), or, if that clock
// cannot be read, the coarse monotonic clock in milliseconds (1,000 ticks a
// second). On Windows it is QueryPerformanceCounter at the frequency the
// system reports (10 MHz on most machines and under Wine), or GetTickCount.
// The stopwatch keeps no lock and reads no clock in its getters.
#ifndef VETRA_PERF_COUNTER_H
#define VETRA_PERF_COUNTER_H

#include <cstdint>

#include "vetra/vetra_export.h"

/// Two clock readings and their difference.
///
/// The class has no constructor: a new object holds undefined readings until
/// Start and Stop have written them. Copying (assignment or construction)
/// copies both readings.
///
/// Threads: one object belongs to one thread at a time; separate objects are
/// independent. The first use from several threads at once is safe: the
/// choice of clock is made exactly once.
class VETRA_API CVTPerfCounterEx {
  public:
    /// Takes the start reading. Costs one clock read after the first use.
    void Start();
    /// Takes the stop reading. Start and Stop may come in any order and any
    /// number of times; each overwrites only its own reading.
    void Stop();

    /// Stop reading minus start reading, in clock ticks (nanoseconds on
    /// Linux, performance counter ticks on Windows). Unsigned and unchecked: a Stop taken before
    /// Start wraps to a very large value, and so does a millisecond fallback reading that crosses
    /// the 32-bit wrap of its counter (every 49.7 days).
    uint64_t GetPeriod() const;
    /// The whole seconds in GetPeriod: 0 below one second, 1 for 1.75 s.
    uint64_t GetSeconds() const;
    /// GetSeconds() x 1000: the interval is cut to whole seconds first, so
    /// 1.75 s gives 1000 and anything below one second gives 0.
    uint64_t GetMilliSeconds() const;
    /// GetSeconds() x 1000000, cut to whole seconds in the same way.
    uint64_t GetMicroSeconds() const;

  private:
    typedef void (*MeasureFun)(uint64_t& out);

    /// Ticks per second of the fine clock; 1000 if it has none.
    static uint64_t QueryFrequency_();
    /// QueryFrequency_, computed once per process.
    static uint64_t Frequency_();
    /// Reads the fine clock.
    static void Qpc_(uint64_t& out);
    /// Reads the coarse millisecond clock, cut to 32 bits and widened with zeros.
    static void Gtc_(uint64_t& out);
    /// Qpc_ if a trial reading of the fine clock succeeds, otherwise Gtc_.
    static MeasureFun GetMeasureFun_();
    /// Reads the clock chosen, once per process, by GetMeasureFun_.
    static void Measure_(uint64_t& out);

    uint64_t m_ullStart;
    uint64_t m_ullStop;
};

/// a x b / c on the low 32 bits of each argument, rounded to the nearest
/// integer (halves away from zero), with a 64-bit intermediate product so
/// that a x b never overflows. The result is a 32-bit value sign-extended to
/// 64 bits: -1 when c is 0 or the quotient does not fit in 32 bits (so -1
/// is also the answer to MulDiv64(1, 1, -1)). The high halves of the
/// arguments are ignored: MulDiv64(4294967298, 3, 1) gives 6.
/// Thread-safe: it keeps no state.
VETRA_API long long MulDiv64(long long a, long long b, long long c);

#endif // VETRA_PERF_COUNTER_H
