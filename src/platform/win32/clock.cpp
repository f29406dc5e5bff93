// clock.cpp (Windows) - the performance counter for the fine clock, GetTickCount for the
// millisecond tick, GetSystemTimeAsFileTime for the wall clock. No state, no locks.
#include "platform/clock.h"

#include <windows.h>

namespace vetra::platform {

uint64_t FineFrequency() {
    LARGE_INTEGER frequency;
    return ::QueryPerformanceFrequency(&frequency) ? static_cast<uint64_t>(frequency.QuadPart) : 0;
}

bool FineTicks(uint64_t& out) {
    LARGE_INTEGER now;
    if (!::QueryPerformanceCounter(&now)) return false;
    out = static_cast<uint64_t>(now.QuadPart);
    return true;
}

uint32_t TickCount32() {
    return ::GetTickCount();
}

uint64_t SystemTimeAsFileTime() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return static_cast<uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

} // namespace vetra::platform
