// proc_stat.h - parsers of the two /proc texts the CPU monitor reads: the
// "cpu" line of /proc/stat and a task's stat line. Pure functions on text,
// no I/O; the figures stay in the clock ticks the files count in.
#ifndef VETRA_PLATFORM_POSIX_PROC_STAT_H
#define VETRA_PLATFORM_POSIX_PROC_STAT_H

#include <cstddef>
#include <cstdint>

namespace vetra::platform {

/// The machine's times from the first line of /proc/stat ("cpu  user nice
/// system idle iowait irq softirq steal ..."): idle = idle + iowait, kernel =
/// system + irq + softirq + idle + iowait (idle counted inside kernel time),
/// user = user + nice. Steal and guest time are left out (guest is already
/// inside user). Fields that an older kernel doesn't write count 0.
struct SystemTicks {
    uint64_t idle;
    uint64_t kernel;
    uint64_t user;
};

/// Parses the "cpu" line at the start of `text`; false, leaving `out` alone,
/// if the text doesn't start with it or has fewer than its first four figures.
bool ParseSystemTicks(const char* text, size_t length, SystemTicks& out);

/// What a task's stat line (/proc/<pid>/stat, /proc/<pid>/task/<tid>/stat)
/// gives the monitor: its state letter and its user and kernel time.
struct TaskTicks {
    char state;
    uint64_t user;
    uint64_t kernel;
};

/// Parses a stat line. The command name in parentheses may hold anything,
/// spaces and parentheses included; the fields are counted after its last
/// ')'. False, leaving `out` alone, if the line is cut short before the
/// kernel time.
bool ParseTaskTicks(const char* text, size_t length, TaskTicks& out);

} // namespace vetra::platform

#endif // VETRA_PLATFORM_POSIX_PROC_STAT_H
