// cpu_times.cpp (Windows) - processor times from GetSystemTimes, and from GetProcessTimes and
// GetThreadTimes on a handle opened once with OpenProcess or OpenThread.
//
// A handle keeps its process or thread object alive, so its id is not given to another while
// the handle is open, and the times of an ended task stay readable. The system counts in
// 100 ns units already. Under Wine, GetThreadTimes gives 0 for every thread and process
// times move in steps of the scheduler's tick.
#include "platform/cpu_times.h"

#include <new>

#include <windows.h>

namespace vetra::platform {
namespace {

struct Task {
    HANDLE handle;
    bool thread;
};

uint64_t FromFileTime(const FILETIME& time) {
    return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

void* HoldTask(HANDLE handle, bool thread) {
    if (handle == nullptr) return nullptr;
    Task* task = new (std::nothrow) Task{handle, thread};
    if (task == nullptr) ::CloseHandle(handle);
    return task;
}

} // namespace

int ReadSystemTimes(uint64_t* idle, uint64_t* kernel, uint64_t* user) {
    FILETIME idleTime, kernelTime, userTime;
    if (!::GetSystemTimes(&idleTime, &kernelTime, &userTime)) return 0;
    *idle = FromFileTime(idleTime);
    *kernel = FromFileTime(kernelTime);
    *user = FromFileTime(userTime);
    return 1;
}

void* OpenProcessTimes(uint32_t pid) {
    return HoldTask(::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, pid), false);
}

void* OpenThreadTimes(uint32_t tid) {
    return HoldTask(::OpenThread(THREAD_QUERY_INFORMATION, FALSE, tid), true);
}

int ReadTaskTimes(void* handle, uint64_t* creation, uint64_t* exit, uint64_t* kernel,
                  uint64_t* user) {
    *creation = 0;
    *exit = 0;
    const auto* task = static_cast<const Task*>(handle);
    if (task == nullptr) return 0;
    FILETIME created, ended, kernelTime, userTime;
    const BOOL read =
        task->thread ? ::GetThreadTimes(task->handle, &created, &ended, &kernelTime, &userTime)
                     : ::GetProcessTimes(task->handle, &created, &ended, &kernelTime, &userTime);
    if (!read) return 0;
    *creation = FromFileTime(created);
    *exit = FromFileTime(ended);
    *kernel = FromFileTime(kernelTime);
    *user = FromFileTime(userTime);
    return 1;
}

void CloseTaskTimes(void* handle) {
    auto* task = static_cast<Task*>(handle);
    if (task == nullptr) return;
    ::CloseHandle(task->handle);
    delete task;
}

CpuTimeReaders FindCpuTimeReaders() {
    return CpuTimeReaders{ReadSystemTimes, ReadTaskTimes, ReadTaskTimes};
}

} // namespace vetra::platform
