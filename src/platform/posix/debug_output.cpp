// debug_output.cpp - traces go to standard error, with one write() for the whole text.
//
// A write to a pipe may come back short only when a signal interrupts it; the rest then
// follows at once. Nothing is buffered in between, so stdio's stderr is not involved.
#include "platform/debug_output.h"

#include <cerrno>
#include <unistd.h>

namespace vetra::platform {

void WriteDebugOutput(const char* text, size_t length) noexcept {
    while (length > 0) {
        const ssize_t written = ::write(STDERR_FILENO, text, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            return;
        }
        text += written;
        length -= static_cast<size_t>(written);
    }
}

} // namespace vetra::platform
