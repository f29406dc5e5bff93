// measure.h - clocks, memory figures and the per-operation timer of xml_bench.
//
// Figures are CPU seconds of the calling thread, so that other work on a
// shared machine takes time from the run without being counted in it; wall
// seconds are kept beside them. Memory comes from the kernel.
#ifndef BENCH_MEASURE_H
#define BENCH_MEASURE_H

#include <functional>

namespace bench {

/// CPU seconds of this thread, user and system, from an arbitrary origin.
double CpuNow();

/// CPU seconds since `start` (a CpuNow()), less the cost of reading the
/// clock, which is a system call and not free here.
double CpuSince(double start);

/// Wall-clock seconds from an arbitrary steady origin.
double WallNow();

/// The peak resident set size of this process so far, in KiB.
long PeakRssKib();

/// The current resident set size of this process, in KiB (0 if unknown).
long CurrentRssKib();

/// CPU seconds per call of `op`, timed in batches long enough for the clock:
/// the batch doubles until it takes at least `minSeconds` (or `maxBatch`
/// calls). Returns the time of one further batch of that size, divided by
/// its size.
double SecondsPerOp(const std::function<void()>& op, double minSeconds = 2e-3,
                    long maxBatch = 1L << 20);

} // namespace bench

#endif // BENCH_MEASURE_H
