// version_info.cpp (POSIX) - a POSIX system keeps no version resources and has no browser
// library: the file version is read by the library's own PE reader instead.
#include "platform/version_info.h"

namespace vetra::platform {

VersionQuery SystemFileVersion(const char16_t*, uint32_t*, uint32_t*) {
    return VersionQuery::noService;
}

bool BrowserVersion(uint32_t* major, uint32_t* minor) {
    *major = 0;
    *minor = 0;
    return false;
}

} // namespace vetra::platform
