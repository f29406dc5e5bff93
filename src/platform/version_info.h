// version_info.h - version numbers that the system itself keeps: a file's version resource,
// read by the system's version service where it has one, and the web browser library's
// version.
//
// Nothing here keeps state between calls; every function may be called from several threads
// at once. Paths are UTF-16.
#ifndef VETRA_PLATFORM_VERSION_INFO_H
#define VETRA_PLATFORM_VERSION_INFO_H

#include <cstdint>

namespace vetra::platform {

/// What SystemFileVersion answers.
enum class VersionQuery {
    found,    ///< the version was read
    none,     ///< the file is missing, unreadable or has no version resource
    noService ///< the system has no version service (POSIX systems): the caller reads the file
};

/// Reads dwFileVersionMS and dwFileVersionLS of the fixed file information in the version
/// resource of the file at `path` (null-terminated) with the system's version service. Sets
/// `*ms` and `*ls` only when the result is found. On Windows: GetFileVersionInfoSizeW,
/// GetFileVersionInfoW and VerQueryValueW on "\". Throws std::bad_alloc when out of memory.
VersionQuery SystemFileVersion(const char16_t* path, uint32_t* ms, uint32_t* ls);

/// The major and minor version that the system's web browser library reports (on Windows,
/// DllGetVersion of "shdocvw.dll", loaded and freed at each call). Returns true with both
/// set, or false with both 0, also where the system has no such library (POSIX systems).
bool BrowserVersion(uint32_t* major, uint32_t* minor);

} // namespace vetra::platform

#endif // VETRA_PLATFORM_VERSION_INFO_H
