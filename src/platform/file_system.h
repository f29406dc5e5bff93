// file_system.h - the directory services of the host helpers: telling a local directory path
// from others, and making directories.
//
// Paths are UTF-8. Nothing here keeps state between calls, and every function may be called
// from several threads at once.
#ifndef VETRA_PLATFORM_FILE_SYSTEM_H
#define VETRA_PLATFORM_FILE_SYSTEM_H

#include <cstddef>
#include <string>

namespace vetra::platform::filesys {

/// Where the levels of a local directory path begin.
struct LocalRoot {
    size_t firstSeparator; ///< index of the separator that ends the root
    char separator;        ///< the character that separates levels
};

/// Tells whether `path` names a local directory path on a volume where directories may be
/// created, and where its levels begin. On POSIX systems that is an absolute path (first
/// character '/') of at most 4,095 bytes, whose nearest existing ancestor lies on a disk,
/// network, tmpfs or overlay file system; pseudo file systems (proc, sysfs, cgroup, debugfs
/// and the like) and optical media are refused. The root is then index 0, separator '/'.
/// On Windows it is a path of at most 260 UTF-16 units whose second character is ':', whose
/// first three characters GetDriveTypeW calls a removable, fixed or remote drive, and which
/// holds a backslash, or else a slash, at index 2 or later: the first of those is the root's
/// separator (in UTF-8 bytes). Returns false, leaving `root` alone, for every other path.
bool FindLocalRoot(const std::string& path, LocalRoot* root);

/// True if something exists at `path`, directory or not.
bool PathExists(const char* path);

/// True if `path` names a directory (symbolic links followed).
bool IsDirectory(const char* path);

/// Creates the directory `path` (a trailing separator is allowed) with the widest access
/// that the process's file-creation mask lets through (on Windows, the default security). Failure
/// is not reported: callers look at the outcome with IsDirectory.
void MakeDirectory(const char* path);

} // namespace vetra::platform::filesys

#endif // VETRA_PLATFORM_FILE_SYSTEM_H
