// debug_output.h - the channel that diagnostic traces go to.
//
// A trace is a finished text handed over whole; this layer adds nothing to it (no prefix,
// no line end) and keeps no state. On POSIX systems the channel is standard error; on
// Windows it is the debugger's output (OutputDebugStringA and OutputDebugStringW).
#ifndef VETRA_PLATFORM_DEBUG_OUTPUT_H
#define VETRA_PLATFORM_DEBUG_OUTPUT_H

#include <cstddef>

namespace vetra::platform {

/// Writes `length` bytes of `text`, which a null follows at `text[length]`, to the debug
/// channel as one piece, so that texts of different threads do not interleave inside one text. The
/// bytes go out as they are (UTF-8 on POSIX systems, the ANSI code page's on Windows). A failure to
/// write is ignored: a trace has no result. Safe to call from several threads at once.
void WriteDebugOutput(const char* text, size_t length) noexcept;

/// The same for `length` UTF-16 units, null at `text[length]`, as one piece: written as UTF-8 on
/// POSIX systems (a lone surrogate becomes U+FFFD), as wide text on Windows. Throws std::bad_alloc
/// when the conversion finds no memory.
void WriteDebugOutputWide(const char16_t* text, size_t length);

} // namespace vetra::platform

#endif // VETRA_PLATFORM_DEBUG_OUTPUT_H
