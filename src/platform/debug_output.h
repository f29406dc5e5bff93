// debug_output.h - the channel that diagnostic traces go to.
//
// A trace is a finished text handed over whole; this layer adds nothing to it (no prefix,
// no line end) and keeps no state. On POSIX systems the channel is standard error.
#ifndef VETRA_PLATFORM_DEBUG_OUTPUT_H
#define VETRA_PLATFORM_DEBUG_OUTPUT_H

#include <cstddef>

namespace vetra::platform {

/// Writes `length` bytes of `text` (UTF-8) to the debug channel as one piece, so that texts
/// of different threads do not interleave inside one text. A failure to write is ignored:
/// a trace has no result. Safe to call from several threads at once.
void WriteDebugOutput(const char* text, size_t length) noexcept;

} // namespace vetra::platform

#endif // VETRA_PLATFORM_DEBUG_OUTPUT_H
