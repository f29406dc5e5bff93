// thread_name.h - the name that debuggers and system tools show for a thread.
//
// Only the calling thread can be named; this layer keeps no state.
#ifndef VETRA_PLATFORM_THREAD_NAME_H
#define VETRA_PLATFORM_THREAD_NAME_H

namespace vetra::platform {

/// Gives the calling thread the name `name` (not null). A failure of the system is ignored.
/// On Linux the name is UTF-8 and a thread name holds at most 15 bytes, so a longer name is
/// cut to the longest prefix of at most 15 bytes that ends on a character boundary. On
/// Windows the name, in the ANSI code page, goes whole to an attached debugger through the
/// thread-naming exception, and to the thread's description where the system keeps one.
void SetCurrentThreadName(const char* name) noexcept;

} // namespace vetra::platform

#endif // VETRA_PLATFORM_THREAD_NAME_H
