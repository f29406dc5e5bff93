// cpu_times.cpp - processor times on Linux, from /proc.
//
// The machine's times come from /proc/stat. A process or thread is held by
// its stat file, opened once and read again with pread at every pass: the
// kernel binds an open /proc file to the task it was opened on, so after that
// task is reaped reads fail, even once its id has been given to another. A
// process is also held by a pidfd, which confirms when it is opened that the
// stat file belongs to the live process, and tells when it has ended.
// /proc counts in clock ticks (USER_HZ); the readers give 100 ns units.
#include "platform/cpu_times.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/posix/proc_stat.h"

#ifndef SYS_pidfd_open
#define SYS_pidfd_open 434 // the same number on every architecture
#endif

namespace vetra::platform {

namespace {

struct Task {
    int pidfd;   // -1 for a thread, or on a kernel without pidfds
    int statfd;  // -1 once the task has ended and its last times are taken
    bool thread; // a thread rather than a whole process
    bool known;  // kernel and user hold a reading
    uint64_t kernel;
    uint64_t user;
};

uint64_t TicksToFileTime(uint64_t ticks) {
    static const uint64_t hz = [] {
        const long value = sysconf(_SC_CLK_TCK);
        return value > 0 ? static_cast<uint64_t>(value) : 100;
    }();
    constexpr uint64_t kUnitsPerSecond = 10000000;
    return kUnitsPerSecond % hz == 0 ? ticks * (kUnitsPerSecond / hz)
                                     : ticks * kUnitsPerSecond / hz;
}

// Reads from the start of `fd`; the length read, or -1.
ssize_t ReadFromStart(int fd, char* buffer, size_t capacity) {
    ssize_t got;
    do
        got = pread(fd, buffer, capacity, 0);
    while (got < 0 && errno == EINTR);
    return got;
}

int OpenReadOnly(const char* path) {
    return open(path, O_RDONLY | O_CLOEXEC);
}

void CloseIfOpen(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

// A pidfd turns readable when its process has ended.
bool HasEnded(int pidfd) {
    pollfd watch{pidfd, POLLIN, 0};
    return poll(&watch, 1, 0) > 0;
}

bool ReadTicks(int statfd, TaskTicks& ticks) {
    // A stat line is some 300 characters; the command name is at most 64.
    char line[1024];
    const ssize_t got = ReadFromStart(statfd, line, sizeof line);
    return got > 0 && ParseTaskTicks(line, static_cast<size_t>(got), ticks);
}

void* HoldTask(int pidfd, int statfd, bool thread) {
    try {
        return new Task{pidfd, statfd, thread, false, 0, 0};
    } catch (...) {
        CloseIfOpen(pidfd);
        CloseIfOpen(statfd);
        throw;
    }
}

// The process that thread `tid` belongs to, from the "Tgid:" line of its
// status file; 0 if there is no such thread.
uint32_t ThreadGroupOf(uint32_t tid) {
    char path[48];
    std::snprintf(path, sizeof path, "/proc/%u/status", tid);
    const int fd = OpenReadOnly(path);
    if (fd < 0) return 0;
    char text[1024];
    const ssize_t got = ReadFromStart(fd, text, sizeof text - 1);
    close(fd);
    if (got <= 0) return 0;
    text[got] = '\0';
    const char* line = std::strstr(text, "\nTgid:");
    unsigned long tgid = 0;
    if (line == nullptr || std::sscanf(line + 6, "%lu", &tgid) != 1 || tgid > INT_MAX) return 0;
    return static_cast<uint32_t>(tgid);
}

} // namespace

int ReadSystemTimes(uint64_t* idle, uint64_t* kernel, uint64_t* user) {
    const int fd = OpenReadOnly("/proc/stat");
    if (fd < 0) return 0;
    // The summed "cpu" line comes first and is some 100 characters long.
    char text[512];
    const ssize_t got = ReadFromStart(fd, text, sizeof text);
    close(fd);
    SystemTicks ticks;
    if (got <= 0 || !ParseSystemTicks(text, static_cast<size_t>(got), ticks)) return 0;
    *idle = TicksToFileTime(ticks.idle);
    *kernel = TicksToFileTime(ticks.kernel);
    *user = TicksToFileTime(ticks.user);
    return 1;
}

void* OpenProcessTimes(uint32_t pid) {
    if (pid == 0 || pid > INT_MAX) return nullptr;
    int pidfd = static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0u));
    // pidfd_open refuses a thread that isn't a process's main one (EINVAL) and
    // an unknown pid (ESRCH). Kernels before 5.3 lack it; the stat file alone
    // still keeps the process there.
    if (pidfd < 0 && errno != ENOSYS) return nullptr;
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%u/stat", pid);
    int statfd = OpenReadOnly(path);
    // If the process had ended before the stat file was opened, its pid may
    // already name another process, whose file that would be.
    if (statfd < 0 || (pidfd >= 0 && HasEnded(pidfd))) {
        CloseIfOpen(statfd);
        CloseIfOpen(pidfd);
        return nullptr;
    }
    return HoldTask(pidfd, statfd, false);
}

void* OpenThreadTimes(uint32_t tid) {
    if (tid == 0 || tid > INT_MAX) return nullptr;
    // A thread's own times are in its task folder: /proc/<tid>/stat of a
    // thread that isn't the main one gives its whole process's times.
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%u/stat", tid);
    int statfd = OpenReadOnly(path);
    if (statfd < 0) {
        const uint32_t tgid = ThreadGroupOf(tid);
        if (tgid == 0) return nullptr;
        std::snprintf(path, sizeof path, "/proc/%u/task/%u/stat", tgid, tid);
        statfd = OpenReadOnly(path);
        if (statfd < 0) return nullptr;
    }
    return HoldTask(-1, statfd, true);
}

int ReadTaskTimes(void* handle, uint64_t* creation, uint64_t* exit, uint64_t* kernel,
                  uint64_t* user) {
    *creation = 0;
    *exit = 0;
    auto* task = static_cast<Task*>(handle);
    if (task == nullptr) return 0;
    if (task->statfd >= 0) {
        // Asked before the read: a process that had ended by then gives its
        // final times now, or none if it has already been reaped.
        const bool ended = task->pidfd >= 0 && HasEnded(task->pidfd);
        TaskTicks ticks{};
        const bool read = ReadTicks(task->statfd, ticks);
        if (read) {
            task->kernel = TicksToFileTime(ticks.kernel);
            task->user = TicksToFileTime(ticks.user);
            task->known = true;
        }
        // A zombie thread's times are final. A process's state letter is its
        // main thread's, which may have ended while the others run on; the
        // pidfd alone tells when the process has ended.
        const bool zombie = task->thread && (ticks.state == 'Z' || ticks.state == 'X');
        if (!read || ended || zombie) {
            CloseIfOpen(task->statfd);
            CloseIfOpen(task->pidfd);
        }
    }
    if (!task->known) return 0;
    *kernel = task->kernel;
    *user = task->user;
    return 1;
}

void CloseTaskTimes(void* handle) {
    auto* task = static_cast<Task*>(handle);
    if (task == nullptr) return;
    CloseIfOpen(task->statfd);
    CloseIfOpen(task->pidfd);
    delete task;
}

CpuTimeReaders FindCpuTimeReaders() {
    const bool system = access("/proc/stat", R_OK) == 0;
    const bool tasks = access("/proc/self/stat", R_OK) == 0;
    return CpuTimeReaders{system ? ReadSystemTimes : nullptr, tasks ? ReadTaskTimes : nullptr,
                          tasks ? ReadTaskTimes : nullptr};
}

} // namespace vetra::platform
