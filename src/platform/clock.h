// clock.h - the clocks read by the interval timer and the CPU monitor: a fine
// monotonic counter, a coarse 32-bit millisecond tick, and the wall clock.
//
// Each function is one read of the system's clock and keeps no state; all are
// safe to call from several threads at once. Nothing here sleeps or waits.
#ifndef VETRA_PLATFORM_CLOCK_H
#define VETRA_PLATFORM_CLOCK_H

#include <cstdint>

namespace vetra::platform {

/// Ticks per second of FineTicks, or 0 if the system has no such clock.
uint64_t FineFrequency();

/// Reads the fine monotonic counter (nanoseconds on POSIX systems) into `out`.
/// Returns false, leaving `out` alone, if the clock can't be read.
bool FineTicks(uint64_t& out);

/// Milliseconds from an unspecified start on a coarse monotonic clock, cut to
/// 32 bits: the value wraps every 49.7 days.
uint32_t TickCount32();

/// The wall clock (UTC) in 100 ns units since 1601-01-01.
uint64_t SystemTimeAsFileTime();

} // namespace vetra::platform

#endif // VETRA_PLATFORM_CLOCK_H
