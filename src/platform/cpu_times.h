// cpu_times.h - accumulated processor times of the machine, of a process and
// of a thread, in 100 ns units: what the CPU monitor samples.
//
// A process or thread is opened once and read at every pass. An open task
// stays tied to the one task it was opened on: after that task has ended its
// id may be given to another, and the handle never reads the newcomer.
// Different handles may be used from different threads; one handle by one
// thread at a time.
#ifndef VETRA_PLATFORM_CPU_TIMES_H
#define VETRA_PLATFORM_CPU_TIMES_H

#include <cstdint>

namespace vetra::platform {

/// Reads the machine's times, summed over all processors: `idle` the idle
/// time, `kernel` the kernel time *including* the idle time, `user` the user
/// time. Returns 1, or 0 leaving the outputs alone if they can't be read.
int ReadSystemTimes(uint64_t* idle, uint64_t* kernel, uint64_t* user);

/// Opens the process `pid` for ReadTaskTimes; null if there is no such
/// process, it has already ended, or `pid` is a thread other than a
/// process's main one. On Windows: null where OpenProcess refuses the id
/// (no such process, or no right to query it); a process that has ended but
/// whose handle another program keeps open can still be opened.
void* OpenProcessTimes(uint32_t pid);

/// Opens the thread `tid`, of this or any other process, for ReadTaskTimes;
/// null if there is no such thread.
void* OpenThreadTimes(uint32_t tid);

/// Reads the kernel and user time that the task has used so far; `creation`
/// and `exit` are the task's start and end on the wall clock where the system
/// tells them (Windows; exit 0 while it runs), 0 otherwise. Once the task has ended, its last
/// times known are given again at every call. Returns 1, or 0 leaving
/// `kernel` and `user` alone if no time of the task could ever be read.
int ReadTaskTimes(void* task, uint64_t* creation, uint64_t* exit, uint64_t* kernel, uint64_t* user);

/// Closes a task opened by OpenProcessTimes or OpenThreadTimes; null is ignored.
void CloseTaskTimes(void* task);

/// The readers of the times above, each null where the system can't give
/// them (for instance /proc is not mounted). Probes the system at each call.
struct CpuTimeReaders {
    int (*system)(uint64_t* idle, uint64_t* kernel, uint64_t* user);
    int (*process)(void* task, uint64_t* creation, uint64_t* exit, uint64_t* kernel,
                   uint64_t* user);
    int (*thread)(void* task, uint64_t* creation, uint64_t* exit, uint64_t* kernel, uint64_t* user);
};
CpuTimeReaders FindCpuTimeReaders();

} // namespace vetra::platform

#endif // VETRA_PLATFORM_CPU_TIMES_H
