// measure.cpp - clocks and memory figures for xml_bench, from clock_gettime,
// getrusage and /proc/self/status.
//
// Nothing here knows about XML; the memory figures are the whole process's.
#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <time.h>
#include <vector>

namespace bench {

double CpuNow() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

namespace {

// What one start-stop pair of CpuNow() adds to an interval: the median of
// many back-to-back pairs.
double ClockCost() {
    static const double cost = [] {
        std::vector<double> pairs(201);
        for (double& pair : pairs) {
            const double start = CpuNow();
            pair = CpuNow() - start;
        }
        std::nth_element(pairs.begin(), pairs.begin() + 100, pairs.end());
        return pairs[100];
    }();
    return cost;
}

} // namespace

double CpuSince(double start) {
    const double cost = ClockCost(); // calibrated before the clock is read
    return std::max(0.0, CpuNow() - start - cost);
}

double WallNow() {
    using Clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

long PeakRssKib() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

long CurrentRssKib() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (!status) return 0;
    char line[256];
    long kib = 0;
    while (std::fgets(line, sizeof line, status))
        if (std::strncmp(line, "VmRSS:", 6) == 0 && std::sscanf(line + 6, "%ld", &kib) == 1) break;
    std::fclose(status);
    return kib;
}

double SecondsPerOp(const std::function<void()>& op, double minSeconds, long maxBatch) {
    long batch = 1;
    for (;;) {
        const double start = CpuNow();
        for (long i = 0; i < batch; ++i)
            op();
        if (CpuSince(start) >= minSeconds || batch >= maxBatch) break;
        batch *= 2;
    }
    const double start = CpuNow();
    for (long i = 0; i < batch; ++i)
        op();
    return CpuSince(start) / static_cast<double>(batch);
}

} // namespace bench
