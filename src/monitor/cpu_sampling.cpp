// cpu_sampling.cpp - the sampling pass and the record of one sampled object
// (CVTCpuUsage::CPU_USAGE): its two-slot ring of samples and its lifetime.
#include "monitor/cpu_sampling.h"

namespace {

using vetra::monitor::UsageRecord;

// Some kernels let /proc/stat's idle figures step back a little; a counter
// that went backwards has made no progress.
uint64_t Advance(uint64_t now, uint64_t before) {
    return now >= before ? now - before : 0;
}

void SampleSystem(UsageRecord& system, decltype(vetra::platform::CpuTimeReaders::system) read,
                  uint64_t now) {
    if (system.ullLastUpdate == 0) {
        read(&system.ullIdleTime, &system.ullKernelTime, &system.ullUserTime);
    } else {
        uint64_t idle = system.ullIdleTime;
        uint64_t kernel = system.ullKernelTime;
        uint64_t user = system.ullUserTime;
        read(&idle, &kernel, &user);
        // Kernel time includes idle time, so total is all processor time.
        const uint64_t total =
            Advance(kernel, system.ullKernelTime) + Advance(user, system.ullUserTime);
        const uint64_t idleDelta = Advance(idle, system.ullIdleTime);
        const uint64_t busy = total > idleDelta ? total - idleDelta : 0;
        system.ullIdleTime = idle;
        system.ullKernelTime = kernel;
        system.ullUserTime = user;
        system.AddUsage(total == 0 ? 0 : static_cast<int>(busy * 100 / total));
    }
    system.ullLastUpdate = now;
}

void SampleTasks(UsageRecord* list, decltype(vetra::platform::CpuTimeReaders::process) read,
                 uint64_t now) {
    for (UsageRecord* record = list; record != nullptr; record = record->pNext) {
        uint64_t creation;
        uint64_t exit;
        if (record->ullLastUpdate == 0) {
            read(record->hObject, &creation, &exit, &record->ullKernelTime, &record->ullUserTime);
        } else if (const uint64_t elapsed = now - record->ullLastUpdate; elapsed != 0) {
            uint64_t kernel = record->ullKernelTime;
            uint64_t user = record->ullUserTime;
            read(record->hObject, &creation, &exit, &kernel, &user);
            const uint64_t used =
                Advance(kernel, record->ullKernelTime) + Advance(user, record->ullUserTime);
            record->ullKernelTime = kernel;
            record->ullUserTime = user;
            record->AddUsage(static_cast<int>(used * 100 / elapsed));
        }
        record->ullLastUpdate = now;
    }
}

} // namespace

namespace vetra::monitor {

void SamplePass(UsageRecord& system, UsageRecord* processes, UsageRecord* threads,
                const platform::CpuTimeReaders& readers, uint64_t now) {
    if (readers.system != nullptr) SampleSystem(system, readers.system, now);
    if (readers.process != nullptr) SampleTasks(processes, readers.process, now);
    if (readers.thread != nullptr) SampleTasks(threads, readers.thread, now);
}

} // namespace vetra::monitor

CVTCpuUsage::CPU_USAGE::~CPU_USAGE() {
    vetra::platform::CloseTaskTimes(hObject);
}

CVTCpuUsage::CPU_USAGE& CVTCpuUsage::CPU_USAGE::operator=(const CPU_USAGE& other) = default;

void CVTCpuUsage::CPU_USAGE::AddUsage(int nSample) {
    // Unsigned, so that the slot stays 0 or 1 even after the count wraps.
    anSamples[static_cast<uint32_t>(nSampleIndex) % 2] = nSample;
    nSampleIndex = static_cast<int32_t>(static_cast<uint32_t>(nSampleIndex) + 1);
    if (nSampleCount < 2) ++nSampleCount;
    int64_t sum = 0;
    for (int32_t slot = 0; slot < nSampleCount; ++slot)
        sum += anSamples[slot];
    nUsage = static_cast<int32_t>(sum / nSampleCount);
}
