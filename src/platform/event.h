// event.h - a one-shot stop signal that a thread can wait on with a timeout:
// once set it stays set, and every wait then returns at once.
//
// Set and wait may come from different threads at once; create and close
// must not overlap any other use. An event is an opaque pointer.
#ifndef VETRA_PLATFORM_EVENT_H
#define VETRA_PLATFORM_EVENT_H

#include <cstdint>

namespace vetra::platform {

enum class WaitResult {
    signalled, ///< the event is set
    timeout,   ///< the time ran out first
    failed,    ///< no event (null) or the wait itself failed
};

/// A new event, not set; null if the system refuses one.
void* CreateStopEvent();

/// Sets the event; waits in progress and all later ones return signalled.
void SetStopEvent(void* event);

/// Waits up to `milliseconds` for the event to be set. A signal that
/// interrupts the wait doesn't shorten or lengthen it.
WaitResult WaitStopEvent(void* event, uint32_t milliseconds);

/// Frees the event; null is ignored.
void CloseStopEvent(void* event);

} // namespace vetra::platform

#endif // VETRA_PLATFORM_EVENT_H
