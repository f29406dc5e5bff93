// thread_name.cpp - names the calling thread with pthread_setname_np.
//
// The kernel keeps 16 bytes including the terminator, and refuses a longer name outright,
// so the name is cut first, never inside a UTF-8 sequence.
#include "platform/thread_name.h"

#include <cstring>
#include <pthread.h>

namespace vetra::platform {

void SetCurrentThreadName(const char* name) noexcept {
    constexpr size_t kMaxBytes = 15;
    char cut[kMaxBytes + 1];
    size_t length = ::strnlen(name, kMaxBytes + 1);
    if (length > kMaxBytes) {
        length = kMaxBytes;
        // Back off over continuation bytes to the start of the character that was cut.
        while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) {
            --length;
        }
    }
    std::memcpy(cut, name, length);
    cut[length] = '\0';
    ::pthread_setname_np(::pthread_self(), cut);
}

} // namespace vetra::platform
