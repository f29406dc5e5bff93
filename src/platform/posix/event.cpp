// event.cpp - the stop signal on Linux: an eventfd that is written once and
// never read, so it stays readable; a wait is a poll with a timeout. The
// pointer handed out is the descriptor plus one (so that descriptor 0 is not null).
#include "platform/event.h"

#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <time.h>
#include <unistd.h>

namespace vetra::platform {

namespace {

int Descriptor(void* event) {
    return static_cast<int>(reinterpret_cast<intptr_t>(event) - 1);
}

int64_t NowMillis() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

} // namespace

void* CreateStopEvent() {
    const int fd = eventfd(0, EFD_CLOEXEC);
    return fd < 0 ? nullptr : reinterpret_cast<void*>(static_cast<intptr_t>(fd) + 1);
}

void SetStopEvent(void* event) {
    if (event == nullptr) return;
    const uint64_t one = 1;
    while (write(Descriptor(event), &one, sizeof one) < 0 && errno == EINTR) {
    }
}

WaitResult WaitStopEvent(void* event, uint32_t milliseconds) {
    if (event == nullptr) return WaitResult::failed;
    pollfd watch{Descriptor(event), POLLIN, 0};
    const int64_t deadline = NowMillis() + milliseconds;
    for (;;) {
        const int64_t left = deadline - NowMillis();
        const int ready = poll(&watch, 1, left > 0 ? static_cast<int>(left) : 0);
        if (ready > 0) return WaitResult::signalled;
        if (ready == 0) return WaitResult::timeout;
        if (errno != EINTR) return WaitResult::failed;
    }
}

void CloseStopEvent(void* event) {
    if (event != nullptr) close(Descriptor(event));
}

} // namespace vetra::platform
