// file_ops.cpp - the table of file operations in use, the same on every system: it starts as
// the system's own (SystemFileOps, in the system's file.cpp) and tests may change it.
#include "platform/file.h"

namespace vetra::platform {

FileOps& ActiveFileOps() noexcept {
    static FileOps active = SystemFileOps();
    return active;
}

} // namespace vetra::platform
