// event.cpp (Windows) - the stop signal is a manual-reset event: once set it stays set, and
// every wait returns at once. The pointer handed out is the event's handle.
#include "platform/event.h"

#include <windows.h>

namespace vetra::platform {

void* CreateStopEvent() {
    return ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

void SetStopEvent(void* event) {
    if (event != nullptr) ::SetEvent(event);
}

WaitResult WaitStopEvent(void* event, uint32_t milliseconds) {
    if (event == nullptr) return WaitResult::failed;
    switch (::WaitForSingleObject(event, milliseconds)) {
    case WAIT_OBJECT_0:
        return WaitResult::signalled;
    case WAIT_TIMEOUT:
        return WaitResult::timeout;
    default:
        return WaitResult::failed;
    }
}

void CloseStopEvent(void* event) {
    if (event != nullptr) ::CloseHandle(event);
}

} // namespace vetra::platform
