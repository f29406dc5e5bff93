// cpu_usage.h - CVTCpuUsage, moving CPU usage figures in percent for the
// whole machine and for processes and threads the application watches.
//
// One background thread, started by the first CVTCpuUsage and stopped by the
// last, samples the system's time counters every 500 ms. Instances hold no
// data: each is only a reference to that one monitor. On Linux the figures
// come from /proc, and a watched process is held open (by a pidfd and its
// /proc entry) so that a pid reused after it ends is never read in its place.
// On Windows they come from GetSystemTimes, and GetProcessTimes and
// GetThreadTimes on handles opened once (OpenProcess with
// PROCESS_QUERY_INFORMATION); the ids are Windows process and thread ids.
// Under Wine, GetThreadTimes gives 0 (every thread figure reads 0) and
// process times move in 10 ms steps.
#ifndef VETRA_CPU_USAGE_H
#define VETRA_CPU_USAGE_H

#include <cstdint>

#include "vetra/vetra_export.h"

/// A reference to the process-wide CPU monitor.
///
/// The figures. Every figure is the integer mean of the last two samples
/// (the only one after the first), and a sample covers the time between two
/// passes of the monitor, about 500 ms.
/// - The system figure is the busy share of all processors' time, 0 to 100,
///   however many processors there are: on a machine of 2 cores, one busy
///   core reads 50. On Linux, from the first line of /proc/stat: idle time
///   is idle + iowait, busy time is user + nice + system + irq + softirq;
///   steal time counts in neither.
/// - A process or thread figure is its processor time (user and kernel)
///   against wall-clock time, x 100, not divided by the number of
///   processors and not capped: one busy core reads about 100, a process
///   that keeps four cores busy about 400 (as `top` shows processes by
///   default). On Linux, from /proc/<pid>/stat and /proc/<pid>/task/<tid>/stat,
///   which count in clock ticks of 10 ms: a 500 ms sample is exact to about
///   2 points. The wall clock is the system's real-time clock: if it is set
///   back, that pass gives a task a sample of 0; set forward, one sample low.
///
/// Timing. Figures read 0 until the monitor has two readings of an object:
/// the system figure for about 1 s after the first instance is created, a
/// process or thread for up to 1 s after it was added. A getter cannot tell
/// an id that isn't watched from an idle one: both give 0.
///
/// Threads. The getters and Add/Remove operations may be called from any
/// thread at once: they take the monitor's one lock, and wait for at most one
/// pass. Construction and destruction are not safe against each other: the
/// application serialises them, and the first construction and the last
/// destruction must run while no other thread uses the class. A child made
/// by fork() has no update thread: it must neither use nor destroy the
/// instances it inherited.
class VETRA_API CVTCpuUsage {
  public:
    /// One sampled object: the machine, a process or a thread. Records are
    /// made and owned by the monitor; the type is public only because the
    /// monitor's statics are of this type.
    class VETRA_API CPU_USAGE {
      public:
        /// An empty record: every field 0 or null, nClass -1.
        CPU_USAGE()
            : ullIdleTime(0), ullKernelTime(0), ullUserTime(0), ullLastUpdate(0), nUsage(0),
              nClass(-1), nSampleCount(0), nSampleIndex(0), anSamples{0, 0}, pNext(nullptr),
              hObject(nullptr), dwId(0) {}
        /// Closes hObject if it is not null.
        ~CPU_USAGE();
        /// Copy construction and assignment copy every field, the handle and
        /// pNext included, and move no ownership: only one of the two may be
        /// destroyed while hObject is set.
        CPU_USAGE(const CPU_USAGE& other) = default;
        CPU_USAGE& operator=(const CPU_USAGE& other);

        /// Records one sample in the two-slot ring and sets nUsage to the
        /// truncated mean of the samples held (40 then 51 give 40, then 45;
        /// a further 60 replaces the 40 and gives 55).
        void AddUsage(int nSample);

        /// Accumulated times at the last pass, in 100 ns units: idle (the
        /// machine's record only), kernel and user.
        uint64_t ullIdleTime;
        uint64_t ullKernelTime;
        uint64_t ullUserTime;
        /// Wall clock at the last pass, 100 ns units since 1601-01-01 UTC; 0
        /// until the first pass has taken a baseline.
        uint64_t ullLastUpdate;
        /// The figure the getters return, in percent.
        int32_t nUsage;
        /// Thread class given to AddThread; -1 for none.
        int32_t nClass;
        /// Samples held in the ring, 0 to 2.
        int32_t nSampleCount;
        /// Samples recorded so far; the next goes to slot nSampleIndex % 2.
        int32_t nSampleIndex;
        /// The sample ring.
        int32_t anSamples[2];
        /// Next record of the same list, newest first; null in the machine's record.
        CPU_USAGE* pNext;
        /// The open process or thread, owned by the record; null in the
        /// machine's record.
        void* hObject;
        /// Process id (pid) or thread id (tid); 0 in the machine's record.
        vtdword dwId;
    };

    /// Joins the monitor. The first instance starts it: its first pass comes
    /// 500 ms later, and only takes the baselines.
    CVTCpuUsage();
    /// Joins the monitor as the default constructor does.
    CVTCpuUsage(const CVTCpuUsage& other);
    /// Leaves the monitor. The last instance stops it: the update thread is
    /// woken and joined at once (it is never killed), and every watched
    /// process and thread is forgotten. The system record survives the stop,
    /// so a monitor started again reports the last system figure at once,
    /// and its first pass already records a sample (over all the time since
    /// the last pass before the stop).
    ~CVTCpuUsage();
    /// Does nothing: instances hold no data.
    CVTCpuUsage& operator=(const CVTCpuUsage& other);

    /// The system figure, 0 to 100.
    int GetSystemCpuUsage();
    /// The figure of the watched process `id`; 0 if it isn't watched.
    int GetProcessCpuUsage(vtdword id);
    /// The figure of the watched thread `id`; 0 if it isn't watched.
    int GetThreadCpuUsage(vtdword id);
    /// The sum of the figures of the watched threads of class `nClass`; 0 if
    /// there are none.
    int GetThreadClassCpuUsage(int nClass);

    /// Starts watching the process `id` (a Linux pid). Returns 1 if it was
    /// added; 0 if it is already watched, or if there is no such process, it
    /// has already ended, or `id` names a thread other than a process's main
    /// thread. Any process the caller can see may be watched. A watched
    /// process that ends stays in the list until RemoveProcess: the time it
    /// used before it ended is counted where the system still shows it, then
    /// its figure falls to 0 within two passes and stays 0.
    /// Throws std::bad_alloc if a record can't be allocated (the lock is
    /// released and nothing changes).
    int AddProcess(vtdword id);
    /// Stops watching the process `id`. Returns 1 if a record was removed, 0
    /// if it wasn't watched.
    int RemoveProcess(vtdword id);

    /// Addition on Linux: starts watching the thread `tid` of this or any
    /// other process, in class `nClass` (any value; see
    /// GetThreadClassCpuUsage). Returns 1 if it was added; 0 if it is already
    /// watched or there is no such thread. A watched thread that ends reports
    /// 0 within two passes and stays in the list until RemoveThread.
    /// Throws std::bad_alloc as AddProcess does.
    int AddThread(vtdword tid, int nClass);
    /// Addition on Linux: stops watching the thread `tid`. Returns 1 if a
    /// record was removed, 0 if it wasn't watched.
    int RemoveThread(vtdword tid);

  private:
    struct Lock;
    typedef int (*SystemTimesFun)(uint64_t* idle, uint64_t* kernel, uint64_t* user);
    typedef int (*TaskTimesFun)(void* task, uint64_t* creation, uint64_t* exit, uint64_t* kernel,
                                uint64_t* user);

    /// One sampling pass over every record; returns the new system figure.
    static int UpdateCpuUsage();
    /// The update thread's body. `pThis` is the instance that started it,
    /// which may be gone by now; it is never dereferenced.
    static unsigned int UpdateThread(void* pThis);
    /// The first record of that id, or null; the caller holds the lock.
    static CPU_USAGE* FindProcess(vtdword id);
    static CPU_USAGE* FindThread(vtdword id);

    static int32_t s_nInstanceCount;
    /// Exists only while an instance does.
    static Lock* s_csLock;
    static CPU_USAGE s_cuSystem;
    static CPU_USAGE* s_pcuProcesses;
    static CPU_USAGE* s_pcuThreads;
    /// Unused (always null): the time readers are the platform layer's own,
    /// looked up each time the monitor starts.
    static void* s_hKernel32Dll;
    /// The readers of the system's, a process's and a thread's times; each
    /// is null where the system can't provide it (no /proc), and its stage
    /// of the pass is then skipped.
    static SystemTimesFun s_pfnGetSystemTimes;
    static TaskTimesFun s_pfnGetProcessTimes;
    static TaskTimesFun s_pfnGetThreadTimes;
    /// Set to stop the update thread; null if it couldn't be made.
    static void* s_hStopThread;
    /// The update thread; null if it couldn't be started.
    static void* s_hUpdateThread;
};

#endif // VETRA_CPU_USAGE_H
