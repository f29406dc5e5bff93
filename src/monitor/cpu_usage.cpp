// cpu_usage.cpp - CVTCpuUsage: the monitor's lifetime (started by the first
// instance, stopped by the last), its one lock, the update thread, the
// getters, and the lists of watched processes and threads.
//
// The arithmetic of a pass is in cpu_sampling.cpp, the system's readers in
// the platform layer. The statics are the whole state; instances hold none.
#include "vetra/cpu_usage.h"

#include <memory>
#include <mutex>
#include <new>

#include "monitor/cpu_sampling.h"
#include "platform/clock.h"
#include "platform/cpu_times.h"
#include "platform/event.h"
#include "platform/thread.h"

struct CVTCpuUsage::Lock {
    vetra::platform::Lock mutex;
};

int32_t CVTCpuUsage::s_nInstanceCount = 0;
CVTCpuUsage::Lock* CVTCpuUsage::s_csLock = nullptr;
CVTCpuUsage::CPU_USAGE CVTCpuUsage::s_cuSystem;
CVTCpuUsage::CPU_USAGE* CVTCpuUsage::s_pcuProcesses = nullptr;
CVTCpuUsage::CPU_USAGE* CVTCpuUsage::s_pcuThreads = nullptr;
void* CVTCpuUsage::s_hKernel32Dll = nullptr;
CVTCpuUsage::SystemTimesFun CVTCpuUsage::s_pfnGetSystemTimes = nullptr;
CVTCpuUsage::TaskTimesFun CVTCpuUsage::s_pfnGetProcessTimes = nullptr;
CVTCpuUsage::TaskTimesFun CVTCpuUsage::s_pfnGetThreadTimes = nullptr;
void* CVTCpuUsage::s_hStopThread = nullptr;
void* CVTCpuUsage::s_hUpdateThread = nullptr;

namespace {

using Record = CVTCpuUsage::CPU_USAGE;
using Guard = std::lock_guard<vetra::platform::Lock>;

constexpr uint32_t kPassPeriodMillis = 500;

Record* FindRecord(Record* list, uint32_t id) {
    for (Record* record = list; record != nullptr; record = record->pNext)
        if (record->dwId == id) return record;
    return nullptr;
}

int UsageOf(const Record* record) {
    return record != nullptr ? record->nUsage : 0;
}

// Opens `id` and pushes its record at the head; 0 if it is already there or
// can't be opened. The record is allocated first, so that a failing
// allocation leaves nothing open.
int AddRecord(Record*& head, uint32_t id, int nClass, void* (*open)(uint32_t)) {
    if (FindRecord(head, id) != nullptr) return 0;
    auto record = std::make_unique<Record>();
    record->hObject = open(id);
    if (record->hObject == nullptr) return 0;
    record->dwId = id;
    record->nClass = nClass;
    record->pNext = head;
    head = record.release();
    return 1;
}

int RemoveRecord(Record*& head, uint32_t id) {
    for (Record** link = &head; *link != nullptr; link = &(*link)->pNext) {
        if ((*link)->dwId != id) continue;
        Record* found = *link;
        *link = found->pNext;
        delete found; // closes its handle
        return 1;
    }
    return 0;
}

void FreeList(Record*& head) {
    while (Record* record = head) {
        head = record->pNext;
        delete record;
    }
}

} // namespace

CVTCpuUsage::CVTCpuUsage() {
    if (s_nInstanceCount != 0) {
        ++s_nInstanceCount;
        return;
    }
    s_csLock = new Lock;
    const vetra::platform::CpuTimeReaders readers = vetra::platform::FindCpuTimeReaders();
    s_pfnGetSystemTimes = readers.system;
    s_pfnGetProcessTimes = readers.process;
    s_pfnGetThreadTimes = readers.thread;
    // Without an event the thread's first wait fails and it ends at once;
    // without a thread no pass ever runs. Either way the getters give what
    // the records hold and the monitor can still be stopped.
    s_hStopThread = vetra::platform::CreateStopEvent();
    s_hUpdateThread = vetra::platform::StartThread(UpdateThread, this);
    ++s_nInstanceCount;
}

CVTCpuUsage::CVTCpuUsage(const CVTCpuUsage&) : CVTCpuUsage() {}

CVTCpuUsage::~CVTCpuUsage() {
    if (--s_nInstanceCount != 0) return;
    vetra::platform::SetStopEvent(s_hStopThread);
    // The thread wakes at once and a pass takes milliseconds, so it is
    // joined rather than waited for with a limit: nothing is ever killed.
    vetra::platform::JoinThread(s_hUpdateThread);
    s_hUpdateThread = nullptr;
    vetra::platform::CloseStopEvent(s_hStopThread);
    s_hStopThread = nullptr;
    // The thread has ended: the lists are ours alone.
    FreeList(s_pcuProcesses);
    FreeList(s_pcuThreads);
    delete s_csLock;
    s_csLock = nullptr;
}

CVTCpuUsage& CVTCpuUsage::operator=(const CVTCpuUsage&) {
    return *this;
}

int CVTCpuUsage::GetSystemCpuUsage() {
    Guard hold(s_csLock->mutex);
    return s_cuSystem.nUsage;
}

int CVTCpuUsage::GetProcessCpuUsage(vtdword id) {
    Guard hold(s_csLock->mutex);
    return UsageOf(FindProcess(id));
}

int CVTCpuUsage::GetThreadCpuUsage(vtdword id) {
    Guard hold(s_csLock->mutex);
    return UsageOf(FindThread(id));
}

int CVTCpuUsage::GetThreadClassCpuUsage(int nClass) {
    Guard hold(s_csLock->mutex);
    int sum = 0;
    for (const Record* record = s_pcuThreads; record != nullptr; record = record->pNext)
        if (record->nClass == nClass) sum += record->nUsage;
    return sum;
}

int CVTCpuUsage::AddProcess(vtdword id) {
    Guard hold(s_csLock->mutex);
    return AddRecord(s_pcuProcesses, id, -1, vetra::platform::OpenProcessTimes);
}

int CVTCpuUsage::RemoveProcess(vtdword id) {
    Guard hold(s_csLock->mutex);
    return RemoveRecord(s_pcuProcesses, id);
}

int CVTCpuUsage::AddThread(vtdword tid, int nClass) {
    Guard hold(s_csLock->mutex);
    return AddRecord(s_pcuThreads, tid, nClass, vetra::platform::OpenThreadTimes);
}

int CVTCpuUsage::RemoveThread(vtdword tid) {
    Guard hold(s_csLock->mutex);
    return RemoveRecord(s_pcuThreads, tid);
}

int CVTCpuUsage::UpdateCpuUsage() {
    Guard hold(s_csLock->mutex);
    const vetra::platform::CpuTimeReaders readers{s_pfnGetSystemTimes, s_pfnGetProcessTimes,
                                                  s_pfnGetThreadTimes};
    vetra::monitor::SamplePass(s_cuSystem, s_pcuProcesses, s_pcuThreads, readers,
                               vetra::platform::SystemTimeAsFileTime());
    return s_cuSystem.nUsage;
}

unsigned int CVTCpuUsage::UpdateThread(void*) {
    // The first pass comes one period after the start; a stop ends the wait at once.
    while (vetra::platform::WaitStopEvent(s_hStopThread, kPassPeriodMillis) ==
           vetra::platform::WaitResult::timeout)
        UpdateCpuUsage();
    return 0;
}

CVTCpuUsage::CPU_USAGE* CVTCpuUsage::FindProcess(vtdword id) {
    return FindRecord(s_pcuProcesses, id);
}

CVTCpuUsage::CPU_USAGE* CVTCpuUsage::FindThread(vtdword id) {
    return FindRecord(s_pcuThreads, id);
}
