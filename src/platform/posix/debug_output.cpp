// debug_output.cpp - traces go to standard error, with one write() for the whole text; wide
// text is written as UTF-8.
//
// A write to a pipe may come back short only when a signal interrupts it; the rest then
// follows at once. Nothing is buffered in between, so stdio's stderr is not involved.
#include "platform/debug_output.h"

#include <cerrno>
#include <string>
#include <unistd.h>

#include "platform/utf8_codec.h"

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

void WriteDebugOutputWide(const char16_t* text, size_t length) {
    std::string bytes(utf8::EncodedLength(text, length, nullptr), '\0');
    utf8::Encode(text, length, bytes.data(), bytes.size(), nullptr);
    WriteDebugOutput(bytes.data(), bytes.size());
}

} // namespace vetra::platform
