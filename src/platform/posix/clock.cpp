// clock.cpp - the clocks on POSIX systems: CLOCK_MONOTONIC for the fine
// counter, CLOCK_MONOTONIC_COARSE for the millisecond tick, CLOCK_REALTIME for
// the wall clock. No state, no locks.
#include "platform/clock.h"

#include <time.h>

namespace vetra::platform {

namespace {

constexpr uint64_t kNanosPerSecond = 1000000000;
// Seconds from 1601-01-01 to 1970-01-01, the two epochs of the wall clock.
constexpr uint64_t kEpochDifferenceSeconds = 11644473600;

} // namespace

uint64_t FineFrequency() {
    timespec resolution{};
    return clock_getres(CLOCK_MONOTONIC, &resolution) == 0 ? kNanosPerSecond : 0;
}

bool FineTicks(uint64_t& out) {
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
    out = static_cast<uint64_t>(now.tv_sec) * kNanosPerSecond + static_cast<uint64_t>(now.tv_nsec);
    return true;
}

uint32_t TickCount32() {
    timespec now{};
    // The coarse clock is missing only on very old kernels; the fine one then stands in.
    if (clock_gettime(CLOCK_MONOTONIC_COARSE, &now) != 0) clock_gettime(CLOCK_MONOTONIC, &now);
    const uint64_t millis =
        static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
    return static_cast<uint32_t>(millis);
}

uint64_t SystemTimeAsFileTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return (static_cast<uint64_t>(now.tv_sec) + kEpochDifferenceSeconds) * 10000000 +
           static_cast<uint64_t>(now.tv_nsec) / 100;
}

} // namespace vetra::platform
