// file_system.h - the few file-system services of the host helpers: telling a local
// directory path from others, making directories, and reading a file at given offsets.
//
// Paths are UTF-8. Nothing here keeps state between calls, and every function may be called
// from several threads at once; a ReadOnlyFile object belongs to one thread at a time.
#ifndef VETRA_PLATFORM_FILE_SYSTEM_H
#define VETRA_PLATFORM_FILE_SYSTEM_H

#include <cstddef>
#include <cstdint>
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
/// Returns false, leaving `root` alone, for every other path.
bool FindLocalRoot(const std::string& path, LocalRoot* root);

/// True if something exists at `path`, directory or not.
bool PathExists(const char* path);

/// True if `path` names a directory (symbolic links followed).
bool IsDirectory(const char* path);

/// Creates the directory `path` (a trailing separator is allowed) with the widest access
/// that the process's file-creation mask lets through. Failure is not reported: callers
/// look at the outcome with IsDirectory.
void MakeDirectory(const char* path);

/// A regular file opened for reading at any offset, closed by the destructor.
class ReadOnlyFile {
  public:
    ReadOnlyFile() = default;
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;
    ~ReadOnlyFile();

    /// Opens `path`. Fails for anything but a regular file (a directory, a pipe, a device
    /// or a missing file), without waiting on it.
    bool Open(const char* path);

    /// The file's size in bytes when it was opened.
    uint64_t Size() const { return size_; }

    /// Reads exactly `length` bytes at `offset` into `out`; false if the file ends first or
    /// the read fails, and `out` then holds something unspecified.
    bool ReadAt(uint64_t offset, void* out, size_t length) const;

  private:
    int fd_ = -1;
    uint64_t size_ = 0;
};

} // namespace vetra::platform::filesys

#endif // VETRA_PLATFORM_FILE_SYSTEM_H
