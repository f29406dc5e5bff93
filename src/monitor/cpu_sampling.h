// cpu_sampling.h - one sampling pass of the CPU monitor: the arithmetic that
// turns two readings of accumulated times into a percentage, over the
// machine's record and the lists of process and thread records.
//
// The pass learns of the system only through the readers and the wall-clock
// value it is given, so it can be run on made-up readings. It takes no lock:
// the caller holds the monitor's.
#ifndef VETRA_MONITOR_CPU_SAMPLING_H
#define VETRA_MONITOR_CPU_SAMPLING_H

#include <cstdint>

#include "platform/cpu_times.h"
#include "vetra/cpu_usage.h"

namespace vetra::monitor {

using UsageRecord = CVTCpuUsage::CPU_USAGE;

/// Samples every record once at wall-clock time `now` (100 ns units). A
/// stage whose reader is null is skipped. A record without a baseline
/// (ullLastUpdate 0) only takes one. Otherwise:
/// - the machine: sample = busy x 100 / total over the interval, where total
///   is the kernel time (idle included) plus the user time, and busy is total
///   less the idle time; 0 if total is 0;
/// - a process or thread: sample = its kernel + user time x 100 / wall-clock
///   time elapsed; no sample at all if no wall-clock time has passed, and a
///   sample of 0 if the wall clock stepped back (the elapsed time wraps).
/// A reader that fails leaves the previous readings, so the sample is 0. A
/// counter that goes backwards counts as no progress, and its new value is
/// the next baseline.
void SamplePass(UsageRecord& system, UsageRecord* processes, UsageRecord* threads,
                const platform::CpuTimeReaders& readers, uint64_t now);

} // namespace vetra::monitor

#endif // VETRA_MONITOR_CPU_SAMPLING_H
